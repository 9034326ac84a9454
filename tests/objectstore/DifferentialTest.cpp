// Do contexts and processes that share a store see, and leave behind, what plain maps say?
#include "objectstore/PlainRoster.h"
#include "objectstore/StoreClient.h"

#include <functional>
#include <gtest/gtest.h>
#include <sqlite3.h>

namespace {

using namespace test;

/// Edits one store through several clients in random order, and compares what each sees with the plain
/// roster.
class Driver {
public:
    Driver(Dice& dice, std::vector<std::unique_ptr<StoreClient>>& clients)
        : _dice(dice), _clients(clients), _roster(clients.size())
    {
    }

    /// One random edit, save or look by a random client.
    void step()
    {
        const std::size_t client = _dice.below(_clients.size());
        const std::size_t action = _dice.below(100);
        if (action < 6)
            save(client);
        else if (action < 9)
            compareView(client);
        else if (action < 14)
            compareFind(client);
        else
            edits += edit(client, action);
    }

    void saveAll()
    {
        for (std::size_t client = 0; client < _clients.size(); ++client)
            save(client);
        for (std::size_t client = 0; client < _clients.size(); ++client)
            compareView(client);
    }

    const PlainState& saved() const { return _roster.saved; }

    int edits = 0;
    int disputes = 0;

private:
    void tell(std::size_t client, const Words& words)
    {
        _history.push_back(described(client, words));
        ASSERT_EQ(_clients[client]->ask(words), "ok") << _history.back();
    }

    /// What was told about the people that the lines are about, and the saves in between.
    std::string history(const std::set<std::string>& lines) const
    {
        std::string text;
        for (const auto& told : _history) {
            bool isAbout = told.ends_with(" save");
            for (const auto& line : lines)
                isAbout |= (told + " ").find(" " + line.substr(0, line.find(' ')) + " ") != std::string::npos;
            if (isAbout)
                text += told + "\n";
        }
        return text;
    }

    void compare(const std::set<std::string>& seen, const std::set<std::string>& wanted, std::size_t client)
    {
        std::set<std::string> more, less;
        std::set_difference(
            seen.begin(), seen.end(), wanted.begin(), wanted.end(), std::inserter(more, more.end()));
        std::set_difference(
            wanted.begin(), wanted.end(), seen.begin(), seen.end(), std::inserter(less, less.end()));
        ASSERT_EQ(more, less) << "client " << client << " sees the first instead of the second\n"
                              << history(more) << history(less);
    }

    static std::string described(std::size_t client, const Words& words)
    {
        std::string text = "client " + std::to_string(client) + ":";
        for (const auto& word : words)
            text += " " + word;
        return text;
    }

    void save(std::size_t client)
    {
        for (const auto& [person, unit] : _roster.changes[client].units)
            disputes += unit.isDisputed;
        tell(client, {"save"});
        _roster.save(client);
    }

    bool edit(std::size_t client, std::size_t action)
    {
        const auto view = _roster.view(client);
        if (action < 22 || view.people.empty())
            return addPerson(client, view);
        const std::string person = among(view.people);
        if (action < 28)
            return remove(client, view, person);
        if (action < 32)
            return editTeams(client, view);
        if (action < 60)
            return setAttribute(client, view, person);
        if (action < 78)
            return link(client, view, person);
        return action < 94 ? rewritePhones(client, view, person) : editPhone(client, view, person);
    }

    template <class Map>
    std::string among(const Map& map)
    {
        return nameOf(*std::next(map.begin(), static_cast<std::ptrdiff_t>(_dice.below(map.size()))));
    }
    static const std::string& nameOf(const std::string& name) { return name; }
    static const std::string& nameOf(const std::pair<const std::string, PlainRecord>& entry)
    {
        return entry.first;
    }

    /// No value is ever used twice, so that the last writer of each can be told.
    std::string fresh(const char* prefix) { return prefix + std::to_string(++_count); }

    bool addPerson(std::size_t client, const PlainState& view)
    {
        if (view.people.size() > 60)
            return false;
        const auto name = fresh("person");
        tell(client, {"person", name});
        _roster.changes[client].inserted[name] = {};
        return true;
    }

