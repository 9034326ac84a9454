// `roster show` and `roster me`: one card, found by its id or by text in it.
#include "CardJson.h"
#include "Command.h"
#include "Lookup.h"

#include "core/ZRPerson.h"

namespace {

void printCard(const Options& options, ZRRecord& record)
{
    if (options.json)
        printJson(cardJson(record));
    else
        print(cardText(record));
}

} // namespace

int runShow(const Options& options)
{
    const auto roster = openRoster(options);
    printCard(options, *recordNamed(*roster, joined(options.words)));
    return exitStatus::done;
}

int runMe(const Options& options)
{
    const auto roster = openRosterToChange(options);
    if (!options.words.empty()) {
        const auto person = platform::refCast<ZRPerson>(recordNamed(*roster, joined(options.words)));
        if (!person)
            throw Failure(exitStatus::refused, "only a person can be Me");
        roster->setMe(person);
        save(*roster);
    }
    const auto me = roster->me();
    if (!me)
        throw Failure(exitStatus::refused, "no card is Me; choose one with: roster me ID");
    printCard(options, *me);
    return exitStatus::done;
}
