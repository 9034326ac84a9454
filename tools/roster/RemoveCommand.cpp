// `roster remove`: cards out of the roster, all that are named or none.
#include "CardJson.h"
#include "Command.h"
#include "Lookup.h"

#include "core/ZRPerson.h"

#include <algorithm>

using platform::Ref;

namespace {

/// Each card once, however often it is named.
std::vector<Ref<ZRPerson>> namedPeople(const Options& options, ZRRoster& roster)
{
    std::vector<Ref<ZRPerson>> people;
    for (const auto& word : options.words) {
        auto person = personCalled(roster, word);
        requireWritable(*person);
        if (std::ranges::find(people, person) == people.end())
            people.push_back(std::move(person));
    }
    return people;
}

} // namespace

int runRemove(const Options& options)
{
    const auto roster = openRosterToChange(options);
    Json removed = Json::array();
    std::string text;
    for (const auto& person : namedPeople(options, *roster)) {
        removed.push_back(person->uniqueId());
        text += "Removed " + nameAndId(*person) + "\n";
        roster->removeRecord(person);
    }
    save(*roster);
    options.json ? printJson(Json{{"removed", removed}}) : print(text);
    return exitStatus::done;
}
