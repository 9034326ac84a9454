// Whether plain functions bear whatever they are given: wrong handles, indexes and names, and a forked child.
#include "api/Misuse.h"

#include "core/ZRGlobalLock.h"
#include "store/ZRRoster.h"
#include "support/Forked.h"
#include "support/Process.h"
#include "support/Role.h"

#include <gmock/gmock.h>

#include <algorithm>
#include <array>
#include <cctype>
#include <chrono>
#include <fstream>
#include <iterator>
#include <set>
#include <thread>

#include <sys/wait.h>
#include <unistd.h>

namespace {

using Names = std::set<std::string>;

class PlainFunctions : public testing::Test {
protected:
    static void SetUpTestSuite() { ZRRoster::setShouldCreateEmptyDatabase(true); }
};

/// Another thread gets the global lock: at once, but for the library's own threads, which hold it shortly.
bool isLockFree()
{
    bool isTaken = false;
    std::thread other([&] {
        const auto end = std::chrono::steady_clock::now() + std::chrono::seconds(20);
        while (!isTaken && std::chrono::steady_clock::now() < end) {
            isTaken = _ZR_TRY_Lock(__FILE__, __LINE__);
            std::this_thread::yield();
        }
        if (isTaken)
            _ZR_Unlock(__FILE__, __LINE__);
    });
    other.join();
    return isTaken;
}

Names namesOfRows()
{
    Names names;
    for (const auto& row : test::allRows())
        names.insert(row.name);
    return names;
}

Names namesOfContract()
{
    return {
#define ZR_FUNCTION(result, name, arguments) #name,
#include "api/PlainFunctions.def"
    };
}

/// The words of ASCII letters, digits and underscores that stand right behind `mark`.
Names wordsBehind(std::string_view mark, std::string_view text)
{
    Names words;
    for (auto at = text.find(mark); at != std::string_view::npos; at = text.find(mark, at + 1)) {
        const auto word = text.substr(at + mark.size());
        const auto isOther = [](unsigned char c) { return !std::isalnum(c) && c != '_'; };
        words.emplace(word.begin(), std::ranges::find_if(word, isOther));
    }
    return words;
}

/// The functions with C names that the library shows.
Names exportedNames()
{
    Names names;
    for (const auto& name : wordsBehind(" T ", test::run({.words = {ROSTER_NM, "-D", ROSTER_LIBRARY}}).out))
        if (name.starts_with("ZR"))
            names.insert(name);
    return names;
}

TEST_F(PlainFunctions, AreThoseOfTheContractEachWithItsRow)
{
    EXPECT_EQ(exportedNames(), namesOfContract());
    EXPECT_EQ(namesOfRows(), namesOfContract());
}

TEST_F(PlainFunctions, FailForEachWrongArgumentAndLeaveTheLockFree)
{
    for (const auto& row : test::allRows()) {
        const test::Samples samples;
        EXPECT_EQ(row.misuse(samples), "") << row.name;
        EXPECT_EQ(row.fails(samples), row.isQuiet) << row.name;
        EXPECT_TRUE(isLockFree()) << row.name;
    }
}

// ---- in a forked child

/// In a child that was forked while the roster was in use: the functions that did not fail.
std::string calledInChild(const test::Samples& samples)
{
    int ends[2] = {};
    if (pipe(ends) != 0)
        return "no pipe";
    if (const pid_t child = test::forkAmongSleepers(); child == 0) {
        for (const auto& row : test::allRows())
            if (!row.fails(samples) && write(ends[1], (row.name + " ").c_str(), row.name.size() + 1) < 0)
                _exit(1);
        _exit(0);
    } else {
        close(ends[1]);
        std::string names;
        char next = 0;
        while (read(ends[0], &next, 1) == 1)
            names += next;
        close(ends[0]);
        int status = -1;
        waitpid(child, &status, 0);
        return status == 0 ? names : "the child ended with " + std::to_string(status);
    }
}

const test::Role forking("uses the roster and forks", [](const test::Words&) {
    ZRRoster::setShouldCreateEmptyDatabase(true);
    const auto roster = ZRGetSharedRoster();
    const test::Samples samples;
    if (!ZRSave(roster))
        return std::string("the first save failed");
    const auto calledRightly = calledInChild(samples);
    if (!ZRRecordRemoveValue(samples.of(kZRTypePerson), kZRFirstNameProperty) || !ZRSave(roster))
        return std::string("the save behind the fork failed");
    const auto report = ZRRoster::sharedRoster()->check();
    return calledRightly + (report.problems.empty() ? "" : report.problems.front());
});

TEST_F(PlainFunctions, FailInAForkedChildWhichHarmsNothing)
{
    const auto outcome = test::play("uses the roster and forks");
    EXPECT_EQ(outcome.status, 0) << outcome.log;
    EXPECT_EQ(outcome.answer, "");
}

// ---- the words

/// Properties, labels, record types, keys of addresses, and the lists of a notice.
bool isForCallers(std::string_view word)
{
    if (word == "kZRImageProperty" || word == "kZRLargeImageProperty")
        return false;
    const bool isKey =
        word.starts_with("kZRAddress") && word.ends_with("Key") && !word.ends_with("DictionaryKey");
    return isKey
        || std::ranges::any_of(std::array{"Property", "Label", "RecordType", "Records"},
            [&](auto end) { return word.starts_with("kZR") && word.ends_with(end); });
}

TEST_F(PlainFunctions, HaveEveryWordThatCallersNeed)
{
    const Names all = {
#define ZR_WORD(constant, text) #constant,
#include "core/Vocabulary.def"
    };
    std::ifstream file(ROSTER_SOURCE_DIR "/src/core/ZRVocabulary.h");
    const std::string header(std::istreambuf_iterator<char>(file), {});
    const Names declared = wordsBehind("extern const char ", header);
    Names wanted;
    std::ranges::copy_if(all, std::inserter(wanted, wanted.end()), isForCallers);
    EXPECT_THAT(all, testing::IsSupersetOf(declared));
    EXPECT_THAT(declared, testing::IsSupersetOf(wanted));
}

} // namespace
