// The public handle of every stored thing.
#pragma once

#include "core/ReleasedHandles.h"
#include "core/ZRExport.h"
#include "core/ZRGlobalLock.h"
#include "core/ZRPropertyType.h"
#include "core/ZRRecordClass.h"
#include "platform/value/Object.h"
#include "platform/value/Value.h"

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

class ZROSRecord;
class ZRMutableSet;
class ZRRecord;
class ZRRoster;
class ZRSearchElement;

namespace platform {
class Pasteboard;
} // namespace platform

/// A few values by name, made at the first write.
class ZRPrivateDictionary {
public:
    /// Absent for a name that has none.
    platform::Value value(std::string_view name) const;
    /// An absent value takes the name out.
    void set(const platform::Value& value, std::string_view name);
    void clear() { _entries.reset(); }

private:
    using Entries = std::vector<std::pair<std::string, platform::Value>>;
    std::unique_ptr<Entries> _entries;
};

using ZRRecordList = std::vector<platform::Ref<ZRRecord>>;

/// A person, a group, the info record: a thin handle on a stored object, bound to the roster that made it.
///
/// It holds no data of its own. All reads and writes go to the stored object under the global lock; what is
/// derived (a full name) is kept in the record's temporary cache.
///
/// Ownership: owns a share of its roster and of its stored object; the roster knows it weakly, so that one
/// live
///            handle stands for one unique id.
/// Threads:   every operation takes the global lock, the `nts_` forms expect it. The last release may happen
/// on
///            any thread and takes no lock: the next holder of the lock finishes it.
/// Errors:    a bad argument raises ZRInvalidArgument. A row that another process deleted reads as absent; a
///            write to it raises objectstore::InaccessibleObject.
class ZR_EXPORT ZRRecord : public platform::Object, private ReleasedHandle {
public:
    static const ZRRecordClass recordClassDescription;
    /// The class of this record.
    virtual const ZRRecordClass& recordClass() const { return recordClassDescription; }

    // ---- making records

    /// A new record of `recordClass` in `roster` (absent: the shared one), with the given id or a fresh one.
    /// Absent when there is no roster. It is unsaved until the roster is saved.
    static platform::Ref<ZRRecord> initWithUniqueId(const ZRRecordClass& recordClass,
        std::optional<std::string_view> uniqueId, platform::Ref<ZRRoster> roster);
    static platform::Ref<ZRRecord> nts_initWithUniqueId(
        const ZRRecordClass& recordClass, std::optional<std::string_view> uniqueId, ZRRoster& roster) ZR_NTS;
    /// A handle of `recordClass` on an existing stored object. Callers ask the factory instead, which knows
    /// whether the object already has a handle.
    static platform::Ref<ZRRecord> nts_initWithDatabaseImpl(
        const ZRRecordClass& recordClass, platform::Ref<ZROSRecord> impl, ZRRoster& roster) ZR_NTS;
    /// A record without a stored object, such as the group of all people.
    static platform::Ref<ZRRecord> initSpecialRecordWithUniqueId(
        const ZRRecordClass& recordClass, std::string_view uniqueId, platform::Ref<ZRRoster> roster);
    /// A record with the id and all properties of `dictionary`, as `dictionaryRepresentation` gave it.
    static platform::Ref<ZRRecord> initWithDictionaryRepresentation(
        const ZRRecordClass& recordClass, const platform::Value& dictionary, platform::Ref<ZRRoster> roster);
    /// The same with the mapping of ids of a paste or an import; without an id in the dictionary a new one is
    /// made.
    static platform::Ref<ZRRecord> recordFromDictionaryRepresentation(const ZRRecordClass& recordClass,
        const platform::Value& dictionary, const platform::Value& recordMapping,
        platform::Ref<ZRRoster> roster, bool generateIds);
    static platform::Ref<ZRRecord> nts_recordFromDictionaryRepresentation(const ZRRecordClass& recordClass,
        const platform::Value& dictionary, const platform::Value& recordMapping, ZRRoster& roster,
        bool generateIds) ZR_NTS;

    // ---- identity

    /// A copy of the id: 36 characters of UUID, ":" and the table name. It never changes.
    std::string uniqueId() const;
    const std::string& nts_UniqueId() const ZR_NTS { return _uniqueId; }
    platform::Ref<ZRRoster> roster() const;
    ZRRoster* nts_Roster() const;
    /// The stored object; absent for a record that was removed or is special.
    ZROSRecord* zrDatabaseImpl() const { return _databaseImpl.get(); }
    /// The table name of the stored class, such as "ZRPerson".
    virtual std::string_view _table() const;
    bool isEqual(const platform::Object& other) const override;
    std::size_t hash() const override;
    std::string description() const override;
    std::string stringForXcode() const;
    platform::Value nts_DescriptionDictionary() const ZR_NTS;

