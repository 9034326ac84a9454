// A small library of authors and books, with one of each thing that a model can describe.
#pragma once

#include "objectstore/Model.h"
#include "objectstore/StoreObject.h"

#include <array>
#include <string>
#include <vector>

namespace test {

namespace os = objectstore;
using os::StoreObject;
using platform::Value;

/// Counts what the engine calls.
class Author : public StoreObject {
public:
    explicit Author(const os::Entity& entity) : StoreObject(entity) { }

    void awakeFromInsert() override { setPrimitiveValue(slot("visits"), 0); }
    void willSave() override { ++willSaves; }
    void didSave() override { ++didSaves; }
    void didTurnIntoFault() override { ++faults; }
    void didChange(const os::Slot& changed) override { changes.push_back(changed.key); }

    int willSaves = 0, didSaves = 0, faults = 0;
    std::vector<std::string> changes;

protected:
    ~Author() override = default;
};

namespace library {

using enum os::SlotKind;
using enum os::AttributeType;
using os::DeleteRule;

inline platform::Ref<StoreObject> makeAuthor(const os::Entity& entity)
{
    return platform::Ref<StoreObject>::adopt(new Author(entity));
}

/// "Lima Ana" of "Ana Lima".
inline Value sortName(StoreObject& author)
{
    const std::string name(author.text(author.slot("name")));
    const std::size_t blank = name.rfind(' ');
    if (name.empty())
        return {};
    return blank == name.npos ? name : name.substr(blank + 1) + " " + name.substr(0, blank);
}
inline void forgetSortName(StoreObject& author) { author.setPrimitiveValue(author.slot("sortName"), {}); }
inline Value nameLength(StoreObject& author)
{
    const auto& name = author.slot("name");
    return author.isAbsent(name) ? Value() : Value(static_cast<int>(author.text(name).size()));
}
inline void cutName(StoreObject& author, const Value& length)
{
    const std::string name(author.text(author.slot("name")));
    author.setValueForKey("name", name.substr(0, static_cast<std::size_t>(length.asInteger())));
}

/// Rows, or the one row, of a table of their own that go with their owner.
constexpr os::SlotDescription parts(
    std::string_view key, os::SlotKind kind, std::string_view destination, std::string_view inverse)
{
    return {.key = key,
        .kind = kind,
        .destination = destination,
        .inverse = inverse,
        .deleteRule = DeleteRule::cascade};
}
enum class Side { leading, other };
constexpr os::SlotDescription links(std::string_view key, std::string_view destination,
    std::string_view inverse, std::string_view joinTable, Side side)
{
    return {.key = key,
        .kind = manyToMany,
        .destination = destination,
        .inverse = inverse,
        .joinTable = joinTable,
        .leads = side == Side::leading};
}

/// Spans three tables, so that a fetch of it reads all, and owns rows whose owner can be in any.
inline constexpr std::array kItem{
    os::SlotDescription{.key = "uniqueId", .type = string, .flags = os::kIndexed},
    parts("handles", toMany, "Handle", "owner"),
};

inline constexpr std::array kAuthor{
    os::SlotDescription{.key = "name", .type = string, .flags = os::kIndexed, .didSet = forgetSortName},
    os::SlotDescription{.key = "sortName", .type = string, .flags = os::kIndexed, .lazy = sortName},
    os::SlotDescription{
        .key = "nameLength", .kind = computed, .type = integer, .get = nameLength, .set = cutName},
    os::SlotDescription{.key = "city", .type = string},
    os::SlotDescription{.key = "visits", .type = integer},
    os::SlotDescription{.key = "rating", .type = real},
    os::SlotDescription{.key = "score", .type = number},
    os::SlotDescription{.key = "isLiving", .type = boolean},
    os::SlotDescription{.key = "born", .type = date},
    os::SlotDescription{.key = "seal", .type = data},
    os::SlotDescription{.key = "portrait", .kind = largeAttribute, .type = data},
    os::SlotDescription{.key = "draft", .flags = os::kTransient},
    os::SlotDescription{.key = "friend", .kind = toOne, .destination = "Author"},
    os::SlotDescription{.key = "site", .kind = toOne, .destination = "Site"},
    parts("biography", toOneInverse, "Biography", "author"),
    parts("index", toOneInverse, "Index", "author"),
    os::SlotDescription{
        .key = "featuredIn", .kind = toOneInverse, .destination = "Shelf", .inverse = "featured"},
    links("books", "Book", "authors", "author_book", Side::leading),
};

inline constexpr std::array kPenName{os::SlotDescription{.key = "alias", .type = string}};

inline constexpr std::array kBook{
    os::SlotDescription{.key = "title", .type = string, .flags = os::kUnique},
    os::SlotDescription{.key = "genre", .type = string},
    links("authors", "Author", "books", "author_book", Side::other),
    os::SlotDescription{.key = "shelf", .kind = toOne, .destination = "Shelf"},
    links("volumes", "Book", "series", "volume", Side::leading),
    links("series", "Book", "volumes", "volume", Side::other),
};

inline constexpr std::array kShelf{
    os::SlotDescription{.key = "name", .type = string},
    os::SlotDescription{.key = "featured", .kind = toOne, .destination = "Author"},
    os::SlotDescription{.key = "contents",
        .kind = toMany,
        .destination = "Book",
        .inverse = "shelf",
        .deleteRule = DeleteRule::nullify},
};

inline constexpr std::array kHandle{
    os::SlotDescription{.key = "owner", .kind = toOne, .destination = "Item"},
    os::SlotDescription{.key = "uniqueId", .type = string},
    os::SlotDescription{.key = "site", .kind = toOne, .destination = "Site"},
    os::SlotDescription{.key = "place", .type = integer},
    os::SlotDescription{.key = "isPrimary", .type = boolean},
    os::SlotDescription{.key = "label", .type = string},
    os::SlotDescription{.key = "text", .type = string},
};

inline constexpr std::array kBiography{
    os::SlotDescription{.key = "author", .kind = toOne, .destination = "Author"},
    os::SlotDescription{.key = "text", .type = string},
};

inline constexpr std::array kIndex{
    os::SlotDescription{.key = "author", .kind = toOne, .destination = "Author"},
    os::SlotDescription{.key = "text", .type = string, .flags = os::kTextIndex},
};

inline constexpr std::array kSite{os::SlotDescription{.key = "name", .type = string}};
inline constexpr std::array<std::string_view, 1> kSiteKeys{"name"};

inline constexpr std::array kEntities{
    os::EntityDescription{.name = "Item", .isAbstract = true, .slots = kItem},
    os::EntityDescription{
        .name = "Author", .parent = "Item", .table = "author", .slots = kAuthor, .make = makeAuthor},
    os::EntityDescription{.name = "PenName", .parent = "Author", .slots = kPenName},
    os::EntityDescription{.name = "Book", .parent = "Item", .table = "book", .slots = kBook},
    os::EntityDescription{.name = "Shelf", .parent = "Item", .table = "shelf", .slots = kShelf},
    os::EntityDescription{.name = "Handle",
        .table = "handle",
        .slots = kHandle,
        .owner = "owner",
        .unit =
            {.identifier = "uniqueId", .discriminator = "site", .ordering = "place", .primary = "isPrimary"}},
    os::EntityDescription{.name = "Biography", .table = "biography", .slots = kBiography, .owner = "author"},
    os::EntityDescription{.name = "Index", .table = "author_index", .slots = kIndex, .owner = "author"},
    os::EntityDescription{.name = "Site", .table = "site", .slots = kSite, .sharedBy = kSiteKeys},
};

} // namespace library

inline platform::Ref<const os::Model> libraryModel()
{
    static const auto model = os::Model::make(library::kEntities);
    return model;
}

inline const os::Entity& entityNamed(std::string_view name) { return *libraryModel()->entity(name); }

} // namespace test
