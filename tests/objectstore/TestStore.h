// Stores of the library in files of their own, and what tests do in them again and again.
#pragma once

#include "objectstore/PersistentStore.h"
#include "objectstore/StoreContext.h"
#include "objectstore/StoreCoordinator.h"
#include "objectstore/TestModel.h"

#include <unistd.h>

#include <cstdlib>
#include <filesystem>
#include <random>
#include <stdexcept>
#include <string>
#include <vector>

namespace test {

using os::ObjectList;
using os::ObjectRef;

/// The answer, or an exception with the error's text: for what must work if a test is to mean anything.
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

/// A file name that no other test uses, in the test's own home.
inline std::string freshPath(std::string_view suffix = ".db")
{
    static int count = 0;
    return (std::filesystem::temp_directory_path()
        / ("store-" + std::to_string(getpid()) + "-" + std::to_string(++count) + std::string(suffix)))
        .string();
}

/// A coordinator with one store, and contexts on it.
struct Store {
    explicit Store(const std::string& path = freshPath(), const os::StoreOptions& options = {},
        const platform::Ref<const os::Model>& model = libraryModel())
        : coordinator(os::StoreCoordinator::make(model))
        , store(must(coordinator->addStore(os::StoreType::sqlite, path, options)))
    {
    }

    platform::Ref<os::StoreContext> makeContext() const
    {
        return platform::makeRef<os::StoreContext>(coordinator);
    }

    platform::Ref<os::StoreCoordinator> coordinator;
    os::PersistentStore* store;
};

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

inline ObjectList fetchAll(
    os::StoreContext& context, std::string_view entity, os::PredicateRef predicate = nullptr)
{
    return must(context.runFetch(os::StoreFetch(entityNamed(entity), std::move(predicate))));
}

/// The first whose text that is; null without one.
inline ObjectRef fetchOne(
    os::StoreContext& context, std::string_view entity, std::string_view key, std::string_view text)
{
    const auto found =
        fetchAll(context, entity, os::StorePredicate::compare(key, os::Comparator::equal, Value(text)));
    return found.empty() ? nullptr : found.front();
}
inline ObjectRef fetchAuthor(os::StoreContext& context, std::string_view name)
{
    return fetchOne(context, "Author", "name", name);
}

inline std::string textOf(StoreObject& object, std::string_view path)
{
    return std::string(object.valueForKeyPath(path).asText());
}

/// The texts under one key, in the order of the list.
inline std::vector<std::string> texts(const ObjectList& objects, std::string_view key)
{
    std::vector<std::string> found;
    for (const auto& object : objects)
        found.push_back(textOf(*object, key));
    return found;
}

/// Random numbers from one seed, so that a failure can be run again: ROSTER_TEST_SEED sets it.
class Dice {
public:
    explicit Dice(std::uint64_t otherwise) : seed(chosenSeed(otherwise)), _engine(seed) { }

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
    static std::uint64_t chosenSeed(std::uint64_t otherwise)
    {
        const char* chosen = std::getenv("ROSTER_TEST_SEED");
        return chosen ? std::strtoull(chosen, nullptr, 10) : otherwise;
    }

    std::mt19937_64 _engine;
};

} // namespace test