    // ---- properties

    /// The value of a property, or absent; a multi-value comes as a ZRMultiValue.
    platform::Value valueForProperty(std::string_view property) const;
    virtual platform::Value nts_ValueForProperty(std::string_view property) const ZR_NTS;
    platform::Value nts_ValueForProperty(std::string_view property, std::size_t row) const ZR_NTS;
    /// Sets a value; absent and the null marker remove it. Answers false when refused: the unique id never
    /// changes. The type of the value is not checked here.
    bool setValue(const platform::Value& value, std::string_view property)
    {
        return setValue(value, property, true);
    }
    bool setValue(const platform::Value& value, std::string_view property, bool recordCouldBeInDatabase);
    virtual bool nts_SetValue(const platform::Value& value, std::string_view property) ZR_NTS;
    virtual bool nts_SetValue(
        const platform::Value& value, std::string_view property, bool recordCouldBeInDatabase) ZR_NTS;
    bool removeValueForProperty(std::string_view property);
    bool nts_RemoveValueForProperty(std::string_view property) ZR_NTS;
    virtual bool doesPropertyExist(std::string_view property) const;
    /// The value of a property of this class, by key; other keys raise.
    platform::Value valueForKey(std::string_view key) const;
    void setValueForKey(const platform::Value& value, std::string_view key);
    void takeValue(const platform::Value& value, std::string_view key) { setValueForKey(value, key); }
    void setNilValueForKey(std::string_view key);
    platform::Value valueForKeyPath(std::string_view keyPath) const;
    void setValueForKeyPath(const platform::Value& value, std::string_view keyPath);
    /// All properties with a value, as one dictionary without the id and the dates of this record.
    platform::Value allProperties() const;
    /// Makes the properties those of `dictionary`: what it does not name is removed.
    void setAllProperties(const platform::Value& dictionary);
    std::vector<std::string> nts_ChangedProperties() const ZR_NTS;
    bool nts_HasChangedProperties() const ZR_NTS;
    /// The smart groups that would have to be written with this record. None keeps a list of its members, so
    /// there are none.
    ZRRecordList nts_AffectsSmartGroupsIsNew(bool isNew) const ZR_NTS;

    // ---- class-level queries (the class is `recordClass`)

    static ZRPropertyTypes propertyTypesWithRoster(const ZRRecordClass& recordClass, ZRRoster* roster);
    static std::vector<std::string> propertiesWithRoster(const ZRRecordClass& recordClass, ZRRoster* roster);
    static std::vector<std::string> properties(const ZRRecordClass& recordClass);
    static ZRPropertyType typeOfProperty(const ZRRecordClass& recordClass, std::string_view property);
    static ZRPropertyType typeOfProperty(
        const ZRRecordClass& recordClass, std::string_view property, ZRRoster* roster);
    static ZRPropertyType nts_TypeOfProperty(
        const ZRRecordClass& recordClass, std::string_view property, ZRRoster& roster) ZR_NTS;

    // ---- searching                                                     (search/ZRRecord+Search.cpp)

    /// Everything of the people that contains all `terms`, in any case; absent without terms.
    static platform::Ref<ZRSearchElement> searchElementForTerms(const std::vector<std::string>& terms);
    /// The same of another class; absent for one that is not searched.
    static platform::Ref<ZRSearchElement> searchElementForTerms(
        const ZRRecordClass& recordClass, const std::vector<std::string>& terms);

    // ---- place

    virtual bool isReadOnly() const;
    /// Groups that contain this record.
    ZRRecordList parentGroups() const;
    virtual ZRRecordList nts_ParentGroups() const ZR_NTS;
    /// Where the record comes from: the subscription's location, or "local".
    std::string remoteLocation() const;
    virtual std::string nts_RemoteLocation() const ZR_NTS;
    std::string _allLocation() const { return remoteLocation(); }
    bool isSubscribed() const;
    bool nts_IsSubscribed() const ZR_NTS;
    bool isPublished() const;
    bool nts_IsPublished() const ZR_NTS;
    bool zrIsCompatibleWithRecord(const ZRRecord& other) const;
    /// A copy of `other` that fits this record's location.
    platform::Ref<ZRRecord> zrAssimilatedRecordFor(const ZRRecord& other) const;
    /// Sets the modification date to now, unless this save must preserve it.
    void nts_Touch() ZR_NTS;

