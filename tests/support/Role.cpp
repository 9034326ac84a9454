// How a program becomes the other process of its own tests.
#include "support/Role.h"

#include "support/Forked.h"
#include "support/TemporaryFolder.h"

#include <cerrno>
#include <cstdio>
#include <exception>
#include <filesystem>
#include <string_view>
#include <sys/wait.h>
#include <unistd.h>

namespace test {

namespace {

constexpr std::string_view roleFlag = "--play=";
constexpr int failed = 70;
constexpr char kOwnProgram[] = "/proc/self/exe";

std::map<std::string, Role::Play>& roles()
{
    static std::map<std::string, Role::Play> all;
    return all;
}

} // namespace

std::vector<std::string> roleWords(const std::string& role, Words words)
{
    // Programs find their preferences by their name.
    words.insert(
        words.begin(), {std::filesystem::read_symlink(kOwnProgram).string(), std::string(roleFlag) + role});
    return words;
}

Role::Role(std::string name, Play play) { roles().emplace(std::move(name), std::move(play)); }

Outcome play(const std::string& role, const Words& words, const Stage& stage)
{
    const TemporaryFolder folder;
    const std::string answer = folder / "answer", log = folder / "log";
    auto environment = stage.environment;
    environment.emplace("ZRLogToStandardError", "1");
    const pid_t child =
        start({kOwnProgram, roleWords(role, words), environment, {"", answer, log}, stage.user});
    int status = 0;
    while (waitpid(child, &status, 0) < 0 && errno == EINTR) { }
    return {WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status), bytesOf(answer, ""),
        bytesOf(log, "")};
}

int playRoleOfCommandLine(int argc, char** argv)
{
    if (argc < 2 || !std::string_view(argv[1]).starts_with(roleFlag))
        return -1;
    try {
        const std::string answer = roles().at(argv[1] + roleFlag.size())(Words(argv + 2, argv + argc));
        std::fwrite(answer.data(), 1, answer.size(), stdout);
        return 0;
    } catch (const std::exception& failure) {
        std::fprintf(stderr, "%s\n", failure.what());
        return failed;
    }
}

} // namespace test
