// `roster smart-group`: groups whose members are found by rules; what they share with others is `roster
// group`.
#include "CardJson.h"
#include "Command.h"
#include "GroupJson.h"
#include "Lookup.h"
#include "Rules.h"

#include "core/ZRConstants.h"
#include "search/ZRSearchElement.h"
#include "search/ZRSmartGroup.h"

#include <fmt/format.h>

using platform::Ref;
using platform::Value;

namespace {

Ref<ZRSmartGroup> smartGroup(const Options& options, ZRRoster& roster)
{
    return platform::refCast<ZRSmartGroup>(groupNamed(roster, options.group, GroupKind::smart));
}

/// The rules of the options. A group must not be found by itself.
Ref<ZRSearchElement> rulesFor(const ZRSmartGroup* group, const Options& options, ZRRoster& roster)
{
    auto element = elementOfOptions(options, roster);
    if (!element)
        throw Failure(exitStatus::usage, "say which people it holds with --where");
    if (group && element->isReferencingGroup(*group))
        throw Failure(exitStatus::refused,
            fmt::format("'{}' cannot be found by itself, nor by a group that is", group->name()));
    return element;
}

std::string rulesText(ZRSmartGroup& group)
{
    const auto element = group.searchElement();
    return element ? rulesOf(*element) : "";
}

Json smartGroupJson(ZRSmartGroup& group)
{
    Json json = groupJson(group);
    json["rules"] = rulesText(group);
    json["modified"] = group.isModified();
    json["tracks"] = group.tracksModification();
    return json;
}

void printSmartGroup(const Options& options, ZRSmartGroup& group)
{
    if (options.json)
        return printJson(smartGroupJson(group));
    std::string text = groupText(group);
    text += fmt::format("  {:<22} {}\n", "Rules", rulesText(group));
    text += fmt::format("  {:<22} {}\n", "Changed", group.isModified() ? "yes" : "no");
    print(text + fmt::format("  {:<22} {}\n", "Tracks changes", group.tracksModification() ? "yes" : "no"));
}

} // namespace

int runSmartGroupMake(const Options& options)
{
    const auto roster = openRosterToChange(options);
    Options rules = options;
    rules.words.clear();
    const auto element = rulesFor(nullptr, rules, *roster);
    const auto group = platform::refCast<ZRSmartGroup>(
        ZRRecord::initWithUniqueId(ZRSmartGroup::recordClassDescription, {}, roster));
    group->setValue(Value(joined(options.words)), zr::kZRGroupNameProperty);
    group->setSearchElement(element);
    group->setTracksModification(options.tracks.value_or(false));
    save(*roster);
    printSmartGroup(options, *group);
    return exitStatus::done;
}

int runSmartGroupEdit(const Options& options)
{
    const auto roster = openRosterToChange(options);
    const auto group = smartGroup(options, *roster);
    const bool hasRules = !options.rules.empty() || !options.first.empty();
    if (!hasRules && !options.tracks && !options.seen)
        throw Failure(exitStatus::usage, "say what to change: --where, --track or --seen");
    if (hasRules)
        group->setSearchElement(rulesFor(group.get(), options, *roster));
    if (options.tracks)
        group->setTracksModification(*options.tracks);
    if (options.seen)
        group->setIsModified(false);
    save(*roster);
    printSmartGroup(options, *group);
    return exitStatus::done;
}

int runSmartGroupShow(const Options& options)
{
    const auto roster = openRoster(options);
    printSmartGroup(options, *smartGroup(options, *roster));
    return exitStatus::done;
}
