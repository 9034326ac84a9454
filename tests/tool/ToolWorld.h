// The built tool on rosters of a test's own.
#pragma once

#include "support/Process.h"

#include <nlohmann/json.hpp>

#include <filesystem>
#include <string>
#include <string_view>
#include <vector>

namespace test {

using Json = nlohmann::json;

/// A folder with one roster in it, which goes with the test.
class ToolWorld {
public:
    ToolWorld();
    ~ToolWorld();
    ToolWorld(const ToolWorld&) = delete;
    ToolWorld& operator=(const ToolWorld&) = delete;

    std::string path(std::string_view name) const { return (_folder / name).string(); }
    std::string roster() const { return path("roster"); }
    /// Writes a file of this world and answers its path.
    std::string write(std::string_view name, std::string_view text) const;

    /// How `roster --roster <this one> words…` is started.
    Process::Start start(const std::vector<std::string>& words) const;
    /// Runs it.
    Ended tool(const std::vector<std::string>& words, const std::string& input = {}) const;
    /// Runs it with --json and answers what it printed; null when that is no JSON.
    Json json(const std::vector<std::string>& words) const;
    /// All cards, by `list --json`.
    Json cards() const { return json({"list"}); }
    /// The picture of a card, from the roster's images; empty without one.
    std::string picture(const Json& card) const;

    void removeRoster() const;

private:
    std::filesystem::path _folder;
};

/// Where the shared folder of test data is, or empty; a test that needs it is skipped then.
std::string sharedFolder(std::string_view name);

/// A vCard 3.0 with that name and one phone number.
std::string simpleCard(std::string_view family, std::string_view phone);

/// The card without what differs from import to import: ids, and when it was made.
Json withoutIds(Json card);

std::string contentsOf(const std::string& path);

} // namespace test
