// A store that is rewritten save by save, so that its whole content tells which save was the last.
#pragma once

#include "objectstore/TortureModel.h"

#include <algorithm>
#include <sqlite3.h>
#include <string>
#include <vector>

namespace test {

/// Generation g: five people who carry its number in every kind of slot, and one person for each of the last
/// five generations. Generation 0 is the empty store.
class Generations {
public:
    explicit Generations(platform::Ref<os::StoreContext> context) : _context(std::move(context)) { }

    /// Turns generation `g` less one into `g`, without a save.
    void write(int g)
    {
        const auto team = oneOrNew("Team", "all");
        for (int i = 0; i < kPillars; ++i)
            writePillar(i, g, *team);
        const auto recent = oneOrNew("Person", "recent " + std::to_string(g));
        recent->addObject(recent->slot("teams"), *team);
        addPhone(*recent, 0, g);
        if (const auto old = one("Person", "recent " + std::to_string(g - kRecent)))
            _context->deleteObject(*old);
    }

    /// Everything that a context sees, in order.
    std::vector<std::string> read()
    {
        std::vector<std::string> lines;
        for (const auto& person : fetch("Person"))
            lines.push_back(line(*person));
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

    void writePillar(int i, int g, os::StoreObject& team)
    {
        const auto person = oneOrNew("Person", "pillar " + std::to_string(i));
        person->setValueForKey("age", g);
        person->setValueForKey("picture", platform::Value::data(picture(i, g)));
        auto index = person->related(person->slot("index"));
        if (!index) {
            index = _context->insertObjectOfEntity("Index");
            index->setRelated(index->slot("person"), person.get());
        }
        index->setValueForKey("text", "text " + std::to_string(g));
        const auto& teams = person->slot("teams");
        isMember(i, g) ? person->addObject(teams, team) : person->removeObject(teams, team);
        for (const auto& phone : person->objects(person->slot("phones")))
            _context->deleteObject(*phone);
        for (int entry = 0; entry < 2; ++entry)
            addPhone(*person, entry, g);
    }

    void addPhone(os::StoreObject& person, int entry, int g)
    {
        const auto phone = _context->insertObjectOfEntity("Phone");
        phone->setRelated(phone->slot("owner"), &person);
        phone->setValueForKey("uniqueId", "phone " + std::to_string(entry));
        phone->setValueForKey("number", std::to_string(g));
    }

    os::ObjectList fetch(std::string_view entity, os::PredicateRef predicate = nullptr)
    {
        return expected(
            _context->runFetch(os::StoreFetch(*tortureModel()->entity(entity), std::move(predicate))));
    }

    os::ObjectRef one(std::string_view entity, const std::string& uniqueId)
    {
        const auto found =
            fetch(entity, os::StorePredicate::compare("uniqueId", os::Comparator::equal, uniqueId));
        return found.empty() ? nullptr : found.front();
    }

    os::ObjectRef oneOrNew(std::string_view entity, const std::string& uniqueId)
    {
        auto object = one(entity, uniqueId);
        if (!object) {
            object = _context->insertObjectOfEntity(entity);
            object->setValueForKey("uniqueId", uniqueId);
        }
        return object;
    }

    /// "name|text|age|start of picture|team|numbers…,found", the last when the text index finds the text.
    std::string line(os::StoreObject& person)
    {
        const auto text = std::string(person.valueForKeyPath("index.text").asText());
        std::string line = std::string(person.text(person.slot("uniqueId"))) + "|" + text + "|"
            + std::to_string(person.integer(person.slot("age"))) + "|"
            + std::string(person.valueForKey("picture").asBytes().substr(0, 8)) + "|";
        for (const auto& team : person.objects(person.slot("teams")))
            line += team->text(team->slot("uniqueId"));
        line += "|";
        for (const auto& phone : person.objects(person.slot("phones")))
            line += std::string(phone->text(phone->slot("number"))) + ",";
        const auto isFound =
            os::StorePredicate::all({os::StorePredicate::isObject(platform::Value(os::ObjectRef(&person))),
                os::StorePredicate::compare("index.text", os::Comparator::contains, text)});
        return line + (text.empty() || fetch("Person", isFound).empty() ? "" : "found");
    }

    platform::Ref<os::StoreContext> _context;
};

/// What SQLite itself says of the file; "ok" when it is sound.
inline std::string integrity(const std::string& path)
{
    sqlite3* connection = nullptr;
    std::string answer;
    const auto note = [](void* text, int, char** columns, char**) {
        *static_cast<std::string*>(text) += columns[0];
        return 0;
    };
    if (sqlite3_open_v2(path.c_str(), &connection, SQLITE_OPEN_READWRITE, nullptr) != SQLITE_OK
        || sqlite3_exec(connection, "PRAGMA integrity_check", note, &answer, nullptr) != SQLITE_OK)
        answer += sqlite3_errmsg(connection);
    sqlite3_close(connection);
    return answer;
}

} // namespace test
