// What keeps the field in which a template is edited free of characters that no template may hold.
#pragma once

#include "format/CharacterSet.h"
#include "format/ZRFormatter.h"

/// Lets only texts pass that a template of telephone numbers may be: "#", digits, and what stands around
/// them.
///
/// It does not ask whether a template makes sense.
///
/// Ownership: owns its set of characters.
/// Threads:   constant.
/// Errors:    only the false answer; an error text is left as it was.
class ZR_EXPORT ZRAntiPhoneFormatter : public ZRFormatter {
public:
    ZRAntiPhoneFormatter();

    /// A string itself; absent for what is no string.
    std::optional<std::string> stringForObjectValue(const platform::Value& value) const override;
    /// Gives the text itself. False when it holds a character that no template may hold.
    bool getObjectValue(platform::Value& value, std::string_view typed,
        std::string* errorDescription = nullptr) const override;
    /// False likewise, with the first such character as the proposed selection.
    bool isPartialStringValid(std::string_view partial, ZRTextSelection* proposedSelectedRange,
        std::string_view original, ZRTextSelection originalSelectedRange,
        std::string* errorDescription = nullptr) const override;

private:
    std::optional<ZRTextSelection> firstBadCharacter(std::string_view text) const;

    CharacterSet _nonAllowableChars;
};
