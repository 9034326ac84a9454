// A card's values as a dictionary, for those who want no person.
#pragma once

#include "interchange/vcard/ZRVCardValueSetter.h"

#include <string_view>
#include <utility>
#include <vector>

/// Fills a dictionary: a property's value under its name; a multi-value one deeper, under the name again.
/// It keeps no picture and nothing temporary, and never has a full name.
///
/// Ownership: owns its values.
/// Threads:   one at a time.
/// Errors:    none.
class ZRVCardDictionaryValueSetter final : public ZRVCardValueSetter {
public:
    /// Replaces what the property had; an absent value changes nothing.
    void setValue(platform::Value value, std::string_view property) override;
    platform::Value valueForProperty(std::string_view property) const override;
    bool keepsImageData() const override { return false; }
    /// A dictionary of all that was set.
    platform::Value dictionaryRep() const& { return platform::Value::dictionary(_entries); }
    platform::Value dictionaryRep() && { return platform::Value::dictionary(std::move(_entries)); }

private:
    /// As they were set: of several of one property the dictionary keeps the last.
    std::vector<platform::Dictionary::Entry> _entries;
};
