// How a Value becomes the bytes of a property list, and such bytes a Value.
#pragma once

#include "platform/value/Error.h"
#include "platform/value/Value.h"

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace platform {

/// The two forms of a property list; files and callers know them by these numbers.
enum class PropertyListFormat : int { xml = 100, binary = 200 };

/// How much a property list may hold. Both directions keep to it, so that what is written can be read.
struct PropertyListLimits {
    /// Arrays and dictionaries within one another.
    std::size_t depth = 512;
    /// Values and keys, each counted as often as something refers to it.
    std::size_t nodes = std::size_t(1) << 22;
    /// Length of the encoded form; also of all text and data, counted as often as something refers to it.
    std::size_t bytes = std::size_t(1) << 28;
};

/// The codes of errors in the domain "PropertyList".
enum class PropertyListFault : long {
    /// Neither of the two forms.
    unknownFormat = 1,
    /// Cut off, or at odds with itself.
    malformed = 2,
    /// Well formed, but holds something that no Value is read from: an entity, a set, a null.
    unsupported = 3,
    /// Past one of the limits.
    tooLarge = 4,
    /// A Value that a property list cannot hold.
    notEncodable = 5,
};

inline constexpr char kPropertyListErrorDomain[] = "PropertyList";

/// The bytes of `root` in the form asked for; the same value gives the same bytes.
///
/// A property list holds dictionaries, arrays, text in UTF-8, data, dates, booleans, whole and floating
/// numbers. Refused, with the path to the culprit ("Email[2].label"): the null marker, an absent value, any
/// other object, text that is no UTF-8, a date that is not finite; in XML also the control characters and
/// noncharacters that XML has no way to write, and years outside 1 to 9999. XML dates drop the part of a
/// second.
Result<std::string> encodePropertyList(
    const Value& root, PropertyListFormat format, const PropertyListLimits& limits = {});

/// The value that `bytes` hold, whichever form they have.
///
/// Takes time and memory in proportion to the bytes, whatever they claim. The error names the place: object
/// and byte in the binary form, line in XML. Of several entries of one key the last counts. Half a surrogate
/// pair becomes U+FFFD. XML with an internal document type subset or an entity of its own is refused; a plain
/// document type is passed over, and nothing is ever fetched.
Result<Value> decodePropertyList(std::string_view bytes, const PropertyListLimits& limits = {});

/// The form that `bytes` claim by their first characters, or none. Says nothing about what follows.
std::optional<PropertyListFormat> propertyListFormatOf(std::string_view bytes);

} // namespace platform
