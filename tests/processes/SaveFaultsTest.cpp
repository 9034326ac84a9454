// What is on the disk, and who was told, when any one call of a roster's save fails?
#include "processes/Crowd.h"

#include "platform/notify/DistributedNotificationCenter.h"
#include "store/ZRModelTable.h"
#include "store/ZRRosterState.h"
#include "store/ZRServices.h"
#include "support/FaultyVfs.h"

#include <gtest/gtest.h>

#include <iostream>

namespace {

using namespace test;
using Fault = FaultyVfs::Fault;
using Operation = FaultyVfs::Operation;

/// There are many writes, of which the usual run takes every so many; ROSTER_FAULT_STRIDE=1 takes each.
#ifdef SLOW_BUILD
constexpr int kUsualStride = 3;
#else
constexpr int kUsualStride = 1;
#endif
const int kStride = chosenSize("ROSTER_FAULT_STRIDE", kUsualStride);

const Fault kFaults[]{
    {"WriteFails", Operation::write, SQLITE_IOERR_WRITE, false},
    {"DiskIsFull", Operation::write, SQLITE_FULL, false},
    {"SyncFails", Operation::sync, SQLITE_IOERR_FSYNC, false},
    {"TruncateFails", Operation::truncate, SQLITE_IOERR_TRUNCATE, true},
    {"LockFails", Operation::lock, SQLITE_IOERR_SHMLOCK, false},
    {"SharedMemoryFails", Operation::shareMemory, SQLITE_IOERR_SHMMAP, true},
};

/// Counts what would have gone to other processes.
class Counter final : public platform::DistributedNotificationCenter {
public:
    void post(const platform::DistributedNotification&) override { ++posts; }
    platform::Subscription subscribe(
        std::optional<std::string>, std::optional<std::string>, Callback) override
    {
        return {};
    }
    int posts = 0;
};

/// A bit of everything that a save can write.
void editEverything(ZRRoster& roster)
{
    const auto people = roster.people();
    const auto group = platform::refCast<ZRGroup>(roster.groups().front());
    const auto number = std::to_string(people.size()) + people.back()->uniqueId();
    people.front()->setValue(Value("title " + number), zr::kZRJobTitleProperty);
    people.front()->setValue(Value("note " + number), zr::kZRNoteProperty);
    people.front()->setValue(multiValue({{Value(number), zr::kZREmailWorkLabel}}), zr::kZREmailProperty);
    group->addMember(*person(Ref<ZRRoster>(&roster), {{zr::kZRFirstNameProperty, Value("new " + number)}}));
    roster.removeRecord(people.at(1));
}

/// The store of mail recents, beside the roster's.
Ref<ZRManagedObjectContext> openRecents(ZRRoster& roster)
{
    constexpr float version = 0.02F;
    return nts_managedObjectContextWithModel(mailRecentsModel(), roster.mailRecentsObjectStoreDatabaseFile(),
        ZRStoreDataType::mailRecents, version)
        .context;
}

std::size_t countRecents(ZRManagedObjectContext& recents)
{
    return recents.zrObjectsForPredicate(nullptr, kZRObjectStoreMailRecentEntityName).size();
}

const Role countsRecents("count recents", [](const Words&) {
    const auto roster = openShared();
    return Json(countRecents(*openRecents(*roster))).dump();
});

/// Edits, then saves with one fault. Words: the fault's index in the table, which call fails.
const Role savesWithFault("save with a fault", [](const Words& words) {
    FaultyVfs vfs;
    const auto counter = std::make_shared<Counter>();
    platform::DistributedNotificationCenter::install(counter);
    const auto roster = openShared();
    Json answer{{"before", fetchedLines(*roster)}};
    editEverything(*roster);
    answer["after"] = fetchedLines(*roster);
    const auto recents = openRecents(*roster);
    answer["recents"] = countRecents(*recents);
    recents->insertObjectOfEntity(kZRObjectStoreMailRecentEntityName)
        ->setValueForKey("email", Value("a@b.example"));
    auto& services = ZRServices::registered();
    services.hasUnsavedMailRecents = [&] { return recents->hasChanges(); };
    services.saveMailRecents = [&] { return static_cast<bool>(recents->save()); };

    const Fault& fault = kFaults[std::stoul(words.at(0))];
    vfs.failOnce(fault.operation, std::stoi(words.at(1)), fault.code);
    answer["saved"] = roster->save();
    vfs.letPass();
    answer["hasFailed"] = vfs.hasFailed();
    answer["posts"] = counter->posts;
    answer["hasChanges"] = roster->hasUnsavedChanges();
    return answer.dump();
});

/// A roster that is saved with one fault after the other, each time by a new process.
class SaveFaults : public testing::TestWithParam<std::size_t> {
protected:
    /// Whether the file, opened again, is that before the save or that after it.
    void check(const Json& told)
    {
        const Json file = crowd.ask("look");
        EXPECT_EQ(file.at("problems"), Json::array());
        const Lines lines = file.at("fetched");
        const bool isNew = lines == told.at("after").get<Lines>();
        if (!isNew) {
            EXPECT_EQ(differences(told.at("before"), lines), "") << "neither the old state nor the new one";
        }
        const std::size_t before = told.at("recents"), now = crowd.ask("count recents");
        EXPECT_TRUE(now == before || (isNew && now == before + 1)) << "recents without the roster's changes";
        middle += isNew && now == before;
        if (told.at("saved")) {
            EXPECT_TRUE(isNew && now == before + 1) << "a save that said true is lost";
            EXPECT_GT(told.at("posts"), 0);
        } else {
            refused += 1;
            EXPECT_TRUE(told.at("hasFailed"));
            EXPECT_EQ(told.at("posts"), 0) << "others heard of a save that failed";
            EXPECT_TRUE(told.at("hasChanges"));
        }
    }

    Crowd crowd{6, 1};
    int refused = 0;
    /// The roster is written, the recents are not.
    int middle = 0;
};

TEST_P(SaveFaults, LeaveTheOldStateOrTheNewOneAndTellNobodyOfAFailedSave)
{
    const Fault& fault = kFaults[GetParam()];
    const int stride = fault.operation == Operation::write ? kStride : 1;
    int n = 1;
    for (bool hasFailed = true; hasFailed && !HasFailure(); n += hasFailed ? stride : 0) {
        SCOPED_TRACE("call " + std::to_string(n));
        const Json told = crowd.ask("save with a fault", {std::to_string(GetParam()), std::to_string(n)});
        check(told);
        hasFailed = told.at("hasFailed");
    }
    std::cout << "calls: fewer than " << n << ", saves refused: " << refused
              << ", with the roster written: " << middle << "\n";
    if (!fault.mayPass) {
        EXPECT_GT(refused, 0);
        EXPECT_GT(middle, 0) << "no fault met the store of mail recents";
    }
}

INSTANTIATE_TEST_SUITE_P(EachCall, SaveFaults, testing::Range(std::size_t(0), std::size(kFaults)),
    [](const auto& test) { return std::string(kFaults[test.param].name); });

} // namespace
