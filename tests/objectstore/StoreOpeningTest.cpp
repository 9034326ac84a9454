// What becomes of a path that a store is to be opened at, and of the files behind open stores.
#include "objectstore/TestStore.h"
#include "objectstore/sqlite/Connection.h"
#include "support/Forked.h"
#include "support/SQL.h"

#include <fcntl.h>
#include <gmock/gmock.h>
#include <pwd.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/wait.h>

#include <fstream>
#include <functional>
#include <sstream>

namespace test {
namespace {

using os::StoreFault;
using testing::ElementsAre;

std::string bytesOf(const std::string& path)
{
    std::ifstream file(path, std::ios::binary);
    std::ostringstream bytes;
    bytes << file.rdbuf();
    return bytes.str();
}

void put(const std::string& path, const std::string& bytes)
{
    std::ofstream(path, std::ios::binary) << bytes;
}

/// A store with an author, closed, its log written back.
void makeStore(const std::string& path)
{
    const auto context = Store(path).makeContext();
    const ObjectRef author = addAuthor(*context, "Ana Lima");
    author->setValueForKey("portrait", Value::data(std::string(100000, 'x')));
    must(context->save());
}

using Opened = platform::Result<os::PersistentStore*>;
Opened open(const std::string& path, const os::StoreOptions& options = {},
    const platform::Ref<const os::Model>& model = libraryModel())
{
    return os::StoreCoordinator::make(model)->addStore(os::StoreType::sqlite, path, options);
}

template <class T>
void expectRefused(const platform::Result<T>& result, StoreFault fault)
{
    ASSERT_FALSE(result);
    EXPECT_TRUE(os::isFault(result.error(), fault)) << result.error().text;
}

using Making = std::function<void(const std::string& path)>;

Making holding(const std::string& bytes)
{
    return [=](const std::string& path) { put(path, bytes); };
}
/// Of a whole store so many bytes, or that part of its bytes.
Making cutTo(double size)
{
    return [=](const std::string& path) {
        makeStore(path);
        const auto whole = static_cast<double>(std::filesystem::file_size(path));
        std::filesystem::resize_file(path, static_cast<std::uintmax_t>(size < 1 ? whole * size : size));
    };
}

TEST(StoreOpening, RefusesWhatIsNoStoreAndLeavesItAlone)
{
    using enum StoreFault;
    const std::tuple<const char*, Making, StoreFault> rows[]{
        {"a text", holding(std::string(5000, 'a')), corrupt},
        {"a few bytes", holding("SQLite format 3"), corrupt},
        {"a directory", [](const auto& path) { std::filesystem::create_directory(path); }, corrupt},
        {"cut in the header", cutTo(60), corrupt},
        {"cut in the first page", cutTo(2000), corrupt},
        {"cut in half", cutTo(0.5), corrupt},
        {"cut by a little", cutTo(0.95), corrupt},
        {"cut to nothing beside its log",
            [](const auto& path) {
                put(path, "");
                put(path + "-wal", "something");
            },
            corrupt},
        {"another database", [](const auto& path) { runSQL(path, "CREATE TABLE t(a)"); }, unknownModel},
        {"a newer model",
            [](const auto& path) {
                makeStore(path);
                runSQL(path,
                    "UPDATE store_meta SET value = CAST(value || 'column x' AS BLOB) WHERE name = 'schema'");
                runSQL(path, "PRAGMA wal_checkpoint(TRUNCATE)");
            },
            unknownModel},
        {"no directory",
            [](const auto& path) { std::filesystem::create_symlink("/nonexistent/directory/file", path); },
            internal},
    };
    for (const auto& [name, make, fault] : rows) {
        SCOPED_TRACE(name);
        const std::string path = freshPath();
        make(path);
        const bool isFile = std::filesystem::is_regular_file(path);
        const std::string before = isFile ? bytesOf(path) : "";
        const auto opened = open(path, {.busyTimeout = 0.05, .vfs = {}});
        ASSERT_FALSE(opened);
        expectRefused(opened, fault);
        EXPECT_THAT(opened.error().text, testing::HasSubstr(path));
        EXPECT_EQ(isFile ? bytesOf(path) : "", before);
    }
}

/// Runs the body as an ordinary user, for whom permissions count, and answers its exit status.
int asOrdinaryUser(const std::function<int()>& body)
{
    const pid_t child = forkAmongSleepers();
    if (child == 0) {
        const passwd* nobody = getpwnam("nobody");
        if (geteuid() == 0 && (!nobody || setgid(nobody->pw_gid) != 0 || setuid(nobody->pw_uid) != 0))
            _exit(255);
        _exit(body());
    }
    int status = 0;
    waitpid(child, &status, 0);
    return WIFEXITED(status) ? WEXITSTATUS(status) : 255;
}

/// A folder of its own that everybody may pass through.
std::string openFolder()
{
    const std::string folder = freshPath("");
    std::filesystem::create_directory(folder);
    for (const char* open : {"", "/..", "/../.."})
        chmod((folder + open).c_str(), 0755);
    return folder;
}

/// 0 when opening answers that fault.
int opensWith(const std::string& path, StoreFault fault)
{
    const auto opened = open(path);
    return !opened && os::isFault(opened.error(), fault) ? 0 : 1;
}

TEST(StoreOpening, TellsWhatMayNotBeReadOrWritten)
{
    const std::string folder = openFolder(), path = folder + "/library.db";
    makeStore(path);
    const std::string before = bytesOf(path);
    for (const mode_t mode : {0000u, 0444u}) {
        chmod(path.c_str(), mode);
        EXPECT_EQ(asOrdinaryUser([&] { return opensWith(path, StoreFault::notPermitted); }), 0) << mode;
    }
    EXPECT_EQ(asOrdinaryUser([&] { return opensWith(folder + "/new.db", StoreFault::notPermitted); }), 0);
    EXPECT_FALSE(std::filesystem::exists(folder + "/new.db"));
    EXPECT_EQ(bytesOf(path), before);
}

TEST(StoreOpening, TellsThatDescriptorsAreOut)
{
    const std::string folder = openFolder(), path = folder + "/library.db", closed = folder + "/closed.db";
    makeStore(path);
    chmod(path.c_str(), 0666);
    makeStore(closed);
    chmod(closed.c_str(), 0);
    const int status = asOrdinaryUser([&] {
        // A sanitizer wants a descriptor itself when it first meets what is thrown here.
        if (opensWith(closed, StoreFault::notPermitted) != 0)
            return 2;
        const rlimit none{3, 3};
        setrlimit(RLIMIT_NOFILE, &none);
        return opensWith(path, StoreFault::noDescriptors);
    });
    EXPECT_EQ(status, 0);
}

TEST(StoreOpening, WaitsForALockAsLongAsToldAndThenSaysBusy)
{
    const std::string path = freshPath();
    const Store store(path, {.busyTimeout = 0.05, .vfs = {}});
    const auto context = store.makeContext();
    addAuthor(*context, "Ana");
    {
        os::sqlite::Connection other(path, os::sqlite::Connection::Access::readWrite, "", 0);
        other.execute("BEGIN IMMEDIATE");
        expectRefused(context->save(), StoreFault::busy);
        EXPECT_TRUE(fetchAll(*store.makeContext(), "Author").empty());
    }
    must(context->save());
}

TEST(StoreOpening, MakesPrivateFiles)
{
    const std::string path = freshPath();
    const mode_t before = umask(0);
    const Store store(path);
    const auto context = store.makeContext();
    addAuthor(*context, "Ana");
    must(context->save());
    must(store.coordinator->copyStore(store.store, path + ".copy"));
    umask(before);
    for (const char* suffix : {"", "-wal", "-shm", ".copy"})
        EXPECT_EQ(std::filesystem::status(path + suffix).permissions(), std::filesystem::perms(0600))
            << suffix;
}

TEST(StoreOpening, AFileOfZeroLengthBecomesAStore)
{
    const std::string path = freshPath();
    put(path, "");
    makeStore(path);
    EXPECT_EQ(runSQL(path, "SELECT count(*) FROM author"), "1");
}

TEST(StoreOpening, NeverWritesToAFileThatTookTheStoresPlace)
{
    for (const bool isReplaced : {true, false}) {
        const std::string path = freshPath();
        const Store store(path);
        const auto context = store.makeContext();
        std::filesystem::rename(path, path + ".aside");
        if (isReplaced)
            put(path, "another file");
        addAuthor(*context, "Ana");
        expectRefused(context->save(), StoreFault::replaced);
        EXPECT_EQ(isReplaced, std::filesystem::exists(path));
        EXPECT_EQ(bytesOf(path), isReplaced ? "another file" : "");
        EXPECT_EQ(context->insertedObjects().size(), 1u);
    }
}

TEST(StoreOpening, RefusesToWorkInAForkedChild)
{
    const auto context = Store().makeContext();
    const pid_t child = forkAmongSleepers();
    if (child == 0) {
        const auto fetched = context->runFetch(os::StoreFetch(entityNamed("Author")));
        _exit(!fetched && os::isFault(fetched.error(), StoreFault::foreignProcess) ? 0 : 1);
    }
    int status = 1;
    waitpid(child, &status, 0);
    EXPECT_EQ(status, 0);
}

TEST(StoreMetadata, IsKeptAndCopied)
{
    const std::string path = freshPath();
    const Store original(path);
    const auto& [coordinator, store] = original;
    EXPECT_EQ(must(coordinator->metadata(store)), Value::dictionary({}));
    const Value metadata =
        Value::dictionary({{"version", 7}, {"name", "Zoë"}, {"list", Value::array({1, 2.5, true})}});
    must(coordinator->setMetadata(store, metadata));
    EXPECT_FALSE(coordinator->setMetadata(store, Value::dictionary({{"bad", Value::array({Value()})}})));
    must(coordinator->copyStore(store, path + ".copy"));
    const Store copy(path + ".copy");
    EXPECT_EQ(must(copy.coordinator->metadata(copy.store)), metadata);
    EXPECT_EQ(copy.store->identifier(), store->identifier());
    EXPECT_FALSE(coordinator->copyStore(store, path + ".copy")) << "a file that is there is not overwritten";
}

TEST(StoreMigration, MovesToAnotherFileOrIntoMemoryWithItsObjects)
{
    for (const bool isIntoMemory : {false, true}) {
        const std::string path = freshPath(), to = isIntoMemory ? "/dev/null" : path + ".moved";
        const Store store(path);
        const auto context = store.makeContext();
        const ObjectRef author = addAuthor(*context, "Ana");
        must(context->save());
        const auto* moved = must(store.coordinator->migrateStore(store.store, to, os::StoreType::sqlite));
        EXPECT_EQ(moved->isInMemory(), isIntoMemory);
        EXPECT_EQ(store.coordinator->stores().size(), 1u);
        author->setValueForKey("name", "Bo");
        addAuthor(*context, "Cy");
        must(context->save());
        EXPECT_THAT(texts(fetchAll(*store.makeContext(), "Author"), "name"), ElementsAre("Bo", "Cy"));
        EXPECT_EQ(runSQL(path, "SELECT name FROM author"), "Ana");
    }
}

namespace grown {

inline constexpr std::array kOld{os::SlotDescription{.key = "name", .type = os::AttributeType::string}};
inline constexpr std::array kNew{
    os::SlotDescription{.key = "name", .type = os::AttributeType::string, .flags = os::kIndexed},
    os::SlotDescription{.key = "nick", .type = os::AttributeType::string},
    library::parts("words", os::SlotKind::toOneInverse, "Words", "person"),
    library::links("friends", "Person", "", "friends", library::Side::leading),
};
inline constexpr std::array kOldWords{
    os::SlotDescription{.key = "person", .kind = os::SlotKind::toOne, .destination = "Person"},
    os::SlotDescription{.key = "text", .type = os::AttributeType::string},
};
inline constexpr std::array kNewWords{
    os::SlotDescription{.key = "person", .kind = os::SlotKind::toOne, .destination = "Person"},
    os::SlotDescription{.key = "text", .type = os::AttributeType::string, .flags = os::kTextIndex},
};
inline constexpr std::array kOldEntities{
    os::EntityDescription{.name = "Person", .table = "person", .slots = kOld},
    os::EntityDescription{.name = "Words", .table = "words", .slots = kOldWords, .owner = "person"},
};
inline constexpr std::array kNewEntities{
    os::EntityDescription{.name = "Visitor", .table = "visitor", .slots = kOld},
    os::EntityDescription{.name = "Person", .table = "person", .slots = kNew},
    os::EntityDescription{.name = "Words", .table = "words", .slots = kNewWords, .owner = "person"},
};

} // namespace grown

class AdditiveMigrationTest : public testing::Test {
protected:
    void fillOld() const
    {
        const auto context = Store(path, {}, older).makeContext();
        for (const char* name : {"Ana", "Bo"}) {
            const ObjectRef person = context->insertObjectOfEntity("Person");
            person->setValueForKey("name", name);
            const ObjectRef words = context->insertObjectOfEntity("Words");
            words->setValueForKey("person", person);
            words->setValueForKey("text", std::string("all about ") + name);
        }
        must(context->save());
    }

