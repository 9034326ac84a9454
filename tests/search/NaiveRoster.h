// What cards, groups and searches are, told plainly: what the naive search looks at.
#pragma once

#include "core/ZRPropertyType.h"
#include "core/ZRTypes.h"
#include "platform/value/Value.h"

#include <array>
#include <map>
#include <optional>
#include <set>
#include <string>
#include <string_view>
#include <vector>

namespace test {

using platform::Date;
using platform::Value;

/// The parts of an address that can be asked for, and those that a search of whole addresses goes through.
inline constexpr std::array<std::string_view, 8> kAddressParts{
    "Street", "City", "State", "ZIP", "Country", "CountryCode", "Region", "Sama"};
inline constexpr std::array<std::string_view, 7> kSearchedAddressParts{
    "Street", "City", "State", "ZIP", "Country", "Region", "Sama"};

/// A search, told plainly: a comparison, or several joined.
struct Condition {
    std::optional<std::string> property = {};
    std::optional<std::string> label = {};
    std::optional<std::string> key = {};
    Value value = {};
    ZRSearchComparison comparison = kZREqual;
    bool ofPeople = true;
    bool ignoresDiacritics = false;

    ZRSearchConjunction conjunction = kZRConjunctionAnd;
    /// Two or more: then the above means nothing.
    std::vector<Condition> children = {};
};

struct NaiveEntry {
    std::string label;
    Value value;
};

/// What a card or group says of itself when its properties are read.
struct NaiveRecord {
    enum class Kind { person, group, smartGroup };

    std::string id = {};
    Kind kind = Kind::person;
    std::map<std::string, Value, std::less<>> values = {};
    std::map<std::string, std::vector<NaiveEntry>, std::less<>> entries = {};
    /// The groups that have it as a member or a subgroup.
    std::set<std::string> parents = {};
    /// It had a note that was taken away, and was not saved since.
    bool hasEmptyNote = false;
    bool isOfLastImport = false;

    bool isPerson() const { return kind == Kind::person; }
};

struct NaiveRoster {
    std::map<std::string, NaiveRecord> records = {};
    /// By the group's id.
    std::map<std::string, Condition> smartGroups = {};
    /// The properties that were declared, for people and for groups.
    std::map<std::string, ZRPropertyType, std::less<>> personTypes = {};
    std::map<std::string, ZRPropertyType, std::less<>> groupTypes = {};
};

/// The type of a built-in or declared property; 0 for one that records of the kind do not have.
ZRPropertyType typeOf(const NaiveRoster& roster, std::string_view property, NaiveRecord::Kind kind);
bool isCustom(const NaiveRoster& roster, std::string_view property, NaiveRecord::Kind kind);

/// Everything of a card that a search of whole cards goes through, as it was typed.
std::string indexTextOf(const NaiveRecord& record);

/// What a save does to the record: entries without a text are dropped, and so is a note that was taken away.
void dropEmptyEntries(NaiveRecord& record);

} // namespace test
