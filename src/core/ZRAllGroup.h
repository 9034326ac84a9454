// The group of everybody at one location: the roster itself, or one subscription.
#pragma once

#include "core/ZRSpecialGroup.h"

/// All people of a location, and all groups there as its subgroups.
///
/// It stores no membership: whoever is in the roster is in it, adding a record adds it to the roster, and
/// removing one deletes it.
///
/// Ownership: as ZRRecord; the shared ones live as long as the process.
/// Threads:   as ZRRecord.
/// Errors:    as ZRSpecialGroup. Where nobody subscribes to anything, the group of another location is empty
///            and has no name.
class ZR_EXPORT ZRAllGroup : public ZRSpecialGroup {
public:
    static const ZRRecordClass recordClassDescription;
    const ZRRecordClass& recordClass() const override { return recordClassDescription; }

    /// That of the shared roster's own records; absent when there is no shared roster.
    static platform::Ref<ZRAllGroup> allGroup();
    /// That of a location in the shared roster ("local" is the roster itself): one for all who ask.
    static platform::Ref<ZRAllGroup> allGroupForRemoteLocation(const std::string& remoteLocation);
    /// That of another roster's own records; of the shared one `allGroup`.
    static platform::Ref<ZRAllGroup> specialGroupForRoster(platform::Ref<ZRRoster> roster);

    /// The location that the group was made for.
    std::string nts_RemoteLocation() const override ZR_NTS { return _remoteLocation; }
    /// What is subscribed to at that location, or absent.
    platform::Ref<ZRRecord> remoteSubscription() const;

    ZRRecordList nts_Members() const override ZR_NTS;
    ZRRecordList nts_Subgroups() const override ZR_NTS;
    bool nts_AddMember(ZRPerson& person) override ZR_NTS;
    bool nts_RemoveMember(ZRPerson& person) override ZR_NTS;
    bool nts_AddSubgroup(ZRGroup& group) override ZR_NTS;
    bool nts_RemoveSubgroup(ZRGroup& group) override ZR_NTS;
    /// Every group of the location is below it.
    bool nts_RecursiveContainsGroup(const ZRGroup& group) const override ZR_NTS;

    /// The name, and what the subscription or the roster's info record says of sharing.
    using ZRRecord::nts_ValueForProperty;
    platform::Value nts_ValueForProperty(std::string_view property) const override ZR_NTS;
    using ZRRecord::nts_SetValue;
    bool nts_SetValue(const platform::Value& value, std::string_view property,
        bool recordCouldBeInDatabase) override ZR_NTS;
    /// The same as `removeValueForProperty`, under a name that callers know.
    bool removeValueforProperty(std::string_view property) { return removeValueForProperty(property); }

protected:
    ZRAllGroup() = default;

private:
    friend struct ZRRecordClasses;

    static platform::Ref<ZRAllGroup> make(platform::Ref<ZRRoster> roster, std::string remoteLocation);
    bool isLocal() const;
    platform::Ref<ZRRecord> nts_RemoteSubscription() const ZR_NTS;
    /// Who holds what is said of sharing.
    platform::Ref<ZRRecord> nts_SharingRecord() const ZR_NTS;

    std::string _remoteLocation;
};
