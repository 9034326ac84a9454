// How cards are merged, and a merger is applied, on whatever the roster holds.
#include "merge/MergeKinds.h"

#include "merge/ZRMergePeopleCommand.h"
#include "merge/ZRNewMerger.h"

namespace test {

namespace {

bool mergePeople(CommandDriver& driver)
{
    return ZRMergePeopleCommand::initWithGroup(driver.someGroup(), driver.somePeople(3), driver.roster())
        ->performWithActionName("MERGE");
}

/// A card that is there comes in again, a new one comes along, and one makes way for another.
bool applyMerger(CommandDriver& driver)
{
    const auto merger = ZRNewMerger::initWithGroup(driver.maybe(60) ? driver.someGroup() : nullptr);
    const auto target = merger->targetRoster();
    const auto incoming = ZRRoster::emptyMemoryBackedRoster();
    declareProperties(incoming);
    const auto inTarget = [&](const Ref<ZRRecord>& record) {
        return platform::refCast<ZRPerson>(target->recordForUniqueId(record->uniqueId()));
    };
    const ZRRecordList people = driver.somePeople(3);
    if (people.empty())
        return false;
    const auto updated = inTarget(people.front());
    merger->updateCard(updated, person(incoming, driver.someProperties()));
    if (people.size() > 1) {
        const auto dropped = inTarget(people.back());
        merger->updateCard(updated, dropped);
        for (const auto& group : dropped->parentGroups())
            merger->addMember(updated, platform::refCast<ZRGroup>(group));
        merger->deletePerson(dropped);
    }
    const auto added = person(incoming, driver.someProperties());
    added->setImageData(Value::data("imported " + driver.word()));
    if (driver.maybe(70))
        merger->addPerson(added);
    return merger->applyChanges();
}

} // namespace

CommandDriver::Kinds allKindsWithMerges()
{
    auto kinds = allCommandKinds();
    for (int times = 0; times < 6; ++times) {
        kinds.emplace_back("merge people", mergePeople);
        kinds.emplace_back("apply a merger", applyMerger);
    }
    return kinds;
}

} // namespace test
