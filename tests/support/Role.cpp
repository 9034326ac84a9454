// How a program becomes the other process of its own tests.
#include "support/Role.h"

#include "support/TemporaryFolder.h"

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <exception>
#include <filesystem>
#include <string_view>
#include <sys/wait.h>
#include <unistd.h>

namespace test {

namespace {

constexpr std::string_view roleFlag = "--play=";
constexpr int failed = 70;

std::map<std::string, Role::Play>& roles()
{
    static std::map<std::string, Role::Play> all;
    return all;
}

/// In the child: nothing but what becomes another program is done between fork and exec.
[[noreturn]] void become(
    std::vector<std::string> words, const Stage& stage, const std::string& answer, const std::string& log)
{
    if (!std::freopen(answer.c_str(), "w", stdout) || !std::freopen(log.c_str(), "w", stderr))
        _exit(failed);
    for (const auto& [variable, value] : stage.environment)
        setenv(variable.c_str(), value.c_str(), 1);
    setenv("ZRLogToStandardError", "1", 1);
    if (stage.user != 0 && (setgid(stage.user) != 0 || setuid(stage.user) != 0))
        _exit(failed);
    std::vector<char*> arguments;
    for (auto& word : words)
        arguments.push_back(word.data());
    arguments.push_back(nullptr);
    execv("/proc/self/exe", arguments.data());
    _exit(failed);
}

} // namespace

std::vector<std::string> roleWords(const std::string& role, Words words)
{
    // Programs find their preferences by their name.
    words.insert(words.begin(),
        {std::filesystem::read_symlink("/proc/self/exe").string(), std::string(roleFlag) + role});
    return words;
}

Role::Role(std::string name, Play play) { roles().emplace(std::move(name), std::move(play)); }

Outcome play(const std::string& role, const Words& words, const Stage& stage)
{
    const TemporaryFolder folder;
    const std::string answer = folder / "answer", log = folder / "log";
    auto all = roleWords(role, words);
    const pid_t child = fork();
    if (child == 0)
        become(std::move(all), stage, answer, log);
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
