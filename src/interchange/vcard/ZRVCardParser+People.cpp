// How a card becomes a person of a roster.
#include "core/ZRConstants.h"
#include "core/ZRPerson.h"
#include "interchange/vcard/CardRecording.h"
#include "interchange/vcard/RosterReaderContext.h"
#include "interchange/vcard/ZRVCardParser+State.h"
#include "interchange/vcard/ZRVCardPersonValueSetter.h"
#include "objectstore/StoreContext.h"
#include "store/ZRManagedObjectContext.h"
#include "store/ZROSRecord.h"
#include "store/ZRRoster.h"

using platform::Ref;
using platform::Value;

namespace {

/// New cards go to the last store of the roster.
void assignToLastStore(ZRPerson& person, ZRRoster& roster)
{
    const auto* coordinator = roster.storeCoordinator();
    if (!coordinator || !person.zrDatabaseImpl())
        return;
    if (const auto stores = coordinator->stores(); stores.size() > 1)
        roster.managedObjectContext()->assignObjectToStore(*person.zrDatabaseImpl(), stores.back());
}

Ref<ZRPerson> newPersonIn(ZRRoster& roster) ZR_NTS
{
    auto person = ZRPerson::initWithRoster(Ref<ZRRoster>(&roster));
    if (person)
        assignToLastStore(*person, roster);
    return person;
}

/// Hands values on to a new person, under one hold of the lock: each would take it again.
class LockedPersonSetter final : public ZRVCardValueSetter {
public:
    explicit LockedPersonSetter(ZRPerson& person) : _person(person) { }

    void setValue(Value value, std::string_view property) override ZR_NTS
    {
        _person.nts_SetValue(value, property, false);
    }
    void setImageData(Value data) override ZR_NTS { _person.nts_SetImageData(data, zr::kZRImageProperty); }
    void setValueInTemporaryCache(Value value, std::string_view property) override ZR_NTS
    {
        _person.nts_SetValueInTemporaryCache(value, property);
    }

private:
    ZRPerson& _person;
};

} // namespace

bool ZRVCardParser::importToPerson(ZRPerson& person)
{
    if (!_state->batchValueSetter)
        _state->batchValueSetter = std::make_unique<ZRVCardPersonValueSetter>(person);
    else
        static_cast<ZRVCardPersonValueSetter&>(*_state->batchValueSetter).setPerson(person);
    return importToValueSetter(*_state->batchValueSetter);
}

Ref<ZRPerson> ZRVCardParser::nextPersonWithLength(std::size_t& length, ZRRoster& roster)
{
    length = 0;
    if (atEnd() && _state->lexer)
        return nullptr;
    // The values of one card under one hold of the lock; each takes it again, which is cheap then.
    return locked(roster, ZRAccess::write, [&]() ZR_NTS -> Ref<ZRPerson> {
        const std::size_t start = cursor();
        auto person = newPersonIn(roster);
        if (!person)
            return nullptr;
        const bool imported = importToPerson(*person);
        length = cursor() - start;
        if (imported)
            return person;
        _state->hasImportErrors = true;
        // Its picture may have been kept by then, and would be written without it.
        person->nts_SetImageData(Value(), zr::kZRImageProperty);
        roster.nts_RemoveRecord(*person);
        return nullptr;
    });
}

Ref<ZRPerson> CardRecording::makePerson(ZRRoster& roster) const
{
    return locked(roster, ZRAccess::write, [&]() ZR_NTS {
        auto person = newPersonIn(roster);
        if (person) {
            LockedPersonSetter setter(*person);
            playTo(setter);
        }
        return person;
    });
}

std::vector<Ref<ZRPerson>> ZRVCardParser::people()
{
    std::vector<Ref<ZRPerson>> people;
    const auto roster = ZRRoster::roster();
    std::size_t length = 0;
    while (roster && !atEnd())
        if (auto person = nextPersonWithLength(length, *roster))
            people.push_back(std::move(person));
    return people;
}
