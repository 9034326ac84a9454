// What a notice of another process does to a roster: what is refreshed, what stays, and who hears of it.
#include "store/NoticeWorld.h"

#include "core/ZRLog.h"
#include "objectstore/StoreContext.h"
#include "platform/processes/NoticeLog.h"
#include "platform/run/Log.h"
#include "store/ZRChangeNotices.h"
#include "store/ZRManagedObjectContext.h"

#include <gmock/gmock.h>

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

constexpr char kNoSuchCase[] = "no such case";

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

/// Answers what is wrong with each of the cases; empty for nothing.
const Role hears("hear a notice", [](const Words& words) {
    NoticeWorld world;
    const auto all = cases(world);
    const std::size_t index = std::stoul(words.at(0));
    if (index >= all.size())
        return std::string(kNoSuchCase);
    const Case& given = all[index];
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
    const std::string found = (nicknameOf(card) == "Fresh" ? "fresh, " : "old, ") + heard;
    return found == given.expected ? "" : given.what + (": " + found) + " and not " + given.expected;
});

TEST(ExternalChanges, AreTakenInAndPassedOnAsTheNoticeSays)
{
    for (int i = 0;; ++i) {
        const Home home;
        const auto outcome = home.play("hear a notice", {std::to_string(i)});
        if (outcome.answer == kNoSuchCase)
            break;
        ASSERT_EQ(outcome.status, 0) << i << "\n" << outcome.log;
        EXPECT_EQ(outcome.answer, "") << outcome.log;
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

const Acts changing("meet what others changed",
    {
        {"unsaved edits of the same card",
            [](NoticeWorld& world) {
                CountingUndo undo;
                world.roster->managedObjectContext()->setUndoManager(&undo);
                world.ana->setValue("Mine", kZRLastNameProperty);
                changeElsewhere(world.ana, "Theirs");
                const Value updated = Value::array({Value(world.ana->uniqueId())});
                world.center->deliver({kZRDatabaseChangedNotification, std::nullopt,
                    notice({{std::string(zr::kZRUpdatedRecords), updated}})});
                world.roster->managedObjectContext()->setUndoManager(nullptr);
                const std::string text = world.ana->compositeName() + " " + nicknameOf(world.ana)
                    + (world.roster->hasUnsavedChanges() ? ", unsaved" : "")
                    + (undo.times > 0 && undo.depth == 0 ? ", undo was off" : "");
                return text + ", " + (world.roster->save() ? "saved" : "not saved");
            },
            "Ana Mine Theirs, unsaved, undo was off, saved"},
        {"the handle of a card that is gone",
            [](NoticeWorld& world) {
                changeElsewhere(world.ana, "remove");
                const std::string id = world.ana->uniqueId();
                world.center->deliver({kZRDatabaseChangedNotification, std::nullopt,
                    notice({{std::string(zr::kZRDeletedRecords), Value::array({Value(id)})}})});
                return textOf(world.ana->valueForProperty(kZRFirstNameProperty)) + ", "
                    + (world.roster->recordForUniqueId(id) ? "found" : "not found");
            },
            "absent, not found"},
        {"missed notices",
            [](NoticeWorld& world) {
                static_cast<void>(nicknameOf(world.ana));
                changeElsewhere(world.ana, "Fresh");
                __ZRLogNotifications = true;
                const platform::LogCapture log;
                world.center->deliver({platform::kNoticesMissed, std::nullopt, {}});
                return nicknameOf(world.ana) + ", " + world.heard()
                    + (log.contains("posting ZRDatabaseChangedExternallyNotification: ") ? ", logged" : "");
            },
            "Fresh, external public reload; external private reload, logged"},
        {"its own posts",
            [](NoticeWorld& world) {
                world.ana->setValue("a", kZRNicknameProperty);
                world.roster->save();
                const auto posted = world.center->posted;
                for (const auto& one : posted)
                    world.center->deliver(one);
                return world.heard();
            },
            "public ~Ana; private ~Ana"},
        // Somebody else waits for a restore: this process itself, or users of another directory.
        {"changes while somebody else waits",
            [](NoticeWorld& world) {
                std::string heard;
                const Value self{std::int64_t{getpid()}};
                for (const auto& [key, value] : {std::pair<std::string, Value>(zr::kZRSenderProcessID, self),
                         {kZRDatabaseDirectoryKey, "/else/where"}}) {
                    world.center->deliver(
                        {kZRWillRestoreFromMetadataPriv, std::nullopt, notice({{key, value}})});
                    world.center->deliver(
                        {kZRDatabaseChangedNotification, std::nullopt, notice({{kZRReloadRecords, true}})});
                    heard += world.heard() + "; ";
                }
                return heard;
            },
            "external public reload; external public reload; "},
    });

TEST(ExternalChanges, AreMetAsPrescribed) { changing.play(); }

} // namespace

} // namespace test
