// How a nickname is shown: between marks.
#pragma once

#include "core/ZRExport.h"
#include "platform/value/Value.h"

#include <optional>
#include <string>
#include <string_view>

/// Puts the marks of the user's language around a nickname, and takes them away from what was typed.
///
/// Ownership: owns the marks.
/// Threads:   constant.
/// Errors:    none.
class ZR_EXPORT ZRNicknameFormatter {
public:
    /// With the marks of the user's language.
    ZRNicknameFormatter();
    ZRNicknameFormatter(std::string startMark, std::string endMark)
        : _startMark(std::move(startMark)), _endMark(std::move(endMark))
    {
    }

    /// The nickname between its marks; an empty one without, and absent for what is no string.
    std::optional<std::string> stringForObjectValue(const platform::Value& nickname) const;
    /// Gives the nickname in `typed`: without a mark at its start and a mark at its end. Always true, as any
    /// text is a nickname; the error text, where one is wanted, becomes empty.
    bool getObjectValue(
        std::string& nickname, std::string_view typed, std::string* errorDescription = nullptr) const;

private:
    std::string _startMark;
    std::string _endMark;
};
