// Whether handles may be used and released on any thread, and whether observers hear of saves on the main
// queue.
#include "api/Owned.h"

#include "store/ZRRoster.h"
#include "support/Role.h"

#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <functional>
#include <mutex>
#include <thread>
#include <vector>

#include <poll.h>

namespace {

using test::Owned;

class SharedHandles : public testing::Test {
protected:
    static void SetUpTestSuite()
    {
        ZRRoster::setShouldCreateEmptyDatabase(true);
        queue = ZRMainQueueGetFileDescriptor();
    }
    static inline int queue = -1;
    const ZRRosterRef roster = ZRGetSharedRoster();
};

Owned personWithAddress(const char* first)
{
    Owned person = ZRPersonCreate();
    const Owned name(first), address("ada@example.org"), addresses = ZRMultiValueCreateMutable();
    ZRMultiValueAdd(addresses, address, kZREmailHomeLabel, nullptr);
    ZRRecordSetValue(person, kZRFirstNameProperty, name);
    ZRRecordSetValue(person, kZREmailProperty, addresses);
    return person;
}

/// Handles that one thread made and others end.
class Passage {
public:
    void put(Owned handle)
    {
        const std::scoped_lock lock(_mutex);
        _handles.push_back(std::move(handle));
    }
    std::vector<Owned> takeAll()
    {
        const std::scoped_lock lock(_mutex);
        return std::exchange(_handles, {});
    }

private:
    std::mutex _mutex;
    std::vector<Owned> _handles;
};

TEST_F(SharedHandles, AreUsedAndReleasedOnAnyThreadWhileAnotherSaves)
{
    constexpr int kSaves = 25, kPeopleASave = 4;
    Passage passage;
    std::atomic<bool> isDone = false;
    std::atomic<int> failures = 0;
    const Owned shared = ZRRecordCopyValue(personWithAddress("Shared"), kZREmailProperty);
    const auto read = [&] {
        while (!isDone) {
            for (const Owned& person : passage.takeAll()) {
                const Owned addresses = ZRRecordCopyValue(person, kZREmailProperty);
                const Owned primary = ZRMultiValueCopyPrimaryIdentifier(addresses);
                failures += ZRMultiValueIndexForIdentifier(addresses, ZRStringGetUTF8(primary)) != 0;
            }
            const Owned people = ZRCopyArrayOfAllPeople(roster);
            failures += people == nullptr;
            failures += Owned(ZRMultiValueCopyPrimaryIdentifier(shared)).text().empty();
        }
    };
    std::thread readers[] = {std::thread(read), std::thread(read), std::thread(read)};
    for (int save = 0; save < kSaves; ++save) {
        for (int i = 0; i < kPeopleASave; ++i)
            passage.put(personWithAddress("Passenger"));
        failures += !ZRSave(roster);
    }
    isDone = true;
    for (auto& reader : readers)
        reader.join();
    EXPECT_EQ(failures, 0);
    const Owned name("Passenger");
    const Owned search = ZRPersonCreateSearchElement(kZRFirstNameProperty, nullptr, nullptr, name, kZREqual);
    EXPECT_EQ(ZRArrayGetCount(Owned(ZRCopyArrayOfMatchingRecords(roster, search))), kSaves * kPeopleASave);
}

// ---- observers

/// What a callback was told of.
struct Heard {
    std::vector<std::string> names;
    std::vector<std::string> inserted;
    std::vector<std::thread::id> threads;
    std::function<void()> also;

    static void tell(const char* name, ZRTypeRef object, ZRDictionaryRef userInfo, void* refcon)
    {
        auto& heard = *static_cast<Heard*>(refcon);
        EXPECT_EQ(object, ZRGetSharedRoster());
        const auto ids = ZRDictionaryGetValue(userInfo, kZRInsertedRecords);
        heard.names.emplace_back(name);
        heard.threads.push_back(std::this_thread::get_id());
        for (ZRIndex i = 0; i < ZRArrayGetCount(ids); ++i)
            heard.inserted.emplace_back(ZRStringGetUTF8(ZRArrayGetValueAtIndex(ids, i)));
        EXPECT_GT(ZRNumberGetInteger(ZRDictionaryGetValue(userInfo, kZRSenderProcessID)), 0);
        if (heard.also)
            heard.also();
    }
};

bool doesWorkWait(int queue, int milliseconds)
{
    pollfd wanted{queue, POLLIN, 0};
    return poll(&wanted, 1, milliseconds) > 0;
}

/// Serves the main queue until it is so; false when it never is.
bool drainUntil(int queue, const std::function<bool()>& isSo)
{
    const auto end = std::chrono::steady_clock::now() + std::chrono::seconds(30);
    while (!isSo() && std::chrono::steady_clock::now() < end) {
        doesWorkWait(queue, 100);
        ZRMainQueueDrain();
    }
    return isSo();
}

std::string saveOneMore(const test::Words& words)
{
    if (!words.empty())
        ZRRoster::setShouldCreateEmptyDatabase(true);
    const Owned person = personWithAddress("Newcomer");
    return ZRSave(ZRGetSharedRoster()) ? Owned(ZRRecordCopyUniqueId(person)).text() : "the save failed";
}

const test::Role saving("saves one more person", saveOneMore);

TEST_F(SharedHandles, TellObserversOnTheMainQueueOfOwnSavesAndOthers)
{
    const struct {
        const char* notice;
        std::function<std::string()> save;
    } cases[] = {
        {kZRDatabaseChangedNotification, [] { return saveOneMore({}); }},
        {kZRDatabaseChangedExternallyNotification,
            [] { return test::play("saves one more person", {"alone"}).answer; }},
    };
    for (const auto& each : cases) {
        ASSERT_TRUE(drainUntil(queue, [] { return !doesWorkWait(queue, 0); }));
        Heard heard, ended;
        auto* const observer = ZRObserverCreate(each.notice, roster, Heard::tell, &heard);
        auto* const gone = ZRObserverCreate(nullptr, nullptr, Heard::tell, &ended);
        ZRObserverDestroy(gone);
        const std::string id = each.save();
        EXPECT_TRUE(heard.names.empty()) << "before the queue was served";
        EXPECT_TRUE(drainUntil(queue, [&] { return !heard.inserted.empty(); })) << each.notice;
        EXPECT_EQ(heard.names, std::vector<std::string>{each.notice});
        EXPECT_EQ(heard.inserted, std::vector{id});
        EXPECT_EQ(heard.threads, std::vector{std::this_thread::get_id()});
        const Owned person = ZRCopyRecordForUniqueId(roster, id.c_str());
        EXPECT_EQ(Owned(ZRRecordCopyValue(person, kZRFirstNameProperty)).text(), "Newcomer");
        EXPECT_TRUE(ended.names.empty());
        ZRObserverDestroy(observer);
    }
}

TEST_F(SharedHandles, LetAnObserverEndItselfInItsCallback)
{
    Heard heard;
    ZRObserver* observer = nullptr;
    heard.also = [&] { ZRObserverDestroy(std::exchange(observer, nullptr)); };
    observer = ZRObserverCreate(kZRDatabaseChangedNotification, nullptr, Heard::tell, &heard);
    saveOneMore({});
    EXPECT_TRUE(drainUntil(queue, [&] { return observer == nullptr; }));
    Heard next;
    auto* const after = ZRObserverCreate(kZRDatabaseChangedNotification, nullptr, Heard::tell, &next);
    saveOneMore({});
    EXPECT_TRUE(drainUntil(queue, [&] { return !next.names.empty(); }));
    EXPECT_EQ(heard.names.size(), 1U);
    ZRObserverDestroy(after);
}

} // namespace
