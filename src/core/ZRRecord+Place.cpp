// Where a record comes from and belongs: its groups, its location, and what may be done to it.
#include "core/ZRConstants.h"
#include "core/ZRGroup.h"
#include "core/ZRInfo.h"
#include "core/ZRMultiValue.h"
#include "core/ZRMutableMultiValue.h"
#include "core/ZRPerson.h"
#include "core/ZRRecord.h"
#include "core/ZRStringAdditions.h"
#include "store/ZROSRecord.h"
#include "store/ZRRoster.h"

#include <algorithm>

using platform::Ref;
using platform::Value;

namespace {

constexpr std::string_view localLocation = "local";

/// The value of the first entry under `label`, or empty.
std::string entryLabelled(const Value& multiValue, std::string_view label)
{
    if (const auto* entries = multiValue.as<ZRMultiValue>())
        for (ZRIndex index = 0; index < entries->count(); ++index)
            if (entries->labelAtIndex(index) == label)
                return std::string(entries->valueAtIndex(index).asText());
    return {};
}

bool hasEntryLabelled(const Value& multiValue, std::string_view label)
{
    const auto* entries = multiValue.as<ZRMultiValue>();
    return entries && std::ranges::find(entries->_allLabels(), label) != entries->_allLabels().end();
}

} // namespace

bool ZRRecord::isReadOnly() const { return _roster->_isReadOnly(); }

ZRRecordList ZRRecord::parentGroups() const
{
    return locked(*_roster, ZRAccess::read, [&]() ZR_NTS { return nts_ParentGroups(); });
}

ZRRecordList ZRRecord::nts_ParentGroups() const
{
    return _databaseImpl ? _databaseImpl->nts_ParentGroupsOfRecord(*this) : ZRRecordList();
}

std::string ZRRecord::nts_RemoteLocation() const
{
    const std::string location =
        entryLabelled(nts_ValueForProperty(zr::kZRRemoteLocationProperty), zr::kZRSubscribeLabel);
    return location.empty() ? std::string(localLocation) : location;
}

std::string ZRRecord::remoteLocation() const
{
    return locked(*_roster, ZRAccess::read, [&]() ZR_NTS { return nts_RemoteLocation(); });
}

bool ZRRecord::nts_IsSubscribed() const
{
    return hasEntryLabelled(nts_ValueForProperty(zr::kZRRemoteLocationProperty), zr::kZRSubscribeLabel);
}

bool ZRRecord::isSubscribed() const
{
    return locked(*_roster, ZRAccess::read, [&]() ZR_NTS { return nts_IsSubscribed(); });
}

// Publishing is a fact of the roster, not of one record.
bool ZRRecord::nts_IsPublished() const
{
    const auto info = ZRInfo::nts_InfoWithRoster(_roster.get());
    return info
        && hasEntryLabelled(info->nts_ValueForProperty(zr::kZRRemoteLocationProperty), zr::kZRPublishLabel);
}

bool ZRRecord::isPublished() const
{
    return locked(*_roster, ZRAccess::read, [&]() ZR_NTS { return nts_IsPublished(); });
}

bool ZRRecord::zrIsCompatibleWithRecord(const ZRRecord& other) const
{
    const std::string mine = remoteLocation(), theirs = other.remoteLocation();
    const bool isLocal = mine == localLocation, otherIsLocal = theirs == localLocation;
    return isLocal && otherIsLocal ? true
        : isLocal != otherIsLocal  ? false
                                   : zrIsCompatibleWithSubscription(mine, theirs);
}

Ref<ZRRecord> ZRRecord::zrAssimilatedRecordFor(const ZRRecord& other) const
{
    const bool isGroup = other.recordClass().isKindOf(ZRGroup::recordClassDescription);
    const auto& target = isSubscribed()
        ? (isGroup ? ZRSubscribedGroup::recordClassDescription : ZRSubscribedPerson::recordClassDescription)
        : (isGroup ? ZRGroup::recordClassDescription : ZRPerson::recordClassDescription);
    auto copy = other.duplicateWithClass(target);
    const Value location = valueForProperty(zr::kZRRemoteLocationProperty);
    const auto* entries = location.as<ZRMultiValue>();
    if (!entries) {
        copy->removeValueForProperty(zr::kZRRemoteLocationProperty);
        return copy;
    }
    const auto own = platform::makeRef<ZRMutableMultiValue>();
    for (ZRIndex index = 0; index < entries->count(); ++index)
        own->addValue(entries->valueAtIndex(index), entries->labelAtIndex(index));
    copy->setValue(Value(own), zr::kZRRemoteLocationProperty);
    return copy;
}