    const std::string path = freshPath();
    const platform::Ref<const os::Model> older = os::Model::make(grown::kOldEntities);
    const platform::Ref<const os::Model> newer = os::Model::make(grown::kNewEntities);
};

TEST_F(AdditiveMigrationTest, AddsWhatAnOlderStoreLacks)
{
    fillOld();
    {
        const auto context = Store(path, {}, newer).makeContext();
        const os::Entity& person = *newer->entity("Person");
        const ObjectList people = must(context->runFetch(os::StoreFetch(person)));
        ASSERT_THAT(texts(people, "name"), ElementsAre("Ana", "Bo"));
        people[0]->setValueForKey("nick", "A");
        people[0]->addObject(people[0]->slot("friends"), *people[1]);
        context->insertObjectOfEntity("Visitor")->setValueForKey("name", "Cy");
        people[1]->setValueForKeyPath("words.text", "something else");
        must(context->save());
    }
    {
        const auto context = Store(path, {}, newer).makeContext();
        const ObjectRef ana = must(context->runFetch(os::StoreFetch(*newer->entity("Person")))).front();
        EXPECT_EQ(ana->valueForKey("nick"), Value("A"));
        EXPECT_EQ(ana->valueForKeyPath("friends.name"), Value::array({"Bo"}));
        EXPECT_EQ(must(context->runFetch(os::StoreFetch(*newer->entity("Visitor")))).size(), 1u);
    }
    // Rows that were there before are in the text index, and follow changes.
    EXPECT_EQ(runSQL(path, "SELECT group_concat(rowid) FROM words_text('bou')"), "1");
    EXPECT_EQ(runSQL(path, "PRAGMA integrity_check"), "ok");
    expectRefused(open(path, {}, older), StoreFault::unknownModel);
}

TEST_F(AdditiveMigrationTest, HappensWholeAndOnlyWhereItMay)
{
    fillOld();
    const std::string before = bytesOf(path);
    for (const auto& options : {os::StoreOptions{.isReadOnly = true, .vfs = {}},
             os::StoreOptions{.migratesAutomatically = false, .vfs = {}}}) {
        expectRefused(open(path, options, newer), StoreFault::unknownModel);
    }
    EXPECT_EQ(bytesOf(path), before);

    runSQL(path, "CREATE TABLE visitor(a)");
    const std::string schema = runSQL(path, "SELECT sql FROM sqlite_schema");
    expectRefused(open(path, {}, newer), StoreFault::migrationFailed);
    EXPECT_EQ(runSQL(path, "SELECT sql FROM sqlite_schema"), schema);
}

} // namespace
} // namespace test
