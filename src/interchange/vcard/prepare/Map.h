// What becomes of each property, by name and version: the one table that the preparation works from.
#pragma once

#include "interchange/vcard/prepare/Cards.h"
#include "interchange/vcard/prepare/Values.h"

#include <cstddef>
#include <cstdint>
#include <span>
#include <string_view>

namespace vcard::prepare {

/// The versions that a row speaks for, as bits. A card of no or another version is read as 3.0.
enum Versions : std::uint8_t { kVersion21 = 1, kVersion30 = 2, kVersion40 = 4, kLater = 6, kAnyVersion = 7 };

/// What is done with a property.
enum class Use : std::uint8_t {
    /// A line of its own.
    line,
    /// A line of its own; where a field has several values, they become one text.
    names,
    /// The text of a name: it fills N, or becomes the nickname, where these say nothing like it.
    formattedName,
    /// One text of several values, repeated lines included.
    list,
    /// A line of its own, of an address the part behind `tel:` or `mailto:`.
    telephone,
    email,
    /// The address of a messaging service that its scheme names, or that the row's word does.
    messaging,
    service,
    /// A line of its own if it is a calendar day that the reader understands, else the note.
    day,
    /// The same, as one of the other dates; the row's word is its label.
    otherDate,
    /// A related name: of the kind that TYPE says, or that the row's word does.
    related,
    relation,
    /// A line of its own if it holds a picture.
    picture,
    /// The label of the other lines of its group, else the note; and the country code of an address in it.
    label,
    countryCode,
    /// The card's one note.
    note,
    /// A line of the note, "NAME: value"; what is binary is told as dropped.
    carried,
    /// A line of the note: latitude and longitude, which 2.1 has the other way round.
    position,
    /// Groups of their names where these are asked for, else a line of the note.
    categories,
    /// Whether the card is of a person, an organization or a group; and who is in the group.
    kind,
    member,
    /// About the card or the file rather than the person: told, not kept.
    bookkeeping,
    /// VERSION, written anew.
    frame
};

/// Properties that become entries of one list of the record. The first one becomes the primary one.
enum class Entries : std::uint8_t {
    none,
    phones,
    emails,
    addresses,
    aims,
    icqs,
    jabbers,
    msns,
    yahoos,
    urls,
    calendars,
    dates,
    relatedNames
};
inline constexpr std::size_t kLists = static_cast<std::size_t>(Entries::relatedNames) + 1;

enum class Count : std::uint8_t {
    /// The record has room for one; a second, different one goes to the note.
    one,
    many
};

/// What is known of one property name in some versions.
struct Row {
    std::string_view name;
    Versions versions = kAnyVersion;
    Use use = Use::line;
    Entries entries = Entries::none;
    Count count = Count::many;
    Shape shape = Shape::onePart;
    /// How many fields the reader takes; further ones go to the note. 0 is any number.
    std::uint8_t fields = 0;
    /// Fewer fields than these are filled up with empty ones: the reader takes a street only from an
    /// address that has a field behind it.
    std::uint8_t least = 0;
    /// A label, or the scheme of a messaging service.
    std::string_view word = {};
    /// What it becomes, for people who read the table; empty where `use` says all.
    std::string_view becomes = {};
};

/// The name under which a label is read, and those of lines that others become.
inline constexpr std::string_view kLabelName = "X-ZRLabel";
inline constexpr std::string_view kCountryCodeName = "X-ZRADR";
inline constexpr std::string_view kOtherDateName = "X-ZRDATE";
inline constexpr std::string_view kRelatedName = "X-ZRRELATEDNAMES";
inline constexpr std::string_view kShowAsName = "X-ZRShowAs";

/// All rows, by length of name, then by name, then by version.
std::span<const Row> mapTable();

/// The row of a name in any case for a card of that version, or null. What has no row goes to the note as
/// "NAME: value" when it is text, and is told as dropped when it is binary.
const Row* rowOf(std::string_view name, Version version);

} // namespace vcard::prepare
