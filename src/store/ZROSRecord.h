// The stored side of a record: what the public handles read and write.
#pragma once

#include "core/ZRGlobalLock.h"
#include "core/ZRPropertyType.h"
#include "core/ZRRecord.h"
#include "core/ZRRecordClass.h"
#include "objectstore/StoreObject.h"
#include "objectstore/StorePredicate.h"
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

/// What a condition on a key becomes for objects without a value: "AND NOT NULL" leaves them out, "OR IS
/// NULL" lets them in.
enum class ZRNullOption { andNotNull, orIsNull };

/// Whether a look-up may read the store, or answers from what is in memory.
enum class ZRFetching { allowed, prevented };

/// A property that a program declared, and its type.
struct ZRCustomProperty {
    objectstore::ObjectRef definition;
    ZRPropertyType returnType = kZRPropertyTypeUnknown;
};

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
    std::string_view zrEntityName() const { return entity().name(); }
    /// Persons, groups and smart groups are public; all else is private to the system.
    bool _isPublicRecord() const;
    /// The public class of the handles on this object; null for none.
    const ZRRecordClass* publicRecordClass() const;
    /// The context of the roster that objects of the entity live in: mail recents have one of their own.
    static platform::Ref<ZRManagedObjectContext> managedObjectContextForRoster(
        ZRRoster& roster, const objectstore::Entity& entity) ZR_NTS;
    /// The entity of that name; null for an unknown one, and when the roster has no store for it.
    static const objectstore::Entity* zrEntityDescriptionInRoster(
        ZRRoster& roster, std::string_view entityName) ZR_NTS;
    static bool zrEntityKnowsKey(std::string_view key, std::string_view entityName, ZRRoster& roster) ZR_NTS;
    static bool zrEntityKnowsKey(
        std::string_view key, std::string_view entityName, const ZRManagedObjectContext& context);

    // ---- class-level: what a search compares                          (ZROSRecord+Search.cpp)

    /// Folded as sort columns are (case), and as search columns and the index string are (case and
    /// diacritics).
    static std::string newNormalizedSortString(std::string_view text);
    static std::string newNormalizedSearchString(std::string_view text);
    /// The upper bound of a range over everything that begins with `text`.
    static std::string newIncrementedSearchString(std::string_view text);
    /// `(key AND number) comparisonType comparedNumber`; false for an absent key.
    static objectstore::PredicateRef bitwiseAndPredicateForKey(std::string_view key, std::int64_t number,
        std::int64_t comparedNumber, objectstore::Comparator comparisonType);
    static objectstore::PredicateRef compoundPredicateForKey(
        std::string_view key, ZRNullOption option, objectstore::PredicateRef subPredicate);

    // ---- class-level: handles

    /// The handle on a stored object: the live one, or a new one of the public class of its entity. Absent
    /// when that is not a kind of `recordClass`.
    static platform::Ref<ZRRecord> copyPublicRecordForClass(
        const ZRRecordClass& recordClass, ZROSRecord& databaseImpl, ZRRoster& roster) ZR_NTS;
    /// The same of several, which keep their order.
    static ZRRecordList copyPublicRecordsForClass(const ZRRecordClass& recordClass,
        const objectstore::ObjectList& databaseImpls, ZRRoster& roster) ZR_NTS;

    // ---- identity and handle

    std::string nts_UniqueId() ZR_NTS;
    ZRRecord* publicRecord() const { return _publicRecord; }
    void setPublicRecord(ZRRecord* record) { _publicRecord = record; }
    /// The handle has gone; clears the reference only when it still points to that handle.
    void zrPublicRecordIsGone(const ZRRecord& record);
    ZRManagedObjectContext* managedObjectContext() const;
    /// The roster that owns the context; null in a context without one.
    ZRRoster* roster() const;

    // ---- properties

    /// Where a property is kept: its key, the entity of the values and the key in that. Null for a property
    /// without a key.
    const ZRPropertyPlace* keyForProperty(std::string_view property) const
    {
        return keyForProperty(property, entity());
    }
    static const ZRPropertyPlace* keyForProperty(
        std::string_view property, const objectstore::Entity& entity);
    /// The property that a key of the entity holds, when exactly one does; empty otherwise.
    static std::string_view propertyForKey(std::string_view key, const objectstore::Entity& entity);
    /// The entity of the values behind a key; empty for a key that holds its value itself.
    static std::string_view entityNameForPropertyKey(std::string_view key, const objectstore::Entity& entity);
    /// The declared property of that name. Absent for a name that the entity knows as a key.
    std::optional<ZRCustomProperty> isCustomProperty(std::string_view property, ZRRoster& roster) const;
    /// The property that a value object (an e-mail row, a messaging row) belongs to; empty when unknown.
    static std::string_view propertyForRecord(StoreObject& value);
    platform::Value nts_ValueForProperty(
        std::string_view property, std::size_t row, const ZRRecord& record) ZR_NTS;
    virtual bool nts_SetValue(const platform::Value& value, std::string_view property,
        bool recordCouldBeInDatabase, ZRRecord& record) ZR_NTS;
    platform::Value valueForUndefinedKey(std::string_view key) override;

    /// Reads the values of all multi-values of this record at once, if none was read yet: who asks for one of
    /// a card asks for more.
    virtual void readAllParts() { }
    /// Forget that they were read.
    virtual void invalidateAllCachedPropertyValues() { }

    // ---- rows of values                                               (ZROSRecord+Rows.cpp)
    // What was read of a relationship is kept by the engine, which follows every insertion, deletion and
    // refresh: no caller enters rows into that cache or takes them out.

    /// The rows of a key; `sorted…` in the order of the entries.
    objectstore::ObjectList propertyValuesWithKey(const objectstore::Slot& key);
    objectstore::ObjectList sortedPropertyValuesWithKey(const objectstore::Slot& key);
    /// The row of that entry, or absent.
    objectstore::ObjectRef propertyValueWithKey(
        const objectstore::Slot& key, std::string_view uniqueId, ZRFetching fetching = ZRFetching::allowed);
    /// All rows, or those of one entry; of custom properties past the cache.
    objectstore::ObjectList fetchPropertyValuesWithKey(
        const objectstore::Slot& key, std::optional<std::string_view> uniqueId = {});
    /// The rows of one custom property, in order; `fetch…` past the cache.
    objectstore::ObjectList allCustomPropertyValuesWithCustomProperty(objectstore::StoreObject& definition);
    objectstore::ObjectList fetchCustomPropertyValuesWithCustomProperty(objectstore::StoreObject& definition);

    /// The record that holds the shared values of the info record: its source. Others answer themselves.
    virtual platform::Ref<ZROSRecord> holderOf(const ZRPropertyPlace& place);

    /// What a relationship leads to; nothing, with a line in the log, where this record is gone.
    objectstore::ObjectList objectsIfThere(const objectstore::Slot& slot);
    /// The groups that contain this record.
    ZRRecordList nts_ParentGroupsOfRecord(const ZRRecord& record) ZR_NTS;
    std::vector<std::string> nts_ChangedProperties() ZR_NTS;

    // ---- the private dictionary of the record

    ZRPrivateDictionary& privateDictionary() { return _privateDictionary; }

    void awakeFromInsert() override;

