// The last import: its file, who leaves it, and what it refuses.
#include "groups/GroupWorld.h"

#include "core/ZRLastImportGroup.h"
#include "platform/files/Files.h"
#include "platform/notify/DistributedNotificationCenter.h"
#include "platform/run/Log.h"
#include "platform/run/MainQueue.h"
#include "platform/value/PropertyList.h"
#include "store/NoticeWorld.h"
#include "store/ZRChangeNotices.h"

#include <fmt/ranges.h>

#include <functional>
#include <stdexcept>

#include <sys/stat.h>
#include <unistd.h>

namespace test {

namespace {

std::string filePath(const ZRRoster& roster) { return roster.databaseDirectory() + "/LastImport.plist"; }

/// The names of those whose ids stand in the file, "no file", or what is wrong with it.
std::string fileOf(ZRRoster& roster)
{
    const std::string path = filePath(roster);
    if (!platform::fileExists(path))
        return "no file";
    struct stat status = {};
    if (stat(path.c_str(), &status) != 0 || (status.st_mode & 0777) != 0600)
        return "not private";
    const auto bytes = platform::readFile(path);
    if (!bytes || platform::propertyListFormatOf(*bytes) != platform::PropertyListFormat::binary)
        return "not binary";
    const auto list = platform::decodePropertyList(*bytes);
    std::string names;
    for (const Value& id : list->asArray()) {
        const auto person = platform::refCast<ZRPerson>(roster.recordForUniqueId(id.asText()));
        names += (names.empty() ? "" : " ") + (person ? person->_fullName() : std::string("?"));
    }
    return names;
}

std::string membersOf(const ZRLastImportGroup& group)
{
    return fmt::format("{}", fmt::join(namesOf(group.members()), " "));
}

/// The group of this process, with the file beside it: "members | file".
std::string state(const Ref<ZRRoster>& roster)
{
    const std::string members = membersOf(*ZRLastImportGroup::lastImportGroup());
    return members + " | " + fileOf(*roster);
}

/// "look" only, or "save"; before a save also "clear", or "import" with the names of new people.
const Role opens("open and", [](const Words& words) {
    const auto roster = openShared();
    const auto group = ZRLastImportGroup::lastImportGroup();
    const std::string& wish = words.at(0);
    if (wish == "clear")
        group->clear();
    ZRRecordList people;
    for (std::size_t i = 1; i < words.size(); ++i)
        people.push_back(named(roster, words[i]));
    if (wish == "import")
        group->addMembers(people);
    const std::string found = state(roster);
    if (wish == "look")
        return found;
    roster->save();
    return found + "; " + state(roster);
});

const Role deletes("delete", [](const Words& words) {
    const auto roster = openShared();
    for (const auto& record : roster->people())
        if (static_cast<ZRPerson&>(*record)._fullName() == words.at(0))
            roster->removeRecord(record);
    return std::string(roster->save() ? "saved" : "not saved");
});

/// Cy, one of three members, is deleted as `how` says. Who is left here, and in the file after a save.
std::string leftWithoutCy(NoticeWorld& world, const std::function<void(const Ref<ZRPerson>& cy)>& how)
{
    const auto group = ZRLastImportGroup::lastImportGroup();
    const auto cy = named(world.roster, "Cy");
    group->addMembers({named(world.roster, "Bo"), cy, named(world.roster, "Di")});
    world.roster->save();
    static_cast<void>(world.heard());
    how(cy);
    static_cast<void>(world.heard());
    const std::string left = membersOf(*group);
    world.roster->save();
    return left + " | " + fileOf(*world.roster);
}

/// Another process deletes Cy, and tells it by a notice with `entry` in it.
void deleteElsewhere(NoticeWorld& world, std::string_view key, const Value& entry)
{
    if (play("delete", {"Cy"}).answer != "saved")
        throw std::runtime_error("the other did not save");
    world.center->deliver({kZRDatabaseChangedNotification, std::nullopt,
        Value::dictionary({{std::string(zr::kZRSenderProcessID), 1}, {kZRUserUIDKey, std::int64_t{geteuid()}},
            {std::string(key), entry}})});
}

const Acts acts("act out an import",
    {
        {"a member is deleted here",
            [](NoticeWorld& world) {
                return leftWithoutCy(world, [&](const auto& cy) {
                    world.roster->removeRecord(cy);
                    world.roster->save();
                });
            },
            "Bo Di | Bo Di"},
        {"a member is deleted elsewhere",
            [](NoticeWorld& world) {
                return leftWithoutCy(world, [&](const auto& cy) {
                    deleteElsewhere(world, zr::kZRDeletedRecords, Value::array({Value(cy->uniqueId())}));
                });
            },
            "Bo Di | Bo Di"},
        {"a member is deleted elsewhere among too many",
            [](NoticeWorld& world) {
                return leftWithoutCy(
                    world, [&](const auto&) { deleteElsewhere(world, kZRReloadRecords, true); });
            },
            "Bo Di | Bo Di"},
        // The deletion of Ana was undone before the notice of it comes.
        {"a member is back before the notice comes",
            [](NoticeWorld& world) {
                const auto group = ZRLastImportGroup::lastImportGroup();
                const auto bo = named(world.roster, "Bo");
                group->addMembers({world.ana, bo});
                world.roster->save();
                world.roster->removeRecord(bo);
                const Value ids = Value::array({Value(world.ana->uniqueId()), Value(bo->uniqueId())});
                group->dataBaseChanged({kZRDatabaseChangedNotification, nullptr,
                    Value::dictionary({{std::string(zr::kZRDeletedRecords), ids}})});
                return membersOf(*group);
            },
            "Ana"},
        {"the database is reset",
            [](NoticeWorld& world) {
                const auto group = ZRLastImportGroup::lastImportGroup();
                group->addMembers({world.ana, named(world.roster, "Unsaved")});
                world.roster->resetDatabase();
                static_cast<void>(world.heard());
                world.roster->save();
                return state(world.roster);
            },
            "Ana | Ana"},
        {"everything is asked of a group without a row",
            [](NoticeWorld& world) {
                const auto group = ZRLastImportGroup::lastImportGroup();
                const auto ana = world.ana, bo = named(world.roster, "Bo");
                const auto other = test::group(world.roster, "other");
                std::string told = group->name() + ":";
                for (const bool answer :
                    {group->addMember(*ana), group->addMember(*ana), group->removeMember(*bo),
                        group->addMembers({ana, bo}), group->removeMember(*ana), group->removeMember(*ana),
                        group->addSubgroup(*other), group->removeSubgroup(*other), other->addSubgroup(*group),
                        group->setValue("x", kZRGroupNameProperty), group->setValue("x", kZRNoteProperty),
                        group->isSpecialGroup(), ZRLastImportGroup::init() == group,
                        ZRLastImportGroup::specialGroupForRoster(world.roster) == group})
                    told += answer ? " yes" : " no";
                for (const auto& list : {group->members(), group->subgroups(), group->membersAndSubgroups()})
                    told += " " + std::to_string(list.size());
                return told + " " + textOf(group->valueForProperty(kZRCreationDateProperty));
            },
            "Last Import: yes no no no yes no no no no no no yes yes yes 1 0 1 absent"},
    });

} // namespace

TEST(LastImport, IsKeptInAFileFromOneProcessToTheNext)
{
    const Home home;
    EXPECT_EQ(home.play("open and", {"look"}).answer, " | no file");
    EXPECT_EQ(home.play("open and", {"import", "Ana", "Bo"}).answer, "Ana Bo | no file; Ana Bo | Ana Bo");
    EXPECT_EQ(home.play("open and", {"look"}).answer, "Ana Bo | Ana Bo");
    EXPECT_EQ(home.play("open and", {"clear"}).answer, " | Ana Bo;  | no file");
    EXPECT_EQ(home.play("open and", {"look"}).answer, " | no file");
}

TEST(LastImport, DropsIdsOfTheDeletedWhenItIsRead)
{
    const Home home;
    home.play("open and", {"import", "Ana", "Bo"});
    EXPECT_EQ(home.play("delete", {"Ana"}).answer, "saved");
    EXPECT_EQ(home.play("open and", {"look"}).answer, "Bo | ? Bo") << "nothing is written before a save";
    EXPECT_EQ(home.play("open and", {"save"}).answer, "Bo | ? Bo; Bo | Bo");
    EXPECT_EQ(home.play("delete", {"Bo"}).answer, "saved");
    EXPECT_EQ(home.play("open and", {"look"}).answer, " | no file")
        << "a file without members is removed at once";
}

TEST(LastImport, AnswersAndForgetsAsPrescribed) { acts.play(); }

TEST(LastImport, TakesADamagedFileForEmpty)
{
    const auto encoded = [](const Value& list) {
        return *platform::encodePropertyList(list, platform::PropertyListFormat::binary);
    };
    const std::pair<const char*, std::string> cases[] = {
        {"nothing", ""},
        {"text", "no property list"},
        {"cut off", encoded(Value::array({Value("x")})).substr(0, 20)},
        {"a dictionary", encoded(Value::dictionary({{"a", 1}}))},
        {"other things",
            encoded(Value::array({Value(1), Value(""), Value("x"), Value::array({}),
                Value("00000000-0000-0000-0000-000000000001:ZRGroup")}))},
    };
    for (const auto& [what, bytes] : cases) {
        const Home home;
        ASSERT_EQ(home.play("open and", {"import", "Ana"}).status, 0);
        ASSERT_TRUE(platform::writeFileAtomically(home.rosterDirectory() / "LastImport.plist", bytes))
            << what;
        const Outcome outcome = home.play("open and", {"save"});
        EXPECT_EQ(outcome.answer, " | no file;  | no file") << what << "\n" << outcome.log;
    }
}

} // namespace test
