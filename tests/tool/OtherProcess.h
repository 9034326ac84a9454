// What another program does to the roster of a world, through the library.
#pragma once

#include "store/ZRRoster.h"
#include "support/Waiting.h"
#include "tool/ToolWorld.h"

#include <string>

namespace test {

/// For another process: the roster in that directory, which is made where there is none.
platform::Ref<ZRRoster> openAt(const std::string& directory);

/// In one save, by another process: "+NAME" adds a person, "~NAME" edits one, "-NAME" removes one, "&NAME"
/// makes a group, "*N" adds so many persons.
void changeRoster(const std::string& directory, const Words& changes);

/// A program that runs with its outputs in files that can be read meanwhile.
class RunningTool {
public:
    /// The tool with that line, on that roster.
    RunningTool(const ToolWorld& world, const std::string& line, const std::string& name = "running");

    std::string out() const { return bytesOf(_base + ".out", ""); }
    std::string err() const { return bytesOf(_base + ".err", ""); }
    bool waitForErr(const std::string& text) const;
    /// Waits for that many lines of output and answers them; fewer when they do not come.
    std::vector<Json> waitForLines(std::size_t count) const;
    void kill(int signal) { _process.kill(signal); }
    bool hasEnded() { return _process.hasEnded(); }
    int wait() { return _process.wait().status; }

private:
    const std::string _base;
    Process _process;
};

} // namespace test
