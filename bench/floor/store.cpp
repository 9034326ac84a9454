// What keeping cards costs plain SQLite in the engine's own schema: fill, edit, add, open, list.
#include "floor/Database.h"
#include "floor/StoreRows.h"
#include "support/Commands.h"
#include "support/Measure.h"

#include <fcntl.h>
#include <unistd.h>

#include <fmt/format.h>

#include <algorithm>
#include <cstdint>
#include <filesystem>
#include <string>
#include <string_view>

namespace {

using bench::Database;
using bench::Result;
using bench::Statement;

/// Keys of contacts in a random order that is the same every time, with repeats.
class SomeContacts {
public:
    explicit SomeContacts(Database& store)
        : _count(static_cast<std::uint64_t>(store.integer("SELECT count(*) FROM contact")))
        , _key(store.prepare("SELECT \"_key\" FROM contact ORDER BY \"_key\" LIMIT 1 OFFSET ?"))
    {
    }
    std::int64_t next()
    {
        _state = _state * 6364136223846793005u + 1442695040888963407u;
        _key.bind(1, static_cast<std::int64_t>((_state >> 33) % _count)).step();
        const std::int64_t key = _key.integer(0);
        _key.reset();
        return key;
    }

private:
    std::uint64_t _state = 1;
    std::uint64_t _count;
    Statement _key;
};

/// The statements of one edit: a contact's job title and the address of its first e-mail, with what follows.
struct Edit {
    explicit Edit(Database& opened) : store(opened) { }

    void run(std::int64_t contact, const std::string& title, const std::string& address)
    {
        begin.run();
        email.bind(1, contact).step();
        const std::int64_t emailKey = email.integer(0);
        const std::string before(email.bytes(1));
        email.reset();
        text.bind(1, contact).step();
        const std::int64_t textKey = text.integer(0);
        const std::string oldText(text.bytes(1));
        text.reset();
        std::string newText = oldText;
        if (const auto at = newText.find(before); !before.empty() && at != newText.npos)
            newText.replace(at, before.size(), address);
        commitNumber.step();
        const std::int64_t version = commitNumber.integer(0) + 1;
        commitNumber.reset();
        writeContact.bind(1, version).bind(2, std::string_view(title)).bind(3, contact).run();
        writeEmail.bind(1, version).bind(2, std::string_view(address)).bind(3, emailKey).run();
        removeText.bind(1, contact).bind(2, std::string_view(oldText)).run();
        writeText.bind(1, version).bind(2, std::string_view(newText)).bind(3, textKey).run();
        addText.bind(1, contact).bind(2, std::string_view(newText)).run();
        writeCommit.bind(1, version).run();
        commit.run();
    }

