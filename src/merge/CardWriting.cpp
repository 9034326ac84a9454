// What is done with each card that is written, and with all of them.
#include "merge/CardWriting.h"

#include "commands/ZRAddToGroupCommand.h"
#include "core/PersonFlags.h"
#include "core/ZRFailure.h"
#include "core/ZRPerson.h"
#include "core/ZRUniqueId.h"
#include "merge/MergeContact.h"
#include "objectstore/PersistentStore.h"
#include "objectstore/StoreErrors.h"
#include "platform/run/Log.h"
#include "store/ZRDBCache.h"
#include "store/ZRManagedObjectContext.h"
#include "store/ZRModelSlots.h"
#include "store/ZROSRecord.h"
#include "store/ZRRoster.h"

#include <fmt/format.h>

#include <algorithm>

using objectstore::ObjectList;
using objectstore::ObjectRef;
using objectstore::PersistentStore;
using objectstore::StoreObject;
using platform::Ref;
using platform::Value;

namespace merge {

namespace {

/// The store of `context` that lies where `store` does: the same one, unless they are of two coordinators.
PersistentStore* storeLike(ZRManagedObjectContext& context, PersistentStore& store)
{
    const auto stores = context.coordinator()->stores();
    if (std::ranges::find(stores, &store) != stores.end())
        return &store;
    return context.coordinator()->storeAtPath(store.path());
}

ZROSContact* contactBehind(const ZRRecord& person)
{
    return dynamic_cast<ZROSContact*>(person.zrDatabaseImpl());
}

} // namespace

CardWriting::CardWriting(Ref<ZRManagedObjectContext> context, PersistentStore& store)
    : _context(std::move(context)), _roster(_context->owningRoster()), _store(storeLike(*_context, store))
{
    zrRequire(bool(_roster), "[context owningRoster] != nil");
    _work.nestedCommandsAreDone = true;
}

// ---- cards

ZRRecordList CardWriting::add(const ZRRecordList& people)
{
    return locked(*_roster, ZRAccess::write, [&]() ZR_NTS {
        ZRRecordList added;
        for (const auto& person : people)
            added.push_back(nts_add(person));
        return added;
    });
}

Ref<ZRRecord> CardWriting::nts_add(const Ref<ZRRecord>& person)
{
    ZROSContact* const source = contactBehind(*person);
    if (!source || !source->context())
        return nullptr;
    const ObjectRef object = _context->insertObjectOfEntity(contactSlots().entity);
    _context->assignObjectToStore(*object, _store);
    object->setValue(contactSlots().uniqueId, Value(zrUniqueString() + ":ZRPerson"));
    auto record = nts_take(person, static_cast<ZROSContact&>(*object), *source);
    if (!record)
        _context->deleteObject(*object);
    else
        _added.emplace(person.get(), object);
    return record;
}

// The cards are read in a few fetches, not one by one.
ZRRecordList CardWriting::update(const ZRRecordList& people)
{
    return locked(*_roster, ZRAccess::write, [&]() ZR_NTS {
        ObjectList contacts;
        for (const auto& person : people)
            if (auto contact = nts_contactOf(*person))
                contacts.push_back(std::move(contact));
        _context->preheatContacts(contacts);
        for (const auto& contact : contacts)
            static_cast<ZROSContact&>(*contact).partsWereRead();
        ZRRecordList updated;
        for (const auto& person : people)
            updated.push_back(nts_update(person));
        return updated;
    });
}

Ref<ZRRecord> CardWriting::nts_update(const Ref<ZRRecord>& person)
{
    const ObjectRef target = nts_contactOf(*person);
    ZROSContact* const source = contactBehind(*person);
    return target && source ? nts_take(person, static_cast<ZROSContact&>(*target), *source) : nullptr;
}

Ref<ZRRecord> CardWriting::nts_take(const Ref<ZRRecord>& person, ZROSContact& target, ZROSContact& source)
{
    try {
        auto record = nts_recordOf(target);
        mergeContact(target, source);
        _written.emplace_back(&target);
        return record;
    } catch (const objectstore::ObjectOfReplacedStore&) {
        throw;
    } catch (const objectstore::InaccessibleObject& failure) {
        platform::log(fmt::format("Could not write {}: {}", person->nts_UniqueId(), failure.what()));
        return nullptr;
    }
}

ObjectRef CardWriting::nts_contactOf(const ZRRecord& person)
{
    if (const auto added = _added.find(&person); added != _added.end())
        return added->second;
    ZROSContact* const contact = contactBehind(person);
    if (!contact || !contact->context())
        return nullptr;
    if (contact->context() == _context.get())
        return ObjectRef(contact);
    if (ObjectRef same = _context->objectForStoreId(contact->storeId()))
        return same;
    const auto found = _context->zrContactsForUniqueIDs({person.nts_UniqueId()});
    return found.empty() ? nullptr : found.front();
}

void CardWriting::markAsLastImport()
{
    const auto& displayFlags = contactSlots().displayFlags;
    locked(*_roster, ZRAccess::write, [&] {
        for (const auto& contact : _written)
            contact->setValue(displayFlags, Value(contact->integer(displayFlags) | personFlags::kLastImport));
    });
}

// What goes is kept first, since a removal takes pictures and memberships with it.
void CardWriting::remove(const ZRRecordList& people)
{
    std::vector<std::string> ids;
    for (const auto& person : people)
        ids.push_back(person->uniqueId());
    const ZRRecordList records = _roster->recordsForUniqueIds(ids);
    if (records.empty())
        return;
    _work.deletePeopleCommand = platform::makeRef<ZRDeleteRecordsCommand>(nullptr, records, _roster);
    _work.deletePeopleCommand->keepRecords();
    for (const auto& record : records)
        _roster->removeRecord(record);
    _roster->dbCache()->deletedMembers(records);
}

// ---- groups

Ref<ZRGroup> CardWriting::groupWithId(std::string_view uniqueId) const
{
    auto group = platform::refCast<ZRGroup>(_roster->recordForUniqueId(uniqueId));
    return group && !group->isSpecialGroup() && isStored(*group) ? group : nullptr;
}

void CardWriting::join(std::string_view groupId)
{
    const auto group = groupWithId(groupId);
    if (!group)
        return;
    _work.selectedGroup = group;
    _work.addedToGroup =
        locked(*_roster, ZRAccess::write, [&]() ZR_NTS { return nts_join(*group, _written); });
}

void CardWriting::join(std::string_view groupId, const ZRRecordList& people)
{
    const auto group = groupWithId(groupId);
    if (!group)
        return;
    auto joined = locked(*_roster, ZRAccess::write, [&]() ZR_NTS {
        ObjectList contacts;
        for (const auto& person : people)
            if (auto contact = nts_contactOf(*person))
                contacts.push_back(std::move(contact));
        return nts_join(*group, contacts);
    });
    _roster->dbCache()->addedMembers(joined, group);
    if (!joined.empty())
        _work.mergedIntoGroupsCommands.emplace_back(
            platform::makeRef<ZRAddToGroupCommand>(group, std::move(joined), _roster));
}

// A group of which nothing changes is not written.
ZRRecordList CardWriting::nts_join(const ZRGroup& group, const ObjectList& contacts)
{
    const ObjectRef stored(group.zrDatabaseImpl());
    ZRRecordList joined;
    for (const auto& contact : contacts) {
        const auto groups = contact->objects(contactSlots().parentGroups);
        if (contact->isDeleted() || std::ranges::find(groups, stored) != groups.end())
            continue;
        stored->addObject(groupSlots().contacts, *contact);
        joined.push_back(nts_recordOf(*contact));
    }
    return joined;
}

Ref<ZRRecord> CardWriting::nts_recordOf(StoreObject& contact)
{
    return ZROSRecord::copyPublicRecordForClass(
        ZRPerson::recordClassDescription, static_cast<ZROSContact&>(contact), *_roster);
}

// ---- the end

platform::Error CardWriting::save()
{
    if (_roster->save())
        return {};
    auto error = _roster->lastSaveError();
    if (error.domain.empty())
        error = {"ZRRosterErrorDomain", 1, "the roster could not be saved"};
    return error;
}

} // namespace merge