protected:
    ~ZROSRecord() override = default;

private:
    platform::Value customValue(std::string_view property);
    ZRRecord* _publicRecord = nullptr;
    ZRPrivateDictionary _privateDictionary;
};

/// A card.
class ZROSContact : public ZROSRecord {
public:
    using ZROSRecord::ZROSRecord;
    static platform::Ref<objectstore::StoreObject> make(const objectstore::Entity& entity);

    bool nts_SetValue(const platform::Value& value, std::string_view property, bool recordCouldBeInDatabase,
        ZRRecord& record) override ZR_NTS;
    void awakeFromInsert() override;
    void willSave() override;
    void willMerge() override;
    void didSave() override;
    void didChange(const objectstore::Slot& slot) override;
    void didTurnIntoFault() override { invalidateAllCachedPropertyValues(); }
    void readAllParts() override;
    void invalidateAllCachedPropertyValues() override { _partsAreRead = false; }
    /// Somebody else read them, along with those of other cards.
    void partsWereRead() { _partsAreRead = true; }
    /// A value of this card was changed.
    void partDidChange(const objectstore::Slot& slot);

    /// True from a change of the picture to the next save.
    bool mHasUserImageChanges() const { return _hasUserImageChanges; }

    /// What the sort columns fall back on: the organization, else the first e-mail address, else the first
    /// AIM address, else empty.
    std::string fastAlternateNameForPerson();
    /// The same of whatever stands behind a person; empty for what is no card.
    static std::string createAlternateNameForPerson(ZROSRecord* person);
    std::string _newSortingFirstName();
    std::string _newSortingLastName();
    std::string createFirstLastSorting(bool a, bool part1);
    /// The folded text of everything in the card that a search looks through.
    std::string _newStringForIndexing();
    /// The relationships that a card shows: those that hold its values, and its note.
    static const std::vector<std::string>& prefetchRelationshipKeyPaths();
    /// The relationships that feed the index string, and the one that keeps it.
    static const std::vector<std::string>& stringForIndexingKeypaths();
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

