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
    std::string names;
    for (const auto& name : namesOf(group.members()))
        names += (names.empty() ? "" : " ") + name;
    return names;
}

/// The group of this process, with the file beside it: "members | file".
std::string state(const Ref<ZRRoster>& roster)
{
    const auto group = ZRLastImportGroup::lastImportGroup();
    const std::string members = membersOf(*group);
    return members + " | " + fileOf(*roster);
}

const Role imports("import", [](const Words& words) {
    const auto roster = openShared();
    const auto group = ZRLastImportGroup::lastImportGroup();
    ZRRecordList people;
    for (const auto& word : words)
        people.push_back(named(roster, word));
    group->addMembers(people);
    const std::string before = state(roster);
    roster->save();
    return before + "; " + state(roster);
});

const Role looks("look", [](const Words&) { return state(openShared()); });

const Role saves("save", [](const Words&) {
    const auto roster = openShared();
    const std::string loaded = state(roster);
    roster->save();
    return loaded + "; " + state(roster);
});

const Role deletes("delete", [](const Words& words) {
    const auto roster = openShared();
    for (const auto& record : roster->people())
        if (static_cast<ZRPerson&>(*record)._fullName() == words.at(0))
            roster->removeRecord(record);
    return std::string(roster->save() ? "saved" : "not saved");
});

const Role clears("clear", [](const Words&) {
    const auto roster = openShared();
    ZRLastImportGroup::lastImportGroup()->clear();
    const std::string before = state(roster);
    roster->save();
    return before + "; " + state(roster);
});

/// What each operation answers, in order.
const Role answers("ask for everything", [](const Words&) {
    const auto roster = openShared();
    const auto group = ZRLastImportGroup::lastImportGroup();
    const auto ana = named(roster, "Ana"), bo = named(roster, "Bo");
    const auto other = test::group(roster, "other");
    std::string told = group->name() + ":";
    for (const bool answer : {group->addMember(*ana), group->addMember(*ana), group->removeMember(*bo),
             group->addMembers({ana, bo}), group->removeMember(*ana), group->removeMember(*ana),
             group->addSubgroup(*other), group->removeSubgroup(*other), other->addSubgroup(*group),
             group->setValue("x", kZRGroupNameProperty), group->setValue("x", kZRNoteProperty),
             group->isSpecialGroup(), ZRLastImportGroup::init() == group,
             ZRLastImportGroup::specialGroupForRoster(roster) == group})
        told += answer ? " yes" : " no";
    for (const auto& list : {group->members(), group->subgroups(), group->membersAndSubgroups()})
        told += " " + std::to_string(list.size());
    return told + " " + textOf(group->valueForProperty(kZRCreationDateProperty));
});

/// Who is left when a notice tells of two deletions, of which one was undone meanwhile.
const Role bringsBack("bring back", [](const Words&) {
    const auto roster = openShared();
    const auto group = ZRLastImportGroup::lastImportGroup();
    const auto ana = named(roster, "Ana"), bo = named(roster, "Bo");
    group->addMembers({ana, bo});
    roster->save();
    roster->removeRecord(bo);
    const Value ids = Value::array({Value(ana->uniqueId()), Value(bo->uniqueId())});
    group->dataBaseChanged({kZRDatabaseChangedNotification, nullptr,
        Value::dictionary({{std::string(zr::kZRDeletedRecords), ids}})});
    return membersOf(*group);
});

