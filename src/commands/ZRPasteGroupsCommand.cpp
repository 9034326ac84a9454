// How groups come from the pasteboard, under names that no other group has.
#include "commands/ZRPasteGroupsCommand.h"

#include "core/ZRConstants.h"
#include "core/ZRFrameworkBundle.h"
#include "core/ZRUniqueId.h"
#include "platform/files/Pasteboard.h"
#include "platform/run/Log.h"
#include "store/ZRDBCache.h"

#include <fmt/format.h>

#include <algorithm>
#include <map>
#include <string>

using platform::Ref;
using platform::Value;
using Entries = std::vector<std::pair<std::string, Value>>;

namespace {

using IdsByOriginal = std::map<std::string, std::string, std::less<>>;

/// The ids of cards in the roster that are copies of what was pasted before, by those of the originals.
IdsByOriginal copiesIn(ZRRoster& roster)
{
    IdsByOriginal copies;
    for (const auto& person : roster.people()) {
        const std::string uniqueId = person->uniqueId();
        if (auto original = ZRRecord::originalUniqueIdOfRecordPastedWithUniqueId(uniqueId);
            original != uniqueId)
            copies.emplace(std::move(original), uniqueId);
    }
    return copies;
}

/// The id that stands for `id` in the roster.
std::string presentId(std::string_view id, ZRRoster& roster, const IdsByOriginal& copies)
{
    const auto at = copies.find(id);
    return at == copies.end() || roster.recordForUniqueId(id) ? std::string(id) : at->second;
}

Value withPresentIds(const Value& value, ZRRoster& roster, const IdsByOriginal& copies)
{
    if (value.isArray()) {
        std::vector<Value> ids;
        for (const Value& id : value.asArray())
            ids.emplace_back(presentId(id.asText(), roster, copies));
        return Value::array(std::move(ids));
    }
    Entries entries;
    if (const auto* choices = value.asDictionary())
        for (const auto& [id, identifier] : choices->entries())
            entries.emplace_back(presentId(id, roster, copies), identifier);
    return Value::dictionary(std::move(entries));
}

/// The dictionary of a new group of that id, whose members are those of this roster.
Value adapted(const Value& dictionary, ZRRoster& roster, std::string_view uniqueId)
{
    const IdsByOriginal copies = copiesIn(roster);
    Entries entries{{std::string(zr::kZRUIDProperty), Value(uniqueId)}};
    for (const auto& [key, value] : dictionary.asDictionary()->entries())
        if (key != zr::kZRUIDProperty)
            entries.emplace_back(
                key, value.isArray() || value.isDictionary() ? withPresentIds(value, roster, copies) : value);
    return Value::dictionary(std::move(entries));
}

} // namespace

ZRPasteGroupsCommand::ZRPasteGroupsCommand(
    Ref<ZRRoster> roster, std::shared_ptr<platform::Pasteboard> pasteboard)
    : ZRGroupMakingCommand(std::move(roster)), _pasteboard(std::move(pasteboard))
{
}

ZRPasteGroupsCommand::~ZRPasteGroupsCommand() = default;

bool ZRPasteGroupsCommand::containsGroupName(std::string_view name) const
{
    return std::ranges::any_of(rosterInUse().groups(),
        [&](const auto& group) { return static_cast<const ZRGroup&>(*group).name() == name; });
}

std::string ZRPasteGroupsCommand::unusedName(const std::string& name) const
{
    if (!containsGroupName(name))
        return name;
    const std::string copy = fmt::format("{} {}", name, bundle().localizedString("Copy", "ZRStrings"));
    std::string unused = copy;
    for (int number = 2; containsGroupName(unused); ++number)
        unused = fmt::format("{} {}", copy, number);
    return unused;
}

Ref<ZRGroup> ZRPasteGroupsCommand::pastedGroup(std::string_view uniqueId, const Value& dictionary)
{
    ZRRoster& roster = rosterInUse();
    const Value& name = dictionary[zr::kZRGroupNameProperty];
    const bool isSmart = dictionary[zr::kZRGroupClassKey].asText() == zr::kZRSmartGroupRecordType;
    const std::string newId =
        _newUniqueIdForTable(isSmart ? zr::kZRSmartGroupRecordType : zr::kZRGroupRecordType);
    const std::string newName = unusedName(std::string(name.asText()));
    try {
        auto group =
            ZRGroup::addGroupFromDictionary(adapted(dictionary, roster, newId), Ref<ZRRoster>(&roster));
        if (name.isString())
            group->setValue(Value(newName), zr::kZRGroupNameProperty);
        ZRRecord::pastedRecordWithUniqueId(newId, uniqueId);
        return group;
    } catch (const std::exception& failure) {
        // What another program put there may not fit a group, which is half made then.
        platform::log(fmt::format("Could not paste a group: {}", failure.what()));
        if (const auto half = roster.recordForUniqueId(newId))
            roster.removeRecord(half);
        return nullptr;
    }
}

bool ZRPasteGroupsCommand::doIt()
{
    const auto pasteboard = _pasteboard ? _pasteboard : platform::Pasteboard::general();
    const Value groups = pasteboard->valueForType(zr::ZRGroupDictPboardType);
    if (!groups.isDictionary())
        return false;
    for (const auto& [uniqueId, dictionary] : groups.asDictionary()->entries())
        if (auto group = dictionary.isDictionary() ? pastedGroup(uniqueId, dictionary) : nullptr)
            _groups.push_back(std::move(group));
    if (_groups.empty())
        return false;
    ZRRecord::discardOriginalUniqueIds();
    cache().addedGroups(_groups);
    cache().updateGroupsSelection(_groups);
    cache().nonThreadedSave();
    return true;
}