    bool remove(std::size_t client, const PlainState& view, const std::string& person)
    {
        if (view.people.size() < 20)
            return false;
        tell(client, {"delete", person});
        auto& changes = _roster.changes[client];
        if (!changes.inserted.erase(person))
            changes.deleted.insert(person);
        changes.units.erase(person);
        changes.attributes.erase(person);
        return true;
    }

    bool editTeams(std::size_t client, const PlainState& view)
    {
        auto& changes = _roster.changes[client];
        if (view.teams.size() < 8) {
            const auto team = fresh("team");
            tell(client, {"team", team});
            changes.insertedTeams.insert(team);
        } else {
            const auto team = among(view.teams);
            tell(client, {"delete", team});
            if (!changes.insertedTeams.erase(team))
                changes.deletedTeams.insert(team);
        }
        return true;
    }

    bool setAttribute(std::size_t client, const PlainState& view, const std::string& person)
    {
        static const char* const keys[]{"name", "city", "index.text"};
        const std::string key = _dice.among(keys);
        auto& changes = _roster.changes[client];
        const auto current = view.people.at(person).attributes;
        const bool clears = _dice.chance(20) && current.contains(key) && !current.at(key).empty()
            && !changes.attributes[person].contains(key);
        const std::string value = clears ? "" : fresh("value");
        tell(client, {"set", person, key, value});
        if (const auto inserted = changes.inserted.find(person); inserted != changes.inserted.end())
            inserted->second.attributes[key] = value;
        else
            changes.attributes[person][key] = value;
        return true;
    }

    bool link(std::size_t client, const PlainState& view, const std::string& person)
    {
        if (view.teams.empty())
            return false;
        const auto team = among(view.teams);
        const bool makes = !view.people.at(person).teams.contains(team);
        tell(client, {makes ? "link" : "unlink", person, team});
        _roster.changes[client].links[{person, team}] = makes;
        return true;
    }

    /// Some entries stay as they are, some change, some go and some come.
    PlainEntries varied(const PlainEntries& entries)
    {
        PlainEntries result;
        for (const auto& [identifier, entry] : entries)
            if (!_dice.chance(25))
                result[identifier] = _dice.chance(60) ? entry : std::pair(entry.first, fresh("number"));
        for (std::size_t i = _dice.below(3); i > 0; --i)
            result[fresh("id")] = {"home", fresh("number")};
        return result;
    }

    /// The unit as it would be after the edit, or null when what would come of it is not prescribed: one
    /// client changes an entry that another removes, or edits single rows that another writes anew.
    std::unique_ptr<PlainUnit> planned(
        std::size_t client, const std::string& person, const PlainEntries& before, bool isInPlace)
    {
        const auto& units = _roster.changes[client].units;
        const auto found = units.find(person);
        auto unit = std::make_unique<PlainUnit>();
        *unit = found != units.end() ? found->second : PlainUnit{before, before};
        if (unit->isDisputed)
            return nullptr;
        unit->isInPlace |= isInPlace;
        return unit;
    }

    bool isPrescribed(std::size_t client, const std::string& person, const PlainUnit& unit) const
    {
        for (std::size_t other = 0; other < _clients.size(); ++other) {
            const auto& units = _roster.changes[other].units;
            const auto found = units.find(person);
            if (other == client || found == units.end())
                continue;
            if (unit.isInPlace || found->second.isInPlace || meet(unit.removed(), found->second.edited())
                || meet(unit.edited(), found->second.removed()))
                return false;
        }
        return true;
    }

    static bool meet(const std::set<std::string>& a, const std::set<std::string>& b)
    {
        return std::any_of(a.begin(), a.end(), [&](const auto& element) { return b.contains(element); });
    }

    bool rewritePhones(std::size_t client, const PlainState& view, const std::string& person)
    {
        const auto& before = view.people.at(person).phones;
        const auto unit = planned(client, person, before, false);
        if (!unit)
            return false;
        unit->mine = varied(before);
        if (!isPrescribed(client, person, *unit))
            return false;
        Words words{"phones", person};
        for (const auto& [identifier, entry] : unit->mine)
            words.insert(words.end(), {identifier, entry.first, entry.second});
        tell(client, words);
        keep(client, person, *unit);
        return true;
    }

