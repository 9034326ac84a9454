// How the rosters of a process come to be, what goes into a new one, and how they end or start over.
#include "store/RosterWorld.h"

#include "core/ZRFrameworkBundle.h"
#include "core/ZRInfo.h"
#include "platform/files/Files.h"
#include "platform/files/ZRUserDefaults.h"
#include "platform/notify/NotificationCenter.h"
#include "store/ZRInitialImports.h"
#include "store/ZRManagedObjectContext.h"
#include "store/ZRRecordObjectStoreFactoryImpl.h"
#include "store/ZRServices.h"
#include "store/ZRStoreFile.h"
#include "support/SQL.h"

#include <gmock/gmock.h>

#include <unistd.h>

namespace test {

namespace {

using testing::HasSubstr;

const Role tellsDirectory(
    "tell the directory", [](const Words&) { return openShared()->databaseDirectory(); });

const Role opensNew("open a new roster", [](const Words& words) {
    ZRServices::registered().userRealName = [] { return std::string("Ana Maria Lima"); };
    const auto roster = words.at(0) == "with samples" ? ZRRoster::sharedRoster() : openShared();
    const auto me = roster->me();
    return textOf(ZRUserDefaults::rosterPreferences()->objectForKey("ZRImportTipCards")) + ", "
        + (me ? me->compositeName() : "nobody") + ", " + std::to_string(roster->people().size());
});

const Role addsOne("add one", [](const Words& words) {
    const auto roster = openShared();
    person(roster, {{kZRFirstNameProperty, words.at(0)}});
    const std::string saved = roster->save() ? "saved" : "not saved";
    return saved + ", " + std::string(roster->nts_Info()->valueForProperty("LastSavedVersion").asText());
});

const Role lists("list", [](const Words&) {
    std::string names;
    for (const auto& one : openShared()->sortedPeople(ZRNameOrder::firstName, 0))
        names += static_cast<ZRPerson&>(*one).compositeName() + " ";
    return names;
});

/// The store is replaced under a running process, as a restore does; it resets and goes on.
const Role resets("reset", [](const Words& words) {
    const auto roster = openShared();
    const auto before = person(roster, {{kZRFirstNameProperty, "Unsaved"}});
    std::string notices;
    std::vector<platform::Subscription> subscriptions;
    for (const char* name : {kZRRosterWillResetPriv, kZRRosterDidResetPriv})
        subscriptions.push_back(platform::NotificationCenter::shared().subscribe(name, nullptr,
            [&notices](const platform::Notification& notice) { notices += notice.name + " "; }));
    for (const char* companion : {"", "-wal", "-shm"})
        fs::remove(roster->rosterDatabaseFile() + companion);
    fs::copy_file(words.at(0), roster->rosterDatabaseFile());
    bool isDone = false;
    subscriptions.push_back(platform::NotificationCenter::shared().subscribe(
        kZRRosterDidResetPriv, nullptr, [&isDone](const platform::Notification&) { isDone = true; }));
    roster->resetDatabase();
    for (int i = 0; i < 500 && !isDone; ++i)
        usleep(10000);
    std::string names;
    for (const auto& one : roster->people())
        names += static_cast<ZRPerson&>(*one).compositeName() + " ";
    person(roster, {{kZRFirstNameProperty, "After"}});
    return notices + "| " + names + "| "
        + (before->valueForProperty(kZRFirstNameProperty).isAbsent() ? "gone" : "there") + " | "
        + (roster->save() ? "saved" : "not saved");
});

} // namespace

TEST(Lifecycle, FindsTheDirectoryInThePreferences)
{
    const Home home;
    EXPECT_EQ(home.play("tell the directory").answer, home.rosterDirectory());
    const std::string one = (home.path() / "one").string(), two = (home.path() / "two").string();
    home.setPreferences(Value::dictionary({{"ZRDatabaseDirectory", one}}));
    EXPECT_EQ(home.play("tell the directory").answer, one);
    home.setPreferences(
        Value::dictionary({{"ZRDatabaseDirectory", one}, {"ZRAlternateDataStoreDirectory", two}}));
    EXPECT_EQ(home.play("tell the directory").answer, two);
}

TEST(Lifecycle, PutsSamplesIntoANewRosterUnlessAskedNotTo)
{
    const Home home, other;
    EXPECT_EQ(home.play("open a new roster", {"empty"}).answer, "false, nobody, 0");
    for (const char* time : {"the first time", "the second time, when nothing comes"}) {
        const auto outcome = other.play("open a new roster", {"with samples"});
        EXPECT_EQ(outcome.answer, "true, Ana Maria Lima, 1") << time << outcome.log;
    }
}

TEST(Lifecycle, RebuildsAtEachOpenWhileTheMarkerIsThere)
{
    const Home home;
    EXPECT_EQ(home.play("add one", {"Ana"}).answer, "saved, " + ZRFrameworkBundle().version());
    EXPECT_EQ(home.play("list").answer, "Ana ");
    ASSERT_TRUE(platform::writeFileAtomically((home.rosterDirectory() / ".savefile").string(), ""));
    EXPECT_EQ(home.play("list").answer, "");
    EXPECT_THAT(home.play("add one", {"Bea"}).answer, HasSubstr("saved"));
    EXPECT_EQ(home.play("list").answer, "");
    fs::remove(home.rosterDirectory() / ".savefile");
    EXPECT_THAT(home.play("add one", {"Cid"}).answer, HasSubstr("saved"));
    EXPECT_EQ(home.play("list").answer, "Cid ");
}

TEST(Lifecycle, RemovesWhatOldVersionsLeftAtTheFirstSave)
{
    const Home home;
    ASSERT_EQ(home.play("list").status, 0);
    const std::vector<std::string> stays{"Roster.data", "Roster.data.0", "Roster.data.1", "Roster.data.old"},
        goes{"ZRMailRecent.x", "a.index2", "Roster.data.2", "Roster.data.17"};
    for (const auto* list : {&stays, &goes})
        for (const auto& name : *list)
            ASSERT_TRUE(platform::writeFileAtomically((home.rosterDirectory() / name).string(), "x"));
    home.play("add one", {"Ana"});
    for (const auto& name : stays)
        EXPECT_TRUE(fs::exists(home.rosterDirectory() / name)) << name;
    for (const auto& name : goes)
        EXPECT_FALSE(fs::exists(home.rosterDirectory() / name)) << name;
}

TEST(Lifecycle, StartsOverWhenTheStoreIsReplaced)
{
    const Home home, backup;
    ASSERT_THAT(backup.play("add one", {"Restored"}).answer, HasSubstr("saved"));
    // All of the backup goes into its one file.
    runSQL(backup.storeFile(), "PRAGMA journal_mode = DELETE");
    const auto outcome = home.play("reset", {backup.storeFile()});
    EXPECT_EQ(outcome.answer, "ZRRosterWillResetPriv ZRRosterDidResetPriv | Restored | gone | saved")
        << outcome.log;
    EXPECT_EQ(home.play("list").answer, "After Restored ");
}

TEST(Lifecycle, MovesRecordsWithTheirValuesToARosterElsewhere)
{
    const Home home;
    const auto roster = ZRRoster::emptyMemoryBackedRoster();
    for (const std::size_t count : {1U, 2U}) {
        const auto other = ZRRoster::rosterWithDatabaseDirectory(home.path().string(), false);
        const auto moved =
            person(roster, {{kZRFirstNameProperty, "Moved"}, {kZREmailProperty, multiValue({{"a", "x"}})}});
        const std::string text = textOf(*moved), id = moved->uniqueId();
        ASSERT_TRUE(other->addRecord(moved));
        EXPECT_EQ(moved->roster(), other);
        EXPECT_EQ(moved->uniqueId(), id);
        EXPECT_EQ(textOf(*moved), text);
        EXPECT_TRUE(ZRRecordObjectStoreFactoryImpl::moveRecord(*moved, *other)) << "to its own roster";
        ASSERT_TRUE(other->save());
        EXPECT_EQ(other->people().size(), count);
    }
}

TEST(Lifecycle, JudgesFilesByRulesThatLookOdd)
{
    const uid_t me = geteuid(), other = me + 1;
    const gid_t mine = getegid(), foreign = mine + 1;
    struct Case {
        mode_t mode;
        uid_t owner;
        gid_t group;
        int answer;
    };
    const Case cases[] = {{0600, me, foreign, 0}, {0400, me, foreign, -1}, {0200, me, foreign, -1},
        {0066, me, mine, -1}, {0600, other, foreign, -1}, {0700, other, foreign, 0},
        {0001, other, foreign, 0}, {0060, other, mine, 0}, {0606, other, mine, -1}, {0006, other, foreign, 0},
        {0660, other, foreign, -1}};
    for (const auto& [mode, owner, group, answer] : cases)
        EXPECT_EQ(_checkForReadWriteAccess(mode, owner, group), answer)
            << std::oct << mode << (owner == me ? " mine" : " foreign")
            << (group == mine ? ", my group" : "");
}

TEST(Lifecycle, RefusesARosterMadeByHand)
{
    EXPECT_THAT([] { ZRRoster::init(); },
        testing::ThrowsMessage<std::logic_error>(
            "-[ZRRoster init], there can be only one ZRRoster instance in an application"));
}

TEST(Lifecycle, ReadsTheAnswersOfTheFirstRun)
{
    const Value card = firstRunMeProperties(
        Value::dictionary({{"FirstName", "Hanako"}, {"KanjiFirstName", "花子"}, {"LastName", "Yamada"},
            {"KanjiLastName", ""}, {"Company", "Elm"}, {"ExistingEmailAddress", "h@example.com"},
            {"Email", ""}, {"AreaCode", "217"}, {"LocalPhoneNumber", "555-0100"}, {"StreetAddr1", "1 Elm Rd"},
            {"StreetAddr2", "Room 2"}, {"CountryName", "Japan"}}),
        "jp");
    EXPECT_EQ(card["First"], Value("花子"));
    EXPECT_EQ(card["FirstPhonetic"], Value("Hanako"));
    EXPECT_EQ(card["Last"], Value("Yamada"));
    EXPECT_TRUE(card["LastPhonetic"].isAbsent());
    EXPECT_EQ(card["Email"].as<ZRMultiValue>()->_allValues(), (std::vector<Value>{"h@example.com"}));
    EXPECT_EQ(card["Phone"].as<ZRMultiValue>()->valueAtIndex(0), Value("217 555-0100"));
    EXPECT_EQ(card["Address"].as<ZRMultiValue>()->valueAtIndex(0),
        Value::dictionary({{"Street", "1 Elm Rd\nRoom 2"}, {"Country", "Japan"}, {"CountryCode", "jp"}}));
    EXPECT_TRUE(card["AIMInstant"].isAbsent());
}

TEST(Lifecycle, MakesAndForgetsTheCardOfTheUser)
{
    const auto roster = ZRRoster::emptyMemoryBackedRoster();
    EXPECT_EQ(roster->me(), nullptr);
    const auto first = person(roster, {{kZRFirstNameProperty, "Ana"}}),
               second = person(roster, {{kZRFirstNameProperty, "Bea"}});
    ASSERT_TRUE(roster->save());
    const auto modification = [](const Ref<ZRPerson>& one) {
        return one->zrosValueForKey("modificationDate");
    };
    for (const auto& one : {first, second})
        one->zrosSetValue(Value(), "modificationDate");
    ZRUserDefaults::rosterPreferences()->setObject(Value::array({"Note"}), "ZRPrivateVCardFields");

    roster->setMe(first);
    EXPECT_EQ(roster->me(), first);
    EXPECT_EQ(roster->nts_Info()->valueForProperty("Me"), Value(first->uniqueId()));
    EXPECT_TRUE(modification(first).isDate());
    EXPECT_TRUE(ZRUserDefaults::rosterPreferences()->objectForKey("ZRPrivateVCardFields").isAbsent());
    ASSERT_TRUE(roster->save());
    for (const auto& one : {first, second})
        one->zrosSetValue(Value(), "modificationDate");
    roster->setMe(nullptr);
    EXPECT_EQ(roster->me(), nullptr);
    EXPECT_TRUE(modification(first).isDate()) << "who was Me counts as changed";
    EXPECT_TRUE(modification(second).isAbsent());

    roster->setMe(second);
    roster->removeRecord(second);
    EXPECT_EQ(roster->me(), nullptr);
    EXPECT_THROW(
        roster->setMe(ZRRecord::initWithUniqueId(ZRInfo::recordClassDescription, std::nullopt, roster)),
        std::exception);
}

} // namespace test
