// A card's values as those of a person.
#pragma once

#include "interchange/vcard/ZRVCardValueSetter.h"
#include "platform/value/Object.h"

class ZRPerson;

/// Hands every value on to a person.
///
/// Ownership: borrows the person.
/// Threads:   as the person: each value takes the roster's lock.
/// Errors:    none; what the person refuses is dropped.
class ZRVCardPersonValueSetter final : public ZRVCardValueSetter {
public:
    explicit ZRVCardPersonValueSetter(ZRPerson& person) { setPerson(person); }
    void setPerson(ZRPerson& person);

    void setValue(platform::Value value, std::string_view property) override;
    platform::Value valueForProperty(std::string_view property) const override;
    void setImageData(platform::Value data) override;
    std::optional<std::string> fullName() const override;
    void setValueInTemporaryCache(platform::Value value, std::string_view property) override;

private:
    ZRPerson* _person = nullptr;
    /// A person that was never saved has no values in the store to look for.
    bool _couldBeInDatabase = true;
};
