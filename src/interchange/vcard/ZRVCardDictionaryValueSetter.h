// A card's values as a dictionary, for those who want no person.
#pragma once

#include "interchange/vcard/ZRVCardValueSetter.h"

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
    /// A dictionary of all that was set.
    platform::Value dictionaryRep() const& { return platform::Value::dictionary(_dictionaryRep); }
    platform::Value dictionaryRep() && { return platform::Value::dictionary(std::move(_dictionaryRep)); }

private:
    std::vector<std::pair<std::string, platform::Value>> _dictionaryRep;
};