    bool editPhone(std::size_t client, const PlainState& view, const std::string& person)
    {
        const auto& before = view.people.at(person).phones;
        const auto unit = before.empty() ? nullptr : planned(client, person, before, true);
        if (!unit)
            return false;
        auto& [identifier, entry] = *unit->mine.begin();
        entry.second = fresh("number");
        if (!isPrescribed(client, person, *unit))
            return false;
        tell(client, {"phone", person, identifier, entry.second});
        keep(client, person, *unit);
        return true;
    }

    void keep(std::size_t client, const std::string& person, const PlainUnit& unit)
    {
        auto& changes = _roster.changes[client];
        if (const auto inserted = changes.inserted.find(person); inserted != changes.inserted.end())
            inserted->second.phones = unit.mine;
        else
            changes.units[person] = unit;
    }

public:
    static std::string textOf(const std::string& name, const PlainRecord& record)
    {
        const auto attribute = [&](const char* key) {
            const auto found = record.attributes.find(key);
            return found == record.attributes.end() ? std::string() : found->second;
        };
        std::string text =
            name + " " + attribute("name") + " " + attribute("city") + " " + attribute("index.text") + " {";
        std::set<std::string> phones;
        for (const auto& [identifier, entry] : record.phones)
            phones.insert(identifier + "=" + entry.first + ":" + entry.second);
        for (const auto& phone : phones)
            text += (text.back() == '{' ? "" : ",") + phone;
        text += "} {";
        for (const auto& team : record.teams)
            text += (text.back() == '{' ? "" : ",") + team;
        return text + "}";
    }

    static std::set<std::string> linesOf(const PlainState& state)
    {
        std::set<std::string> lines = state.teams;
        for (const auto& [name, record] : state.people)
            lines.insert(textOf(name, record));
        return lines;
    }

    static std::set<std::string> linesOf(const std::string& text)
    {
        std::set<std::string> lines;
        for (std::size_t at = 0; at < text.size();
             at = text.find('\n', at) == std::string::npos ? text.size() : text.find('\n', at) + 1)
            lines.insert(text.substr(at, text.find('\n', at) - at));
        return lines;
    }

private:
    bool hasDispute(std::size_t client) const
    {
        for (const auto& [person, unit] : _roster.changes[client].units)
            if (unit.isDisputed)
                return true;
        return false;
    }

    void compareView(std::size_t client)
    {
        auto seen = linesOf(_clients[client]->ask({"view"}));
        auto wanted = _roster.view(client);
        for (const auto& [person, unit] : _roster.changes[client].units)
            if (unit.isDisputed) {
                wanted.people.erase(person);
                std::erase_if(seen, [&](const auto& line) { return line.starts_with(person + " "); });
            }
        compare(seen, linesOf(wanted), client);
    }

    void compareFind(std::size_t client)
    {
        struct Search {
            const char* how;
            const char* prefix;
            std::function<bool(const PlainRecord&, const std::string&)> answer;
        };
        const auto has = [](const PlainRecord& record, const char* key) -> std::string {
            const auto found = record.attributes.find(key);
            return found == record.attributes.end() ? "" : found->second;
        };
        const auto hasNumber = [](const PlainRecord& record, const std::string& what) {
            for (const auto& [identifier, entry] : record.phones)
                if (entry.second.find(what) != std::string::npos)
                    return true;
            return false;
        };
        const Search searches[]{
            {"name", "value", [&](auto& r, auto& what) { return has(r, "name").starts_with(what); }},
            {"text", "value",
                [&](auto& r, auto& what) { return has(r, "index.text").find(what) != std::string::npos; }},
            {"phone", "number", hasNumber},
            {"no phone", "number", [&](auto& r, auto& what) { return !hasNumber(r, what); }},
            {"team", "team",
                [](auto& r, auto& what) {
                    return std::any_of(r.teams.begin(), r.teams.end(),
                        [&](auto& team) { return team.find(what) != std::string::npos; });
                }},
            {"no city", "", [&](auto& r, auto&) { return has(r, "city").empty(); }}};
        const auto& search = _dice.among(searches);
        if (hasDispute(client))
            return;
        const std::string what = std::string(search.prefix) + std::to_string(_dice.below(10));
        std::string wanted;
        for (const auto& [name, record] : _roster.view(client).people)
            if (search.answer(record, what))
                wanted += (wanted.empty() ? "" : " ") + name;
        ASSERT_EQ(_clients[client]->ask({"find", search.how, what}), wanted)
            << "client " << client << ": " << search.how << " " << what;
    }

