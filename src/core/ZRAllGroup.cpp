// The group of everybody at one location: whose records those are, and where its facts are kept.
#include "core/ZRAllGroup.h"

#include "core/ZRConstants.h"
#include "core/ZRInfo.h"
#include "core/ZRPerson.h"
#include "platform/files/Resources.h"
#include "store/ZRRoster.h"
#include "store/ZRServices.h"

#include <algorithm>
#include <array>

using platform::Ref;
using platform::Value;

namespace {

constexpr std::string_view localLocation = "local";
constexpr std::array sharingProperties = {
    zr::kZRRemoteLocationProperty, zr::kZRReadWriteSharingACLProperty, zr::kZRReadSharingACLProperty};

bool isAboutSharing(std::string_view property)
{
    return std::ranges::find(sharingProperties, property) != sharingProperties.end();
}

/// The groups that were asked for, by location. Under the global lock.
std::map<std::string, Ref<ZRAllGroup>>& groupsByLocation()
{
    static auto* const groups = new std::map<std::string, Ref<ZRAllGroup>>;
    return *groups;
}

} // namespace

Ref<ZRAllGroup> ZRAllGroup::make(Ref<ZRRoster> roster, std::string remoteLocation)
{
    auto group = platform::refCast<ZRAllGroup>(
        ZRSpecialGroup::initWithUniqueId(recordClassDescription, std::nullopt, std::move(roster)));
    group->_remoteLocation = std::move(remoteLocation);
    return group;
}

Ref<ZRAllGroup> ZRAllGroup::allGroup() { return allGroupForRemoteLocation(std::string(localLocation)); }

Ref<ZRAllGroup> ZRAllGroup::allGroupForRemoteLocation(const std::string& remoteLocation)
{
    const auto shared = ZRRoster::sharedRoster();
    if (!shared)
        return nullptr;
    return locked(*shared, ZRAccess::read, [&]() ZR_NTS {
        auto& group = groupsByLocation()[remoteLocation];
        if (!group)
            group = make(shared, remoteLocation);
        return group;
    });
}

Ref<ZRAllGroup> ZRAllGroup::specialGroupForRoster(Ref<ZRRoster> roster)
{
    if (roster && roster->isSharedInstance())
        return allGroup();
    return make(std::move(roster), std::string(localLocation));
}

bool ZRAllGroup::isLocal() const { return _remoteLocation == localLocation; }

Ref<ZRRecord> ZRAllGroup::nts_RemoteSubscription() const
{
    const auto& find = ZRServices::registered().findSubscription;
    return find && !isLocal() ? find(*nts_Roster(), _remoteLocation) : nullptr;
}

Ref<ZRRecord> ZRAllGroup::remoteSubscription() const
{
    return locked(*nts_Roster(), ZRAccess::read, [&]() ZR_NTS { return nts_RemoteSubscription(); });
}

Ref<ZRRecord> ZRAllGroup::nts_SharingRecord() const
{
    if (auto subscription = nts_RemoteSubscription())
        return subscription;
    return nts_Roster()->nts_Info();
}

ZRRecordList ZRAllGroup::nts_Members() const
{
    if (isLocal())
        return nts_Roster()->nts_People();
    const auto& find = ZRServices::registered().peopleAtRemoteLocation;
    return find ? find(*nts_Roster(), _remoteLocation) : ZRRecordList();
}

ZRRecordList ZRAllGroup::nts_Subgroups() const
{
    return isLocal() ? nts_Roster()->nts_Groups() : ZRRecordList();
}

bool ZRAllGroup::nts_AddMember(ZRPerson& person) { return nts_Roster()->nts_AddRecord(person); }
bool ZRAllGroup::nts_RemoveMember(ZRPerson& person) { return nts_Roster()->nts_RemoveRecord(person); }
bool ZRAllGroup::nts_AddSubgroup(ZRGroup& group) { return nts_Roster()->nts_AddRecord(group); }
bool ZRAllGroup::nts_RemoveSubgroup(ZRGroup& group) { return nts_Roster()->nts_RemoveRecord(group); }

bool ZRAllGroup::nts_RecursiveContainsGroup(const ZRGroup& group) const
{
    const ZRRecordList groups = nts_Subgroups();
    return std::ranges::any_of(groups, [&](const auto& one) { return one.get() == &group; });
}

Value ZRAllGroup::nts_ValueForProperty(std::string_view property) const
{
    if (property == zr::kZRGroupNameProperty) {
        if (isLocal())
            return Value(platform::StringTables::shared().string("ALL_GROUP", "ZRStrings"));
        const auto subscription = nts_RemoteSubscription();
        return subscription ? subscription->nts_ValueForProperty("displayName") : Value();
    }
    if (!isAboutSharing(property))
        return ZRSpecialGroup::nts_ValueForProperty(property);
    const auto record = nts_SharingRecord();
    return record ? record->nts_ValueForProperty(property) : Value();
}

bool ZRAllGroup::nts_SetValue(const Value& value, std::string_view property, bool recordCouldBeInDatabase)
{
    if (!isAboutSharing(property))
        return ZRSpecialGroup::nts_SetValue(value, property, recordCouldBeInDatabase);
    const auto record = nts_SharingRecord();
    return record && record->nts_SetValue(value, property, recordCouldBeInDatabase);
}
