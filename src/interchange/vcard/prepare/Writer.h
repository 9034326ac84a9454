// How a raw card becomes a canonical one, line by line.
#pragma once

#include "interchange/vcard/prepare/CanonicalCard.h"
#include "interchange/vcard/prepare/CardLines.h"
#include "interchange/vcard/prepare/Cards.h"
#include "interchange/vcard/prepare/Charset.h"
#include "interchange/vcard/prepare/Countries.h"
#include "interchange/vcard/prepare/Headers.h"
#include "interchange/vcard/prepare/Map.h"
#include "interchange/vcard/prepare/Report.h"

#include <cstddef>
#include <string>
#include <string_view>
#include <unordered_set>
#include <utility>
#include <vector>

namespace vcard::prepare {

/// Writes canonical cards and tells the report what it changed beyond spelling.
///
/// Nothing that carries text is left out in silence: a property has a line, or is in the note, or in the
/// report. The note comes last, since later lines may add to it.
///
/// Ownership: borrows charsets and report; keeps buffers between cards.
/// Threads:   one thread at a time.
/// Errors:    none; what cannot be read is told.
class CardWriter {
public:
    CardWriter(Charsets& charsets, Report& report, GroupWishes wishes);

    /// Writes the text of `card`, whose number is known, and what it says of groups. False when no line of it
    /// can be kept.
    bool write(const RawCard& raw, CanonicalCard& card);

private:
    using Index = CardLines::Index;
    /// What KIND says; an unknown kind is not a person either.
    enum class Kind : std::uint8_t { person, organization, other };

    void begin(const RawCard& raw, CanonicalCard& card);
    void writeLine(std::string_view line);
    void write(const Row& row);
    void finish();

    // Places                                                                       (WriterPlaces.cpp)
    void writeKept(const Row& row);
    bool cutSurplus(std::size_t end);
    void carryParameters(const Row& row);
    void writePicture(const Row& row);
    void carryPictureReference();
    void addToNote();
    void writePosition();
    void carryText(Finding finding);
    void carryUnreadable(std::string_view line);

    // Entries                                                                      (WriterEntries.cpp)
    void writeText(const Row& row, std::string_view text, Escapes escapes);
    void writeTelephone(const Row& row);
    void writeEmail(const Row& row);
    void writeMessaging();
    void writeService(const Row& row);
    void writeAddressOf(std::string_view scheme, std::string_view address, std::string_view whole);
    void writeRelated(const Row& row);
    void writeRelation(std::string_view name, std::string_view label);
    void writeDay(const Row& row);
    bool isRepeated(const Row& row, std::string_view value) const;

    // Names, once all lines are there                                              (WriterNames.cpp)
    void finishNames();
    void finishOrganization();
    void makeName(Index formatted, bool whole);
    void makeNickname(Index formatted);
    bool isAddress(std::string_view text) const;
    void writeList(const Row& row);
    void finishList();

    // Groups of lines, and groups of people                                        (WriterGroups.cpp)
    void writeLabel();
    void writeCountryCode(const Row& row);
    void finishItems();
    void dropUnusedLabels();
    void addCountryCodes();
    void addLabels();
    void writeBehind(Index entry, std::string_view name, std::string_view canonical);
    std::uint32_t nextItem();
    void writeCategories();
    void writeKind();
    void writeMember();
    bool isGroup(const RawCard& raw);
    void finishGroup();

    // Values and lines                                                             (Writer.cpp)
    std::string_view name() const { return _header->property.name; }
    /// The decoded value as UTF-8, without blanks at its ends; the same until the next line.
    std::string_view value() { return _isDecoded ? _value : decodedValue(); }
    std::string_view decodedValue();
    std::string decoded(std::string_view bytes, std::string_view charset);
    std::string canonicalValue(Shape shape = Shape::onePart);
    Escapes escapes() const;
    std::string_view groupOfLine() const { return _header->hasGroup ? _group : std::string_view(); }
    void beginLine(const Row& row);
    void beginLine(const Row& row, std::string_view name, std::string_view encoding = {});
    void beginLineWithoutTypes(const Row* row, std::string_view name);
    void takeTypes();
    Index keepLine(const Row& row, Finding ifRepeated);
    Index firstOf(const Row& row) const { return _first[indexOf(row)]; }
    Index firstOf(std::string_view name) const { return firstOf(*rowOf(name, _raw->version)); }
    static std::size_t indexOf(const Row& row) { return static_cast<std::size_t>(&row - mapTable().data()); }
    void writeBookkeeping();
    bool isAlternative();
    void carry(std::string_view name, std::string_view canonical, Finding finding);
    static void join(std::string& text, std::string_view more);
    void tell(Finding finding, std::string_view subject);

    Charsets& _charsets;
    Report& _report;
    const GroupWishes _wishes;
    Countries _countries;
    const RawCard* _raw = nullptr;
    CanonicalCard* _card = nullptr;
    std::size_t _line = 0;
    Headers _headers;
    /// The line at hand: what stands in front of its value, and the value as it was written.
    const Header* _header = nullptr;
    std::string_view _group, _written;
    Transfer _transfer = Transfer::plain;
    /// Its value, once it was asked for, and what it was decoded into.
    bool _isDecoded = false;
    std::string_view _value;
    std::string _text;
    CardLines _lines;
    /// The value of NOTE lines, and what has no line of its own; both canonical.
    std::string _note;
    std::string _carried;
    /// What stands in further lines of the one list that there is, NICKNAME; canonical.
    std::string _moreOfList;
    /// The first line of each row; only rows with room for one have it.
    std::vector<Index> _first;
    /// Lines that are joined with others of their group at the end.
    std::vector<Index> _labels, _codes;
    /// Addresses that name a country, and where in their value.
    std::vector<std::pair<Index, std::size_t>> _addresses;
    /// The groups of lines that were empty.
    std::unordered_set<std::string_view> _emptied;
    /// Lines that get a label of ours, and that label.
    std::vector<std::pair<Index, std::string>> _ownLabels;
    std::uint32_t _item = 0;
    Kind _kind = Kind::person;
    /// The card becomes a group: nothing of it goes to a note, since there will be none.
    bool _isGroup = false;
    /// The properties with an ALTID, each with it.
    std::unordered_set<std::string> _alternatives;
};

} // namespace vcard::prepare
