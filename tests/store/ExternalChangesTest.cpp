// What a notice of another process does to a roster: what is refreshed, what stays, and who hears of it.
#include "store/NoticeWorld.h"

#include "core/ZRInfo.h"
#include "core/ZRLog.h"
#include "objectstore/StoreContext.h"
#include "platform/processes/NoticeLog.h"
#include "platform/run/Log.h"
#include "store/ZRChangeNotices.h"
#include "store/ZRManagedObjectContext.h"

#include <gmock/gmock.h>

#include <sstream>
#include <stdexcept>

#include <unistd.h>

namespace test {

namespace {

using Entries = std::vector<std::pair<std::string, Value>>;

/// Another process changes the card of that id: "edit" sets a nickname, "remove" deletes it.
const Role changes("change a card", [](const Words& words) {
    const auto roster = openShared();
    const auto card = roster->recordForUniqueId(words.at(0));
    if (words.at(1) == "remove")
        roster->removeRecord(card);
    else
        card->setValue(Value(words.at(1)), kZRNicknameProperty);
    return std::string(roster->save() ? "saved" : "not saved");
});

void changeElsewhere(const Ref<ZRPerson>& card, const std::string& what)
{
    if (play("change a card", {card->uniqueId(), what}).answer != "saved")
        throw std::runtime_error("the other process did not save");
}

std::string nicknameOf(const Ref<ZRPerson>& card)
{
    return std::string(card->valueForProperty(kZRNicknameProperty).asText());
}

/// What another process of this user tells of the default roster, with `entries` in place of or beside it.
Value notice(const Entries& entries)
{
    Entries all{{std::string(zr::kZRSenderProcessID), Value(std::int64_t{1})},
        {std::string(zr::kZRSenderProcessName), Value("other")},
        {kZRUserUIDKey, Value(std::int64_t{geteuid()})}};
    for (const auto& [key, value] : entries) {
        std::erase_if(all, [&name = key](const auto& entry) { return entry.first == name; });
        all.emplace_back(key, value);
    }
    return Value::dictionary({all.begin(), all.end()});
}

/// A notice, and what comes of it.
struct Case {
    const char* what;
    Entries entries;
    /// "fresh" or "old": whether what the other process changed is seen; then what this process hears.
    std::string expected;
    /// Another process has announced a restore before.
    bool isWaiting = false;
    const char* name = kZRDatabaseChangedNotification;
};

std::vector<Case> cases(const NoticeWorld& world)
{
    const Value ids = Value::array({Value(world.ana->uniqueId())});
    const std::pair<std::string, Value> updated{zr::kZRUpdatedRecords, ids},
        backup{zr::kZRRestoreFromBackup, true}, metadata{zr::kZRRestoreFromMetadata, true};
    const auto from = [](std::int64_t process) {
        return std::pair<std::string, Value>(zr::kZRSenderProcessID, process);
    };
    const auto of = [](const std::string& directory) {
        return std::pair<std::string, Value>(kZRDatabaseDirectoryKey, directory);
    };
    const std::string heardAll = "fresh, external public ~Ana", reset = "will reset; did reset";
    return {
        {"updated", {updated}, heardAll},
        {"updated, private", {updated}, "fresh, external private ~Ana", false,
            kZRDatabaseChangedNotificationPriv},
        {"inserted", {{std::string(zr::kZRInsertedRecords), ids}}, "fresh, external public +Ana"},
        {"deleted", {{std::string(zr::kZRDeletedRecords), ids}}, "fresh, external public -Ana"},
        {"too many", {{kZRReloadRecords, true}}, "fresh, external public reload"},
        {"this process", {updated, from(getpid())}, "old, nothing"},
        {"another user", {updated, {kZRUserUIDKey, std::int64_t{geteuid()} + 1}}, "old, nothing"},
        {"this directory, named", {updated, of(world.roster->databaseDirectory())}, heardAll},
        {"another directory", {updated, of("/else/where")}, "old, nothing"},
        {"a source's directory", {updated, of("/else/Sources/1")}, heardAll},
        {"a source's directory, own process", {updated, of("/else/Sources/1"), from(getpid())},
            "old, nothing"},
        {"no records", {}, "old, nothing"},
        {"no records in a list", {{std::string(zr::kZRUpdatedRecords), Value::array({})}}, "old, nothing"},
        {"restored from backup", {backup}, "fresh, " + reset + "; external public"},
        {"restored from metadata", {metadata}, "fresh, " + reset + "; external public"},
        {"restored, with records", {backup, updated}, heardAll},
        {"waiting", {updated}, "old, nothing", true},
        {"waiting, private", {updated}, "old, nothing", true, kZRDatabaseChangedNotificationPriv},
        {"waiting, restored with records", {metadata, updated}, "fresh, " + reset + "; external public ~Ana",
            true},
        {"waiting, restored", {metadata}, "fresh, " + reset + "; external public", true},
    };
}

const Role hears("hear a notice", [](const Words& words) {
    NoticeWorld world;
    const Case given = cases(world).at(std::stoul(words.at(0)));
    const std::string id = world.ana->uniqueId();
    static_cast<void>(nicknameOf(world.ana));
    changeElsewhere(world.ana, "Fresh");
    if (given.isWaiting)
        world.center->deliver({kZRWillRestoreFromMetadataPriv, std::nullopt, notice({})});
    world.center->deliver({given.name, std::nullopt, notice(given.entries)});
    const std::string heard = world.heard();
    // After a reset the old handle stands for nothing.
    const bool wasReset = heard.find("did reset") != std::string::npos;
    const auto card = wasReset ? platform::refCast<ZRPerson>(world.roster->recordForUniqueId(id)) : world.ana;
    return std::string(nicknameOf(card) == "Fresh" ? "fresh, " : "old, ") + heard + "\n" + given.expected
        + "\n" + given.what;
});

const Role counts("count the notices", [](const Words&) {
    NoticeWorld world;
    return std::to_string(cases(world).size());
});

TEST(ExternalChanges, AreTakenInAndPassedOnAsTheNoticeSays)
{
    const Home home;
    const int count = std::stoi(home.play("count the notices").answer);
    for (int i = 0; i < count; ++i) {
        const Home fresh;
        const auto outcome = fresh.play("hear a notice", {std::to_string(i)});
        std::istringstream lines(outcome.answer);
        std::string found, expected, what;
        EXPECT_TRUE(std::getline(lines, found) && std::getline(lines, expected) && std::getline(lines, what))
            << i << "\n"
            << outcome.log;
        EXPECT_EQ(found, expected) << what << "\n" << outcome.log;
    }
}

/// Counts how often it was switched off, and looks that it is on again afterwards.
class CountingUndo final : public objectstore::UndoManager {
public:
    bool isUndoing() const override { return false; }
    bool isRedoing() const override { return false; }
    void disableUndoRegistration() override { ++depth, ++times; }
    void enableUndoRegistration() override { --depth; }
    int depth = 0, times = 0;
};

const Role keeps("keep unsaved edits", [](const Words&) {
    NoticeWorld world;
    CountingUndo undo;
    world.roster->managedObjectContext()->setUndoManager(&undo);
    world.ana->setValue(Value("Mine"), kZRLastNameProperty);
    changeElsewhere(world.ana, "Theirs");
    const Value updated = Value::array({Value(world.ana->uniqueId())});
    world.center->deliver({kZRDatabaseChangedNotification, std::nullopt,
        notice({{std::string(zr::kZRUpdatedRecords), updated}})});
    world.roster->managedObjectContext()->setUndoManager(nullptr);
    const std::string text = world.ana->compositeName() + " " + nicknameOf(world.ana)
        + (world.roster->hasUnsavedChanges() ? ", unsaved" : "")
        + (undo.times > 0 && undo.depth == 0 ? ", undo was off" : "");
    return text + ", " + (world.roster->save() ? "saved" : "not saved");
});

TEST(ExternalChanges, LeaveUnsavedEditsOfTheSameCard)
{
    const Home home;
    EXPECT_EQ(home.play("keep unsaved edits").answer, "Ana Mine Theirs, unsaved, undo was off, saved");
}

const Role loses("lose a card", [](const Words&) {
    NoticeWorld world;
    changeElsewhere(world.ana, "remove");
    const std::string id = world.ana->uniqueId();
    world.center->deliver({kZRDatabaseChangedNotification, std::nullopt,
        notice({{std::string(zr::kZRDeletedRecords), Value::array({Value(id)})}})});
    return textOf(world.ana->valueForProperty(kZRFirstNameProperty)) + ", "
        + (world.roster->recordForUniqueId(id) ? "found" : "not found");
});

TEST(ExternalChanges, LeaveAnEmptyHandleOfWhatIsGone)
{
    const Home home;
    const auto outcome = home.play("lose a card");
    EXPECT_EQ(outcome.answer, "absent, not found") << outcome.log;
}

const Role misses("miss notices", [](const Words&) {
    NoticeWorld world;
    static_cast<void>(nicknameOf(world.ana));
    changeElsewhere(world.ana, "Fresh");
    __ZRLogNotifications = true;
    const platform::LogCapture log;
    world.center->deliver({platform::kNoticesMissed, std::nullopt, {}});
    return nicknameOf(world.ana) + ", " + world.heard()
        + (log.contains("posting ZRDatabaseChangedExternallyNotification: ") ? ", logged" : "");
});

TEST(ExternalChanges, AreLookedForWhenNoticesWereMissed)
{
    const Home home;
    EXPECT_EQ(
        home.play("miss notices").answer, "Fresh, external public reload; external private reload, logged");
}

const Role ownPosts("hear its own posts", [](const Words&) {
    NoticeWorld world;
    world.ana->setValue(Value("a"), kZRNicknameProperty);
    world.roster->save();
    const auto posted = world.center->posted;
    for (const auto& one : posted)
        world.center->deliver(one);
    return world.heard();
});

TEST(ExternalChanges, AreNotWhatTheProcessSavedItself)
{
    const Home home;
    EXPECT_EQ(home.play("hear its own posts").answer, "public ~Ana; private ~Ana");
}

const Role ownWait("announce a restore to itself", [](const Words& words) {
    NoticeWorld world;
    const Value own{std::int64_t{getpid()}}, elsewhere{"/else/where"};
    world.center->deliver({kZRWillRestoreFromMetadataPriv, std::nullopt,
        words.at(0) == "own" ? notice({{std::string(zr::kZRSenderProcessID), own}})
                             : notice({{kZRDatabaseDirectoryKey, elsewhere}})});
    world.center->deliver(
        {kZRDatabaseChangedNotification, std::nullopt, notice({{kZRReloadRecords, Value(true)}})});
    return world.heard();
});

TEST(ExternalChanges, AreHeardThoughSomebodyElseWaitsForARestore)
{
    for (const char* who : {"own", "another directory"}) {
        const Home home;
        EXPECT_EQ(home.play("announce a restore to itself", {who}).answer, "external public reload") << who;
    }
}

} // namespace

} // namespace test
