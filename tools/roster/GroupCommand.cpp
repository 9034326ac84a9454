// `roster group`: groups of people and of groups, made, filled, renamed and deleted.
#include "CardJson.h"
#include "Command.h"
#include "GroupJson.h"
#include "Listing.h"
#include "Lookup.h"

#include "core/ZRConstants.h"
#include "core/ZRGroup.h"
#include "core/ZRLabels.h"
#include "core/ZRMultiValue.h"
#include "core/ZRPerson.h"
#include "platform/text/Fold.h"

#include <fmt/format.h>

#include <algorithm>
#include <array>

using platform::Ref;
using platform::Value;

namespace {

/// What `roster smart-group` means by a group, and what `roster group` does.
GroupKind kindOf(const Options& options) { return options.smart ? GroupKind::smart : GroupKind::any; }

Ref<ZRGroup> ordinary(const Options& options, ZRRoster& roster)
{
    return groupNamed(roster, options.group, GroupKind::ordinary);
}

/// The people, or with --groups the groups, that the words name; all of them, or a Failure.
ZRRecordList namedRecords(const Options& options, ZRRoster& roster)
{
    ZRRecordList records;
    for (const auto& word : options.words)
        records.push_back(options.asGroups ? Ref<ZRRecord>(groupNamed(roster, word, GroupKind::ordinary))
                                           : Ref<ZRRecord>(personNamed(roster, word)));
    return records;
}

/// The members of the group and of all groups below it.
ZRRecordList membersBelow(const ZRGroup& group)
{
    return locked(*group.nts_Roster(), ZRAccess::read, [&]() ZR_NTS {
        const auto found = group.nts_MembersRecursive();
        return ZRRecordList(found.begin(), found.end());
    });
}

void refuseCycle(const ZRGroup& group, ZRRecord& subgroup)
{
    throw Failure(exitStatus::refused,
        fmt::format("'{}' cannot go into '{}': it is that group, in it already, or contains it",
            displayName(subgroup), group.name()));
}

void add(ZRGroup& group, const Ref<ZRRecord>& record)
{
    if (const auto subgroup = platform::refCast<ZRGroup>(record)) {
        if (!group.addSubgroup(*subgroup))
            refuseCycle(group, *subgroup);
    } else {
        group.addMember(static_cast<ZRPerson&>(*record));
    }
}

void requireInside(const ZRGroup& group, const ZRRecordList& inside, const ZRRecordList& named)
{
    for (const auto& record : named)
        if (std::ranges::find(inside, record) == inside.end())
            throw Failure(
                exitStatus::refused, fmt::format("'{}' is not in '{}'", displayName(*record), group.name()));
}

// ---- the choice of an entry

constexpr std::array chosenProperties{zr::kZREmailProperty, zr::kZRPhoneProperty, zr::kZRAddressProperty};

/// The property whose name is the text, in any case.
std::string_view chosenProperty(const std::string& text)
{
    for (const std::string_view property : chosenProperties)
        if (platform::foldCase(property) == platform::foldCase(text))
            return property;
    throw Failure(
        exitStatus::usage, fmt::format("an entry is chosen of Email, Phone or Address, not '{}'", text));
}

/// The entry that the text means: its identifier, its value, or its label.
std::string entryNamed(const ZRMultiValue& entries, const std::string& text)
{
    const std::string folded = platform::foldCase(text);
    for (ZRIndex index = 0; index < entries.count(); ++index)
        for (const std::string& name : {entries.identifierAtIndex(index),
                 std::string(entries.valueAtIndex(index).asText()), std::string(entries.labelAtIndex(index)),
                 ZRLocalizedPropertyOrLabel(entries.labelAtIndex(index))})
            if (!name.empty() && platform::foldCase(name) == folded)
                return entries.identifierAtIndex(index);
    throw Failure(exitStatus::refused, fmt::format("the card has no entry '{}'", text));
}

/// {"property", "id", "label", "value"} of the entry by which the group reaches the person; null without.
Json choiceJson(const ZRGroup& group, const ZRPerson& person, std::string_view property)
{
    const auto identifier = group.distributionIdentifierForProperty(property, person);
    const Value values = person.valueForProperty(property);
    const auto* const entries = values.as<ZRMultiValue>();
    const ZRIndex index = entries && identifier ? entries->indexForIdentifier(*identifier) : kZRNotFound;
    if (index == kZRNotFound)
        return nullptr;
    return Json{{"property", property}, {"id", *identifier}, {"label", entries->labelAtIndex(index)},
        {"value", valueJson(entries->valueAtIndex(index), property)}};
}

std::string choiceText(std::string_view property, const Json& choice)
{
    if (choice.is_null())
        return fmt::format("  {:<22} none\n", ZRLocalizedPropertyOrLabel(property));
    const Json& value = choice["value"];
    return fmt::format("  {:<22} {} ({})\n", ZRLocalizedPropertyOrLabel(property),
        value.is_string() ? value.get<std::string>() : value.dump(),
        ZRLocalizedPropertyOrLabel(choice["label"].get<std::string>()));
}

void printChoices(const Options& options, const ZRGroup& group, ZRPerson& person)
{
    Json json{{"group", group.uniqueId()}, {"person", person.uniqueId()}, {"choices", Json::array()}};
    std::string text = fmt::format("{} in {}\n", displayName(person), group.name());
    for (const std::string_view property : chosenProperties) {
        Json choice = choiceJson(group, person, property);
        text += choiceText(property, choice);
        if (!choice.is_null())
            json["choices"].push_back(std::move(choice));
    }
    options.json ? printJson(json) : print(text);
}

} // namespace