    Dice& _dice;
    std::vector<std::unique_ptr<StoreClient>>& _clients;
    PlainRoster _roster;
    int _count = 0;
    std::vector<std::string> _history;
};

/// The first column of every row, as text.
std::vector<std::string> column(const std::string& path, const char* sql)
{
    sqlite3* connection = nullptr;
    sqlite3_stmt* statement = nullptr;
    std::vector<std::string> rows;
    if (sqlite3_open_v2(path.c_str(), &connection, SQLITE_OPEN_READWRITE, nullptr) != SQLITE_OK
        || sqlite3_prepare_v2(connection, sql, -1, &statement, nullptr) != SQLITE_OK)
        rows.emplace_back(sqlite3_errmsg(connection));
    while (statement && sqlite3_step(statement) == SQLITE_ROW)
        rows.emplace_back(reinterpret_cast<const char*>(sqlite3_column_text(statement, 0)));
    sqlite3_finalize(statement);
    sqlite3_close(connection);
    return rows;
}

/// What the file holds, read by a fresh coordinator and by plain SQL.
void checkFile(const std::string& path, const PlainState& saved)
{
    {
        const Store store(path);
        LocalClient client(store.makeContext());
        EXPECT_EQ(Driver::linesOf(client.ask({"view"})), Driver::linesOf(saved));
    }
    EXPECT_EQ(column(path, "PRAGMA integrity_check"), std::vector<std::string>{"ok"});
    const char* const orphans[]{
        "SELECT _key FROM phone WHERE ifnull(owner, 0) NOT IN (SELECT _key FROM person)",
        "SELECT _key FROM text_index WHERE ifnull(person, 0) NOT IN (SELECT _key FROM person)",
        "SELECT lead FROM team_member WHERE lead NOT IN (SELECT _key FROM team)",
        "SELECT other FROM team_member WHERE other NOT IN (SELECT _key FROM person)",
        "SELECT part.person FROM text_index AS part WHERE part.text IS NOT NULL AND part.person NOT IN"
        " (SELECT rowid FROM text_index_text(substr(part.text, 1, 3)))",
        "SELECT rowid FROM text_index_text('val') WHERE rowid NOT IN"
        " (SELECT person FROM text_index WHERE text IS NOT NULL)",
    };
    for (const char* sql : orphans)
        EXPECT_EQ(column(path, sql), std::vector<std::string>()) << sql;
}

constexpr int kEdits = 20000;

void run(Dice& dice, std::vector<std::unique_ptr<StoreClient>>& clients, const std::string& path)
{
    SCOPED_TRACE("ROSTER_TEST_SEED=" + std::to_string(dice.seed));
    Driver driver(dice, clients);
    while (driver.edits < kEdits && !testing::Test::HasFatalFailure())
        driver.step();
    driver.saveAll();
    clients.clear();
    checkFile(path, driver.saved());
    EXPECT_GT(driver.disputes, 20) << "too few lost races to tell anything";
}

TEST(Differential, TwoContextsOfOneProcessAgreeWithPlainMaps)
{
    Dice dice(Dice::chosenSeed(41));
    const std::string path = freshStorePath();
    auto store = std::make_unique<Store>(path);
    std::vector<std::unique_ptr<StoreClient>> clients;
    for (int i = 0; i < 2; ++i)
        clients.push_back(std::make_unique<LocalClient>(store->makeContext()));
    run(dice, clients, path);
}

TEST(Differential, FourProcessesAgreeWithPlainMaps)
{
    Dice dice(Dice::chosenSeed(42));
    const std::string path = freshStorePath();
    std::vector<std::unique_ptr<StoreClient>> clients;
    for (int i = 0; i < 4; ++i)
        clients.push_back(std::make_unique<ProcessClient>(path));
    run(dice, clients, path);
}

} // namespace
