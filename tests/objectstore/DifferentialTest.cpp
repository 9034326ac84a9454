// Do contexts and processes that share a store see, and leave behind, what plain maps say?
#include "objectstore/PlainLibrary.h"
#include "objectstore/StoreClient.h"
#include "support/SQL.h"

#include <functional>
#include <gtest/gtest.h>

namespace {

using namespace test;

using Clients = std::vector<std::unique_ptr<StoreClient>>;

Ids linesOf(const std::string& text)
{
    std::istringstream stream(text);
    Ids lines;
    for (std::string line; std::getline(stream, line);)
        lines.insert(line);
    return lines;
}

bool contains(const std::string& text, const std::string& part)
{
    return text.find(part) != std::string::npos;
}

/// Edits one store through several clients in random order, and compares what each sees with the plain
/// library.
class Driver {
public:
    Driver(Dice& dice, Clients& clients) : _dice(dice), _clients(clients), _library(clients.size()) { }

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

    const PlainState& saved() const { return _library.saved; }

    int edits = 0;
    int disputes = 0;

private:
    void tell(std::size_t client, const Words& words)
    {
        std::string told = "client " + std::to_string(client) + ":";
        for (const auto& word : words)
            told += " " + word;
        _history.push_back(told);
        ASSERT_EQ(_clients[client]->ask(words), "ok") << told;
    }

    /// What was told about those that the lines are about, and the saves in between.
    std::string history(const Ids& lines) const
    {
        std::string text;
        for (const auto& told : _history) {
            const auto isAbout = [&](const std::string& line) {
                return contains(told + " ", " " + line.substr(0, line.find(' ')) + " ");
            };
            if (told.ends_with(" save") || std::ranges::any_of(lines, isAbout))
                text += told + "\n";
        }
        return text;
    }

    void compareView(std::size_t client)
    {
        Ids seen = linesOf(_clients[client]->ask({"view"})), more, less;
        Ids wanted = _library.view(client).lines();
        for (const auto& unit : _library.changes[client].units)
            if (unit.second.isDisputed)
                for (Ids* lines : {&seen, &wanted})
                    std::erase_if(
                        *lines, [&](const auto& line) { return line.starts_with(unit.first + " "); });
        std::ranges::set_difference(seen, wanted, std::inserter(more, more.end()));
        std::ranges::set_difference(wanted, seen, std::inserter(less, less.end()));
        ASSERT_EQ(more, less) << "client " << client << " sees the first instead of the second\n"
                              << history(more) << history(less);
    }

    void compareFind(std::size_t client)
    {
        using Answer = std::function<bool(const PlainAuthor&, const std::string&)>;
        static const auto hasHandle = [](const PlainAuthor& author, const std::string& what) {
            return std::ranges::any_of(
                author.handles, [&](const auto& entry) { return contains(entry.second, what); });
        };
        static const std::tuple<const char*, const char*, Answer> searches[]{
            {"name", "value", [](auto& author, auto& what) { return author.text("name").starts_with(what); }},
            {"text", "value",
                [](auto& author, auto& what) { return contains(author.text("index.text"), what); }},
            {"handle", "text", hasHandle},
            {"no handle", "text", [](auto& author, auto& what) { return !hasHandle(author, what); }},
            {"book", "book",
                [](auto& author, auto& what) {
                    return std::ranges::any_of(
                        author.books, [&](const auto& book) { return contains(book, what); });
                }},
            {"no city", "", [](auto& author, auto&) { return author.text("city").empty(); }}};
        const auto& [how, prefix, answer] = _dice.among(searches);
        const auto& units = _library.changes[client].units;
        if (std::ranges::any_of(units, [](const auto& unit) { return unit.second.isDisputed; }))
            return;
        const std::string what = prefix + std::to_string(_dice.below(10));
        std::string wanted;
        for (const auto& [name, author] : _library.view(client).authors)
            if (answer(author, what))
                wanted += (wanted.empty() ? "" : " ") + name;
        ASSERT_EQ(_clients[client]->ask({"find", how, what}), wanted)
            << "client " << client << ": " << how << " " << what;
    }

    void save(std::size_t client)
    {
        tell(client, {"save"});
        disputes += _library.save(client);
    }

    template <class Set>
    const auto& among(const Set& set)
    {
        return *std::next(set.begin(), static_cast<std::ptrdiff_t>(_dice.below(set.size())));
    }

    bool edit(std::size_t client, std::size_t action)
    {
        const auto view = _library.view(client);
        if (action < 22 || view.authors.empty())
            return addAuthor(client, view);
        const auto& [name, author] = among(view.authors);
        if (action < 28)
            return remove(client, view, name);
        if (action < 32)
            return editBooks(client, view);
        if (action < 60)
            return setText(client, name, author);
        if (action < 78)
            return link(client, view, name, author);
        return rewriteHandles(client, name, author, action >= 94);
    }

    /// No value is ever used twice, so that the last writer of each can be told.
    std::string fresh(const char* prefix) { return prefix + std::to_string(++_count); }

    bool addAuthor(std::size_t client, const PlainState& view)
    {
        if (view.authors.size() > 60)
            return false;
        const auto name = fresh("author");
        tell(client, {"author", name});
        _library.changes[client].inserted[name] = {};
        return true;
    }

    bool remove(std::size_t client, const PlainState& view, const std::string& name)
    {
        if (view.authors.size() < 20)
            return false;
        tell(client, {"delete", name});
        auto& changes = _library.changes[client];
        if (!changes.inserted.erase(name))
            changes.deleted.insert(name);
        changes.units.erase(name);
        changes.texts.erase(name);
        return true;
    }

