// The same authors, books and handles twice: as stored objects, and as plain things that need no engine.
#pragma once

#include "objectstore/TestStore.h"

#include <algorithm>
#include <map>
#include <memory>
#include <string>
#include <vector>

namespace test {

/// What is stored of an object, told plainly: values by key, and the things at the other ends.
struct Thing {
    ObjectRef object;
    std::map<std::string, Value, std::less<>> values = {};
    std::map<std::string, std::vector<Thing*>, std::less<>> related = {};

    const std::vector<Thing*>& behind(std::string_view key) const
    {
        static const std::vector<Thing*> nothing;
        const auto at = related.find(key);
        return at == related.end() ? nothing : at->second;
    }
    /// Absent where a relationship on the way is.
    Value at(std::string_view path) const
    {
        const auto dot = path.find('.');
        if (dot == std::string_view::npos) {
            const auto value = values.find(path);
            return value == values.end() ? Value() : value->second;
        }
        const auto key = path.substr(0, dot), rest = path.substr(dot + 1);
        if (key == os::kSelf)
            return at(rest);
        return behind(key).empty() ? Value() : behind(key).front()->at(rest);
    }
};

using Things = std::vector<std::unique_ptr<Thing>>;
/// Values to choose from.
using Pool = std::vector<Value>;

/// Something of everything: texts that differ in case, marks or length, quotes, wildcards, other scripts.
inline const Pool kTexts{"", "a", "Ana", "ana", "ANA", "\u00c1na", "A\u0301na", "Anabel", "banana",
    "stra\u00dfe", "STRASSE", "abc", "abcd", "xabcdx", "a\"b", "a'b", "50%_off", "\u65e5\u672c\u8a9e",
    "\u304b\u3099", "\u304c", std::string("nul\0abcd", 8), "\U0001f600 abcd \U0001f600", "tab\tand\nline",
    "z\\z"};
inline const Pool kWholes{
    0, 1, 2, -1, 7, 8, 128, 129, 1000000007, INT64_MAX, INT64_MIN, (std::int64_t(1) << 53) + 1};
inline const Pool kReals{0.0, 1.0, 1.5, -2.25, 0.1, 86400.0, 1e300, 9007199254740992.0};
inline const Pool kTruths{true, false};

template <class Make>
Pool made(const Pool& from, Make make)
{
    Pool pool;
    std::ranges::transform(from, std::back_inserter(pool), make);
    return pool;
}
inline const Pool kBytes = made(kTexts, [](const Value& text) { return Value::data(text.asText()); });
inline const Pool kDates =
    made(kReals, [](const Value& real) { return Value(platform::Date{real.asReal()}); });

/// Every edit is made to both; what is read back must agree.
class PredicateWorld {
public:
    PredicateWorld(Dice& dice, const Store& store) : context(store.makeContext()), _dice(dice)
    {
        for (const char* name : {"red", "Blue", "bleu"})
            add(sites, must(context->sharedObject(entityNamed("Site"), {name}))).values["name"] = name;
        for (int i = 0; i < 6; ++i)
            addBook();
        for (int i = 0; i < 30; ++i)
            addAuthor();
    }

    /// One of them, or none.
    Value any(const Pool& pool) { return _dice.chance(20) ? Value() : _dice.among(pool); }

    void edit()
    {
        switch (_dice.below(12)) {
        case 0:
            return addAuthor();
        case 1:
            return removeAuthor();
        case 2:
            return addBook();
        case 3:
            return _dice.chance(30) ? set(anyOf(books), "genre", any(kTexts))
                                    : toggle(anyOf(books), "volumes", anyOf(books));
        case 4: {
            const std::size_t site = _dice.below(sites.size());
            return set(*sites[site], "name",
                Value(std::string(_dice.among(kTexts).asText()) + std::to_string(site)));
        }
        default:
            return editAuthor(anyOf(authors));
        }
    }

    Thing& anyOf(const Things& things) { return *_dice.among(things); }

