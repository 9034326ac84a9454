// What must be kept of a record so that it comes back as it was.
#pragma once

#include "core/ZRExport.h"
#include "core/ZRGroup.h"
#include "core/ZRPerson.h"
#include "platform/value/Value.h"

#include <optional>
#include <string>
#include <string_view>
#include <vector>

class ZRDBCache;

// Keys that stand in a kept dictionary beside the properties of the record.

/// The picture of a person.
inline constexpr std::string_view kZRKeptImageData = "org.quillon.ZRImageData";
/// Whether a person was the Me card.
inline constexpr std::string_view kZRKeptMe = "org.quillon.ZRPersonMeProperty";
/// Which entries of a person groups use: dictionaries with "group" (its id), "property" and "identifier".
inline constexpr std::string_view kZRKeptChoices = "org.quillon.ZRDistributionChoices";

/// All that a record is beside its id and its memberships: its properties, its creation date, and of a person
/// the picture, whether it is Me, and which of its entries groups use. Without the modification date: what is
/// undone is modified again.
ZR_EXPORT platform::Value allPropertiesIncludingImage(const ZRRecord& record);
/// Makes the record what such a dictionary says. Properties and a picture that it does not name are removed;
/// the creation date, Me, and the choices of groups stay where it says nothing of them. Choices of groups
/// that are not in the roster are left out.
ZR_EXPORT void setAllPropertiesIncludingImage(ZRRecord& record, const platform::Value& dictionary);
/// The same; answers what the record was.
ZR_EXPORT platform::Value exchangeAllProperties(ZRRecord& record, const platform::Value& dictionary);

/// Which entries of a person groups use, as under kZRKeptChoices. They go with their entries, so whoever
/// writes a multi-value that is to come back keeps them too.
ZR_EXPORT platform::Value distributionChoices(const ZRPerson& person);
/// Chooses those again where a group has made no other choice since. An absent value changes nothing.
ZR_EXPORT void restoreDistributionChoices(ZRPerson& person, const platform::Value& choices);

/// Whether the record is in its roster: neither removed, nor deleted by another process.
ZR_EXPORT bool isStored(const ZRRecord& record);

/// Puts a person or a group into a group; true when it was not there. Nobody can be put into a group of
/// everybody: whoever is at its location is there.
ZR_EXPORT bool joinGroup(ZRGroup& group, const platform::Ref<ZRRecord>& record);
/// The same for one that was there before: a group may then also be a subgroup of what is in there, as it is
/// when it was put in first. Only a circle is refused.
ZR_EXPORT bool rejoinGroup(ZRGroup& group, const platform::Ref<ZRRecord>& record);
/// Takes it out; true when it was there.
ZR_EXPORT bool leaveGroup(ZRGroup& group, const platform::Ref<ZRRecord>& record);

/// A record that goes, and everything that must come back with it.
///
/// Several that go one after the other come back in the opposite order: then each finds what was there when
/// it went.
///
/// Ownership: shares ownership of its record, its groups and its members.
/// Threads:   as ZRCommand.
/// Errors:    none; a group or member that is gone for good is left out.
class ZR_EXPORT KeptRecord {
public:
    /// Gathers what is lost when the record is removed.
    explicit KeptRecord(platform::Ref<ZRRecord> record);
    /// The same, and removes it. Absent for a record that is not in the roster, and for special groups.
    static std::optional<KeptRecord> remove(const platform::Ref<ZRRecord>& record, ZRRoster& roster);

    /// Puts the record back into the roster under its id. False when it cannot be.
    bool bringBack(ZRRoster& roster) const;

    const platform::Ref<ZRRecord>& record() const { return _record; }
    /// The groups that it was in.
    const ZRRecordList& parentGroups() const { return _parentGroups; }

private:
    struct Choice {
        platform::Ref<ZRPerson> member;
        std::string property;
        std::string identifier;
    };

    void gatherContents(ZRGroup& group) ZR_NTS;
    void bringBackContents(ZRGroup& group) const;

    platform::Ref<ZRRecord> _record;
    platform::Value _properties;
    ZRRecordList _parentGroups;
    bool _isOfLastImport = false;
    // Of a group.
    ZRRecordList _membersAndSubgroups;
    std::vector<Choice> _choices;
};

/// While it lives, pictures of records that come back wait for the save, which writes them together.
///
/// Ownership: borrows the roster.
/// Threads:   as ZRCommand.
/// Errors:    none.
class KeepingPictures {
public:
    explicit KeepingPictures(ZRRoster& roster);
    ~KeepingPictures();
    KeepingPictures(const KeepingPictures&) = delete;
    KeepingPictures& operator=(const KeepingPictures&) = delete;

private:
    ZRRoster& _roster;
    const bool _kept;
};

/// Removes records one after the other; those that are not in the roster are passed over.
ZR_EXPORT std::vector<KeptRecord> removeRecords(const ZRRecordList& records, ZRRoster& roster);
/// Brings them back, the last one first, and answers which came back, in the order in which they went.
ZR_EXPORT ZRRecordList bringBackRecords(const std::vector<KeptRecord>& kept, ZRRoster& roster);

/// Drops the lists that changed when these records came back: those of the groups that they were in, and
/// their own.
ZR_EXPORT void clearListsOf(const std::vector<KeptRecord>& kept, ZRDBCache& cache);

/// Those of the records that are people, and those that are groups.
ZR_EXPORT ZRRecordList peopleAmong(const ZRRecordList& records);
ZR_EXPORT ZRRecordList groupsAmong(const ZRRecordList& records);
