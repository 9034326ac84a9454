// `roster add`: a new card, from what the command line sets or from an editor.
#include "CardChanges.h"
#include "CardJson.h"
#include "Command.h"
#include "EditAsText.h"
#include "EditableCard.h"

#include "core/ZRPerson.h"

int runAdd(const Options& options)
{
    const auto roster = openRosterToChange(options);
    const auto person = ZRPerson::initWithRoster(roster);
    if (!options.sets.empty()) {
        applyChanges(options, *person);
        save(*roster);
    } else if (!editAsText(*person, emptyCardText(), "say what is in the card with --set")) {
        complain("nothing added");
        return exitStatus::done;
    }
    printCardDone(options, "Added", *person);
    return exitStatus::done;
}
