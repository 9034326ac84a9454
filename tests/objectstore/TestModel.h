// A small library of authors and books, with one of each thing that a model can describe.
#pragma once

#include "objectstore/Model.h"
#include "objectstore/PersistentStore.h"
#include "objectstore/StoreContext.h"
#include "objectstore/StoreCoordinator.h"
#include "objectstore/StoreObject.h"

#include <sqlite3.h>
#include <unistd.h>

#include <array>
#include <filesystem>
#include <stdexcept>
#include <string>
#include <vector>

namespace test {

namespace os = objectstore;
using os::ObjectList;
using os::ObjectRef;
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

/// "lima ana" of "Ana Lima".
inline Value sortName(StoreObject& author)
{
    const std::string name(author.text(author.slot("name")));
    const std::size_t blank = name.rfind(' ');
    if (name.empty())
        return {};
    return blank == name.npos ? name : name.substr(blank + 1) + " " + name.substr(0, blank);
}
inline void forgetSortName(StoreObject& author) { author.setPrimitiveValue(author.slot("sortName"), {}); }
inline Value initials(StoreObject& author)
{
    const std::string name(author.text(author.slot("name")));
    return name.empty() ? Value() : Value(name.substr(0, 1));
}
inline void setInitials(StoreObject& author, const Value& value) { author.setValueForKey("name", value); }

inline constexpr std::array kItem{
    os::SlotDescription{.key = "uniqueId", .type = string, .flags = os::kIndexed}};

inline constexpr std::array kAuthor{
    os::SlotDescription{.key = "name", .type = string, .flags = os::kIndexed, .didSet = forgetSortName},
    os::SlotDescription{.key = "sortName", .type = string, .flags = os::kIndexed, .lazy = sortName},
    os::SlotDescription{
        .key = "initials", .kind = computed, .type = string, .get = initials, .set = setInitials},
    os::SlotDescription{.key = "visits", .type = integer},
    os::SlotDescription{.key = "rating", .type = real},
    os::SlotDescription{.key = "score", .type = number},
    os::SlotDescription{.key = "isLiving", .type = boolean},
    os::SlotDescription{.key = "born", .type = date},
    os::SlotDescription{.key = "seal", .type = data},
    os::SlotDescription{.key = "portrait", .kind = largeAttribute, .type = data},
    os::SlotDescription{.key = "draft", .flags = os::kTransient},
    os::SlotDescription{.key = "handles",
        .kind = toMany,
        .destination = "Handle",
        .inverse = "owner",
        .deleteRule = DeleteRule::cascade},
    os::SlotDescription{.key = "biography",
        .kind = toOneInverse,
        .destination = "Biography",
        .inverse = "author",
        .deleteRule = DeleteRule::cascade},
    os::SlotDescription{.key = "index",
        .kind = toOneInverse,
        .destination = "Index",
        .inverse = "author",
        .deleteRule = DeleteRule::cascade},
    os::SlotDescription{
        .key = "featuredIn", .kind = toOneInverse, .destination = "Shelf", .inverse = "featured"},
    os::SlotDescription{.key = "books",
        .kind = manyToMany,
        .destination = "Book",
        .inverse = "authors",
        .joinTable = "author_book",
        .leads = true},
};

inline constexpr std::array kPenName{os::SlotDescription{.key = "alias", .type = string}};

inline constexpr std::array kBook{
    os::SlotDescription{.key = "title", .type = string, .flags = os::kUnique},
    os::SlotDescription{.key = "authors",
        .kind = manyToMany,
        .destination = "Author",
        .inverse = "books",
        .joinTable = "author_book"},
    os::SlotDescription{.key = "shelf", .kind = toOne, .destination = "Shelf"},
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

/// The answer, or an exception with the error's text.
template <class T>
T must(platform::Result<T> result)
{
    if (!result)
        throw std::runtime_error(result.error().text);
    return *std::move(result);
}
inline void must(const platform::Result<void>& result)
{
    if (!result)
        throw std::runtime_error(result.error().text);
}

/// A file name that no other test uses.
inline std::string freshPath(std::string_view suffix = ".db")
{
    static int count = 0;
    return (std::filesystem::temp_directory_path()
        / ("library-" + std::to_string(getpid()) + "-" + std::to_string(++count) + std::string(suffix)))
        .string();
}

inline platform::Ref<os::StoreCoordinator> openLibrary(
    const std::string& path, const os::StoreOptions& options = {})
{
    auto coordinator = os::StoreCoordinator::make(libraryModel());
    must(coordinator->addStore(os::StoreType::sqlite, path, options));
    return coordinator;
}

inline const os::Entity& entityNamed(std::string_view name) { return *libraryModel()->entity(name); }

inline ObjectRef addAuthor(os::StoreContext& context, std::string_view name)
{
    ObjectRef author = context.insertObjectOfEntity("Author");
    author->setValueForKey("name", name);
    author->setValueForKey("uniqueId", std::string(name) + ":Author");
    return author;
}

struct HandleText {
    std::string id;
    std::string text;
    int place = 0;
    bool isPrimary = false;
    std::string site = {};
};

inline ObjectRef addHandle(os::StoreContext& context, StoreObject& owner, const HandleText& told)
{
    ObjectRef handle = context.insertObjectOfEntity("Handle");
    handle->setValueForKey("uniqueId", told.id);
    handle->setValueForKey("text", told.text);
    handle->setValueForKey("place", told.place);
    handle->setValueForKey("isPrimary", told.isPrimary);
    if (!told.site.empty())
        handle->setRelated(
            handle->slot("site"), must(context.sharedObject(entityNamed("Site"), {told.site})).get());
    handle->setRelated(handle->slot("owner"), &owner);
    return handle;
}

inline ObjectList fetchAll(os::StoreContext& context, std::string_view entity)
{
    return must(context.runFetch(os::StoreFetch(entityNamed(entity))));
}

inline ObjectRef fetchAuthor(os::StoreContext& context, std::string_view name)
{
    const os::StoreFetch fetch(
        entityNamed("Author"), os::StorePredicate::compare("name", os::Comparator::equal, std::string(name)));
    const ObjectList found = must(context.runFetch(fetch));
    return found.empty() ? nullptr : found.front();
}

/// Runs statements on a connection of its own, as another program would.
inline void runSQL(const std::string& path, const char* sql)
{
    sqlite3* connection = nullptr;
    const bool isDone = sqlite3_open(path.c_str(), &connection) == SQLITE_OK
        && sqlite3_exec(connection, sql, nullptr, nullptr, nullptr) == SQLITE_OK;
    const std::string reason = sqlite3_errmsg(connection);
    sqlite3_close(connection);
    if (!isDone)
        throw std::runtime_error(reason);
}

/// The first column of the first row.
inline std::string askSQL(const std::string& path, const std::string& sql)
{
    sqlite3* connection = nullptr;
    sqlite3_stmt* statement = nullptr;
    std::string answer;
    if (sqlite3_open(path.c_str(), &connection) != SQLITE_OK
        || sqlite3_prepare_v2(connection, sql.c_str(), -1, &statement, nullptr) != SQLITE_OK)
        answer = sqlite3_errmsg(connection);
    else if (sqlite3_step(statement) == SQLITE_ROW && sqlite3_column_text(statement, 0))
        answer = reinterpret_cast<const char*>(sqlite3_column_text(statement, 0));
    sqlite3_finalize(statement);
    sqlite3_close(connection);
    return answer;
}

/// The texts under one key, in the order of the list.
inline std::vector<std::string> texts(const ObjectList& objects, std::string_view key)
{
    std::vector<std::string> found;
    for (const auto& object : objects)
        found.emplace_back(object->text(object->slot(key)));
    return found;
}

} // namespace test
