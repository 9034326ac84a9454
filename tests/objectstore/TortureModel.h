// A model with one of everything that the engine can store, for the tests that hurt it.
#pragma once

#include "objectstore/Model.h"
#include "objectstore/PersistentStore.h"
#include "objectstore/StoreContext.h"
#include "objectstore/StoreCoordinator.h"
#include "objectstore/StoreObject.h"

#include <array>
#include <cstdlib>
#include <filesystem>
#include <random>
#include <stdexcept>
#include <string>
#include <unistd.h>

namespace test {

namespace os = objectstore;

namespace torture {

inline platform::Value lengthOfName(os::StoreObject& object)
{
    const auto& name = object.slot("name");
    return object.isAbsent(name) ? platform::Value()
                                 : platform::Value(static_cast<int>(object.text(name).size()));
}

using enum os::SlotKind;
using enum os::AttributeType;
using os::DeleteRule;

/// Spans two tables, so that a fetch of it reads both, and owns rows whose owner can be in either.
inline constexpr std::array kRecord{
    os::SlotDescription{.key = "uniqueId", .type = string, .flags = os::kIndexed},
    os::SlotDescription{.key = "tags",
        .kind = toMany,
        .destination = "Tag",
        .inverse = "record",
        .deleteRule = DeleteRule::cascade},
};

inline constexpr std::array kPerson{
    os::SlotDescription{.key = "name", .type = string, .flags = os::kIndexed},
    os::SlotDescription{.key = "city", .type = string},
    os::SlotDescription{.key = "age", .type = integer},
    os::SlotDescription{.key = "height", .type = real},
    os::SlotDescription{.key = "isMember", .type = boolean},
    os::SlotDescription{.key = "born", .type = date},
    os::SlotDescription{.key = "token", .type = data},
    os::SlotDescription{.key = "picture", .kind = largeAttribute, .type = data},
    os::SlotDescription{.key = "nameLength", .kind = computed, .type = integer, .get = lengthOfName},
    os::SlotDescription{.key = "friend", .kind = toOne, .destination = "Person"},
    os::SlotDescription{.key = "kind", .kind = toOne, .destination = "Kind"},
    os::SlotDescription{.key = "phones",
        .kind = toMany,
        .destination = "Phone",
        .inverse = "owner",
        .deleteRule = DeleteRule::cascade},
    os::SlotDescription{.key = "note",
        .kind = toOneInverse,
        .destination = "Note",
        .inverse = "person",
        .deleteRule = DeleteRule::cascade},
    os::SlotDescription{.key = "index",
        .kind = toOneInverse,
        .destination = "Index",
        .inverse = "person",
        .deleteRule = DeleteRule::cascade},
    os::SlotDescription{.key = "teams",
        .kind = manyToMany,
        .destination = "Team",
        .inverse = "members",
        .joinTable = "team_member"},
};

inline constexpr std::array kTeam{
    os::SlotDescription{.key = "name", .type = string},
    os::SlotDescription{.key = "members",
        .kind = manyToMany,
        .destination = "Person",
        .inverse = "teams",
        .joinTable = "team_member",
        .leads = true},
    os::SlotDescription{.key = "children",
        .kind = manyToMany,
        .destination = "Team",
        .inverse = "parents",
        .joinTable = "team_child",
        .leads = true},
    os::SlotDescription{.key = "parents",
        .kind = manyToMany,
        .destination = "Team",
        .inverse = "children",
        .joinTable = "team_child"},
};

inline constexpr std::array kClub{os::SlotDescription{.key = "rule", .type = string}};

inline constexpr std::array kPhone{
    os::SlotDescription{.key = "owner", .kind = toOne, .destination = "Person", .inverse = "phones"},
    os::SlotDescription{.key = "uniqueId", .type = string},
    os::SlotDescription{.key = "label", .type = string},
    os::SlotDescription{.key = "place", .type = integer},
    os::SlotDescription{.key = "isPrimary", .type = boolean},
    os::SlotDescription{.key = "number", .type = string},
    os::SlotDescription{.key = "kind", .kind = toOne, .destination = "Kind"},
};

inline constexpr std::array kTag{
    os::SlotDescription{.key = "record", .kind = toOne, .destination = "Record", .inverse = "tags"},
    os::SlotDescription{.key = "word", .type = string},
};

inline constexpr std::array kNote{
    os::SlotDescription{.key = "person", .kind = toOne, .destination = "Person", .inverse = "note"},
    os::SlotDescription{.key = "text", .type = string},
};

inline constexpr std::array kIndex{
    os::SlotDescription{.key = "person", .kind = toOne, .destination = "Person", .inverse = "index"},
    os::SlotDescription{.key = "text", .type = string, .flags = os::kTextIndex},
};

inline constexpr std::array kKind{os::SlotDescription{.key = "code", .type = string}};
inline constexpr std::array<std::string_view, 1> kKindKeys{"code"};

inline constexpr std::array kEntities{
    os::EntityDescription{.name = "Record", .isAbstract = true, .slots = kRecord},
    os::EntityDescription{.name = "Person", .parent = "Record", .table = "person", .slots = kPerson},
    os::EntityDescription{.name = "Team", .parent = "Record", .table = "team", .slots = kTeam},
    os::EntityDescription{.name = "Club", .parent = "Team", .slots = kClub},
    os::EntityDescription{.name = "Phone",
        .table = "phone",
        .slots = kPhone,
        .owner = "owner",
        .unit = {.identifier = "uniqueId", .ordering = "place", .primary = "isPrimary"}},
    os::EntityDescription{.name = "Tag", .table = "tag", .slots = kTag, .owner = "record"},
    os::EntityDescription{.name = "Note", .table = "note", .slots = kNote, .owner = "person"},
    os::EntityDescription{.name = "Index", .table = "text_index", .slots = kIndex, .owner = "person"},
    os::EntityDescription{.name = "Kind", .table = "kind", .slots = kKind, .sharedBy = kKindKeys},
};

} // namespace torture

/// Throws with the error's text: for what must work if a test is to mean anything.
template <class T>
T expected(platform::Result<T> result)
{
    if (!result)
        throw std::runtime_error(result.error().text);
    return *std::move(result);
}
inline void expected(const platform::Result<void>& result)
{
    if (!result)
        throw std::runtime_error(result.error().text);
}

inline platform::Ref<const os::Model> tortureModel()
{
    static const auto model = os::Model::make(torture::kEntities);
    return model;
}

/// A file name that no other test has, in the test's own home.
inline std::string freshStorePath()
{
    static int count = 0;
    return (std::filesystem::temp_directory_path()
        / ("torture-" + std::to_string(getpid()) + "-" + std::to_string(++count) + ".db"))
        .string();
}

/// A coordinator with one store, and contexts on it.
struct Store {
    explicit Store(const std::string& path, const os::StoreOptions& options = {})
        : coordinator(os::StoreCoordinator::make(tortureModel()))
        , store(expected(coordinator->addStore(os::StoreType::sqlite, path, options)))
    {
    }

    platform::Ref<os::StoreContext> makeContext() const
    {
        return platform::makeRef<os::StoreContext>(coordinator);
    }

    platform::Ref<os::StoreCoordinator> coordinator;
    os::PersistentStore* store;
};

/// Random numbers from one seed, so that a failure can be run again: ROSTER_TEST_SEED sets it.
class Dice {
public:
    explicit Dice(std::uint64_t chosen) : seed(chosen), _engine(chosen) { }

    static std::uint64_t chosenSeed(std::uint64_t otherwise)
    {
        const char* chosen = std::getenv("ROSTER_TEST_SEED");
        return chosen ? std::strtoull(chosen, nullptr, 10) : otherwise;
    }

    /// From 0 to `sides` less one.
    std::size_t below(std::size_t sides)
    {
        return std::uniform_int_distribution<std::size_t>(0, sides - 1)(_engine);
    }
    bool chance(int percent) { return below(100) < static_cast<std::size_t>(percent); }
    template <class List>
    auto& among(List& list)
    {
        return list[below(std::size(list))];
    }

    const std::uint64_t seed;

private:
    std::mt19937_64 _engine;
};

} // namespace test
