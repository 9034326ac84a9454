// Where the values of a card go as it is read.
#pragma once

#include "platform/value/Value.h"

#include <optional>
#include <string>
#include <string_view>

/// What a parser fills: nothing, for a reader that only wants to know whether the data is a card.
///
/// Ownership: the parser borrows it for one card.
/// Threads:   called on the thread of the parser.
/// Errors:    none; a target that refuses a value drops it.
class ZRVCardValueSetter {
public:
    virtual ~ZRVCardValueSetter() = default;

    virtual void setValue(platform::Value, std::string_view /* property */) { }
    /// What was set, or stood there before; absent when nothing did.
    virtual platform::Value valueForProperty(std::string_view) const { return {}; }
    virtual void setImageData(platform::Value) { }
    /// Whether to decode a picture for `setImageData` at all.
    virtual bool keepsImageData() const { return true; }
    /// The name of a person; absent or empty without one.
    virtual std::optional<std::string> fullName() const { return std::nullopt; }
    /// A value for those who import, which no store keeps.
    virtual void setValueInTemporaryCache(platform::Value, std::string_view /* property */) { }
};

/// The key in a person's temporary cache for the id that a card's X-ZRUID line names.
inline constexpr std::string_view ZRTempVCardUIDKey = "ZRTempVCardUIDKey";
