// What every command of the tool shares: its options, its exit statuses and how it prints.
#pragma once

#include "store/ZRRoster.h"

#include <nlohmann/json.hpp>

#include <optional>
#include <stdexcept>
#include <string>
#include <vector>

/// What a command was told, as the command line gave it.
struct Options {
    std::string directory;
    std::vector<std::string> defaults;
    /// The command as it was typed, the options that name the roster aside: what a step is called.
    std::string title;
    bool json = false;

    /// A group, by name or id.
    std::string group;
    std::vector<std::string> words;
    std::string format;
    std::string prepare = "full";
    /// Of an import: what is done about people who are there already; empty: as the preferences say.
    std::string duplicates;
    /// Of an import: cards of groups, and categories, become groups.
    bool groupCards = false;
    bool groupsFromCategories = false;
    std::string sort;
    std::size_t limit = 0;
    /// As many addresses as a person looks through; 0: all.
    std::size_t completions = 200;
    /// Of a search: the rules, whether one of them is enough, and how the first name begins.
    std::vector<std::string> rules;
    bool any = false;
    std::string first;
    /// Of groups: the words name groups; those below count, too; only smart groups are meant.
    bool asGroups = false;
    bool deep = false;
    bool smart = false;
    /// Of a smart group: whether it notes that its members change; that its changes were seen.
    std::optional<bool> tracks;
    bool seen = false;
    /// Of a card: what is set and taken out.
    std::vector<std::string> sets;
    std::vector<std::string> unsets;
    /// Of duplicates: which kinds are listed (none named: all), and which are merged.
    std::vector<std::string> kinds;
    std::vector<std::string> merges;
    /// Of an export: where it goes, what is in it though the preferences say otherwise, whether all must be.
    std::string output;
    std::optional<bool> withNotes;
    std::optional<bool> withPhotos;
    bool withGroups = false;
    bool strict = false;
    bool withSamples = false;
    bool plan = false;
    bool explain = false;
    bool once = false;
    /// Of undo and redo: go on though records are not as the step left them.
    bool force = false;
    /// Of the history: forget it.
    bool clear = false;
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
/// The same for a command that changes the roster: whatever the process saves from here on is one step of the
/// history, under the title of the command line, which `roster undo` takes back as a whole. A command that
/// saves nothing leaves no step.
platform::Ref<ZRRoster> openRosterToChange(const Options& options);

/// Writes the roster's changes to the disk; raises a Failure with status 3 when that is refused.
void save(ZRRoster& roster);

/// A JSON document as we print it, without the line end.
std::string jsonText(const Json& json);
/// Writes one JSON document with a line end to standard output.
void printJson(const Json& json);
/// Writes bytes to standard output as they are.
void printBytes(std::string_view bytes);
/// Writes all of it to a descriptor. Answers 0, or the system's error number.
int writeAll(int descriptor, std::string_view bytes);
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
int runAdd(const Options&);
int runEdit(const Options&);
int runRemove(const Options&);
int runDuplicates(const Options&);
int runMerge(const Options&);
int runExport(const Options&);
int runSearch(const Options&);
int runQuery(const Options&);
int runGroupList(const Options&);
int runGroupShow(const Options&);
int runGroupMembers(const Options&);
int runGroupSubgroups(const Options&);
int runGroupMake(const Options&);
int runGroupRename(const Options&);
int runGroupDelete(const Options&);
int runGroupAdd(const Options&);
int runGroupRemove(const Options&);
int runGroupReach(const Options&);
int runSmartGroupMake(const Options&);
int runSmartGroupEdit(const Options&);
int runSmartGroupShow(const Options&);
int runStats(const Options&);
int runCheck(const Options&);
int runWatch(const Options&);
int runUndo(const Options&);
int runRedo(const Options&);
int runHistory(const Options&);
int runComplete(const Options&);
