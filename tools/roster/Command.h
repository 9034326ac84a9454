// What every command of the tool shares: its options, its exit statuses and how it prints.
#pragma once

#include "store/ZRRoster.h"

#include <nlohmann/json.hpp>

#include <stdexcept>
#include <string>
#include <vector>

/// What a command was told, as the command line gave it.
struct Options {
    std::string directory;
    std::vector<std::string> defaults;
    bool json = false;

    std::vector<std::string> words;
    std::string format;
    std::string prepare = "full";
    std::string sort;
    std::size_t limit = 0;
    bool withSamples = false;
    bool plan = false;
    bool explain = false;
    bool once = false;
};

namespace exitStatus {
constexpr int done = 0;
constexpr int refused = 1; // nothing found, or some input refused
constexpr int usage = 2;
constexpr int noStore = 3;
} // namespace exitStatus

/// Ends the command with a status and one line on standard error; none when the text is empty.
struct Failure : std::runtime_error {
    Failure(int exitStatus, const std::string& text) : std::runtime_error(text), status(exitStatus) { }
    int status;
};

using Json = nlohmann::ordered_json;

/// Makes the options' preferences and directory those of this process. Opens nothing.
void applyPreferences(const Options& options);
/// The roster that the options name, open; raises a Failure with status 3 when it cannot be used.
platform::Ref<ZRRoster> openRoster(const Options& options, bool withSamples = false);

/// Writes one JSON document with a line end to standard output.
void printJson(const Json& json);
/// Writes text for people; what would control their terminal is replaced.
void print(std::string_view text);
/// Writes as much of `text` as standard output takes at once, and takes it off. False when the reader has
/// gone.
bool writeSome(std::string& text);
/// One line on standard error, "roster: " in front.
void complain(std::string_view text);
/// The text without characters that control a terminal, line ends and tabs aside.
std::string printable(std::string_view text);

int runInit(const Options&);
int runImport(const Options&);
int runList(const Options&);
int runShow(const Options&);
int runMe(const Options&);
int runStats(const Options&);
int runCheck(const Options&);
int runWatch(const Options&);
