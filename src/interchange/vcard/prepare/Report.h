// What was done to a file's cards that its owner should know: each finding with card, line and outcome.
#pragma once

#include "platform/value/Export.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace vcard::prepare {

enum class Action : std::uint8_t { repaired, keptInNote, dropped, refused };

enum class Finding : std::uint8_t {
    // The card itself.
    cardCutOff,
    cardWithoutBegin,
    cardTooLarge,
    cardEmpty,
    endMissing,
    versionMissing,
    versionUnknown,
    charsetGuessed,
    textOutside,
    nestedCard,
    // A line.
    lineWithoutColon,
    nameUnreadable,
    typeUnreadable,
    emptyValue,
    noPlace,
    bookkeeping,
    binary,
    repeated,
    surplusFields,
    dateUnreadable,
    timeOfDay,
    pictureDamaged,
    pictureByReference,
    pictureUnreadable,
    nameTaken,
    nicknameTaken,
    dateWithoutYear,
    alternative,
    memberUnknown
};
inline constexpr std::size_t kFindings = static_cast<std::size_t>(Finding::memberUnknown) + 1;

/// What was found, in words.
PLATFORM_EXPORT std::string_view textOf(Finding finding);
/// What was done about it; each finding has one outcome.
PLATFORM_EXPORT Action actionOf(Finding finding);
PLATFORM_EXPORT std::string_view textOf(Action action);

/// The findings of one file.
///
/// It is not a log: it is what the import shows, and it is bounded. Of each finding the first
/// `kMaximumEntries` are held; the others are counted.
///
/// Ownership: owns its text.
/// Threads:   one thread at a time.
/// Errors:    none.
class PLATFORM_EXPORT Report {
public:
    static constexpr std::size_t kMaximumEntries = 1000;
    /// Longer subjects are cut.
    static constexpr std::size_t kMaximumSubject = 80;

    struct Entry {
        /// The number of the card in the file, from 1; 0 outside cards.
        std::size_t card;
        std::size_t line;
        Finding finding;
        /// The property's name, or the text itself, printable UTF-8.
        std::string subject;
    };

    explicit Report(std::string file) : _file(std::move(file)) { }

    void add(std::size_t card, std::size_t line, Finding finding, std::string_view subject);

    const std::string& file() const { return _file; }
    const std::vector<Entry>& entries() const { return _entries; }
    std::size_t count(Finding finding) const { return _counts[static_cast<std::size_t>(finding)]; }
    std::size_t count(Action action) const;

    /// "people.vcf: card 3, line 17: UID: says nothing about the person (dropped)".
    std::string text(const Entry& entry) const;
    /// One line each, and one for each finding of which more were counted than held.
    std::string text() const;

private:
    std::string _file;
    std::vector<Entry> _entries;
    std::array<std::size_t, kFindings> _counts{};
};

} // namespace vcard::prepare
