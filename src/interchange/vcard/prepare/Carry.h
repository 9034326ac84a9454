// What becomes of each property: which names the reader of cards knows, and where the others go.
#pragma once

#include "interchange/vcard/prepare/Values.h"

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <string_view>

namespace vcard::prepare {

/// Where a property goes.
enum class Place : std::uint8_t {
    /// A line of its own.
    line,
    /// The card's one note.
    note,
    /// A line of its own if it is a calendar day that the reader understands, else the note.
    day,
    /// A line of its own if it holds a picture.
    picture,
    /// The label of the other line of its group, else the note.
    label,
    /// About the card or the file rather than the person: told, not kept.
    bookkeeping,
    /// VERSION, written anew.
    frame
};

enum class Count : std::uint8_t {
    /// The record has room for one; a second, different one goes to the note.
    one,
    many
};

/// What is known of one property name.
struct Row {
    std::string_view name;
    Place place;
    Count count = Count::many;
    Shape shape = Shape::onePart;
    /// How many fields the reader takes; further ones go to the note. 0 is any number.
    std::size_t fields = 0;
    /// Fewer fields than these are filled up with empty ones: the reader takes a street only from an
    /// address that has a field behind it.
    std::size_t least = 0;
};

/// The name under which a label is read.
inline constexpr std::string_view kLabelName = "X-ZRLabel";

/// All rows, by length of name, then by name.
std::span<const Row> carryTable();

/// The row of a name in any case, or null. What has no row goes to the note as "NAME: value" when it is
/// text, and is told as dropped when it is binary.
const Row* rowOf(std::string_view name);

/// A calendar day at the start of a value, as the reader understands it: `YYYY-MM-DD` or `YYYYMMDD` of an
/// existing day, alone or in front of a time of day. Answers how many characters it has; absent for any
/// other spelling.
std::optional<std::size_t> lengthOfDay(std::string_view value);

} // namespace vcard::prepare