/// Who is left when somebody is deleted here, elsewhere with a notice, and elsewhere past counting.
const Role loses("lose members", [](const Words& words) {
    NoticeWorld world;
    const auto group = ZRLastImportGroup::lastImportGroup();
    group->addMembers({named(world.roster, "Bo"), named(world.roster, "Cy"), named(world.roster, "Di")});
    world.roster->save();
    static_cast<void>(world.heard());
    const auto cy = group->members().at(1);
    if (words.at(0) == "here") {
        world.roster->removeRecord(cy);
        world.roster->save();
    } else {
        const std::string id = cy->uniqueId();
        if (play("delete", {"Cy"}).answer != "saved")
            return std::string("the other did not save");
        std::vector<std::pair<std::string, Value>> info{
            {std::string(zr::kZRSenderProcessID), Value(1)}, {kZRUserUIDKey, Value(std::int64_t{geteuid()})}};
        if (words.at(0) == "elsewhere")
            info.emplace_back(zr::kZRDeletedRecords, Value::array({Value(id)}));
        else
            info.emplace_back(kZRReloadRecords, Value(true));
        world.center->deliver(
            {kZRDatabaseChangedNotification, std::nullopt, Value::dictionary(std::move(info))});
    }
    static_cast<void>(world.heard());
    const std::string left = membersOf(*group);
    world.roster->save();
    return left + " | " + fileOf(*world.roster);
});

const Role resets("reset the database", [](const Words&) {
    NoticeWorld world;
    const auto group = ZRLastImportGroup::lastImportGroup();
    const auto bo = named(world.roster, "Bo");
    world.roster->save();
    group->addMembers({bo, named(world.roster, "Unsaved")});
    world.roster->resetDatabase();
    static_cast<void>(world.heard());
    world.roster->save();
    return state(world.roster);
});

} // namespace

TEST(LastImport, IsKeptInAFileFromOneProcessToTheNext)
{
    const Home home;
    EXPECT_EQ(home.play("look").answer, " | no file");
    EXPECT_EQ(home.play("import", {"Ana", "Bo"}).answer, "Ana Bo | no file; Ana Bo | Ana Bo");
    EXPECT_EQ(home.play("look").answer, "Ana Bo | Ana Bo");
    EXPECT_EQ(home.play("clear").answer, " | Ana Bo;  | no file");
    EXPECT_EQ(home.play("look").answer, " | no file");
}

TEST(LastImport, DropsIdsOfTheDeletedWhenItIsRead)
{
    const Home home;
    home.play("import", {"Ana", "Bo"});
    EXPECT_EQ(home.play("delete", {"Ana"}).answer, "saved");
    EXPECT_EQ(home.play("look").answer, "Bo | ? Bo") << "nothing is written before a save";
    EXPECT_EQ(home.play("save").answer, "Bo | ? Bo; Bo | Bo");
    EXPECT_EQ(home.play("delete", {"Bo"}).answer, "saved");
    EXPECT_EQ(home.play("look").answer, " | no file") << "a file without members is removed at once";
}

TEST(LastImport, HearsOfTheDeleted)
{
    for (const std::string where : {"here", "elsewhere", "among too many"}) {
        const Home home;
        const Outcome outcome = home.play("lose members", {where});
        EXPECT_EQ(outcome.answer, "Bo Di | Bo Di") << where << "\n" << outcome.log;
    }
}

TEST(LastImport, KeepsThoseWhoAreBackBeforeTheNoticeComes)
{
    const Home home;
    const Outcome outcome = home.play("bring back");
    EXPECT_EQ(outcome.answer, "Ana") << outcome.log;
}

TEST(LastImport, FindsItsMembersAgainAfterAReset)
{
    const Home home;
    const Outcome outcome = home.play("reset the database");
    EXPECT_EQ(outcome.answer, "Bo | Bo") << outcome.log;
}

TEST(LastImport, AnswersAsAGroupWithoutARow)
{
    const Home home;
    const Outcome outcome = home.play("ask for everything");
    EXPECT_EQ(outcome.answer, "Last Import: yes no no no yes no no no no no no yes yes yes 1 0 1 absent")
        << outcome.log;
}

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
        ASSERT_EQ(home.play("import", {"Ana"}).status, 0);
        ASSERT_TRUE(platform::writeFileAtomically(home.rosterDirectory() / "LastImport.plist", bytes))
            << what;
        const Outcome outcome = home.play("save");
        EXPECT_EQ(outcome.answer, " | no file;  | no file") << what << "\n" << outcome.log;
    }
}

} // namespace test
