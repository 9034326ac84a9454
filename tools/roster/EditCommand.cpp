// `roster edit`: changes of one card, from the command line or from an editor.
#include "CardChanges.h"
#include "CardJson.h"
#include "Command.h"
#include "EditAsText.h"
#include "EditableCard.h"
#include "Lookup.h"

#include "core/ZRPerson.h"

namespace {

bool change(const Options& options, ZRPerson& person)
{
    if (options.sets.empty() && options.unsets.empty())
        return editAsText(person, editableText(person), "say what to change with --set and --unset");
    applyChanges(options, person);
    if (!person.nts_Roster()->hasUnsavedChanges())
        return false;
    save(*person.nts_Roster());
    return true;
}

} // namespace

int runEdit(const Options& options)
{
    const auto roster = openRosterToChange(options);
    const auto person = personNamed(*roster, joined(options.words));
    requireWritable(*person);
    printCardDone(options, change(options, *person) ? "Changed" : "Nothing changed in", *person);
    return exitStatus::done;
}
