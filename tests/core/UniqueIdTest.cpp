// Identifiers: their form, that they never repeat, and the hash of records' ids.
#include "core/ZRFailure.h"
#include "core/ZRUniqueId.h"
#include "support/Forked.h"

#include <gtest/gtest.h>

#include <set>
#include <thread>
#include <unordered_set>
#include <vector>

#include <sys/wait.h>
#include <unistd.h>

namespace {

// A generator with a stuck part would still look like a UUID.
TEST(UniqueString, IsAUUIDInUpperCaseThatVariesInEveryRandomDigit)
{
    std::vector<std::set<char>> seen(36);
    for (int i = 0; i < 1000; ++i) {
        const std::string text = zrUniqueString();
        ASSERT_EQ(text.size(), seen.size());
        for (std::size_t place = 0; place < text.size(); ++place)
            seen[place].insert(text[place]);
    }
    constexpr std::string_view form = "xxxxxxxx-xxxx-4xxx-vxxx-xxxxxxxxxxxx";
    for (std::size_t place = 0; place < form.size(); ++place) {
        const std::string expected = form[place] == 'x' ? "0123456789ABCDEF"
            : form[place] == 'v'                        ? "89AB"
                                                        : std::string(1, form[place]);
        EXPECT_EQ(std::string(seen[place].begin(), seen[place].end()), expected) << "at " << place;
    }
}

TEST(UniqueString, NeverRepeatsAcrossThreads)
{
    std::vector<std::vector<std::string>> made(8);
    std::vector<std::thread> threads;
    for (auto& list : made)
        threads.emplace_back([&list] {
            for (int i = 0; i < 5000; ++i)
                list.push_back(zrUniqueString());
        });
    for (std::thread& thread : threads)
        thread.join();
    std::unordered_set<std::string> all;
    for (const auto& list : made)
        all.insert(list.begin(), list.end());
    EXPECT_EQ(all.size(), 40000U);
}

// A child that inherits its parent's generator would give the parent's next identifiers.
TEST(UniqueString, NeverRepeatsInAForkedChild)
{
    zrUniqueString();
    int ends[2];
    ASSERT_EQ(pipe(ends), 0);
    const pid_t child = test::forkAmongSleepers();
    if (child == 0) {
        const std::string text = zrUniqueString();
        _exit(write(ends[1], text.data(), text.size()) == 36 ? 0 : 1);
    }
    int status = -1;
    ASSERT_EQ(waitpid(child, &status, 0), child);
    EXPECT_EQ(status, 0);
    std::string theirs(36, ' ');
    EXPECT_EQ(read(ends[0], theirs.data(), theirs.size()), 36);
    EXPECT_NE(zrUniqueString(), theirs);
    close(ends[0]);
    close(ends[1]);
}

TEST(UniqueId, NamesItsTable)
{
    const std::string uniqueId = _newUniqueIdForTable("ZRPerson");
    EXPECT_EQ(uniqueId.size(), 45U);
    EXPECT_EQ(uniqueId.substr(36), ":ZRPerson");
    EXPECT_EQ(zrTableOfUniqueId(uniqueId), "ZRPerson");
    EXPECT_THROW(_newUniqueIdForTable(std::nullopt), ZRInvalidArgument);
    EXPECT_EQ(zrTableOfUniqueId(std::string(36, 'A') + ":X"), "X");
    for (const std::size_t length : {0U, 1U, 36U, 37U})
        EXPECT_THROW(zrTableOfUniqueId(std::string(length, 'A')), ZRInvalidArgument) << length;
}

/// The rule of the hash, written the slow way: bit by bit, without a table.
std::uint32_t slowHash(std::string_view digits)
{
    const auto step = [](std::uint32_t state) {
        std::uint32_t entry = (state & 0xFF) << 24;
        for (int bit = 0; bit < 8; ++bit)
            entry = (entry >> 31) != 0 ? (entry << 1) ^ 79764919U : entry << 1;
        return (state >> 8) ^ __builtin_bswap32(entry);
    };
    std::uint32_t state = ~static_cast<std::uint32_t>(digits[0]);
    for (const char digit : digits.substr(1)) {
        for (int i = 0; i < 4; ++i)
            state = step(state);
        state ^= static_cast<std::uint32_t>(digit);
    }
    return ~state;
}

TEST(UniqueId, HashesTheDigitsOfItsUUID)
{
    for (int i = 0; i < 50; ++i) {
        const std::string uniqueId = _newUniqueIdForTable("ZRPerson");
        std::string digits = uniqueId.substr(0, 36);
        std::erase(digits, '-');
        EXPECT_EQ(_ZRRecordUUIDHash(uniqueId), slowHash(digits)) << uniqueId;
        EXPECT_EQ(_ZRRecordUUIDHash(uniqueId), _ZRRecordUUIDHash(uniqueId.substr(0, 36) + ":ZRGroup"));
    }
    EXPECT_NE(_ZRRecordUUIDHash("00000000-0000-0000-0000-000000000001:A"),
        _ZRRecordUUIDHash("00000000-0000-0000-0000-000000000002:A"));
    _ZRRecordUUIDHash("");
    _ZRRecordUUIDHash("short");
}

} // namespace
