// What the files of the property-list codec share: the two forms, errors with a place, and one walk over a
// value. Not for use outside the codec.
#pragma once

#include "platform/value/PropertyList.h"

#include <vector>

namespace platform::propertylist {

/// Seconds from 1970, where a Date counts from, to 2001, where a property list does.
inline constexpr double kEpoch = 978307200;

inline Error fault(PropertyListFault code, std::string text)
{
    return Error{kPropertyListErrorDomain, static_cast<long>(code), std::move(text)};
}

/// Receives a value piece by piece, parents first, entries of a dictionary in the order of their keys.
/// A piece that cannot be written is answered with the reason alone; the walk adds the place.
class Sink {
public:
    virtual ~Sink() = default;
    virtual void open(const Value& container) = 0;
    virtual void close(const Value& container) = 0;
    /// A scalar; no key. A string is UTF-8, a date finite.
    virtual std::optional<std::string> scalar(const Value& value) = 0;
    virtual std::optional<std::string> key(const std::string& key) = 0;
    /// What has been written so far, held against the limit.
    virtual std::size_t size() const = 0;
};

/// Hands `root` to `sink` without recursion, and refuses what no property list holds.
Result<void> walk(const Value& root, const PropertyListLimits& limits, Sink& sink);

Result<std::string> encodeBinary(const Value& root, const PropertyListLimits& limits);
Result<Value> decodeBinary(std::string_view bytes, const PropertyListLimits& limits);
Result<std::string> encodeXML(const Value& root, const PropertyListLimits& limits);
Result<Value> decodeXML(std::string_view bytes, const PropertyListLimits& limits);

} // namespace platform::propertylist
