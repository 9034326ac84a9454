// Programs that a test runs as anybody would: words in, exit status and both outputs back.
#pragma once

#include "support/TemporaryFolder.h"

#include <map>
#include <optional>
#include <string>
#include <sys/types.h>
#include <vector>

namespace test {

/// What a program left.
struct Ended {
    /// The exit status, or 128 plus the number of the signal that ended it.
    int status = -1;
    std::string out;
    std::string err;
};

/// A program under way. One that is still running when this goes is killed and waited for.
///
/// Ownership: owns the process and the files of its outputs.
/// Threads:   one.
/// Errors:    what cannot be started throws std::runtime_error.
class Process {
public:
    struct Start {
        std::vector<std::string> words;
        /// Standard input; nothing to read without.
        std::string input = {};
        std::map<std::string, std::string> environment = {};
        /// In place of a file that is read back at the end.
        std::optional<std::string> outputPath = {};
    };

    explicit Process(const Start& given);
    ~Process();
    Process(const Process&) = delete;
    Process& operator=(const Process&) = delete;

    void kill(int signal);
    bool hasEnded();
    Ended wait();

private:
    TemporaryFolder _folder;
    pid_t _pid = -1;
    std::optional<int> _status;
};

/// Runs a program to its end.
Ended run(const Process::Start& start);

} // namespace test
