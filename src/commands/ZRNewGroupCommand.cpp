// How a group is made with what was selected, and unmade.
#include "commands/ZRNewGroupCommand.h"

#include "core/ZRConstants.h"
#include "core/ZRFrameworkBundle.h"
#include "core/ZRMutableMultiValue.h"
#include "store/ZRDBCache.h"

#include <algorithm>
#include <iterator>
#include <string>

using platform::Ref;
using platform::Value;

namespace {

constexpr std::string_view kLocalLocation = "local";

ZRRecordList recordsWhoseIdEndsIn(std::string_view kind, const ZRRecordList& records)
{
    ZRRecordList chosen;
    std::ranges::copy_if(records, std::back_inserter(chosen),
        [&](const auto& record) { return record->uniqueId().ends_with(kind); });
    return chosen;
}

} // namespace

ZRNewGroupCommand::ZRNewGroupCommand(
    ZRRecordList selectedRecords, Ref<ZRGroup> parentGroup, Ref<ZRRoster> roster)
    : ZRGroupMakingCommand(std::move(roster))
    , _selectedRecords(std::move(selectedRecords))
    , _parentGroup(std::move(parentGroup))
{
}

ZRNewGroupCommand::~ZRNewGroupCommand() = default;

Ref<ZRGroup> ZRNewGroupCommand::madeGroup()
{
    const std::string location = _parentGroup ? _parentGroup->remoteLocation() : std::string(kLocalLocation);
    const bool isSubscribed = location != kLocalLocation;
    const auto& kind =
        isSubscribed ? ZRSubscribedGroup::recordClassDescription : ZRGroup::recordClassDescription;
    auto group =
        platform::refCast<ZRGroup>(ZRRecord::initWithUniqueId(kind, {}, Ref<ZRRoster>(&rosterInUse())));
    if (isSubscribed) {
        const auto entries = platform::makeRef<ZRMutableMultiValue>();
        entries->addValue(Value(location), zr::kZRSubscribeLabel);
        group->setValue(Value(entries), zr::kZRRemoteLocationProperty);
    }
    const std::string name = bundle().localizedString("FIRST_UNTITLED_GROUP", "ZRStrings");
    group->setValue(Value(name), zr::kZRGroupNameProperty);
    return group;
}

bool ZRNewGroupCommand::doIt()
{
    _newGroup = madeGroup();
    rosterInUse().addRecord(_newGroup);
    _newGroup->addMembers(recordsWhoseIdEndsIn("Person", _selectedRecords));
    _newGroup->addSubgroups(recordsWhoseIdEndsIn("Group", _selectedRecords));
    cache().addedGroups({_newGroup});
    saveIfWanted();
    return true;
}

ZRRecordList ZRNewGroupCommand::madeGroups() const
{
    return _newGroup ? ZRRecordList{_newGroup} : ZRRecordList();
}
