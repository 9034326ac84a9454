// Which fields a view of a card shows for an address, and where.
#pragma once

#include "core/ZRExport.h"
#include "platform/value/Value.h"

#include <string>
#include <string_view>
#include <vector>

class ZRRoster;

/// The whole address as one field, as it is shown while nobody edits it.
inline constexpr std::string_view kZRPostalAddressValueKey = "PostalAddressValue";

/// Whether somebody types into the fields.
enum class FieldMode { show, edit };

/// One field of the view.
struct AddressField {
    std::string key;
    /// The country's word for it in the user's language; empty where it has none.
    std::string title;
    std::string text;
    bool isMultiLine = false;
    /// A field without text is only there to be typed into.
    bool isHidden = false;
};

/// The rows of fields for `address` in the format of the country `code`, or of the user's own where that is
/// empty or unknown. The fields of a row stand in the visual order of their titles.
ZR_EXPORT std::vector<std::vector<AddressField>> layoutFieldsForCountryCode(
    ZRRoster& roster, std::string_view code, const platform::Value& address, FieldMode mode);
