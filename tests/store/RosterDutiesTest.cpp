// What a roster does beside opening and saving: copies for looking back, the helper, a restore beneath it.
#include "store/RosterWorld.h"

#include "objectstore/PersistentStore.h"
#include "objectstore/StoreCoordinator.h"
#include "platform/files/Files.h"
#include "platform/notify/DistributedNotificationCenter.h"
#include "platform/notify/NotificationCenter.h"
#include "platform/processes/Helper.h"
#include "platform/processes/MessagePort.h"
#include "platform/run/Log.h"
#include "store/ZRHindsightTempFileHelper.h"
#include "store/ZRInitialImports.h"
#include "store/ZRRosterState.h"
#include "store/ZRServices.h"
#include "support/SQL.h"
#include "support/Waiting.h"

#include <gmock/gmock.h>

#include <cerrno>

namespace test {

namespace {

using testing::HasSubstr;
using Copier = ZRHindsightTempFileHelper;

std::string firstNames(ZRRoster& roster)
{
    std::string names;
    for (const auto& one : roster.people())
        names += std::string(one->valueForProperty(kZRFirstNameProperty).asText()) + " ";
    return names;
}

/// Copies the open store of this process, whose last save stands in its write-ahead log, and looks into the
/// copy.
const Role copiesOpenStore("copy the open store", [](const Words&) {
    const auto roster = openShared();
    person(roster, {{kZRFirstNameProperty, "Ana"}});
    roster->save();
    const auto copy = Copier::temporaryDatabaseUrlByCopyingDatabaseAtPath(roster->rosterDatabaseFile());
    if (!copy)
        return copy.error().text;
    const auto other = ZRRoster::rosterWithDatabaseDirectory(fs::path(*copy).parent_path(), false);
    return *copy + "|" + firstNames(*other);
});

const Role opensInert("open inert", [](const Words&) {
    ZRRoster::setIsInert(true);
    const auto roster = openShared();
    return (roster->isMemoryBacked() ? "in memory: " : "on file: ") + ZRRoster::openingReport();
});

/// The files are put back from a backup under a running process, which is told so.
const Role isReverted("revert", [](const Words& words) {
    const auto roster = openShared();
    person(roster, {{kZRFirstNameProperty, "Unsaved"}});
    for (const char* companion : {"", "-wal", "-shm"})
        fs::remove(roster->rosterDatabaseFile() + companion);
    fs::copy_file(words.at(0), roster->rosterDatabaseFile());
    const auto tell = [](const Ref<ZRRoster>& whom) {
        platform::NotificationCenter::shared().post(
            {"ZRPrivateDidRevertFromBackupAndNowShouldResetAndUnlockContext",
                Ref<const platform::Object>(whom.get()), Value()});
    };
    tell(ZRRoster::emptyMemoryBackedRoster());
    // Asked without a look at the file: that would find it replaced, and start over by itself.
    const bool isKept = roster->hasUnsavedChanges();
    locked(*roster, ZRAccess::write, [&]() ZR_NTS { tell(roster); });
    const std::string after = firstNames(*roster);
    person(roster, {{kZRFirstNameProperty, "After"}});
    return (isKept ? "kept | " : "lost | ") + after + "| " + (roster->save() ? "saved" : "not saved");
});

/// Opens the store of mail recents, saves one, and opens it again.
const Role keepsRecents("keep mail recents", [](const Words&) {
    const auto roster = openShared();
    const std::string path = roster->mailRecentsObjectStoreDatabaseFile();
    std::string answer;
    for (const char* email : {"ana@example.org", "bo@example.org"}) {
        const auto opening =
            nts_managedObjectContextWithModel(mailRecentsModel(), path, ZRStoreDataType::mailRecents, 0.02F);
        auto* const coordinator = opening.context->coordinator().get();
        const auto known =
            opening.context->zrObjectsForPredicate(nullptr, kZRObjectStoreMailRecentEntityName);
        answer += std::to_string(known.size()) + (opening.loadFailure ? " new " : " ")
            + (opening.context->isMemoryBacked() ? "in memory " : "on file ")
            + textOf((*coordinator->metadata(coordinator->firstStore()))["ZRDatabaseVersion"]) + "; ";
        const auto recent = opening.context->insertObjectOfEntity(kZRObjectStoreMailRecentEntityName);
        recent->setValueForKey("email", email);
        if (!opening.context->save())
            answer += "not saved ";
        nts_closeStore(path);
    }
    return answer;
});

const Role hearsOfPicture("hear of a picture", [](const Words&) {
    constexpr char name[] = "org.quillon.UserPictureDidChangeNotification";
    const auto center = platform::makeLocalDistributedNotificationCenter();
    platform::DistributedNotificationCenter::install(center);
    const auto roster = openShared();
    Heard heard;
    const auto token = platform::NotificationCenter::shared().subscribe(
        name, roster.get(), [&](const platform::Notification& notice) { heard.add(notice.name); });
    center->post({name, std::nullopt, Value()});
    return std::string(heard.waitFor(1) ? "heard" : "not heard");
});

std::size_t copiesInTemporary()
{
    std::size_t found = 0;
    for (const auto& entry : fs::directory_iterator(fs::temp_directory_path()))
        found += entry.path().string().find("hindsight") != std::string::npos;
    return found;
}

class HelperCalls : public testing::Test {
protected:
    ~HelperCalls() override { program_invocation_short_name = _name; }
    static void playManager() { program_invocation_short_name = const_cast<char*>("RosterManager"); }

private:
    char* const _name = program_invocation_short_name;
};

} // namespace

TEST(Hindsight, CopiesWhatTheLogHoldsAndCleansUpAtTheEnd)
{
    const Home home;
    const auto outcome = home.play("copy the open store");
    const auto bar = std::min(outcome.answer.find('|'), outcome.answer.size());
    const fs::path copy = outcome.answer.substr(0, bar);
    EXPECT_EQ(outcome.answer.substr(bar), "|Ana ") << outcome.log;
    EXPECT_EQ(copy.filename(), "Roster-v22.zrosdb");
    EXPECT_FALSE(fs::exists(copy.parent_path()));
}

TEST(Hindsight, LeavesNothingBehindWhenThereIsNothingToCopy)
{
    const auto before = copiesInTemporary();
    EXPECT_FALSE(Copier::temporaryDatabaseUrlByCopyingDatabaseAtPath("/no/such/file"));
    EXPECT_EQ(copiesInTemporary(), before);
}

// The schema text lacks what the file has: completing it fails, in the copy too.
TEST(Hindsight, LeavesAStoreThatCannotBeCompletedAsItIs)
{
    const Home home;
    ASSERT_EQ(home.play("copy the open store").status, 0);
    runSQL(home.storeFile(), "UPDATE store_meta SET value = replace(value, 'table country' || char(10), '')");
    runSQL(home.storeFile(), "PRAGMA journal_mode = DELETE");
    const auto size = fs::file_size(home.storeFile());
    const auto before = copiesInTemporary();
    const auto outcome = home.play("open inert");
    EXPECT_THAT(outcome.answer, testing::StartsWith("in memory: ")) << outcome.log;
    EXPECT_THAT(outcome.answer, HasSubstr("cannot be completed"));
    EXPECT_EQ(copiesInTemporary(), before);
    EXPECT_EQ(fs::file_size(home.storeFile()), size);
}

TEST(RosterDuties, TakeInFilesThatWerePutBack)
{
    const Home backup, home;
    const auto other = (backup.path() / "store").string();
    ASSERT_EQ(backup.play("copy the open store").status, 0);
    runSQL(backup.storeFile(), "PRAGMA journal_mode = DELETE");
    fs::copy_file(backup.storeFile(), other);
    const auto outcome = home.play("revert", {other});
    EXPECT_EQ(outcome.answer, "kept | Ana | saved") << outcome.log;
}

TEST(RosterDuties, MarkAConvertedStoreOnce)
{
    const auto roster = ZRRoster::emptyMemoryBackedRoster();
    const auto metadata = [&] {
        return *roster->storeCoordinator()->metadata(roster->storeCoordinator()->firstStore());
    };
    const auto before = metadata().asDictionary()->count();
    roster->markZRStoreImportCompleted();
    roster->markZRStoreImportCompleted();
    EXPECT_EQ(metadata()["ZRObjectStoreImportCompleted"], Value(1));
    EXPECT_EQ(metadata().asDictionary()->count(), before + 1);
}

TEST(RosterDuties, WriteAProfileWhenAskedTo)
{
    const Home home;
    home.setPreferences(Value::dictionary({{"ZREnableSampling", true}}));
    ASSERT_EQ(home.play("copy the open store").status, 0);
    std::vector<fs::path> profiles;
    for (const auto& entry : fs::recursive_directory_iterator(home.path()))
        if (entry.path().extension() == ".profile")
            profiles.push_back(entry.path());
    ASSERT_EQ(profiles.size(), 1U);
    const auto text = platform::readFile(profiles.front());
    EXPECT_THAT(*text, testing::MatchesRegex("   calls     held s  longest s   waited s  place\n( .*\n)+"));
    EXPECT_EQ(fs::status(profiles.front()).permissions(), fs::perms::owner_read | fs::perms::owner_write);
}

TEST(RosterDuties, KeepMailRecentsOutOfTheFileWhenAskedTo)
{
    // 0.02 as a float of 32 bits.
    constexpr std::string_view version = "real 0x1.47ae14p-6";
    for (const bool inMemory : {false, true}) {
        const Home home;
        home.setPreferences(Value::dictionary({{"ZRUseInMemorySQLiteStore", inMemory}}));
        const auto outcome = home.play("keep mail recents");
        EXPECT_THAT(outcome.answer, testing::StartsWith(inMemory ? "0 new in memory " : "0 new on file "))
            << outcome.log;
        EXPECT_THAT(outcome.answer, HasSubstr(inMemory ? "; 0 in memory " : "; 1 on file "));
        EXPECT_THAT(outcome.answer, HasSubstr(std::string(version)));
    }
}

TEST(RosterDuties, PassOnThatTheUsersPictureHasChanged)
{
    EXPECT_EQ(Home().play("hear of a picture").answer, "heard");
}

TEST(RosterDuties, RestoreFromMetadataOnceForEachRequest)
{
    const auto roster = ZRRoster::emptyMemoryBackedRoster();
    int restored = 0;
    ZRServices::registered().restoreFromMetaData = [&](ZRRoster&) { return ++restored > 0; };
    nts_RestoreFromMetaDataIfNeeded(*roster);
    EXPECT_EQ(restored, 0);
    roster->nts_SetNeedsToRestoreRosterFromMetaData(true);
    nts_RestoreFromMetaDataIfNeeded(*roster);
    nts_RestoreFromMetaDataIfNeeded(*roster);
    EXPECT_EQ(restored, 1);
    ZRServices::registered().restoreFromMetaData = nullptr;
}

TEST_F(HelperCalls, SendOneMessageAndNoneFromTheManager)
{
    Heard heard;
    auto port = platform::MessagePort::serve(
        platform::kHelperPort, [&](std::uint32_t message, std::string_view data) {
            heard.add(std::to_string(message) + std::string(data));
            return std::string();
        });
    ASSERT_TRUE(port) << port.error().text;
    ZRRoster::_launchOrWaitForDaemon();
    EXPECT_TRUE(heard.waitFor(1));
    playManager();
    ZRRoster::_launchOrWaitForDaemon();
    (*port)->invalidate();
    EXPECT_THAT(heard.texts(), testing::ElementsAre("1"));
}

TEST_F(HelperCalls, AreLoggedWhenNobodyHoldsThePort)
{
    const platform::LogCapture log;
    ZRRoster::_launchOrWaitForDaemon();
    EXPECT_TRUE(eventually(
        [&] { return log.contains("Error, could not create MachMessagePort for org.quillon.Roster.zrd"); }));
}

} // namespace test
