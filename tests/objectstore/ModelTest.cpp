// Which descriptions make a model, and which contradict themselves.
#include "objectstore/TestStore.h"

#include "objectstore/SchemaSQL.h"

#include <gmock/gmock.h>

namespace test {
namespace {

using os::EntityDescription;
using os::SlotDescription;
using enum os::SlotKind;
using enum os::AttributeType;

struct Contradiction {
    const char* why;
    std::vector<SlotDescription> slots;
    EntityDescription entity;
};

TEST(Model, RefusesContradictions)
{
    const SlotDescription owner{.key = "owner", .kind = toOne, .destination = "Root"};
    const Contradiction table[] = {
        {"unknown parent", {}, {.name = "A", .parent = "Nobody", .table = "a"}},
        {"no table", {}, {.name = "A"}},
        {"described twice", {}, {.name = "Root", .table = "a"}},
        {"one key twice", {{.key = "x", .type = string}, {.key = "x", .type = string}},
            {.name = "A", .table = "a"}},
        {"untyped", {{.key = "x"}}, {.name = "A", .table = "a"}},
        {"computed without getter", {{.key = "x", .kind = computed}}, {.name = "A", .table = "a"}},
        {"unknown destination", {{.key = "x", .kind = toOne, .destination = "B"}},
            {.name = "A", .table = "a"}},
        {"to-many without inverse", {{.key = "x", .kind = toMany, .destination = "Root"}},
            {.name = "A", .table = "a"}},
        {"join without table", {{.key = "x", .kind = manyToMany, .destination = "Root"}},
            {.name = "A", .table = "a"}},
        {"unknown owner", {}, {.name = "A", .table = "a", .owner = "owner"}},
        {"unit without owner", {{.key = "x", .type = string}},
            {.name = "A", .table = "a", .unit = {.identifier = "x"}}},
        {"text without owner", {{.key = "x", .type = string, .flags = os::kTextIndex}},
            {.name = "A", .table = "a"}},
        {"two owners in a table", {owner}, {.name = "A", .table = "root", .owner = "owner"}},
        {"one column of two types", {{.key = "name", .type = integer}}, {.name = "A", .table = "root"}},
    };
    const std::array rootSlots{SlotDescription{.key = "name", .type = string}};
    for (const auto& [why, slots, description] : table) {
        std::array entities{
            EntityDescription{.name = "Root", .table = "root", .slots = rootSlots}, description};
        entities[1].slots = slots;
        EXPECT_THROW(os::Model::make(entities), std::logic_error) << why;
    }
}

TEST(Model, SlotsOfAnEntityAreThoseOfItsDescendants)
{
    const os::Entity &author = entityNamed("Author"), &pen = entityNamed("PenName");
    EXPECT_EQ(author.slot("name"), pen.slot("name"));
    EXPECT_EQ(pen.slots()[author.slot("name")->index], author.slot("name"));
    EXPECT_EQ(author.slot("alias"), nullptr);
    EXPECT_EQ(author.family(), pen.family());
    EXPECT_EQ(entityNamed("Item").families().size(), 3u);
}

TEST(Model, ItsHashFollowsTheSchemaOnly)
{
    const auto model = libraryModel();
    EXPECT_EQ(os::Model::make(library::kEntities)->schemaHash(), model->schemaHash());
    auto entities = library::kEntities;
    entities[1].make = nullptr;
    EXPECT_EQ(os::Model::make(entities)->schemaHash(), model->schemaHash());
    auto slots = library::kShelf;
    slots[0].flags = os::kIndexed;
    entities[4].slots = slots;
    EXPECT_NE(os::Model::make(entities)->schemaHash(), model->schemaHash());
}

} // namespace
} // namespace test
