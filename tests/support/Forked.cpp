// When and how a test forks.
#include "support/Forked.h"

#include "support/TemporaryFolder.h"

#include <algorithm>
#include <chrono>
#include <filesystem>
#include <stdexcept>
#include <string_view>
#include <thread>

#include <fcntl.h>

namespace test {

namespace {

/// Its state stands behind its name, which is in parentheses.
bool isAsleep(const std::filesystem::path& thread)
{
    const std::string text = bytesOf(thread / "stat", "(gone) S");
    return text.substr(text.rfind(')') + 1).starts_with(" S");
}

bool areOthersAsleep()
{
    const std::filesystem::directory_iterator threads("/proc/self/task");
    return std::ranges::all_of(threads, [own = std::to_string(gettid())](const auto& thread) {
        return thread.path().filename() == own || isAsleep(thread.path());
    });
}

/// The words as the system wants them; they borrow from `words`.
std::vector<char*> pointers(const std::vector<std::string>& words)
{
    std::vector<char*> result;
    for (const auto& word : words)
        result.push_back(const_cast<char*>(word.c_str()));
    result.push_back(nullptr);
    return result;
}

/// This process's environment with the entries of `added` in place of its own.
std::vector<std::string> environmentWith(const std::map<std::string, std::string>& added)
{
    std::vector<std::string> entries;
    for (char** entry = environ; *entry; ++entry) {
        const std::string_view text = *entry;
        if (!added.contains(std::string(text.substr(0, text.find('=')))))
            entries.emplace_back(text);
    }
    for (const auto& [name, value] : added)
        entries.push_back(std::string(name).append("=").append(value));
    return entries;
}

bool redirect(int descriptor, const std::string& path)
{
    const int opened =
        ::open(path.c_str(), descriptor == STDIN_FILENO ? O_RDONLY : O_WRONLY | O_CREAT | O_TRUNC, 0600);
    return opened >= 0 && ::dup2(opened, descriptor) >= 0 && ::close(opened) == 0;
}

} // namespace

pid_t forkAmongSleepers()
{
    while (!areOthersAsleep())
        std::this_thread::sleep_for(std::chrono::milliseconds(1));
    return ::fork();
}

pid_t start(const Program& program)
{
    const auto words = pointers(program.words);
    const auto entries = environmentWith(program.environment);
    const auto environment = pointers(entries);

    const pid_t child = ::fork();
    if (child < 0)
        throw std::runtime_error("cannot fork");
    if (child > 0)
        return child;
    for (int descriptor = 0; descriptor < 3; ++descriptor)
        if (const auto& path = program.files[descriptor]; !path.empty() && !redirect(descriptor, path))
            ::_exit(kNotStarted);
    if (program.user == 0 || (::setgid(program.user) == 0 && ::setuid(program.user) == 0))
        ::execve(program.path.c_str(), words.data(), environment.data());
    ::_exit(kNotStarted);
}

} // namespace test
