// What a parser holds while it reads: the card so far, the line, and the handlers of its properties.
#pragma once

#include "interchange/vcard/ZRVCardLexer.h"
#include "interchange/vcard/ZRVCardParameter.h"
#include "interchange/vcard/ZRVCardParser.h"
#include "interchange/vcard/ZRVCardValueSetter.h"

#include <array>
#include <cstdint>
#include <map>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <unordered_set>
#include <vector>

namespace vcard {

/// The kinds of entries that wait for the end of their card.
enum class Pending : std::uint8_t {
    emails,
    phones,
    addresses,
    aims,
    jabbers,
    msns,
    yahoos,
    icqs,
    dates,
    relatedNames,
    urls,
    calendarURIs,
    count
};

/// The card that is being read.
struct Card {
    /// Whether a family name and a given name were read, be they empty.
    bool hasLast = false, hasFirst = false;
    platform::Value organization, notes, uid, imageData;
    std::string formattedName, otherNotes;
    std::array<std::vector<ZRVCardParameter>, static_cast<std::size_t>(Pending::count)> pending;
    /// By group, then by the name of the extension line.
    std::map<std::string, std::map<std::string, std::vector<std::string>, std::less<>>> extensions;
};

/// A parameter as the parser keeps it over the lines.
struct CachedParameter {
    ZRVCardParameter parameter;
    /// Whether the line has it already.
    bool onLine = false;
};

/// The line that is being read.
struct Line {
    /// Group and name, of which `name` is the last.
    std::vector<std::string> names;
    std::string_view name;
    std::optional<std::string> grouping;
    std::vector<CachedParameter*> parameters;
    TextEncoding encoding = 0;
    bool quotedPrintable = false;
    bool base64 = false;
    std::optional<std::string_view> base64Data;
};

/// The lines of a group that say more about its entry: its label, its country code.
inline constexpr std::string_view kLabelExtension = "X-ZRLabel";
inline constexpr std::string_view kAddressExtension = "X-ZRADR";

/// The bits of the person flags that say whether a card shows as a person or a company.
inline constexpr std::int64_t kShowAsBits = 7;
inline constexpr std::int64_t kShowAsCompany = 1;

/// Same text, the case of ASCII letters aside.
inline bool equalInAnyCase(std::string_view a, std::string_view b)
{
    if (a.size() != b.size())
        return false;
    for (std::size_t at = 0; at < a.size(); ++at) {
        // Of two letters that differ in case alone only one bit differs.
        const char lower = static_cast<char>(a[at] | 0x20);
        if (a[at] != b[at] && (lower != (b[at] | 0x20) || lower < 'a' || lower > 'z'))
            return false;
    }
    return true;
}

} // namespace vcard

/// A parser's insides. Frame, handlers and finish are a file each.
struct ZRVCardParser::State {
    using Pending = vcard::Pending;
    /// What the lexer read, and keeps until the next string.
    using Text = std::optional<std::string_view>;

    State(std::string_view data, const VCardReaderContext& surroundings);

    // ---- frame: the card and its lines

    bool readCard();
    bool readOpening();
    bool readClosing();
    bool refuse(std::string_view reason);
    bool malformed(std::string_view what);
    void cleanUpCardState();
    /// Reads one line; false at the end of the card or of the data.
    bool parseItem();
    void beginLine();
    enum class Header { complete, lineLost, cardEnds };
    Header parseParameters();
    void parseParameter();
    void applyParameter(std::string_view name);
    void applyCharset();
    vcard::CachedParameter& cachedParameterForName(Text name);
    bool nextLine();

    // ---- dispatch

    void dispatch();
    void generic();

    // ---- reading a value

    /// One field in the line's encoding.
    Text nextField(vcard::TokenMask stops = vcard::kFieldStops);
    /// Steps over the ";" behind a field; false when there is none.
    bool nextFieldFollows();
    /// One field, and the ";" that may follow it.
    Text parseSingleValue();
    std::vector<std::string> parseList();

    // ---- handlers: false is a failure, which the dispatch logs

    bool parseN();
    bool parseFN();
    bool parseNickname();
    bool parseOrganization();
    bool parseVersion();
    bool parseNote();
    bool parseUID();
    /// A property of one text.
    bool storeText(std::string_view property);
    bool storeTextUnlessEmpty(std::string_view property);
    bool parseEntries(Pending kind, std::string_view label);
    bool addIMValueTo(Pending kind);
    bool parseADR();
    bool parseADD();
    void readAddress(platform::Value& street, std::span<platform::Value> fields, int lines);
    bool parseBirthday();
    bool parseOtherDate();
    bool parseRelatedName();
    bool parseURL();
    bool parseCalendarURI();
    bool parseExtension(std::string_view name);
    bool parseShowAs();
    bool parseOrder();
    bool parsePhoto();
    bool parseBuiltInPhoto();

    std::string_view phoneLabel() const;
    std::string_view genericLabel() const;
    std::optional<std::string_view> genericLabelIfAny() const;
    void addEntry(Pending kind, std::string_view label, platform::Value value);
    void setText(std::string_view property, Text text);
    std::int64_t personFlags() const;
    void setPersonFlags(std::int64_t flags);

    // ---- finish: what waits for the end of the card

    void finishCard();
    void finishNames();
    void finishNotes();
    void addMultiValues(Pending kind, std::string_view property);
    void addAddressMultiValues();
    /// The first value of the extension line of an entry's group, or absent.
    const std::string* extensionOf(const ZRVCardParameter& entry, std::string_view name) const;

    /// The text as a value of its own.
    static platform::Value valueOf(Text text) { return text ? platform::Value(*text) : platform::Value(); }
    std::vector<ZRVCardParameter>& entries(Pending kind)
    {
        return card.pending[static_cast<std::size_t>(kind)];
    }

    std::unique_ptr<ZRVCardLexer> lexer;
    const VCardReaderContext& context;
    /// Shared by all addresses that get it.
    const platform::Value defaultCountryCode;
    TextEncoding defaultEncoding = 0;
    bool hasImportErrors = false;
    std::string failureReason;
    /// Kept from one person to the next.
    std::unique_ptr<ZRVCardValueSetter> batchValueSetter;
    ZRVCardValueSetter* setter = nullptr;
    /// What the last VERSION line said. Nothing depends on it: the two versions read alike.
    bool version30 = false;
    vcard::Card card;
    vcard::Line line;
    /// Scratch for the values of a parameter.
    std::vector<std::string> parseArray;
    /// Parameters by name, kept over the lines.
    std::map<std::string, vcard::CachedParameter, std::less<>> parameters;
    vcard::CachedParameter namelessParameter{ZRVCardParameter(std::nullopt)};
    /// The messaging addresses of the card, to find repeated ones.
    std::array<std::unordered_set<std::string>, static_cast<std::size_t>(Pending::count)> known;
};