    Database& store;
    const std::string index = "contact_index_stringForIndexing";
    const std::string fullText =
        store.texts("SELECT name FROM sqlite_schema WHERE sql LIKE 'CREATE VIRTUAL TABLE%'").front();
    Statement begin = store.prepare("BEGIN IMMEDIATE");
    Statement commit = store.prepare("COMMIT");
    Statement email = store.prepare("SELECT \"_key\", addressNormalized FROM email_address WHERE owner = ? "
                                    "ORDER BY orderingIndex LIMIT 1");
    Statement text = store.prepare("SELECT \"_key\", stringForIndexing FROM contact_index WHERE contact = ?");
    Statement commitNumber = store.prepare("SELECT commitNumber FROM store_state WHERE id = 1");
    Statement writeContact =
        store.prepare("UPDATE contact SET \"_version\" = ?, jobTitle = ?, modificationDate ="
                      " modificationDate + 1 WHERE \"_key\" = ?");
    Statement writeEmail = store.prepare(
        "UPDATE email_address SET \"_version\" = ?, address = ?2, addressNormalized = ?2 WHERE \"_key\" = ?");
    Statement writeText =
        store.prepare("UPDATE contact_index SET \"_version\" = ?, stringForIndexing = ? WHERE \"_key\" = ?");
    Statement removeText = store.prepare(
        fmt::format("INSERT INTO {0}({0}, rowid, stringForIndexing) VALUES('delete', ?, ?)", fullText));
    Statement addText =
        store.prepare(fmt::format("INSERT INTO {}(rowid, stringForIndexing) VALUES(?, ?)", fullText));
    Statement writeCommit = store.prepare("UPDATE store_state SET commitNumber = ? WHERE id = 1");
};

std::size_t contactsIn(const std::string& path)
{
    Database store(path);
    return static_cast<std::size_t>(store.integer("SELECT count(*) FROM contact"));
}

/// A copy to change, beside the store, gone when the job is done.
struct WorkingCopy {
    explicit WorkingCopy(const std::string& store) : path(store + ".bench")
    {
        bench::copyDatabase(store, path);
    }
    ~WorkingCopy() { bench::removeDatabase(path); }
    std::string path;
};

int fill(const std::string& path, std::size_t runs)
{
    const bench::StoreRows rows = bench::StoreRows::read(path);
    const std::string target = path + ".bench";
    Result result("import", "floor", path, rows.contacts());
    for (std::size_t run = 0; run < runs; ++run) {
        bench::removeDatabase(target);
        result.time([&] { rows.write(target); });
    }
    result.note("indexed_bytes_per_card", rows.indexedBytesPerCard());
    result.note("store_bytes", static_cast<double>(std::filesystem::file_size(target)));
    result.print();
    bench::removeDatabase(target);
    return 0;
}

void writeDurably(const std::filesystem::path& path, std::string_view bytes)
{
    const int file = ::open(path.c_str(), O_CREAT | O_TRUNC | O_WRONLY | O_CLOEXEC, 0600);
    if (file < 0 || ::write(file, bytes.data(), bytes.size()) != static_cast<ssize_t>(bytes.size())
        || fsync(file) != 0 || close(file) != 0)
        bench::fail(path.string() + ": cannot be written");
}

/// The pictures beside the store once more, each on the disk before the next: an import's other half.
int pictures(const std::string& path, std::size_t runs)
{
    const auto images = std::filesystem::path(path).parent_path() / "Images";
    std::vector<std::string> bytes;
    for (const auto& entry : std::filesystem::directory_iterator(images))
        bytes.push_back(bench::bytesOf(entry.path()));
    Result result("pictures", "floor", path, contactsIn(path));
    for (std::size_t run = 0; run < runs; ++run) {
        // Never removed here: a file system is slow to give out what it just took back.
        const std::string folder = fmt::format("{}.bench{}", images.string(), getpid());
        std::filesystem::create_directory(folder);
        result.time([&] {
            for (std::size_t i = 0; i < bytes.size(); ++i)
                writeDurably(fmt::format("{}/{}-{}", folder, run, i), bytes[i]);
        });
    }
    result.note("pictures", static_cast<double>(bytes.size()));
    result.print();
    return 0;
}

int edit(const std::string& path, std::size_t edits)
{
    const WorkingCopy copy(path);
    Result result("edit", "floor", path, contactsIn(path));
    Database store(copy.path);
    SomeContacts some(store);
    Edit edit(store);
    for (std::size_t i = 0; i < edits; ++i) {
        const std::int64_t contact = some.next();
        const std::string title = fmt::format("Edited {}", i),
                          address = fmt::format("edit{}@bench.example.org", i);
        result.time([&] { edit.run(contact, title, address); });
    }
    result.print();
    return 0;
}

/// Copies all rows of a card under new keys, as one transaction: what saving one new card must write.
struct Addition {
    explicit Addition(Database& opened) : store(opened)
    {
        for (const auto& table : store.texts("SELECT name FROM sqlite_schema WHERE type = 'table' AND name IN"
                                             " ('contact', 'email_address', 'phone_number', 'postal_address',"
                                             " 'note', 'contact_index')")) {
            std::string columns, values;
            for (const auto& column :
                store.texts(fmt::format("SELECT name FROM pragma_table_info('{}')", table))) {
                columns += fmt::format("{}\"{}\"", columns.empty() ? "" : ", ", column);
                const bool isOwner = column == "owner" || column == "contact";
                values += column == "_key" ? "(SELECT sequence FROM store_state) + 1 + \"_key\" - ?1"
                    : isOwner              ? ", (SELECT sequence FROM store_state) + 1"
                    : column == "uniqueId" ? ", hex(randomblob(20))"
                                           : fmt::format(", \"{}\"", column);
            }
            const std::string_view owner = table == "contact" ? "\"_key\""
                : table == "note" || table == "contact_index" ? "contact"
                                                              : "owner";
            inserts.push_back(
                store.prepare(fmt::format("INSERT INTO \"{0}\"({1}) SELECT {2} FROM \"{0}\" WHERE {3} = ?1",
                    table, columns, values, owner)));
        }
    }

