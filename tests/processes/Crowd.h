// How a test gets many processes on one roster, and what each of them is told and asked.
#pragma once

#include "processes/RosterEdits.h"
#include "support/Process.h"

#include <cstdlib>
#include <memory>
#include <vector>

namespace test {

/// A number from the environment, for runs of full size; else `usual`.
inline int chosenSize(const char* variable, int usual)
{
    const char* const chosen = std::getenv(variable);
    return chosen ? std::atoi(chosen) : usual;
}

/// Waits, generously, until `isSo`; throws when it never is.
void waitUntil(const std::string& what, const std::function<bool()>& isSo);

/// Waits until the shared roster has taken in every commit of its store.
void waitUntilDrained(ZRRoster& roster);
std::int64_t lastCommit(ZRRoster& roster);

/// One roster's directory with the processes that use it, and the files by which the test and they wait for
/// each other.
///
/// Ownership: owns the directory and the processes; those still running are killed at its end.
/// Threads:   one.
/// Errors:    throws std::runtime_error.
class Crowd {
public:
    /// A roster with some cards and groups, and the log of the save that made them.
    explicit Crowd(int cards = 24, int groups = 4);

    std::string path(const std::string& name) const { return (_home.path() / name).string(); }
    const Home& home() const { return _home; }
    std::string logOf(int editor) const { return path("saves-" + std::to_string(editor)); }

    /// How that role of this program is started beside the roster.
    Process::Start start(const std::string& role, const Words& words) const;
    struct Editor {
        int number;
        std::unique_ptr<Process> process;
    };
    /// Starts an editor under the next number: `saves` edits, or, for 0, edits until `raise("stop")`.
    Editor startEditor(int saves);
    int editors() const { return _editors; }
    /// Waits until all of them have saved, and answers what each then told.
    std::vector<Json> end(const std::vector<Editor>& editors) const;

    /// Raises a flag that roles wait for, by a file of that name.
    void raise(const std::string& flag) const;
    /// Waits until a role raised the flag, or ended without.
    void awaitFlag(const std::string& flag, Process& process) const;

    /// Runs a role and answers what it told; throws unless it ended well.
    Json ask(const std::string& role, const Words& words = {}) const;

private:
    Home _home;
    int _editors = 0;
};

/// What an ended role told. Throws what it said instead.
Json toldBy(Process& process);

/// Where the saves, the file as the role "look" told of it, and what editors told of their memory differ, and
/// what is wrong in the file; empty when all is well.
std::string disagreements(const Replay& saves, const Json& file, const std::vector<Json>& told);

} // namespace test
