// How vCards become people or dictionaries.
#pragma once

#include "core/ZRExport.h"
#include "interchange/vcard/VCardReaderContext.h"
#include "platform/value/Object.h"
#include "platform/value/Value.h"

#include <concepts>
#include <cstddef>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

class ZRPerson;
class ZRRoster;
class ZRVCardValueSetter;

/// Reads the cards of one data, front to back (RFC 2426, vCard 2.1), and fills a person or a dictionary.
///
/// It is the raw reader: it takes what the formats and their old writers meant, and what it does not know it
/// keeps in the note or drops. Whoever reads cards of the wide world prepares the data first.
///
/// Ownership: borrows data and context, and a setter for the time of one card.
/// Threads:   one at a time.
/// Errors:    none raised. A card that cannot be read answers false, with a log line and a `failureReason`; a
///            broken line is lost alone, until there were more than ten syntax errors in the data.
class ZR_EXPORT ZRVCardParser {
public:
    /// A parser at the start of the data, or absent for no data.
    ///
    /// Without a CHARSET of its own a line of vCard 3.0 is UTF-8 and one of other cards ASCII. Data that is
    /// no UTF-8, or does not begin with "BEGIN:VCARD", has the context's preferred set, else the platform's
    /// Roman. UTF-16 is always UTF-16.
    static std::unique_ptr<ZRVCardParser> initWithData(
        std::string_view data, const VCardReaderContext& context = VCardReaderContext::standard());
    /// The data must outlive its parser.
    template <std::same_as<std::string> Temporary>
    static std::unique_ptr<ZRVCardParser> initWithData(
        Temporary&&, const VCardReaderContext& = VCardReaderContext::standard()) = delete;
    ~ZRVCardParser();

    /// Reads one card into `setter`; false when there is none or it is broken, and then `setter` may hold a
    /// part of it. At the end of the data that is no message.
    bool importToValueSetter(ZRVCardValueSetter& setter);
    /// The same into a person.
    bool importToPerson(ZRPerson& person);
    /// The next card as a new person of `roster`, in its last store, or absent for a broken one; `length` is
    /// the number of bytes that were read. Absent with length 0 is the end of the data.
    platform::Ref<ZRPerson> nextPersonWithLength(std::size_t& length, ZRRoster& roster);
    /// All cards of the data that can be read, as people of a roster of their own.
    std::vector<platform::Ref<ZRPerson>> people();

    /// Whether a card failed as a person.
    bool hasImportErrors() const;
    /// Whether all data was read.
    bool atEnd() const;
    /// How many bytes of the data were read.
    std::size_t cursor() const;
    /// Why the last card was refused, as one line; empty when it was read.
    const std::string& failureReason() const;

    /// The first card of a file as a dictionary, or absent when the file cannot be read. Of a broken card it
    /// holds what was read.
    static platform::Value dictionaryRepresentationOfVCardAtPath(const std::string& path);

    /// The parser's insides, for its own files.
    struct State;

private:
    explicit ZRVCardParser(std::unique_ptr<State> state);
    std::unique_ptr<State> _state;
};