    Things authors, books, sites;
    const platform::Ref<os::StoreContext> context;

private:
    static Thing& add(Things& things, const ObjectRef& object)
    {
        return *things.emplace_back(std::make_unique<Thing>(Thing{object}));
    }
    Thing& add(Things& things, std::string_view entity)
    {
        return add(things, context->insertObjectOfEntity(entity));
    }

    void addAuthor()
    {
        Thing& author = add(authors, _dice.chance(30) ? "PenName" : "Author");
        set(author, "visits", 0);
        for (int i = 0; i < 12; ++i)
            editAuthor(author);
    }

    void addBook()
    {
        Thing& book = add(books, "Book");
        set(book, "genre", any(kTexts));
    }

    void editAuthor(Thing& author)
    {
        const std::pair<const char*, const Pool*> attributes[]{{"name", &kTexts}, {"city", &kTexts},
            {"uniqueId", &kTexts}, {"visits", &kWholes}, {"rating", &kReals}, {"isLiving", &kTruths},
            {"born", &kDates}, {"seal", &kBytes}, {"portrait", &kBytes}};
        switch (_dice.below(15)) {
        case 0:
            return point(author, "friend", &anyOf(authors));
        case 1:
            return point(author, "site", _dice.chance(30) ? nullptr : &anyOf(sites));
        case 2:
            return editHandles(author);
        case 3:
            return toggle(author, "books", anyOf(books));
        case 4:
            return editPart(author, "biography", "Biography");
        case 5:
            return editPart(author, "index", "Index");
        default: {
            const auto& [key, pool] = _dice.among(attributes);
            return set(author, key, any(*pool));
        }
        }
    }

    void removeAuthor()
    {
        const auto gone = authors.begin() + static_cast<std::ptrdiff_t>(_dice.below(authors.size()));
        for (const auto& other : authors)
            if (other->related["friend"] == std::vector{gone->get()})
                point(*other, "friend", nullptr);
        context->deleteObject(*(*gone)->object);
        authors.erase(gone);
    }

    static void set(Thing& thing, const std::string& key, const Value& value)
    {
        thing.object->setValueForKey(key, value);
        thing.values[key] = value;
        if (key == "name" && &thing.object->entity() != &entityNamed("Site"))
            thing.values["nameLength"] = value.isNothing() ? Value() : Value(value.asText().size());
    }

    static void point(Thing& from, const std::string& key, Thing* to)
    {
        from.object->setRelated(from.object->slot(key), to ? to->object.get() : nullptr);
        from.related[key].clear();
        if (to)
            from.related[key].push_back(to);
    }

    static void toggle(Thing& from, const std::string& key, Thing& to)
    {
        const auto& slot = from.object->slot(key);
        if (std::erase(from.related[key], &to) > 0) {
            from.object->removeObject(slot, *to.object);
        } else {
            from.related[key].push_back(&to);
            from.object->addObject(slot, *to.object);
        }
    }

    /// A row that belongs to the author: it is there once more, or is the only one.
    Thing& addPart(Thing& author, const std::string& key, std::string_view entity, std::string_view owner)
    {
        Thing& part = add(_parts, entity);
        part.object->setRelated(part.object->slot(owner), author.object.get());
        author.related[key].push_back(&part);
        return part;
    }

    void removePart(Thing& author, const std::string& key)
    {
        context->deleteObject(*author.related[key].back()->object);
        author.related[key].pop_back();
    }

    void editHandles(Thing& author)
    {
        if (!author.behind("handles").empty() && _dice.chance(30))
            return removePart(author, "handles");
        Thing& handle = addPart(author, "handles", "Handle", "owner");
        set(handle, "uniqueId", std::to_string(_parts.size()));
        set(handle, "label", any(kTexts));
        set(handle, "text", any(kTexts));
        if (_dice.chance(50))
            point(handle, "site", &anyOf(sites));
    }

    void editPart(Thing& author, const std::string& key, std::string_view entity)
    {
        if (!author.behind(key).empty() && _dice.chance(20))
            return removePart(author, key);
        if (author.behind(key).empty())
            addPart(author, key, entity, "author");
        set(*author.related[key].front(), "text", any(kTexts));
    }

    Dice& _dice;
    Things _parts;
};

} // namespace test
