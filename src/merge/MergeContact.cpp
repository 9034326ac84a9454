// What one card takes over from another, and what it keeps.
#include "merge/MergeContact.h"

#include "core/PersonFlags.h"
#include "core/ZRConstants.h"
#include "core/ZRPerson.h"
#include "merge/MergeRows.h"
#include "objectstore/StoreContext.h"
#include "objectstore/StoreErrors.h"
#include "platform/value/Value.h"
#include "store/ZRManagedObjectContext.h"
#include "store/ZRModelSlots.h"
#include "store/ZROSRecord.h"
#include "store/ZRRoster.h"
#include "store/ZRServices.h"

using objectstore::ObjectRef;
using objectstore::Slot;
using platform::Value;

namespace {

bool belongsToTheRecord(const Slot& slot)
{
    const auto& slots = contactSlots();
    return &slot == &slots.uniqueId || &slot == &slots.creationDate || &slot == &slots.modificationDate
        || &slot == &slots.displayFlags;
}

void mergeFields(ZROSContact& target, ZROSContact& source)
{
    for (const Slot* slot : contactSlots().entity.slots())
        if (!belongsToTheRecord(*slot))
            merge::copyAttribute(*slot, target, source);
    const Slot& displayFlags = contactSlots().displayFlags;
    const std::int64_t flags = (source.integer(displayFlags) & ~personFlags::kLastImport)
        | (target.integer(displayFlags) & personFlags::kLastImport);
    if (flags != target.integer(displayFlags))
        target.setValue(displayFlags, flags == 0 ? Value() : Value(flags));
}

/// A note without a text goes with the next save.
void mergeNote(ZROSContact& target, ZROSContact& source)
{
    const Slot &note = contactSlots().note, &text = noteSlots().text;
    const ObjectRef theirs = source.related(note);
    ObjectRef mine = target.related(note);
    const Value wanted = theirs ? theirs->value(text) : Value();
    if (wanted == (mine ? mine->value(text) : Value()))
        return;
    if (!mine) {
        mine = target.context()->insertObjectOfEntity(noteSlots().entity);
        target.context()->assignObjectToStore(*mine, target.store());
        target.setRelated(note, mine.get());
    }
    mine->setValue(text, wanted);
}

/// Fields and texts make stale what follows from them; that an entry went or moved does not.
void mergeEntries(ZROSContact& target, ZROSContact& source)
{
    bool hasChanged = false;
    for (const Slot* slot : contactSlots().entity.slots())
        if (merge::holdsEntries(*slot))
            hasChanged |= merge::mergeRows(*slot, target, source);
    if (!hasChanged)
        return;
    target.clearSortNames();
    target.clearStringForIndexing();
}

platform::Ref<ZRPerson> personOf(ZROSContact& contact) ZR_NTS
{
    return contact.roster() ? platform::refCast<ZRPerson>(ZROSRecord::copyPublicRecordForClass(
               ZRPerson::recordClassDescription, contact, *contact.roster()))
                            : nullptr;
}

void mergePicture(ZRPerson& target, const ZRPerson& source, std::string_view kind) ZR_NTS
{
    // Two handles on one card share its file: only a picture that waits for a save is another one.
    if (target.nts_PathForUIDTaggedImageOfKind(kind) == source.nts_PathForUIDTaggedImageOfKind(kind)
        && source.nts_Roster()->nts_PendingPicture(source.nts_UniqueId(), kind).isAbsent())
        return;
    const Value picture = source.imageDataOfKind(kind);
    if (picture == target.imageDataOfKind(kind))
        return;
    // The picture of the user is not the card's to keep.
    const bool isUsers = ZRServices::registered().setUserPicture && target.nts_Roster()->nts_IsMe(target);
    if (picture.isNothing() || isUsers) {
        target.nts_SetImageData(picture, kind);
        return;
    }
    target.nts_Roster()->nts_KeepPicture(target.nts_UniqueId(), kind, picture);
    if (!target.zrDatabaseImpl()->isInserted())
        target.nts_Touch();
}

/// Cards without a roster have no folder for pictures.
void mergePictures(ZROSContact& target, ZROSContact& source) ZR_NTS
{
    const auto to = personOf(target), from = personOf(source);
    if (!to || !from)
        return;
    mergePicture(*to, *from, zr::kZRImageProperty);
    mergePicture(*to, *from, zr::kZRLargeImageProperty);
}

void requireThere(const ZROSContact& contact)
{
    if (!contact.context())
        throw objectstore::InaccessibleObject("a card that was deleted cannot be merged");
}

} // namespace

void mergeContact(ZROSContact& target, ZROSContact& source)
{
    if (&target == &source)
        return;
    requireThere(target);
    requireThere(source);
    target.readAllParts();
    source.readAllParts();
    mergeFields(target, source);
    mergeEntries(target, source);
    mergeNote(target, source);
    mergePictures(target, source);
}
