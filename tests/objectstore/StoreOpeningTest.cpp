// What becomes of a path that a store is to be opened at, and of the files behind open stores.
#include "objectstore/TestModel.h"

#include <fcntl.h>
#include <gmock/gmock.h>
#include <pwd.h>
#include <sqlite3.h>
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
    const auto coordinator = openLibrary(path);
    const auto context = platform::makeRef<os::StoreContext>(coordinator);
    const ObjectRef author = addAuthor(*context, "Ana Lima");
    author->setValueForKey("portrait", Value::data(std::string(100000, 'x')));
    must(context->save());
}

struct Refusal {
    const char* name;
    std::function<void(const std::string& path)> make;
    StoreFault fault;
};

void PrintTo(const Refusal& refusal, std::ostream* out) { *out << refusal.name; }

void truncateTo(const std::string& path, double part)
{
    makeStore(path);
    std::filesystem::resize_file(
        path, static_cast<std::uintmax_t>(static_cast<double>(std::filesystem::file_size(path)) * part));
}

class RefusedStoreTest : public testing::TestWithParam<Refusal> { };

TEST_P(RefusedStoreTest, AnswersItsCodeAndLeavesTheFileAlone)
{
    const std::string path = freshPath();
    GetParam().make(path);
    const bool isFile = std::filesystem::is_regular_file(path);
    const std::string before = isFile ? bytesOf(path) : "";
    const auto coordinator = os::StoreCoordinator::make(libraryModel());
    os::StoreOptions options;
    options.busyTimeout = 0.05;
    const auto added = coordinator->addStore(os::StoreType::sqlite, path, options);
    ASSERT_FALSE(added);
    EXPECT_EQ(added.error().code, static_cast<long>(GetParam().fault)) << added.error().text;
    EXPECT_THAT(added.error().text, testing::HasSubstr(path));
    EXPECT_TRUE(coordinator->stores().empty());
    if (isFile) {
        EXPECT_EQ(bytesOf(path), before);
    }
}

INSTANTIATE_TEST_SUITE_P(Paths, RefusedStoreTest,
    testing::Values(
        Refusal{"Text", [](const auto& path) { put(path, std::string(5000, 'a')); }, StoreFault::corrupt},
        Refusal{"AFewBytes", [](const auto& path) { put(path, "SQLite format 3"); }, StoreFault::corrupt},
        Refusal{"Directory", [](const auto& path) { std::filesystem::create_directory(path); },
            StoreFault::corrupt},
        Refusal{"CutInTheHeader",
            [](const auto& path) {
                makeStore(path);
                std::filesystem::resize_file(path, 60);
            },
            StoreFault::corrupt},
        Refusal{"CutInTheFirstPage",
            [](const auto& path) {
                makeStore(path);
                std::filesystem::resize_file(path, 2000);
            },
            StoreFault::corrupt},
        Refusal{"CutInHalf", [](const auto& path) { truncateTo(path, 0.5); }, StoreFault::corrupt},
        Refusal{"CutByALittle", [](const auto& path) { truncateTo(path, 0.95); }, StoreFault::corrupt},
        Refusal{"CutToNothingBesideItsLog",
            [](const auto& path) {
                put(path, "");
                put(path + "-wal", "something");
            },
            StoreFault::corrupt},
        Refusal{"AnotherDatabase", [](const auto& path) { runSQL(path, "CREATE TABLE t(a)"); },
            StoreFault::unknownModel},
        Refusal{"ANewerModel",
            [](const auto& path) {
                makeStore(path);
                runSQL(path,
                    "UPDATE store_meta SET value = CAST(value || 'column x' AS BLOB) WHERE name = 'schema'");
                runSQL(path, "PRAGMA wal_checkpoint(TRUNCATE)");
            },
            StoreFault::unknownModel},
        Refusal{"NoDirectory",
            [](const auto& path) { std::filesystem::create_symlink("/nonexistent/directory/file", path); },
            StoreFault::internal}),
    [](const auto& tested) { return tested.param.name; });