int runGroupList(const Options& options)
{
    const auto roster = openRoster(options);
    const auto groups = groupsByName(*roster, options.smart ? GroupKind::smart : GroupKind::ordinary);
    printRecords(options, *roster, {groups.begin(), groups.end()});
    return exitStatus::done;
}

int runGroupShow(const Options& options)
{
    const auto roster = openRoster(options);
    const auto group = groupNamed(*roster, options.group, kindOf(options));
    if (options.json)
        printJson(groupJson(*group));
    else
        print(groupText(*group));
    return exitStatus::done;
}

int runGroupMembers(const Options& options)
{
    const auto roster = openRoster(options);
    const auto group = groupNamed(*roster, options.group, kindOf(options));
    ZRRecordList people = options.deep ? membersBelow(*group) : group->members();
    arrange(options, *roster, people);
    printRecords(options, *roster, people);
    return exitStatus::done;
}

int runGroupSubgroups(const Options& options)
{
    const auto roster = openRoster(options);
    printRecords(options, *roster, groupNamed(*roster, options.group)->subgroups());
    return exitStatus::done;
}

int runGroupMake(const Options& options)
{
    const auto roster = openRosterToChange(options);
    const std::string name = joined(options.words);
    const auto parent = options.group.empty() ? nullptr : ordinary(options, *roster);
    const auto group = ZRGroup::initWithRoster(roster);
    group->setValue(Value(name), zr::kZRGroupNameProperty);
    if (parent)
        add(*parent, group);
    save(*roster);
    printChanged(options, "Made", *group);
    return exitStatus::done;
}

int runGroupRename(const Options& options)
{
    const auto roster = openRosterToChange(options);
    const auto group = groupNamed(*roster, options.group, kindOf(options));
    group->setValue(Value(joined(options.words)), zr::kZRGroupNameProperty);
    save(*roster);
    printChanged(options, "Renamed to", *group);
    return exitStatus::done;
}

int runGroupDelete(const Options& options)
{
    const auto roster = openRosterToChange(options);
    Json deleted = Json::array();
    std::string text;
    std::vector<Ref<ZRGroup>> groups;
    for (const auto& word : options.words)
        groups.push_back(groupNamed(*roster, word, kindOf(options)));
    for (const auto& group : groups) {
        deleted.push_back(group->uniqueId());
        text += fmt::format("Deleted {}\n", nameAndId(*group));
        roster->removeRecord(group);
    }
    save(*roster);
    options.json ? printJson(Json{{"deleted", deleted}}) : print(text);
    return exitStatus::done;
}

int runGroupAdd(const Options& options)
{
    const auto roster = openRosterToChange(options);
    const auto group = ordinary(options, *roster);
    for (const auto& record : namedRecords(options, *roster))
        add(*group, record);
    save(*roster);
    printChanged(options, fmt::format("Added {} to", options.words.size()), *group);
    return exitStatus::done;
}

int runGroupRemove(const Options& options)
{
    const auto roster = openRosterToChange(options);
    const auto group = ordinary(options, *roster);
    const auto records = namedRecords(options, *roster);
    requireInside(*group, options.asGroups ? group->subgroups() : group->members(), records);
    for (const auto& record : records)
        if (const auto subgroup = platform::refCast<ZRGroup>(record))
            group->removeSubgroup(*subgroup);
        else
            group->removeMember(static_cast<ZRPerson&>(*record));
    save(*roster);
    printChanged(options, fmt::format("Removed {} from", records.size()), *group);
    return exitStatus::done;
}

int runGroupReach(const Options& options)
{
    const auto roster = openRosterToChange(options);
    const auto group = ordinary(options, *roster);
    const auto person = personNamed(*roster, options.words.at(0));
    requireInside(*group, group->members(), {person});
    if (options.words.size() == 2)
        throw Failure(exitStatus::usage, "say which property and which entry: PERSON Email work");
    if (options.words.size() > 2) {
        const auto property = chosenProperty(options.words[1]);
        const Value values = person->valueForProperty(property);
        const auto* const entries = values.as<ZRMultiValue>();
        if (!entries)
            throw Failure(exitStatus::refused, fmt::format("the card has no {}", property));
        group->setDistributionIdentifier(entryNamed(*entries, options.words[2]), property, *person);
        save(*roster);
    }
    printChoices(options, *group, *person);
    return exitStatus::done;
}
