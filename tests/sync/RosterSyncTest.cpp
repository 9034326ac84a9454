// The sync tool itself: what it writes down, whom it lets go first, and what it refuses.
#include "store/RosterWorld.h"
#include "support/Process.h"
#include "support/ScopedVariable.h"
#include "support/TemporaryFolder.h"
#include "support/Waiting.h"

#include "platform/files/NamedClaim.h"

#include <gmock/gmock.h>

namespace test {

namespace {

using testing::HasSubstr;
using testing::IsEmpty;
using testing::MatchesRegex;

class RosterSync : public testing::Test {
protected:
    Ended sync(
        const std::vector<std::string>& words, const std::map<std::string, std::string>& more = {}) const
    {
        Process::Start how{.words = {ROSTER_SYNC}, .environment = home.stage(more).environment};
        how.words.insert(how.words.end(), words.begin(), words.end());
        return run(how);
    }

    std::string log() const { return bytesOf(logFile, ""); }

    const Home home;
    const fs::path logFile = home.path() / "cache/org.quillon.Roster/RosterSync.log";
};

TEST_F(RosterSync, WritesDownWhatItWouldDo)
{
    EXPECT_EQ(sync({"--tricklesync", "org.quillon.Roster"}).status, 0);
    EXPECT_THAT(log(), MatchesRegex("2[-0-9]+T[0-9:]+Z would sync org.quillon.Roster\n"));
    EXPECT_EQ(sync({"--tricklesync", "org.quillon.Roster:/a b", "--retry", "15"}).status, 0);
    EXPECT_THAT(log(), HasSubstr("Z would sync org.quillon.Roster:/a b, tried again after 15 minutes\n"));
    EXPECT_EQ(modeOf(logFile), 0600U);
    EXPECT_EQ(modeOf(logFile.parent_path()), 0700U);
    EXPECT_THAT(sync({"--help"}).out, HasSubstr(logFile.string()));
}

TEST_F(RosterSync, BeginsALongLogAnew)
{
    put(logFile, std::string((256 << 10) + 1, '\n'));
    EXPECT_EQ(sync({"--tricklesync", "c"}).status, 0);
    EXPECT_THAT(log(), MatchesRegex("[-0-9]+T[0-9:]+Z would sync c\n"));
}

TEST_F(RosterSync, EndsAtOnceWhileAnotherOneRunsForItsClient)
{
    const ScopedVariable runtime("XDG_RUNTIME_DIR", home.stage().environment.at("XDG_RUNTIME_DIR").c_str());
    {
        const auto other = platform::NamedClaim::take("org.quillon.Roster.sync:one");
        ASSERT_TRUE(other && *other);
        const auto ended = sync({"--tricklesync", "one"});
        EXPECT_EQ(ended.status, 0);
        EXPECT_THAT(ended.err + log(), IsEmpty());
        EXPECT_EQ(sync({"--tricklesync", "two"}).status, 0);
        EXPECT_THAT(log(), HasSubstr("would sync two"));
    }
    sync({"--tricklesync", "one"});
    EXPECT_THAT(log(), HasSubstr("would sync one"));
}

TEST_F(RosterSync, RefusesOtherCommandLines)
{
    const std::vector<std::vector<std::string>> lines = {{}, {"--tricklesync"}, {"--tricklesync", ""},
        {"--tricklesync", "c", "--retry"}, {"--tricklesync", "c", "--retry", "0"},
        {"--tricklesync", "c", "--retry", "-3"}, {"--tricklesync", "c", "--retry", "soon"},
        {"--tricklesync", "c", "more"}, {"--retry", "5"}, {"--fullsync", "c"}};
    for (const auto& words : lines) {
        const auto ended = sync(words);
        EXPECT_EQ(ended.status, 2) << testing::PrintToString(words);
        EXPECT_THAT(ended.err, MatchesRegex("RosterSync: .*; see RosterSync --help\n"));
        EXPECT_THAT(ended.out + log(), IsEmpty()) << testing::PrintToString(words);
    }
}

TEST_F(RosterSync, TellsWhatKeepsItFromItsLog)
{
    const auto ended = sync({"--tricklesync", "c"}, {{"XDG_CACHE_HOME", "/dev/null"}});
    EXPECT_EQ(ended.status, 1);
    EXPECT_THAT(ended.err, HasSubstr("/dev/null: "));
}

const Role saves("save once", [](const Words&) {
    const auto roster = openShared();
    person(roster, {{kZRFirstNameProperty, "Ana"}});
    return std::string(roster->save() ? "saved" : "not saved");
});

TEST_F(RosterSync, RunsAfterTheSaveOfAProgramThatEndsAtOnce)
{
    const std::string programs = fs::path(ROSTER_SYNC).parent_path();
    const auto stage = home.stage({{"ROSTER_HELPER_DIR", programs}});
    EXPECT_EQ(test::play("save once", {}, stage).answer, "saved");
    EXPECT_TRUE(eventually([&] { return !log().empty(); }));
    EXPECT_THAT(log(), MatchesRegex("[-0-9]+T[0-9:]+Z would sync org.quillon.Roster\n"));
}

} // namespace

} // namespace test
