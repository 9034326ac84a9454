// The built tool on rosters of a test's own.
#pragma once

#include "support/Process.h"
#include "support/Role.h"
#include "support/TemporaryFolder.h"
#include "support/TextCases.h"

#include <gmock/gmock.h>
#include <nlohmann/json.hpp>

#include <filesystem>
#include <string>
#include <string_view>
#include <vector>

namespace test {

using Json = nlohmann::json;

/// The words of a command line, parted at the blanks that no quotes enclose.
Words wordsOf(std::string_view line);

/// A folder with one roster in it, which goes with the test.
class ToolWorld {
public:
    std::string path(const std::string& name) const { return _folder / name; }
    std::string roster() const { return path("roster"); }
    /// Writes a file of this world and answers its path.
    std::string write(const std::string& name, const std::string& text) const;

    /// How `roster --roster <this one> line` is started.
    Process::Start start(const std::string& line) const;
    /// Runs it.
    Ended tool(const std::string& line, const std::string& input = {}) const;
    /// Runs it with --json and answers what it printed; null when that is no JSON.
    Json json(const std::string& line) const;
    /// All cards, by `list --json`.
    Json cards() const { return json("list"); }
    std::string idOf(const std::string& name) const;
    /// The picture of a card, from the roster's images; empty without one.
    std::string picture(const Json& card) const;

    void removeRoster() const;

private:
    TemporaryFolder _folder;
};

/// A command that cannot be done: what it ends with, and what is in its one line on standard error.
struct Refusal {
    std::string line;
    int status;
    std::string told;
};

/// A test in a world of its own.
class ToolTest : public testing::Test {
protected:
    /// Runs it and wants status 0.
    Ended done(const std::string& line) const;
    /// Runs each and wants what it says, and nothing on standard output.
    void expectRefusals(const std::vector<Refusal>& all) const;
    /// The names of the records that `roster --json line` prints, in their order.
    std::string names(const std::string& line) const { return namesIn(world.json(line)); }
    static std::string namesIn(const Json& records);

    ToolWorld world;
};

/// Where the shared folder of test data is, or empty; a test that needs it is skipped then.
std::string sharedFolder(std::string_view name);

/// A vCard 3.0 with those lines.
std::string cardOf(std::string_view lines);
/// One with that name and one phone number.
std::string simpleCard(std::string_view family, std::string_view phone);

/// "label=value" of an entry, with a star behind the primary one; a label of ours as "<Home>".
std::string entryText(const Json& entry);
/// The texts of all entries of a property, with blanks between them.
std::string entriesIn(const Json& card, const std::string& property);

/// The card without what differs from import to import: ids, and when it was made.
Json withoutIds(Json card);
/// Cards without the moments of their last change, which the history leaves at what it touched.
Json withoutChange(Json cards);

/// What a file beside these tests says of a line, as support/TextCases.h reads it.
struct LineCase {
    std::string place, line;
    Words wanted;
};
std::vector<LineCase> lineCasesIn(const std::string& name);

} // namespace test
