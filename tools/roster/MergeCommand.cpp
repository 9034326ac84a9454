// `roster merge`: chosen cards become one new card.
#include "CardJson.h"
#include "Command.h"
#include "Lookup.h"

#include "merge/ZRMergePeopleCommand.h"

#include <fmt/format.h>

namespace {

/// The cards in the order in which they win.
ZRRecordList chosenPeople(const Options& options, ZRRoster& roster)
{
    ZRRecordList people;
    for (const auto& person : peopleCalled(roster, options.words))
        people.push_back(person);
    if (people.size() < 2)
        throw Failure(exitStatus::usage,
            fmt::format(
                "a merge wants two cards at least{}", options.words.size() > 1 ? "; these are one" : ""));
    return people;
}

} // namespace

int runMerge(const Options& options)
{
    const auto roster = openRosterToChange(options);
    const auto people = chosenPeople(options, *roster);
    const auto command = ZRMergePeopleCommand::initWithGroup(nullptr, people, roster);
    command->performWithActionName("MERGE");
    save(*roster);
    printCardDone(options, fmt::format("Merged {} cards into", people.size()), *command->resultingPerson());
    return exitStatus::done;
}
