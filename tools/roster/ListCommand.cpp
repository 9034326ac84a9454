// `roster list`: the people, or those of a group, in the order of their names.
#include "Command.h"
#include "Listing.h"
#include "Lookup.h"

#include "core/ZRGroup.h"

int runList(const Options& options)
{
    const auto roster = openRoster(options);
    ZRRecordList people;
    if (options.group.empty()) {
        people = roster->sortedPeople(orderOf(options), options.limit);
    } else {
        people = groupNamed(*roster, options.group)->members();
        arrange(options, *roster, people);
    }
    printRecords(options, *roster, people);
    return exitStatus::done;
}
