// Children of a test that go on in its program, and those that become another one.
#pragma once

#include <array>
#include <map>
#include <string>
#include <sys/types.h>
#include <sys/wait.h>
#include <unistd.h>
#include <vector>

namespace test {

/// Forks once every other thread of this process sleeps: one that is just asking the sanitizer for memory
/// would leave the child with a lock that nobody opens (the C library's own memory needs no such care).
///
/// Returns: as fork.
pid_t forkAmongSleepers();

/// Whether `work` answers true in a forked child.
template <class Work>
bool inForkedChild(Work&& work)
{
    const pid_t child = forkAmongSleepers();
    if (child == 0)
        _exit(work() ? 0 : 1);
    int status = -1;
    waitpid(child, &status, 0);
    return status == 0;
}

/// A program to start.
struct Program {
    /// What is run, by its path.
    std::string path;
    /// The first is the program's name.
    std::vector<std::string> words;
    /// Added to the environment; the rest is that of this process.
    std::map<std::string, std::string> environment = {};
    /// The files of standard input, output and error; empty for this process's own.
    std::array<std::string, 3> files = {};
    /// The user to become first, when this process may; 0 stays.
    uid_t user = 0;
};

/// The status of a child that could not become its program.
constexpr int kNotStarted = 127;

/// Starts it in a child that asks for no memory before it has become the program.
///
/// Errors: std::runtime_error when there is no child; what fails in the child ends it with kNotStarted.
pid_t start(const Program& program);

} // namespace test
