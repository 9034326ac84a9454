// The card that is being made: how it is shown in the lists before it is in the store, and how that ends.
#include "store/ZRDBCacheState.h"

#include "store/ZRServices.h"

#include <utility>

using platform::Ref;

void ZRDBCache::startEditingNewPerson(const Ref<ZRPerson>& person, const Ref<ZRGroup>& group)
{
    const auto former = locked(*_state->roster, ZRAccess::read, [&] { return _state->newPerson; });
    if (former && former != person)
        endEditing(former);
    locked(*_state->roster, ZRAccess::read, [&] {
        _state->newPerson = person;
        _state->newPersonParentGroup = group;
    });
    if (!person)
        return;
    addedMembers({person});
    if (group)
        addedMembers({person}, group);
    updateMembersSelection({person});
}

void ZRDBCache::endEditing(const Ref<ZRPerson>& person)
{
    Ref<ZRGroup> group;
    const bool isEdited = locked(*_state->roster, ZRAccess::read, [&] {
        if (!person || person != _state->newPerson)
            return false;
        _state->newPerson = nullptr;
        group = std::exchange(_state->newPersonParentGroup, nullptr);
        return true;
    });
    if (isEdited && person->isEmptyPerson())
        discardNewPerson(person, group);
    else if (isEdited)
        addNewPerson(person, group);
}

// A card that was made in the roster itself must not stay there empty.
void ZRDBCache::discardNewPerson(const Ref<ZRPerson>& person, const Ref<ZRGroup>& group)
{
    deletedMembers({person});
    if (group)
        removedMembers({person}, group);
    if (person->roster() == _state->roster && person->zrDatabaseImpl())
        _state->roster->removeRecord(person);
}

void ZRDBCache::addNewPerson(const Ref<ZRPerson>& person, const Ref<ZRGroup>& group)
{
    const auto& services = ZRServices::registered();
    _state->roster->addRecord(person);
    if (group) {
        if (dynamic_cast<const ZRSubscribedGroup*>(group.get()) && services.markRecordWithGroupSubscription)
            services.markRecordWithGroupSubscription(*group, *person);
        group->addMember(*person);
    }
    if (services.performNewPerson)
        services.performNewPerson(person, group, "NEW_PERSON");
    changedMember(person);
}

bool ZRDBCache::isNewPerson(const ZRRecord* record) const
{
    return locked(
        *_state->roster, ZRAccess::read, [&] { return record && record == _state->newPerson.get(); });
}