    /// Whether `other` is below this group, at any depth. Asked upwards, since most groups have one parent.
    bool containsGroup(ZROSGroup& other);

    // ---- which entry of a member's multi-value the group uses

    /// The choice made for that property, or null. Two of one group, property and person are one too many:
    /// the first stands.
    static objectstore::ObjectRef distributionListConfigWithKey(
        std::string_view property, ZROSRecord& person, ZROSGroup& group);
    /// The relationship of a choice that leads to entries of that property; null for one without choices.
    static const objectstore::Slot* entrySlotOfDistributionListConfig(std::string_view property);
    /// Chooses the entry of that identifier; false when the person has none such. A choice made before is
    /// looked for only where fetching is allowed: otherwise there is one more.
    static bool nts_SetDistributionIdentifier(std::optional<std::string_view> identifier,
        std::string_view property, ZROSRecord& person, ZROSGroup& group, ZRFetching fetching) ZR_NTS;

    /// True of the cards in this group and in the groups below it.
    objectstore::PredicateRef contactMembershipRecursivePredicate();

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
    /// The source of the roster's own records; null while none was made.
    static objectstore::ObjectRef fetchedRosterSourceWithRoster(ZRRoster& roster);
    /// The info record of a roster that has none yet.
    static platform::Ref<ZRRecord> nts_CreateInfoWithRoster(ZRRoster& roster) ZR_NTS;
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
    /// A record always does, and so does a value of a kind that cannot be empty.
    static bool hasRosterContentForRecord(objectstore::StoreObject& record);

    /// The part as an XML element: its texts by their keys, and a barcode (format/ZROSOwnedObject+XML.cpp).
    std::string XMLRepresentation();
    /// The element "barcode": the bars of a sample of digits as "long" and "short" between two "long".
    static std::string barcodeXML();

protected:
    ~ZROSOwnedObject() override = default;
};

/// The choice of the entry by which a group reaches a member.
///
/// It belongs to the entry's identifier, not to its row: an edit of the card anywhere makes new rows.
class ZROSDistributionListConfig : public objectstore::StoreObject {
public:
    explicit ZROSDistributionListConfig(const objectstore::Entity& entity) : StoreObject(entity) { }
    static platform::Ref<objectstore::StoreObject> make(const objectstore::Entity& entity);

    void didChange(const objectstore::Slot& slot) override;
    void willMerge() override;

protected:
    ~ZROSDistributionListConfig() override = default;

private:
    /// Of the entry that was chosen here and perhaps not saved yet, and the key that leads to it.
    std::string _identifier;
    const objectstore::Slot* _entrySlot = nullptr;
};