    bool editBooks(std::size_t client, const PlainState& view)
    {
        auto& changes = _library.changes[client];
        const bool adds = view.books.size() < 8;
        const auto book = adds ? fresh("book") : among(view.books);
        tell(client, {adds ? "book" : "delete", book});
        if (adds)
            changes.insertedBooks.insert(book);
        else if (!changes.insertedBooks.erase(book))
            changes.deletedBooks.insert(book);
        return true;
    }

    bool setText(std::size_t client, const std::string& name, const PlainAuthor& author)
    {
        static const char* const keys[]{"name", "city", "index.text"};
        const std::string key = _dice.among(keys);
        auto& changes = _library.changes[client];
        const bool clears =
            _dice.chance(20) && !author.text(key).empty() && !changes.texts[name].contains(key);
        const std::string value = clears ? "" : fresh("value");
        tell(client, {"set", name, key, value});
        const auto inserted = changes.inserted.find(name);
        (inserted != changes.inserted.end() ? inserted->second.texts : changes.texts[name])[key] = value;
        return true;
    }

    bool link(std::size_t client, const PlainState& view, const std::string& name, const PlainAuthor& author)
    {
        if (view.books.empty())
            return false;
        const auto book = among(view.books);
        const bool makes = !author.books.contains(book);
        tell(client, {makes ? "link" : "unlink", name, book});
        _library.changes[client].links[{name, book}] = makes;
        return true;
    }

    /// Some entries stay as they are, some change, some go and some come.
    PlainEntries varied(const PlainEntries& entries)
    {
        PlainEntries result;
        for (const auto& [identifier, text] : entries)
            if (!_dice.chance(25))
                result[identifier] = _dice.chance(60) ? text : fresh("text");
        for (std::size_t i = _dice.below(3); i > 0; --i)
            result[fresh("id")] = fresh("text");
        return result;
    }

    bool rewriteHandles(
        std::size_t client, const std::string& name, const PlainAuthor& author, bool isInPlace)
    {
        auto& changes = _library.changes[client];
        const auto begun = changes.units.find(name);
        auto unit = begun != changes.units.end() ? begun->second
                                                 : PlainUnit{.base = author.handles, .mine = author.handles};
        if (unit.isDisputed || (isInPlace && author.handles.empty()))
            return false;
        unit.isInPlace |= isInPlace;
        if (isInPlace)
            unit.mine.begin()->second = fresh("text");
        else
            unit.mine = varied(author.handles);
        if (!isPrescribed(client, name, unit))
            return false;
        Words words{isInPlace ? "handle" : "handles", name};
        for (const auto& [identifier, text] : unit.mine)
            if (!isInPlace || identifier == unit.mine.begin()->first)
                words.insert(words.end(), {identifier, text});
        tell(client, words);
        if (const auto inserted = changes.inserted.find(name); inserted != changes.inserted.end())
            inserted->second.handles = unit.mine;
        else
            changes.units[name] = unit;
        return true;
    }

    bool isPrescribed(std::size_t client, const std::string& name, const PlainUnit& unit) const
    {
        return std::ranges::all_of(_library.changes, [&](const PlainChanges& other) {
            const auto found = other.units.find(name);
            return &other == &_library.changes[client] || found == other.units.end()
                || unit.isPrescribedWith(found->second);
        });
    }

    Dice& _dice;
    Clients& _clients;
    PlainLibrary _library;
    int _count = 0;
    std::vector<std::string> _history;
};

/// What the file holds, read by a fresh coordinator and by plain SQL.
void checkFile(const std::string& path, const PlainState& saved)
{
    {
        const Store store(path);
        EXPECT_EQ(linesOf(LocalClient(store.makeContext()).ask({"view"})), saved.lines());
    }
    EXPECT_EQ(runSQL(path, "PRAGMA integrity_check"), "ok");
    const char* const orphans[]{
        "SELECT _key FROM handle WHERE ifnull(owner, 0) NOT IN (SELECT _key FROM author)",
        "SELECT _key FROM author_index WHERE ifnull(author, 0) NOT IN (SELECT _key FROM author)",
        "SELECT lead FROM author_book WHERE lead NOT IN (SELECT _key FROM author)",
        "SELECT other FROM author_book WHERE other NOT IN (SELECT _key FROM book)",
        "SELECT part.author FROM author_index AS part WHERE part.text IS NOT NULL AND part.author NOT IN"
        " (SELECT rowid FROM author_index_text(substr(part.text, 1, 3)))",
        "SELECT rowid FROM author_index_text('val') WHERE rowid NOT IN"
        " (SELECT author FROM author_index WHERE text IS NOT NULL)",
        // By the full-text engine's own means.
        "INSERT INTO author_index_text(author_index_text, rank) VALUES('integrity-check', 1)",
    };
    for (const char* sql : orphans)
        EXPECT_EQ(runSQL(path, sql), "") << sql;
}

constexpr int kEdits = 20000;

void run(Dice& dice, Clients& clients, const std::string& path)
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
    Dice dice(41);
    const std::string path = freshPath();
    const auto store = std::make_unique<Store>(path);
    Clients clients;
    for (int i = 0; i < 2; ++i)
        clients.push_back(std::make_unique<LocalClient>(store->makeContext()));
    run(dice, clients, path);
}

TEST(Differential, FourProcessesAgreeWithPlainMaps)
{
    Dice dice(42);
    const std::string path = freshPath();
    Clients clients;
    for (int i = 0; i < 4; ++i)
        clients.push_back(std::make_unique<ProcessClient>(path));
    run(dice, clients, path);
}

} // namespace