    void run(std::int64_t model)
    {
        begin.run();
        for (auto& insert : inserts)
            insert.bind(1, model).run();
        addText.bind(1, model).run();
        // The keys of a card's rows lie within this distance when all of them came from one import.
        advance.run();
        commit.run();
    }

    Database& store;
    const std::string fullText =
        store.texts("SELECT name FROM sqlite_schema WHERE sql LIKE 'CREATE VIRTUAL TABLE%'").front();
    std::vector<Statement> inserts;
    Statement begin = store.prepare("BEGIN IMMEDIATE");
    Statement commit = store.prepare("COMMIT");
    Statement addText = store.prepare(
        fmt::format("INSERT INTO {}(rowid, stringForIndexing) SELECT (SELECT sequence FROM store_state) + 1,"
                    " stringForIndexing FROM contact_index WHERE contact = ?",
            fullText));
    Statement advance =
        store.prepare("UPDATE store_state SET commitNumber = commitNumber + 1, sequence ="
                      " (SELECT max(\"_key\") FROM (SELECT max(\"_key\") AS \"_key\" FROM contact"
                      " UNION ALL SELECT max(\"_key\") FROM contact_index UNION ALL SELECT"
                      " max(\"_key\") FROM note UNION ALL SELECT max(\"_key\") FROM phone_number"
                      " UNION ALL SELECT max(\"_key\") FROM email_address UNION ALL SELECT"
                      " max(\"_key\") FROM postal_address)) + 1 WHERE id = 1");
};

int add(const std::string& path, std::size_t cards)
{
    const WorkingCopy copy(path);
    Result result("add", "floor", path, contactsIn(path));
    Database store(copy.path);
    SomeContacts some(store);
    Addition addition(store);
    for (std::size_t i = 0; i < cards; ++i) {
        const std::int64_t model = some.next();
        result.time([&] { addition.run(model); });
    }
    result.print();
    return 0;
}

/// Prints what a list of names shows: bench/run times this as a process of its own.
int open(const std::string& path, std::size_t limit)
{
    Database store(path);
    Statement rows =
        store.prepare("SELECT uniqueId, firstName, lastName FROM contact ORDER BY sortingLastKey LIMIT ?");
    rows.bind(1, static_cast<std::int64_t>(limit));
    while (rows.step())
        fmt::print("{}  {} {}\n", rows.bytes(0).substr(0, 8), rows.bytes(1), rows.bytes(2));
    return 0;
}

int list(const std::string& path, std::size_t runs)
{
    Result result("list", "floor", path, contactsIn(path));
    for (std::size_t run = 0; run < runs; ++run)
        result.time([&] {
            Database store(path);
            Statement rows = store.prepare("SELECT * FROM contact ORDER BY sortingLastKey");
            std::size_t bytes = 0;
            while (rows.step())
                for (int column = 0; column < rows.columns(); ++column)
                    bytes += rows.bytes(column).size();
            if (bytes == 0)
                bench::fail(path + ": holds no cards");
        });
    result.print();
    return 0;
}

/// Every row of people, groups and what belongs to them, table by table; texts for searches aside.
int rows(const std::string& path, std::size_t runs)
{
    Result result("rows", "floor", path, contactsIn(path));
    for (std::size_t run = 0; run < runs; ++run)
        result.time([&] {
            Database store(path);
            std::size_t bytes = 0;
            for (const auto& table :
                store.texts("SELECT s.name FROM sqlite_schema s, pragma_table_info(s.name) c WHERE s.type ="
                            " 'table' AND s.name <> 'contact_index' AND c.name = '_key'")) {
                Statement all = store.prepare(fmt::format("SELECT * FROM \"{}\" ORDER BY \"_key\"", table));
                while (all.step())
                    for (int column = 0; column < all.columns(); ++column)
                        bytes += all.bytes(column).size();
            }
            if (bytes == 0)
                bench::fail(path + ": holds no cards");
        });
    result.print();
    return 0;
}

constexpr bench::Command kCommands[] = {{"import", fill}, {"pictures", pictures}, {"edit", edit},
    {"add", add}, {"open", open}, {"list", list}, {"rows", rows}};

} // namespace

int main(int count, char** arguments)
{
    return bench::runCommand(kCommands, {arguments, static_cast<std::size_t>(count)},
        "import STORE RUNS | pictures STORE RUNS | edit STORE EDITS | add STORE CARDS | open STORE LIMIT | "
        "list STORE RUNS | rows STORE RUNS");
}
