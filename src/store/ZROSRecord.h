// The stored side of a record: what the public handles read and write.
#pragma once

#include "core/ZRPropertyType.h"
#include "core/ZRRecord.h"
#include "core/ZRRecordClass.h"
#include "objectstore/StoreObject.h"
#include "store/ZRPropertyPlaces.h"

#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

class ZRManagedObjectContext;
class ZRRecord;
class ZRRoster;

/// Base of the stored records.
///
/// It holds one weak reference to its public handle, so that one stored object has at most one live handle,
/// and the record's private dictionary, which outlives a handle: flags set before a save are still there in
/// it.
///
/// Ownership: as StoreObject. The handle owns the stored object, never the reverse.
/// Threads:   all operations expect the global lock and the context's lock.
/// Errors:    as StoreObject.
class ZROSRecord : public objectstore::StoreObject {
public:
    explicit ZROSRecord(const objectstore::Entity& entity) : StoreObject(entity) { }
    static platform::Ref<objectstore::StoreObject> make(const objectstore::Entity& entity);

    // ---- class-level: entities and classes

    /// The table name that unique ids of this entity end in, such as "ZRPerson".
    std::string_view _table() const;
    /// Persons, groups and smart groups are public; all else is private to the system.
    bool _isPublicRecord() const;
    /// The public class of the handles on this object; null for none.
    const ZRRecordClass* publicRecordClass() const;

    // ---- identity and handle

    std::string nts_UniqueId();
    ZRRecord* publicRecord() const { return _publicRecord; }
    void setPublicRecord(ZRRecord* record) { _publicRecord = record; }
    /// The handle has gone; clears the reference only when it still points to that handle.
    void zrPublicRecordIsGone(const ZRRecord& record);
    ZRManagedObjectContext* managedObjectContext() const;
    /// The roster that owns the context; null in a context without one.
    ZRRoster* roster() const;

    // ---- properties

    /// Where a property is kept, by the class of this object.
    const ZRPropertyPlace* placeOfProperty(std::string_view property) const;
    /// The property that a value object (an e-mail row, a messaging row) belongs to; empty when unknown.
    static std::string_view propertyForRecord(StoreObject& value);
    platform::Value nts_ValueForProperty(std::string_view property, std::size_t row, const ZRRecord& record);
    virtual bool nts_SetValue(const platform::Value& value, std::string_view property,
        bool recordCouldBeInDatabase, ZRRecord& record);
    platform::Value valueForUndefinedKey(std::string_view key) override;

    /// Reads the values of all multi-values of this record at once, if none was read yet: who asks for one of
    /// a card asks for more.
    virtual void readAllParts() { }
    /// The rows of a multi-value key, in order.
    objectstore::ObjectList sortedPropertyValuesWithKey(const objectstore::Slot& key);
    /// The row of that entry, or absent.
    objectstore::ObjectRef propertyValueWithKey(const objectstore::Slot& key, std::string_view uniqueId);
    objectstore::ObjectList allCustomPropertyValuesWithCustomProperty(objectstore::StoreObject& definition);
    /// The record that holds the shared values of the info record: its source. Others answer themselves.
    virtual platform::Ref<ZROSRecord> holderOf(const ZRPropertyPlace& place);

    /// Groups that contain this record, as stored objects.
    objectstore::ObjectList parentGroups();
    std::vector<std::string> nts_ChangedProperties();

    // ---- the private dictionary of the record

    ZRPrivateDictionary& privateDictionary() { return _privateDictionary; }

    void awakeFromInsert() override;

protected:
    ~ZROSRecord() override = default;

private:
    platform::Value customValue(std::string_view property);
    objectstore::ObjectRef definitionOfCustomProperty(std::string_view property) const;

    ZRRecord* _publicRecord = nullptr;
    ZRPrivateDictionary _privateDictionary;
};

/// A card.
class ZROSContact : public ZROSRecord {
public:
    using ZROSRecord::ZROSRecord;
    static platform::Ref<objectstore::StoreObject> make(const objectstore::Entity& entity);

    bool nts_SetValue(const platform::Value& value, std::string_view property, bool recordCouldBeInDatabase,
        ZRRecord& record) override;
    void awakeFromInsert() override;
    void willSave() override;
    void didSave() override;
    void didChange(const objectstore::Slot& slot) override;
    void didTurnIntoFault() override { _partsAreRead = false; }
    void readAllParts() override;
    /// Somebody else read them, along with those of other cards.
    void partsWereRead() { _partsAreRead = true; }
    /// A value of this card was changed.
    void partDidChange(const objectstore::Slot& slot);

    /// True from a change of the picture to the next save.
    bool mHasUserImageChanges() const { return _hasUserImageChanges; }

    /// What the sort columns fall back on: the organization, else the first e-mail address, else the first
    /// AIM address, else empty.
    std::string fastAlternateNameForPerson();
    std::string _newSortingFirstName();
    std::string _newSortingLastName();
    std::string createFirstLastSorting(bool a, bool part1);
    /// The folded text of everything in the card that a search looks through.
    std::string _newStringForIndexing();
    /// Forget what follows from the fields, so that it is made anew when it is asked for or saved.
    void clearSortNames();
    void clearStringForIndexing();

protected:
    ~ZROSContact() override = default;

private:
    std::string newSortingName(const objectstore::Slot& phoneticA, const objectstore::Slot& writtenA,
        const objectstore::Slot& phoneticB, const objectstore::Slot& writtenB);

    void alternateNameDidChange();

    bool _hasUserImageChanges = false;
    bool _partsAreRead = false;
};

/// A group of any kind.
class ZROSGroup : public ZROSRecord {
public:
    using ZROSRecord::ZROSRecord;
    static platform::Ref<objectstore::StoreObject> make(const objectstore::Entity& entity);

protected:
    ~ZROSGroup() override = default;
};

/// The roster's own facts; sharing entries and Me are kept by its source.
class ZROSInfo : public ZROSRecord {
public:
    using ZROSRecord::ZROSRecord;
    static platform::Ref<objectstore::StoreObject> make(const objectstore::Entity& entity);

    /// The source of this record, fetched or made.
    platform::Ref<ZROSRecord> rosterSource();
    /// The card of that id in the same context, or null.
    objectstore::ObjectRef contactWithUniqueId(std::string_view uniqueId);
    platform::Ref<ZROSRecord> holderOf(const ZRPropertyPlace& place) override;
    void awakeFromInsert() override;

protected:
    ~ZROSInfo() override = default;
};

/// One value of a multi-value, a note, an index row: whatever is part of a record.
class ZROSOwnedObject : public objectstore::StoreObject {
public:
    explicit ZROSOwnedObject(const objectstore::Entity& entity) : StoreObject(entity) { }
    static platform::Ref<objectstore::StoreObject> make(const objectstore::Entity& entity);

    /// A change of a card's part makes the card's index string stale.
    void didChange(const objectstore::Slot& slot) override;
    /// Whether the value says anything; a row that does not is pruned at the next save.
    bool hasRosterContent();

protected:
    ~ZROSOwnedObject() override = default;
};
