// Rosters for tests: a folder of their own each, cards in one line, and what a card holds as text.
#pragma once

#include "core/ZRConstants.h"
#include "core/ZRMutableMultiValue.h"
#include "core/ZRPerson.h"
#include "platform/value/Value.h"
#include "store/ZRRoster.h"
#include "support/Role.h"

#include <filesystem>
#include <string>
#include <string_view>
#include <vector>

namespace test {

namespace fs = std::filesystem;
using platform::Ref;
using platform::Value;

/// A home in which a process can have its shared roster. It goes with its contents.
class Home {
public:
    Home();
    ~Home();
    Home(const Home&) = delete;
    Home& operator=(const Home&) = delete;

    const fs::path& path() const { return _path; }
    fs::path rosterDirectory() const { return _path / "data/Roster"; }
    fs::path storeFile() const { return rosterDirectory() / "Roster-v22.zrosdb"; }
    /// What a process that plays there finds in its environment.
    Stage stage(std::map<std::string, std::string> environment = {}, uid_t user = 0) const;
    Outcome play(const std::string& role, const Words& words = {}) const
    {
        return test::play(role, words, stage());
    }
    void belongTo(uid_t user) const;
    /// What the user prefers for this program, by the keys of its preferences.
    void setPreferences(const Value& preferences) const;

private:
    fs::path _path;
};

/// The shared roster of a process that wants no samples in it. Throws with the opening report when there is
/// none.
Ref<ZRRoster> openShared();

/// An entry of a multi-value to be.
struct Entry {
    Value value;
    std::string_view label;
};
/// The entry at `primary` comes first.
Value multiValue(const std::vector<Entry>& entries, ZRIndex primary = 0);

/// A person of `roster` with those properties.
Ref<ZRPerson> person(
    const Ref<ZRRoster>& roster, const std::vector<std::pair<std::string_view, Value>>& properties);

/// The value with its kind, so that 5 and 5.0 differ; a multi-value with identifiers, labels and primary.
std::string textOf(const Value& value);
/// All properties of the record, a line each; those in `days` by their calendar day in the local zone.
std::string textOf(const ZRRecord& record, const std::vector<std::string_view>& days = {});

} // namespace test
