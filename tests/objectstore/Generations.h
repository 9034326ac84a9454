// A store that is rewritten save by save, so that its whole content tells which save was the last.
#pragma once

#include "objectstore/TestStore.h"

#include <algorithm>
#include <string>
#include <vector>

namespace test {

/// Generation g: five authors who carry its number in every kind of slot, and one author for each of the last
/// five generations. Generation 0 is the empty store.
class Generations {
public:
    explicit Generations(platform::Ref<os::StoreContext> context) : _context(std::move(context)) { }

    /// Turns generation `g` less one into `g`, without a save.
    void write(int g)
    {
        const auto book = oneOrNew("Book", "all");
        for (int i = 0; i < kPillars; ++i)
            writePillar(i, g, *book);
        const auto recent = oneOrNew("Author", "recent " + std::to_string(g));
        recent->addObject(recent->slot("books"), *book);
        addHandle(*_context, *recent, {"0", std::to_string(g)});
        if (const auto old =
                fetchOne(*_context, "Author", "uniqueId", "recent " + std::to_string(g - kRecent)))
            _context->deleteObject(*old);
    }

    /// Everything that a context sees, in order.
    std::vector<std::string> read()
    {
        std::vector<std::string> lines;
        for (const auto& author : fetchAll(*_context, "Author"))
            lines.push_back(line(*author));
        std::sort(lines.begin(), lines.end());
        return lines;
    }

    /// What `read` answers at generation `g`.
    static std::vector<std::string> expectedAt(int g)
    {
        std::vector<std::string> lines;
        for (int i = 0; g > 0 && i < kPillars; ++i) {
            const std::string generation = std::to_string(g), name = "pillar " + std::to_string(i);
            lines.push_back(name + "|text " + generation + "|" + generation + "|" + picture(i, g).substr(0, 8)
                + "|" + (isMember(i, g) ? "all" : "") + "|" + generation + "," + generation + ",found");
        }
        for (int recent = std::max(1, g - kRecent + 1); recent <= g; ++recent)
            lines.push_back("recent " + std::to_string(recent) + "||0||all|" + std::to_string(recent) + ",");
        std::sort(lines.begin(), lines.end());
        return lines;
    }

    /// The generation that the content is, or -1 when it is a mix.
    static int generationOf(const std::vector<std::string>& lines)
    {
        const int g = lines.empty() ? 0 : std::atoi(lines.front().c_str() + lines.front().rfind('|') + 1);
        return lines == expectedAt(g) ? g : -1;
    }

private:
    static constexpr int kPillars = 5;
    static constexpr int kRecent = 5;

    static bool isMember(int i, int g) { return (i + g) % 2 == 0; }
    /// Several pages long.
    static std::string picture(int i, int g) { return std::to_string(1000 * g + i) + std::string(9000, ' '); }

    void writePillar(int i, int g, StoreObject& book)
    {
        const auto author = oneOrNew("Author", "pillar " + std::to_string(i));
        author->setValueForKey("visits", g);
        author->setValueForKey("portrait", Value::data(picture(i, g)));
        auto index = author->related(author->slot("index"));
        if (!index) {
            index = _context->insertObjectOfEntity("Index");
            index->setRelated(index->slot("author"), author.get());
        }
        index->setValueForKey("text", "text " + std::to_string(g));
        const auto& books = author->slot("books");
        isMember(i, g) ? author->addObject(books, book) : author->removeObject(books, book);
        for (const auto& handle : author->objects(author->slot("handles")))
            _context->deleteObject(*handle);
        for (int entry = 0; entry < 2; ++entry)
            addHandle(*_context, *author, {std::to_string(entry), std::to_string(g)});
    }

    ObjectRef oneOrNew(std::string_view entity, const std::string& uniqueId)
    {
        auto object = fetchOne(*_context, entity, "uniqueId", uniqueId);
        if (!object) {
            object = _context->insertObjectOfEntity(entity);
            object->setValueForKey("uniqueId", uniqueId);
        }
        return object;
    }

    /// "name|text|visits|start of portrait|book|handles…,found", the last when the text index finds the text.
    std::string line(StoreObject& author)
    {
        const auto text = textOf(author, "index.text");
        std::string line = textOf(author, "uniqueId") + "|" + text + "|"
            + std::to_string(author.integer(author.slot("visits"))) + "|"
            + std::string(author.valueForKey("portrait").asBytes().substr(0, 8)) + "|";
        for (const auto& id : texts(author.objects(author.slot("books")), "uniqueId"))
            line += id;
        line += "|";
        for (const auto& handle : texts(author.objects(author.slot("handles")), "text"))
            line += handle + ",";
        const auto isFound = os::StorePredicate::all({os::StorePredicate::isObject(Value(ObjectRef(&author))),
            os::StorePredicate::compare("index.text", os::Comparator::contains, text)});
        return line + (text.empty() || fetchAll(*_context, "Author", isFound).empty() ? "" : "found");
    }

    const platform::Ref<os::StoreContext> _context;
};

} // namespace test
