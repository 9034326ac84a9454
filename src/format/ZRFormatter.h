// How a view turns a value into text, and what was typed into a value.
#pragma once

#include "core/ZRExport.h"
#include "core/ZRTypes.h"
#include "platform/value/Value.h"

#include <optional>
#include <string>
#include <string_view>

/// A selection in a text, in UTF-16 units.
struct ZRTextSelection {
    ZRIndex location = 0;
    ZRIndex length = 0;

    friend bool operator==(const ZRTextSelection&, const ZRTextSelection&) = default;
};

/// The base of all formatters of text fields.
///
/// It knows no field: a view asks it before it draws, while somebody types, and when the typing has ended.
///
/// Ownership: holds nothing of its own.
/// Threads:   as the derived class says.
/// Errors:    by the answer; an error text, where a caller wants one, is written by the derived class.
class ZR_EXPORT ZRFormatter : public platform::Object {
public:
    /// The text that shows `value`; absent for a value of a kind that has none.
    virtual std::optional<std::string> stringForObjectValue(const platform::Value& value) const = 0;

    /// Gives the value that `typed` stands for. False when it stands for none, and `value` stays as it was.
    virtual bool getObjectValue(
        platform::Value& value, std::string_view typed, std::string* errorDescription = nullptr) const = 0;

    /// Whether a field may hold `partial` while it is typed. False may move the proposed selection, and the
    /// field then takes it over. The base lets everything pass.
    virtual bool isPartialStringValid(std::string_view partial, ZRTextSelection* proposedSelectedRange,
        std::string_view original, ZRTextSelection originalSelectedRange,
        std::string* errorDescription = nullptr) const;
};
