// What the commands about groups can be told.
#include "CommandTable.h"

namespace {

/// The command with only smart groups in mind.
template <int (*Run)(const Options&)>
int smart(const Options& options)
{
    Options only = options;
    only.smart = true;
    return Run(only);
}

Argument groupArgument(Offer offer)
{
    return {"GROUP", "A group, by name or unique id", offer, Count::one, &Options::group};
}

Argument nameArgument(std::string_view meaning)
{
    return {"NAME", meaning, Offer::nothing, Count::oneOrMore};
}

// ---- what both kinds can do

Command members(std::string_view parent, Offer offer, int (*run)(const Options&))
{
    return {
        .parent = parent,
        .name = "members",
        .summary = "List the people in it",
        .run = run,
        .arguments = {groupArgument(offer)},
        .options = joinedOptions(
            {orderOptions(), {{"--deep", "", "Those of the groups in it, too", &Options::deep}}}),
    };
}

Command renaming(std::string_view parent, Offer offer, int (*run)(const Options&))
{
    return {
        .parent = parent,
        .name = "rename",
        .summary = "Give it another name",
        .run = run,
        .arguments = {groupArgument(offer), nameArgument("The new name")},
    };
}

Command deleting(std::string_view parent, Offer offer, int (*run)(const Options&))
{
    return {
        .parent = parent,
        .name = "delete",
        .summary = "Delete groups, not people",
        .run = run,
        .arguments = {{"GROUP", "Groups, by name or unique id", offer, Count::oneOrMore}},
    };
}

Command showing(std::string_view parent, Offer offer, int (*run)(const Options&))
{
    return {.parent = parent,
        .name = "show",
        .summary = "Show it, complete",
        .run = run,
        .arguments = {groupArgument(offer)}};
}

// ---- groups that people are put into

Command group()
{
    return {
        .name = "group",
        .summary = "Groups of people",
        .examples =
            {
                {"roster group make Friends", "A new group."},
                {"roster group add Friends 'Ana Lima' 5C86BDEB", "Put two people into it."},
                {"roster group reach Friends 'Ana Lima' Email work",
                    "Write to her address at work when the group is written to."},
            },
        .refusal = "There is no such group or card, several are meant, or a group would contain itself",
    };
}

Command making()
{
    return {
        .parent = "group",
        .name = "make",
        .summary = "Make a group",
        .run = runGroupMake,
        .arguments = {nameArgument("Its name")},
        .options = {{"--in", "GROUP", "The group that it goes into", &Options::group, {},
            Offer::ordinaryGroups}},
    };
}

Command filling(std::string_view name, std::string_view summary, int (*run)(const Options&))
{
    return {
        .parent = "group",
        .name = name,
        .summary = summary,
        .run = run,
        .arguments = {groupArgument(Offer::ordinaryGroups),
            {"WHO", "People, by unique id or text in their card", Offer::cards, Count::oneOrMore}},
        .options = {{"--groups", "", "WHO are groups", &Options::asGroups}},
    };
}

Command reaching()
{
    return {
        .parent = "group",
        .name = "reach",
        .summary = "Choose a member's address",
        .run = runGroupReach,
        .arguments = {groupArgument(Offer::ordinaryGroups),
            {"PERSON", "The person, by unique id or text in the card", Offer::cards},
            {"PROPERTY", "To choose: Email, Phone or Address", Offer::reachProperties, Count::atMostOne},
            {"ENTRY", "And an entry of it, by value, label or id", Offer::nothing, Count::atMostOne}},
        .notes = "Without PROPERTY and ENTRY it shows by which entries the group reaches somebody.\n",
    };
}

// ---- groups whose members are found

Command smartGroup()
{
    return {
        .name = "smart-group",
        .summary = "Groups found by rules",
        .examples =
            {
                {"roster smart-group make Soon --where 'Birthday recurs-within 30 days'",
                    "Whose birthday is near."},
                {"roster smart-group edit Soon --track", "It notes that its members change."},
            },
        .refusal = "There is no such group, or it would be found by itself",
    };
}

std::vector<Option> trackingOptions()
{
    return {
        {"--track", "", "It notes that its members change", Choice{&Options::tracks, true}},
        {"--no-track", "", "It does not", Choice{&Options::tracks, false}},
    };
}

constexpr std::string_view ruleNotes =
    "A rule is 'PROPERTY[.PART][;LABEL] OPERATOR VALUE', as roster-query(7) tells.\n";

Command smartMaking()
{
    return {
        .parent = "smart-group",
        .name = "make",
        .summary = "Make a smart group",
        .run = smart<runSmartGroupMake>,
        .arguments = {nameArgument("Its name")},
        .options = joinedOptions({ruleOptions(), trackingOptions()}),
        .notes = std::string(ruleNotes),
    };
}

Command smartEditing()
{
    return {
        .parent = "smart-group",
        .name = "edit",
        .summary = "Give it other rules",
        .run = smart<runSmartGroupEdit>,
        .arguments = {groupArgument(Offer::smartGroups)},
        .options = joinedOptions(
            {ruleOptions(), trackingOptions(), {{"--seen", "", "Its changes were seen", &Options::seen}}}),
        .notes = std::string(ruleNotes),
    };
}

} // namespace

std::vector<Command> groupCommands()
{
    return {
        group(),
        {.parent = "group", .name = "list", .summary = "List the groups", .run = runGroupList},
        showing("group", Offer::groups, runGroupShow),
        members("group", Offer::groups, runGroupMembers),
        {.parent = "group",
            .name = "subgroups",
            .summary = "List the groups in it",
            .run = runGroupSubgroups,
            .arguments = {groupArgument(Offer::groups)}},
        making(),
        renaming("group", Offer::groups, runGroupRename),
        deleting("group", Offer::groups, runGroupDelete),
        filling("add", "Put people into it", runGroupAdd),
        filling("remove", "Take people out of it", runGroupRemove),
        reaching(),
        smartGroup(),
        {.parent = "smart-group",
            .name = "list",
            .summary = "List the smart groups",
            .run = smart<runGroupList>},
        showing("smart-group", Offer::smartGroups, smart<runSmartGroupShow>),
        members("smart-group", Offer::smartGroups, smart<runGroupMembers>),
        smartMaking(),
        smartEditing(),
        renaming("smart-group", Offer::smartGroups, smart<runGroupRename>),
        deleting("smart-group", Offer::smartGroups, smart<runGroupDelete>),
    };
}
