// Handles: one for each id while somebody holds it, none that lingers, whatever thread lets go last.
#include "store/RosterWorld.h"

#include "objectstore/StoreContext.h"
#include "store/ZRManagedObjectContext.h"
#include "store/ZROSRecord.h"

#include <gmock/gmock.h>

#include <atomic>
#include <fstream>
#include <stdexcept>
#include <thread>
#include <unistd.h>

namespace test {

namespace {

double residentMegabytes()
{
    long total = 0, resident = 0;
    std::ifstream("/proc/self/statm") >> total >> resident;
    return static_cast<double>(resident) * static_cast<double>(sysconf(_SC_PAGESIZE)) / 1e6;
}

std::size_t registeredObjects(const Ref<ZRRoster>& roster)
{
    return locked(*roster, ZRAccess::read,
        [&]() ZR_NTS { return roster->managedObjectContext()->registeredObjects().size(); });
}

/// Reads the name of every person, a thousand at a time, and drops it.
std::size_t readAll(const Ref<ZRRoster>& roster, const std::vector<std::string>& ids)
{
    std::size_t characters = 0;
    for (std::size_t from = 0; from < ids.size(); from += 1000) {
        const std::vector<std::string> some(ids.begin() + static_cast<std::ptrdiff_t>(from),
            ids.begin() + static_cast<std::ptrdiff_t>(std::min(from + 1000, ids.size())));
        for (const auto& record : roster->recordsForUniqueIds(some))
            characters += static_cast<ZRPerson&>(*record).compositeName().size();
    }
    return characters;
}

// The memory of the sanitizers grows with every allocation.
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
constexpr std::size_t kCards = 10'000;
constexpr double kMostGrowth = 1'000;
#else
constexpr std::size_t kCards = 100'000;
constexpr double kMostGrowth = 10;
#endif

const Role readsAndDrops("read and drop", [](const Words&) {
    const auto roster = openShared();
    std::vector<std::string> ids;
    for (std::size_t i = 0; i < kCards; ++i) {
        const auto one =
            person(roster, {{kZRFirstNameProperty, "Person"}, {kZRLastNameProperty, std::to_string(i)}});
        ids.push_back(one->uniqueId());
        if (i % 5000 == 4999 && !roster->save())
            throw std::runtime_error(roster->lastSaveError().text);
    }
    if (!roster->save())
        throw std::runtime_error(roster->lastSaveError().text);
    // What the allocator and SQLite keep for good is taken in the first round.
    readAll(roster, ids);
    const double before = residentMegabytes();
    for (int round = 0; round < 3; ++round)
        readAll(roster, ids);
    const std::size_t left = registeredObjects(roster);
    std::string answer = left < 20 ? "none left" : std::to_string(left) + " left";
    if (const double grown = residentMegabytes() - before; grown > kMostGrowth)
        answer += ", grown by " + std::to_string(grown) + " MB";
    return answer;
});

class Handles : public testing::Test {
protected:
    const Ref<ZRRoster> roster = ZRRoster::emptyMemoryBackedRoster();
};

} // namespace

TEST_F(Handles, AreTheSameForOneIdHoweverItIsFound)
{
    const auto one = person(roster, {{kZRFirstNameProperty, "Ana"}});
    const std::string id = one->uniqueId();
    EXPECT_EQ(roster->recordForUniqueId(id).get(), one.get()) << "unsaved";
    ASSERT_TRUE(roster->save());
    EXPECT_EQ(roster->recordForUniqueId(id).get(), one.get());
    EXPECT_EQ(roster->people().at(0).get(), one.get());
    EXPECT_EQ(roster->recordsForUniqueIds({id, "no such id"}).at(0).get(), one.get());
    EXPECT_EQ(roster->sortedPeople(ZRNameOrder::firstName, 0).at(0).get(), one.get());
    roster->_vacuum();
    EXPECT_EQ(roster->recordForUniqueId(id).get(), one.get())
        << "the cache forgot it, the stored object did not";
}

TEST_F(Handles, KeepUnsavedChangesWhenTheyAreDropped)
{
    std::string id;
    {
        const auto one = person(roster, {{kZRFirstNameProperty, "Ana"}});
        id = one->uniqueId();
        ASSERT_TRUE(roster->save());
        one->setValue("Bea", kZRFirstNameProperty);
        one->nts_setContextInfo(true, zr::kZRPreserveModificationDate);
    }
    const auto again = roster->recordForUniqueId(id);
    EXPECT_EQ(again->valueForProperty(kZRFirstNameProperty), Value("Bea"));
    EXPECT_TRUE(again->nts_contextInfo(zr::kZRPreserveModificationDate).asBoolean());
}

TEST_F(Handles, MayBeLetGoOnOneThreadWhileAnotherSaves)
{
    constexpr int cards = 60, rounds = 15;
    std::vector<std::string> ids;
    for (int i = 0; i < cards; ++i)
        ids.push_back(person(roster, {{kZRFirstNameProperty, std::to_string(i)}})->uniqueId());
    ASSERT_TRUE(roster->save());
    std::atomic<bool> isDone = false;
    std::atomic<int> missing = 0;
    std::vector<std::thread> readers;
    for (int reader = 0; reader < 2; ++reader)
        readers.emplace_back([&] {
            while (!isDone)
                for (const auto& id : ids) {
                    const auto one = roster->recordForUniqueId(id);
                    missing += !one || one->valueForProperty(kZRFirstNameProperty).isAbsent();
                }
        });
    for (int round = 0; round < rounds; ++round) {
        for (const auto& id : ids)
            roster->recordForUniqueId(id)->setValue(std::to_string(round), kZRFirstNameProperty);
        EXPECT_TRUE(roster->save());
    }
    isDone = true;
    for (auto& reader : readers)
        reader.join();
    EXPECT_EQ(missing, 0);
    for (const auto& id : ids)
        EXPECT_EQ(roster->recordForUniqueId(id)->valueForProperty(kZRFirstNameProperty),
            Value(std::to_string(rounds - 1)));
}

TEST(HandlesOnFile, LeaveNothingBehind)
{
    const Home home;
    const auto outcome = home.play("read and drop");
    EXPECT_EQ(outcome.answer, "none left") << outcome.log;
}

} // namespace test
