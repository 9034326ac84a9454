// How a value of a card is set on a person.
#include "interchange/vcard/ZRVCardPersonValueSetter.h"

#include "core/ZRPerson.h"
#include "store/ZROSRecord.h"

using platform::Value;

void ZRVCardPersonValueSetter::setPerson(ZRPerson& person)
{
    _person = &person;
    _couldBeInDatabase = !person.zrDatabaseImpl() || !person.zrDatabaseImpl()->isInserted();
}

void ZRVCardPersonValueSetter::setValue(Value value, std::string_view property)
{
    _person->setValue(value, property, _couldBeInDatabase);
}

Value ZRVCardPersonValueSetter::valueForProperty(std::string_view property) const
{
    return _person->valueForProperty(property);
}

void ZRVCardPersonValueSetter::setImageData(Value data) { _person->setImageData(data); }
std::optional<std::string> ZRVCardPersonValueSetter::fullName() const { return _person->_fullName(); }

void ZRVCardPersonValueSetter::setValueInTemporaryCache(Value value, std::string_view property)
{
    _person->setValueInTemporaryCache(value, property);
}
