// How a roster is read for a snapshot: records by their handles, choices from the rows of the store.
#include "store/RosterSnapshot.h"

#include "core/ZRGroup.h"
#include "core/ZRInfo.h"
#include "core/ZRLastImportGroup.h"
#include "core/ZRPerson.h"
#include "search/ZRSmartGroup.h"
#include "store/ZRManagedObjectContext.h"
#include "store/ZRModelSlots.h"
#include "store/ZROSRecord.h"

#include <fmt/ranges.h>

#include <algorithm>
#include <set>
#include <sstream>

namespace test {

namespace {

using Lines = std::set<std::string>;

Lines idsOf(const ZRRecordList& records)
{
    Lines ids;
    for (const auto& record : records)
        ids.insert(record->uniqueId());
    return ids;
}

Lines idsOf(const Value& ids)
{
    Lines lines;
    for (const Value& id : ids.asArray())
        lines.emplace(id.asText());
    return lines;
}

std::string propertiesOf(const ZRRecord& record)
{
    std::string text;
    for (const auto& property : ZRRecord::propertiesWithRoster(record.recordClass(), record.roster().get()))
        if (property != zr::kZRModificationDateProperty && property != zr::kZRSmartGroupModifiedUIDsProperty)
            if (const Value value = record.valueForProperty(property); !value.isNothing())
                text += property + ": " + textOf(value) + "\n";
    return text;
}

std::string contentsOf(const ZRGroup& group)
{
    const Value dictionary = group.dictionaryRepresentation();
    return fmt::format("members: {}\nsubgroups: {}\n",
        fmt::join(idsOf(dictionary[zr::kZRMembersDictionaryKey]), " "),
        fmt::join(idsOf(dictionary[zr::kZRSubgroupsDictionaryKey]), " "));
}

std::string textOfRecord(const ZRRecord& record)
{
    std::string text = fmt::format("{}\n{}in: {}\n", record.recordClass().name, propertiesOf(record),
        fmt::join(idsOf(record.parentGroups()), " "));
    if (const auto* person = dynamic_cast<const ZRPerson*>(&record))
        text += "picture: " + textOf(person->imageData()) + "\n";
    else if (const auto* group = dynamic_cast<const ZRGroup*>(&record))
        text += contentsOf(*group);
    return text;
}

/// Which entry of whom a group uses, by the group's id.
std::map<std::string, Lines> choicesIn(ZRRoster& roster) ZR_NTS
{
    std::map<std::string, Lines> choices;
    const objectstore::StoreFetch fetch(distributionListConfigSlots().entity);
    const auto found = roster.managedObjectContext()->runFetch(fetch);
    for (const auto& choice : *found) {
        const std::string property(choice->text(choice->slot("propertyName")));
        const auto end = [&](std::string_view key) {
            const auto object = choice->related(choice->slot(key));
            return object ? std::string(object->text(object->slot("uniqueId"))) : std::string("nobody");
        };
        const auto* entrySlot = ZROSGroup::entrySlotOfDistributionListConfig(property);
        const auto entry = entrySlot ? choice->related(*entrySlot) : nullptr;
        choices[end("group")].insert(fmt::format("uses {} {} of {}", property,
            entry ? std::string(entry->text(entry->slot("uniqueId"))) : "nothing", end("contact")));
    }
    return choices;
}

ZRRecordList allRecords(ZRRoster& roster) ZR_NTS
{
    ZRRecordList all;
    for (const auto* recordClass : {&ZRPerson::recordClassDescription,
             &ZRSubscribedPerson::recordClassDescription, &ZRGroup::recordClassDescription,
             &ZRSubscribedGroup::recordClassDescription, &ZRSmartGroup::recordClassDescription})
        for (auto& record : roster.nts_AllRecordsForClass(*recordClass))
            all.push_back(std::move(record));
    return all;
}

/// Those who are in the roster: others leave the group when a notice of their deletion comes.
Lines lastImportIn(ZRRoster& roster)
{
    Lines ids = idsOf(ZRLastImportGroup::lastImportGroup()->members());
    std::erase_if(ids, [&](const auto& id) { return !roster.recordForUniqueId(id); });
    return ids;
}

Lines linesOf(const std::string& text)
{
    Lines lines;
    std::istringstream stream(text);
    for (std::string line; std::getline(stream, line);)
        lines.insert(line);
    return lines;
}

/// The lines of `a` that are not in `b`.
std::string linesOnlyIn(const std::string& a, const std::string& b, std::string_view mark)
{
    std::string text;
    const Lines others = linesOf(b);
    for (const auto& line : linesOf(a))
        if (!others.contains(line))
            text += std::string(mark) + line + "\n";
    return text;
}

} // namespace

Snapshot snapshotOf(const Ref<ZRRoster>& roster)
{
    Snapshot snapshot;
    locked(*roster, ZRAccess::read, [&]() ZR_NTS {
        const ZRRecordList records = allRecords(*roster);
        roster->prefetchDataForRecords(records);
        for (const auto& record : records) {
            // Two records of one id would hide each other.
            auto& text = snapshot[record->uniqueId()];
            text += textOfRecord(*record);
        }
        for (const auto& [group, choices] : choicesIn(*roster))
            snapshot[group] += fmt::format("{}\n", fmt::join(choices, "\n"));
    });
    const auto me = roster->me();
    snapshot["me"] = me ? me->uniqueId() : "nobody";
    if (roster->isSharedInstance())
        snapshot["last import"] = fmt::format("{}", fmt::join(lastImportIn(*roster), "\n"));
    return snapshot;
}

std::string differenceOf(const Snapshot& expected, const Snapshot& found)
{
    std::string difference;
    for (const auto& [id, text] : expected)
        if (const auto at = found.find(id); at == found.end())
            difference += id + " is missing\n";
        else if (at->second != text)
            difference += id + ":\n" + linesOnlyIn(text, at->second, "- ")
                + linesOnlyIn(at->second, text, "+ ") + "(order of lines may differ)\n";
    for (const auto& [id, text] : found)
        if (!expected.contains(id))
            difference += id + " is new:\n" + text;
    return difference;
}

} // namespace test
