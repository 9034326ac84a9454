// Merged cards and imports among all other commands, walked up and down.
#include "commands/ApplicationHost.h"
#include "commands/CommandDriver.h"
#include "merge/ZRMergePeopleCommand.h"
#include "merge/ZRNewMerger.h"

#include <gtest/gtest.h>

namespace test {

namespace {

/// Lets the last import of before be remembered: that it is forgotten is no part of the next one's step.
class Forgetless final : public ApplicationHost {
public:
    void clearLastImportGroup() override { }
};

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

const Role walks("walk with mergers", [](const Words& words) {
    ApplicationHost::install(std::make_shared<Forgetless>());
    CommandDriver driver(openShared(), static_cast<std::uint32_t>(std::stoul(words.at(0))));
    populate(driver);
    auto kinds = allCommandKinds();
    for (int times = 0; times < 6; ++times) {
        kinds.emplace_back("merge people", mergePeople);
        kinds.emplace_back("apply a merger", applyMerger);
    }
    std::string wrong = driver.run(kinds, std::stoi(words.at(1)));
    ApplicationHost::install(nullptr);
    return wrong;
});

} // namespace

TEST(RandomMerges, GoBackAndForthExactly)
{
    const Home home;
    const Outcome outcome = home.play("walk with mergers", {"1", "200"});
    EXPECT_EQ(outcome.status, 0) << outcome.log;
    EXPECT_EQ(outcome.answer, "");
}

} // namespace test
