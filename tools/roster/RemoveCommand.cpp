// `roster remove`: cards out of the roster, all that are named or none.
#include "CardJson.h"
#include "Command.h"
#include "Lookup.h"

#include "core/ZRPerson.h"

int runRemove(const Options& options)
{
    const auto roster = openRosterToChange(options);
    Json removed = Json::array();
    std::string text;
    for (const auto& person : peopleCalled(*roster, options.words)) {
        removed.push_back(person->uniqueId());
        text += "Removed " + nameAndId(*person) + "\n";
        roster->removeRecord(person);
    }
    save(*roster);
    options.json ? printJson(Json{{"removed", removed}}) : print(text);
    return exitStatus::done;
}