/// Runs the body as an ordinary user, for whom permissions count, and answers its exit status.
int asOrdinaryUser(const std::function<int()>& body)
{
    const pid_t child = fork();
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

/// 0 when opening answers that fault.
int opensWith(const std::string& path, StoreFault fault)
{
    const auto coordinator = os::StoreCoordinator::make(libraryModel());
    const auto added = coordinator->addStore(os::StoreType::sqlite, path);
    return !added && os::isFault(added.error(), fault) ? 0 : 1;
}

TEST(StoreOpening, TellsWhatMayNotBeReadOrWritten)
{
    const std::string folder = freshPath("");
    std::filesystem::create_directory(folder);
    const std::string path = folder + "/library.db";
    makeStore(path);
    for (const char* open : {"", "/..", "/../.."})
        chmod((folder + open).c_str(), 0755);
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
    const std::string path = freshPath();
    makeStore(path);
    chmod(path.c_str(), 0666);
    const int status = asOrdinaryUser([&] {
        const rlimit none{3, 3};
        setrlimit(RLIMIT_NOFILE, &none);
        return opensWith(path, StoreFault::noDescriptors);
    });
    EXPECT_EQ(status, 0);
}

TEST(StoreOpening, WaitsForALockAsLongAsToldAndThenSaysBusy)
{
    const std::string path = freshPath();
    os::StoreOptions options;
    options.busyTimeout = 0.05;
    const auto coordinator = openLibrary(path, options);
    const auto context = platform::makeRef<os::StoreContext>(coordinator);
    addAuthor(*context, "Ana");
    sqlite3* other = nullptr;
    ASSERT_EQ(sqlite3_open(path.c_str(), &other), SQLITE_OK);
    ASSERT_EQ(sqlite3_exec(other, "BEGIN IMMEDIATE", nullptr, nullptr, nullptr), SQLITE_OK);
    const auto saved = context->save();
    ASSERT_FALSE(saved);
    EXPECT_TRUE(os::isFault(saved.error(), StoreFault::busy)) << saved.error().text;
    EXPECT_TRUE(fetchAll(*platform::makeRef<os::StoreContext>(coordinator), "Author").empty());
    ASSERT_EQ(sqlite3_exec(other, "COMMIT", nullptr, nullptr, nullptr), SQLITE_OK);
    sqlite3_close(other);
    must(context->save());
}

TEST(StoreOpening, MakesPrivateFiles)
{
    const std::string path = freshPath();
    const mode_t before = umask(0);
    const auto coordinator = openLibrary(path);
    const auto context = platform::makeRef<os::StoreContext>(coordinator);
    addAuthor(*context, "Ana");
    must(context->save());
    must(coordinator->copyStore(coordinator->stores().front(), path + ".copy"));
    umask(before);
    for (const char* suffix : {"", "-wal", "-shm", ".copy"}) {
        struct stat status;
        ASSERT_EQ(stat((path + suffix).c_str(), &status), 0) << suffix;
        EXPECT_EQ(status.st_mode & 0777, 0600u) << suffix;
    }
}

TEST(StoreOpening, AFileOfZeroLengthBecomesAStore)
{
    const std::string path = freshPath();
    put(path, "");
    makeStore(path);
    EXPECT_EQ(askSQL(path, "SELECT count(*) FROM author"), "1");
}

TEST(StoreOpening, NeverWritesToAFileThatTookTheStoresPlace)
{
    for (const bool isReplaced : {true, false}) {
        const std::string path = freshPath();
        const auto coordinator = openLibrary(path);
        const auto context = platform::makeRef<os::StoreContext>(coordinator);
        std::filesystem::rename(path, path + ".aside");
        if (isReplaced)
            put(path, "another file");
        addAuthor(*context, "Ana");
        const auto saved = context->save();
        ASSERT_FALSE(saved);
        EXPECT_TRUE(os::isFault(saved.error(), StoreFault::replaced)) << saved.error().text;
        EXPECT_EQ(isReplaced, std::filesystem::exists(path));
        EXPECT_EQ(bytesOf(path), isReplaced ? "another file" : "");
        EXPECT_EQ(context->insertedObjects().size(), 1u);
    }
}

TEST(StoreOpening, RefusesToWorkInAForkedChild)
{
    const auto coordinator = openLibrary(freshPath());
    const auto context = platform::makeRef<os::StoreContext>(coordinator);
    const pid_t child = fork();
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
    const auto coordinator = openLibrary(path);
    os::PersistentStore* store = coordinator->stores().front();
    EXPECT_EQ(must(coordinator->metadata(store)), Value::dictionary({}));
    const Value metadata =
        Value::dictionary({{"version", 7}, {"name", "Zoë"}, {"list", Value::array({1, 2.5, true})}});
    must(coordinator->setMetadata(store, metadata));
    EXPECT_FALSE(coordinator->setMetadata(store, Value::dictionary({{"bad", Value::array({Value()})}})));
    must(coordinator->copyStore(store, path + ".copy"));
    const auto copy = openLibrary(path + ".copy");
    EXPECT_EQ(must(copy->metadata(copy->stores().front())), metadata);
    EXPECT_EQ(copy->stores().front()->identifier(), store->identifier());
    EXPECT_FALSE(coordinator->copyStore(store, path + ".copy")) << "a file that is there is not overwritten";
}

TEST(StoreMigration, MovesToAnotherFileOrIntoMemoryWithItsObjects)
{
    for (const char* target : {"", "/dev/null"}) {
        const std::string path = freshPath();
        const auto coordinator = openLibrary(path);
        const auto context = platform::makeRef<os::StoreContext>(coordinator);
        const ObjectRef author = addAuthor(*context, "Ana");
        must(context->save());
        const std::string to = *target ? target : path + ".moved";
        os::PersistentStore* store =
            must(coordinator->migrateStore(coordinator->stores().front(), to, os::StoreType::sqlite));
        EXPECT_EQ(store->isInMemory(), *target != 0);
        EXPECT_EQ(coordinator->stores().size(), 1u);
        author->setValueForKey("name", "Bo");
        addAuthor(*context, "Cy");
        must(context->save());
        EXPECT_THAT(texts(fetchAll(*platform::makeRef<os::StoreContext>(coordinator), "Author"), "name"),
            ElementsAre("Bo", "Cy"));
        EXPECT_EQ(askSQL(path, "SELECT name FROM author"), "Ana");
    }
}

namespace grown {

inline constexpr std::array kOld{os::SlotDescription{.key = "name", .type = os::AttributeType::string}};
inline constexpr std::array kNew{
    os::SlotDescription{.key = "name", .type = os::AttributeType::string, .flags = os::kIndexed},
    os::SlotDescription{.key = "nick", .type = os::AttributeType::string},
    os::SlotDescription{.key = "words",
        .kind = os::SlotKind::toOneInverse,
        .destination = "Words",
        .inverse = "person",
        .deleteRule = os::DeleteRule::cascade},
    os::SlotDescription{.key = "friends",
        .kind = os::SlotKind::manyToMany,
        .destination = "Person",
        .joinTable = "friends",
        .leads = true},
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

platform::Ref<os::StoreContext> contextOn(const platform::Ref<const os::Model>& model,
    const std::string& path, const os::StoreOptions& options = {})
{
    auto coordinator = os::StoreCoordinator::make(model);
    must(coordinator->addStore(os::StoreType::sqlite, path, options));
    return platform::makeRef<os::StoreContext>(coordinator);
}

class AdditiveMigrationTest : public testing::Test {
protected:
    void fillOld() const
    {
        const auto context = contextOn(older, path);
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
        const auto context = contextOn(newer, path);
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
        const auto context = contextOn(newer, path);
        const ObjectRef ana = must(context->runFetch(os::StoreFetch(*newer->entity("Person")))).front();
        EXPECT_EQ(ana->valueForKey("nick"), Value("A"));
        EXPECT_EQ(ana->valueForKeyPath("friends.name"), Value::array({"Bo"}));
        EXPECT_EQ(must(context->runFetch(os::StoreFetch(*newer->entity("Visitor")))).size(), 1u);
    }
    // Rows that were there before are in the text index, and follow changes.
    EXPECT_EQ(askSQL(path, "SELECT group_concat(rowid) FROM words_text('bou')"), "1");
    EXPECT_EQ(askSQL(path, "PRAGMA integrity_check"), "ok");
    // There is no way back.
    const auto coordinator = os::StoreCoordinator::make(older);
    const auto added = coordinator->addStore(os::StoreType::sqlite, path);
    ASSERT_FALSE(added);
    EXPECT_TRUE(os::isFault(added.error(), StoreFault::unknownModel));
}

TEST_F(AdditiveMigrationTest, HappensOnlyWhereItMay)
{
    fillOld();
    const std::string before = bytesOf(path);
    for (int way = 0; way < 2; ++way) {
        os::StoreOptions options;
        (way == 0 ? options.migratesAutomatically : options.isReadOnly) = way != 0;
        const auto coordinator = os::StoreCoordinator::make(newer);
        const auto added = coordinator->addStore(os::StoreType::sqlite, path, options);
        ASSERT_FALSE(added);
        EXPECT_TRUE(os::isFault(added.error(), StoreFault::unknownModel)) << added.error().text;
    }
    EXPECT_EQ(bytesOf(path), before);
}

TEST_F(AdditiveMigrationTest, FailsWholeOrNotAtAll)
{
    fillOld();
    runSQL(path, "CREATE TABLE visitor(a)");
    const std::string schema = askSQL(path, "SELECT group_concat(sql) FROM sqlite_schema");
    const auto coordinator = os::StoreCoordinator::make(newer);
    const auto added = coordinator->addStore(os::StoreType::sqlite, path);
    ASSERT_FALSE(added);
    EXPECT_TRUE(os::isFault(added.error(), StoreFault::migrationFailed)) << added.error().text;
    EXPECT_EQ(askSQL(path, "SELECT group_concat(sql) FROM sqlite_schema"), schema);
}

} // namespace
} // namespace test