    // ---- copies and dictionaries

    platform::Ref<ZRRecord> duplicate() const;
    /// A new record of `target` in the same roster with the same values; entries get new identifiers.
    platform::Ref<ZRRecord> duplicateWithClass(const ZRRecordClass& target) const;
    virtual platform::Value dictionaryRepresentation() const;
    platform::Value _dictionaryRepresentationForPropertyTypes(
        const ZRPropertyTypes* types, const std::vector<std::string>& properties) const;
    virtual bool nts_PopulateWithDictionary(const platform::Value& dictionary,
        const platform::Value& recordMapping, bool generateIds, bool includeCoreProperties,
        ZRRoster& roster) ZR_NTS;

    // ---- pasteboard

    /// A dictionary from unique id to record dictionary; one fetch for all cards.
    static platform::Value copyPasteboardDictionaryForRecords(const ZRRecordList& records);
    /// The vCards of the people among the records, one behind the other; empty where no service makes any.
    static std::string copyPasteboardStringForRecords(const ZRRecordList& records);
    /// Puts records there in the place of what was: people and groups as dictionaries, each under the type of
    /// its kind, and the people also as vCards. Records of other kinds are left out.
    static void writeRecords(const ZRRecordList& records, platform::Pasteboard& pasteboard);
    static void pastedRecordWithUniqueId(std::string_view newId, std::string_view originalId);
    static std::string originalUniqueIdOfRecordPastedWithUniqueId(std::string_view uniqueId);
    static void discardOriginalUniqueIds();

    // ---- the temporary cache: derived values, never saved

    platform::Value valueInTemporaryCacheForProperty(std::string_view property) const;
    void setValueInTemporaryCache(const platform::Value& value, std::string_view property);
    void clearTemporaryCache();
    platform::Value nts_ValueInTemporaryCacheForProperty(std::string_view property) const ZR_NTS;
    void nts_SetValueInTemporaryCache(const platform::Value& value, std::string_view property) const ZR_NTS;
    void nts_ClearTemporaryCache() const ZR_NTS;
    /// The record's private dictionary: the same store, for flags such as kZRPreserveModificationDate.
    platform::Value nts_contextInfo(std::string_view key) const ZR_NTS
    {
        return nts_ValueInTemporaryCacheForProperty(key);
    }
    void nts_setContextInfo(const platform::Value& value, std::string_view key) ZR_NTS;

    // ---- dates

    /// Noon GMT of the day that `date` is in the local zone; absent stays absent.
    static platform::Value dateByNormalizingToGMT(const platform::Value& date);
    /// Noon in the local zone of the day that `date` is in GMT.
    static platform::Value localDateOccurringOnSameCalendarDayAsDateInGMT(const platform::Value& date);

    // ---- the stored object beneath, without any property mapping

    platform::Value zrosValueForKey(std::string_view key) const;
    void zrosSetValue(const platform::Value& value, std::string_view key);
    /// The objects behind a to-many key, to be changed in place.
    ZRMutableSet zrosMutableSetValueForKey(std::string_view key);

    // ---- swivel: the handle lives on while what it stands for changes

    void setRoster(platform::Ref<ZRRoster> roster) ZR_NTS;
    void setDatabaseImpl(platform::Ref<ZROSRecord> impl, platform::Ref<ZRRoster> roster) ZR_NTS;
    bool nts_MoveIntoRoster(ZRRoster& roster) ZR_NTS;
    /// Deletes the stored object; the handle reads as empty from then on.
    bool nts_RemoveFromRoster(ZRRoster& roster) ZR_NTS;
    /// What a class does to other records when it is removed.
    virtual void nts_CascadeRemove() ZR_NTS { }

    ~ZRRecord() override;

protected:
    ZRRecord();
    void lastOwnerGone() noexcept final;

private:
    friend class ZRRoster;

    void finishRelease() noexcept final ZR_NTS;
    void bind(platform::Ref<ZROSRecord> impl, platform::Ref<ZRRoster> roster) ZR_NTS;
    std::pair<std::string, std::string> _firstMatchingProperty(std::string_view keyPath) const;

    platform::Ref<ZROSRecord> _databaseImpl;
    platform::Ref<ZRRoster> _roster;
    std::string _uniqueId;
    /// The private dictionary of a record without a stored object; a stored object keeps it itself, so that
    /// it outlives the handle.
    mutable ZRPrivateDictionary _ownDictionary;
};
