// What a launched program is given, and how its end is heard of.
#include "platform/processes/Launch.h"
#include "platform/files/Files.h"
#include "support/TemporaryFolder.h"

#include <gmock/gmock.h>

#include <chrono>
#include <csignal>
#include <cstdio>
#include <future>

#include <sys/wait.h>
#include <unistd.h>

using namespace platform;
using namespace std::chrono_literals;
using testing::HasSubstr;

namespace {

/// Launches and waits for the end.
int statusOf(const LaunchRequest& request)
{
    auto ended = std::make_shared<std::promise<int>>();
    auto status = ended->get_future();
    if (const auto started = launch(request, [ended](int value) { ended->set_value(value); }); !started)
        throw std::runtime_error(started.error().text);
    if (status.wait_for(60s) != std::future_status::ready)
        throw std::runtime_error("no end of the launched program in a minute");
    return status.get();
}

LaunchRequest shell(std::string script, std::vector<std::string> words = {})
{
    words.insert(words.begin(), {"-c", std::move(script), "sh"});
    return {.program = "/bin/sh", .arguments = std::move(words)};
}

TEST(LaunchTest, HearsHowTheProgramEnded)
{
    const struct {
        const char* script;
        int status;
    } cases[] = {{"exit 0", 0}, {"exit 3", 3}, {"kill -TERM $$", 128 + SIGTERM}};
    for (const auto& [script, status] : cases)
        EXPECT_EQ(statusOf(shell(script)), status) << script;
}

TEST(LaunchTest, RefusesWhatCannotBeStarted)
{
    for (const auto* program : {"/no/such/program", "sh", "", "/etc/passwd"}) {
        const auto started = launch({.program = program});
        ASSERT_FALSE(started) << program;
        EXPECT_THAT(started.error().text, HasSubstr(program));
    }
}

TEST(LaunchTest, HandsWordsOnAsTheyStand)
{
    const auto path = test::freshPath("words");
    auto request = shell("printf '%s|' \"$@\" \"$EXTRA\" > " + path, {"a b", "$(id)", "", "--x=é"});
    request.environment = {{"EXTRA", "new"}};
    ASSERT_EQ(statusOf(request), 0);
    EXPECT_EQ(*readFile(path), "a b|$(id)||--x=é|new|");
}

// The host may block and ignore signals, and have open what nobody else should hold.
TEST(LaunchTest, GivesAFreshStart)
{
    const auto path = test::freshPath("state");
    const int leaked = dup(STDERR_FILENO);
    ASSERT_GE(leaked, 0);
    sigset_t blocked, maskBefore;
    sigemptyset(&blocked);
    sigaddset(&blocked, SIGUSR1);
    pthread_sigmask(SIG_BLOCK, &blocked, &maskBefore);
    const auto before = std::signal(SIGPIPE, SIG_IGN);
    const int status = statusOf(shell("exec > " + path
        + "; pwd; ls /proc/$$/fd; readlink /proc/$$/fd/0 /proc/$$/fd/2;"
          "[ $(cut -d' ' -f6 /proc/$$/stat) = $$ ] && echo leads its session;"
          "exec grep -E 'SigBlk|SigIgn' /proc/self/status"));
    std::signal(SIGPIPE, before);
    pthread_sigmask(SIG_SETMASK, &maskBefore, nullptr);
    close(leaked);
    ASSERT_EQ(status, 0);
    const auto state = *readFile(path);
    unsigned long long masked = 0, ignored = 0;
    const std::string head = "/\n0\n1\n2\n/dev/null\n/dev/null\nleads its session\n";
    ASSERT_EQ(state.substr(0, head.size()), head);
    ASSERT_EQ(std::sscanf(state.c_str() + head.size(), "SigBlk: %llx SigIgn: %llx", &masked, &ignored), 2);
    EXPECT_EQ(masked, 0U);
    EXPECT_EQ(ignored & (1ULL << (SIGPIPE - 1)), 0U);
}

// A host that lets the system reap its children, or reaps them all itself, takes the status; nothing hangs.
TEST(LaunchTest, SaysWhenTheHostTookTheStatus)
{
    const auto before = std::signal(SIGCHLD, SIG_IGN);
    const int status = statusOf(shell("exit 4"));
    std::signal(SIGCHLD, before);
    EXPECT_EQ(status, -1);
}

TEST(LaunchTest, LeavesNoZombieAndNoOtherChildWithoutItsStatus)
{
    const pid_t own = fork();
    if (own == 0)
        _exit(7);
    EXPECT_EQ(statusOf(shell("exit 0")), 0);
    int status = 0;
    ASSERT_EQ(waitpid(own, &status, 0), own);
    EXPECT_EQ(WEXITSTATUS(status), 7);
    EXPECT_EQ(waitpid(-1, &status, WNOHANG), -1);
}

} // namespace
