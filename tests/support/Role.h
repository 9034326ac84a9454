// What a test has another process do: a function of the same program, run in a fresh process of it.
#pragma once

#include <functional>
#include <map>
#include <string>
#include <sys/types.h>
#include <utility>
#include <vector>

namespace test {

using Words = std::vector<std::string>;

/// A part that this program can play instead of running its tests. Make it at namespace scope.
///
/// Ownership: the name is remembered for the life of the program.
/// Threads:   the play runs in a process of its own, on its first thread.
/// Errors:    an exception ends the process with status 70 and its text on standard error.
class Role {
public:
    /// Gets the words of the call; what it answers is what the caller reads.
    using Play = std::function<std::string(const Words& words)>;
    Role(std::string name, Play play);
};

/// How a process that played a role ended.
struct Outcome {
    /// The exit status, or 128 plus the number of the signal that ended it.
    int status = -1;
    std::string answer;
    std::string log;
};

struct Stage {
    /// Added to the environment; the rest is that of this process.
    std::map<std::string, std::string> environment = {};
    /// The user to become first, when this process may; 0 stays.
    uid_t user = 0;
};

/// The words that run a role of this program.
Words roleWords(const std::string& role, Words words = {});

/// Runs a role of this program in a new process, to its end.
Outcome play(const std::string& role, const Words& words = {}, const Stage& stage = {});

/// For `main`: plays the role that the command line names, and answers the exit status; -1 when it names
/// none.
int playRoleOfCommandLine(int argc, char** argv);

} // namespace test
