// What a program without windows answers, and what it forgets of the last import.
#include "commands/ApplicationHost.h"

#include "core/ZRLastImportGroup.h"
#include "store/RosterWorld.h"
#include "store/ZRDBCache.h"
#include "store/ZRManagedObjectContext.h"

#include <gtest/gtest.h>

namespace test {

namespace {

const Role forgets("forget the last import", [](const Words&) {
    const auto roster = openShared();
    const auto host = ApplicationHost::shared();
    const auto ana = person(roster, {{kZRPersonFlags, Value(0x80 | 1)}});
    ZRLastImportGroup::lastImportGroup()->addMember(*ana);
    roster->save();
    host->clearLastImportGroup();
    host->setShowsLastImportGroup(true);
    const auto told = [](bool holds) { return std::string(holds ? "yes " : "no "); };
    return told(host->aggregateRoster() == roster)
        + told(host->cardContext() == roster->managedObjectContext())
        + told(host->listsOf(*roster) == roster->dbCache()) + told(host->showsLastImportGroup())
        + std::to_string(ZRLastImportGroup::lastImportGroup()->members().size()) + " "
        + textOf(ana->valueForProperty(kZRPersonFlags));
});

} // namespace

TEST(ApplicationHosts, WorkOnTheSharedRosterByDefault)
{
    const Home home;
    const Outcome outcome = home.play("forget the last import");
    EXPECT_EQ(outcome.answer, "yes yes yes yes 0 whole 1") << outcome.log;
}

TEST(ApplicationHosts, AreReplacedByThatOfTheProgram)
{
    struct Own final : ApplicationHost { };
    const auto own = std::make_shared<Own>();
    const auto former = ApplicationHost::install(own);
    EXPECT_EQ(ApplicationHost::shared(), own);
    EXPECT_EQ(ApplicationHost::install(nullptr), own);
    EXPECT_FALSE(std::dynamic_pointer_cast<Own>(ApplicationHost::shared()));
    EXPECT_TRUE(former);
}

} // namespace test
