// What each command does, what it tells the lists and the user, and when there is nothing to do.
#include "commands/ApplicationHost.h"
#include "commands/ZRAddToGroupCommand.h"
#include "commands/ZRAddURLFromBrowserCommand.h"
#include "commands/ZRChangePropertiesCommand.h"
#include "commands/ZRChangePropertyCommand.h"
#include "commands/ZRDeleteGroupsCommand.h"
#include "commands/ZRDeleteRecordsCommand.h"
#include "commands/ZREditSmartGroupCommand.h"
#include "commands/ZRImportCommand.h"
#include "commands/ZRMeCommand.h"
#include "commands/ZRNewGroupCommand.h"
#include "commands/ZRNewPersonCommand.h"
#include "commands/ZRNewSmartGroupCommand.h"
#include "commands/ZRPasteGroupsCommand.h"
#include "commands/ZRPastePeopleCommand.h"
#include "commands/ZRRemoveFromGroupCommand.h"
#include "commands/ZRRenameGroupCommand.h"
#include "commands/ZRSetImageCommand.h"
#include "commands/ZRShowAsCommand.h"
#include "commands/ZRUndoManager.h"
#include "commands/ZRUndoer.h"
#include "core/ZRAllGroup.h"
#include "platform/files/Directories.h"
#include "platform/files/Files.h"
#include "platform/files/Pasteboard.h"
#include "platform/run/Log.h"
#include "search/ZRSearchElement.h"
#include "search/ZRSmartGroup.h"
#include "store/ListWorld.h"
#include "store/RosterSnapshot.h"
#include "store/ZRManagedObjectContext.h"
#include "store/ZROSRecord.h"

#include <fmt/format.h>
#include <gmock/gmock.h>

#include <functional>

namespace test {

namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::UnorderedElementsAre;

/// Lists that tell what is selected in them, and whether those records were in the roster at that time.
class ShownLists final : public ZRDBCache {
public:
    explicit ShownLists(Ref<ZRRoster> roster) : ZRDBCache(std::move(roster)) { }
    void updateMembersSelection(const ZRRecordList& members) override { tell("members", members); }
    void updateGroupsSelection(const ZRRecordList& groups) override { tell("groups", groups); }
    void reloadMembers() override { trace += "reload; "; }
    std::string trace;

private:
    ~ShownLists() override = default;
    void tell(std::string_view what, const ZRRecordList& records)
    {
        for (const auto& record : records)
            trace += fmt::format("{} {}; ", what, isStored(*record) ? namesOf({record}).front() : "gone");
    }
};

/// A program whose lists those are.
class Host final : public ApplicationHost {
public:
    explicit Host(Ref<ZRDBCache> lists) : _lists(std::move(lists)) { }
    Ref<ZRDBCache> listsOf(ZRRoster&) override { return _lists; }

private:
    const Ref<ZRDBCache> _lists;
};

class Commands : public testing::Test {
protected:
    Commands()
    {
        roster->setRosterImagesDirectory((home.path() / "Images").string());
        roster->managedObjectContext()->setUndoManager(manager.get());
        ApplicationHost::install(std::make_shared<Host>(lists));
        for (const auto& member : {ana, bo})
            club->addMember(*member);
        bo->setValue(
            multiValue({{Value("a@x"), kZRHomeLabel}, {Value("b@x"), kZRWorkLabel}}), kZREmailProperty);
        club->setDistributionIdentifier(entryOf(bo, 1), kZREmailProperty, *bo);
        bo->setImageData(Value::data("picture of Bo"));
        roster->setMe(ana);
        roster->save();
    }
    ~Commands() override
    {
        ApplicationHost::install(nullptr);
        roster->managedObjectContext()->setUndoManager(nullptr);
    }

    static std::string entryOf(const Ref<ZRPerson>& card, ZRIndex index)
    {
        return card->valueForProperty(kZREmailProperty).as<ZRMultiValue>()->identifierAtIndex(index);
    }
    std::vector<std::string> people() { return namesOf(lists->allPeople()->records()); }
    std::vector<std::string> members(const Ref<ZRGroup>& of)
    {
        return namesOf(lists->membersOfGroup(of)->records());
    }
    /// What `body` has the lists select.
    std::string traceOf(const std::function<void()>& body)
    {
        lists->trace.clear();
        body();
        return lists->trace;
    }
    template <class Command, class... Arguments>
    Ref<Command> make(Arguments&&... arguments)
    {
        return platform::makeRef<Command>(std::forward<Arguments>(arguments)..., roster);
    }
    template <class Command, class... Arguments>
    bool perform(Arguments&&... arguments)
    {
        return make<Command>(std::forward<Arguments>(arguments)...)->performWithActionName("ACTION");
    }
    /// A command that has something to do, and did it.
    template <class Command, class... Arguments>
    static Ref<Command> performed(Arguments&&... arguments)
    {
        auto command = platform::makeRef<Command>(std::forward<Arguments>(arguments)...);
        EXPECT_TRUE(command->performWithActionName("ACTION"));
        return command;
    }
    /// What was performed since then is undone exactly, and redone exactly.
    void expectUndoable(const Snapshot& before)
    {
        const Snapshot after = snapshotOf(roster);
        manager->undo();
        EXPECT_EQ(differenceOf(before, snapshotOf(roster)), "");
        manager->redo();
        EXPECT_EQ(differenceOf(after, snapshotOf(roster)), "");
    }
    /// A group that came with a subscription.
    Ref<ZRGroup> subscribedGroup()
    {
        auto made = platform::refCast<ZRGroup>(
            ZRRecord::initWithUniqueId(ZRSubscribedGroup::recordClassDescription, {}, roster));
        made->setValue(multiValue({{Value("http://shared"), kZRSubscribeLabel}}), kZRRemoteLocationProperty);
        return made;
    }
    Ref<ZRSearchElement> search() const
    {
        return ZRPerson::searchElementForProperty(kZRFirstNameProperty, {}, {}, Value("B"), kZRPrefixMatch);
    }

    const Home home;
    const Ref<ZRRoster> roster = ZRRoster::emptyMemoryBackedRoster();
    const Ref<ShownLists> lists = ZRDBCache::initWithRoster<ShownLists>(roster);
    const std::shared_ptr<UndoManager> manager = std::make_shared<ZRUndoManager>();
    const Ref<ZRPerson> ana = named(roster, "Ana"), bo = named(roster, "Bo");
    const Ref<ZRGroup> club = group(roster, "club"), empty = group(roster, "empty");
    const std::shared_ptr<platform::Pasteboard> board = platform::makePasteboard();
};

} // namespace

// ---- the base

TEST_F(Commands, MustBeImplemented)
{
    const platform::LogCapture log;
    const auto command = platform::makeRef<ZRCommand>(roster);
    EXPECT_FALSE(command->performWithActionName("NOTHING"));
    command->undoIt();
    command->redoIt();
    for (const auto* operation : {"doIt", "undoIt", "redoIt"})
        EXPECT_THAT(log.lines(),
            testing::Contains(fmt::format("-[ZRCommand {}] must be implemented by subclass", operation)));
    EXPECT_FALSE(manager->canUndo());
    EXPECT_EQ(command->undoer(), platform::makeRef<ZRCommand>(roster)->undoer());
}

TEST_F(Commands, AreNamedInTheUsersLanguage)
{
    platform::makeRef<ZRRenameGroupCommand>(club, Value("team"), roster)->performWithActionName("NEW_PERSON");
    EXPECT_EQ(manager->undoActionName(), "New Card");
    platform::makeRef<ZRRenameGroupCommand>(club, Value("crew"), roster)
        ->performWithActionName("no such text");
    EXPECT_EQ(manager->undoActionName(), "no such text");
    manager->undo();
    EXPECT_EQ(manager->redoActionName(), "no such text");
    EXPECT_EQ(manager->undoActionName(), "New Card");
    EXPECT_EQ(club->name(), "team");
}

TEST_F(Commands, NeedNoUndoManager)
{
    roster->managedObjectContext()->setUndoManager(nullptr);
    EXPECT_TRUE(perform<ZRRenameGroupCommand>(club, Value("team")));
    EXPECT_EQ(club->name(), "team");
    EXPECT_FALSE(manager->canUndo());
}

TEST_F(Commands, StandWhenTheyCannotBeRegistered)
{
    struct Failing final : UndoManager {
        void registerUndoWithTarget(Ref<platform::Object>, Operation) override
        {
            throw std::runtime_error("no room");
        }
    } failing;
    roster->managedObjectContext()->setUndoManager(&failing);
    const platform::LogCapture log;
    EXPECT_TRUE(perform<ZRRenameGroupCommand>(club, Value("team")));
    EXPECT_EQ(club->name(), "team");
    EXPECT_THAT(log.lines(), ElementsAre("no room"));
}

TEST_F(Commands, LeaveNoStepWhereNothingIsToBeDone)
{
    const auto nobody = Ref<ZRPerson>();
    const ZRRecordList both = {ana, bo};
    const Ref<ZRGroup> everybody = ZRAllGroup::specialGroupForRoster(roster);
    const std::vector<std::pair<const char*, Ref<ZRCommand>>> idle = {
        {"no new card", make<ZRNewPersonCommand>(nobody, club)},
        {"no group to join", make<ZRAddToGroupCommand>(nullptr, both)},
        {"nobody to join it", make<ZRAddToGroupCommand>(club, ZRRecordList())},
        {"members join", make<ZRAddToGroupCommand>(club, both)},
        {"cards join everybody", make<ZRAddToGroupCommand>(everybody, both)},
        {"a group joins itself", make<ZRAddToGroupCommand>(club, ZRRecordList{club})},
        {"nobody leaves", make<ZRRemoveFromGroupCommand>(empty, both)},
        {"cards leave everybody", make<ZRRemoveFromGroupCommand>(everybody, both)},
        {"nothing is deleted", make<ZRDeleteRecordsCommand>(club, ZRRecordList())},
        {"a special group is deleted", make<ZRDeleteGroupsCommand>(ZRRecordList{everybody})},
        {"no search", make<ZRNewSmartGroupCommand>("smart", nullptr, true)},
        {"no smart group", make<ZREditSmartGroupCommand>(nullptr, "smart", search(), true)},
        {"a special group is renamed", make<ZRRenameGroupCommand>(everybody, Value("we"))},
        {"nobody's picture", make<ZRSetImageCommand>(nobody, Value::data("x"), Value())},
        {"people shown as people", make<ZRShowAsCommand>(both, club, 0)},
        {"groups shown as companies", make<ZRShowAsCommand>(ZRRecordList{club}, club, 1)},
        {"Me is Me", make<ZRMeCommand>(club, ana)},
        {"nobody is Me", make<ZRMeCommand>(club, nobody)},
        {"a group is Me", make<ZRMeCommand>(club, club)},
        {"no cards to paste", platform::makeRef<ZRPastePeopleCommand>(club, roster, board)},
        {"no groups to paste", platform::makeRef<ZRPasteGroupsCommand>(roster, board)},
        {"an empty import", make<ZRImportCommand>(ZRImportCommand::Work{})},
        {"no address", make<ZRAddURLFromBrowserCommand>(both, "")},
        {"no card for it", make<ZRAddURLFromBrowserCommand>(ZRRecordList{club}, "http://x")},
    };
    const Snapshot before = snapshotOf(roster);
    for (const auto& [what, command] : idle) {
        EXPECT_FALSE(command->performWithActionName("ACTION")) << what;
        EXPECT_FALSE(manager->canUndo()) << what;
        EXPECT_EQ(differenceOf(before, snapshotOf(roster)), "") << what;
    }
}

TEST_F(Commands, SaveUnlessToldOtherwise)
{
    perform<ZRShowAsCommand>(ZRRecordList{bo}, club, 1);
    EXPECT_FALSE(roster->hasUnsavedChanges());
    const auto command = platform::makeRef<ZRShowAsCommand>(ZRRecordList{ana}, club, 1, roster);
    EXPECT_TRUE(command->save());
    command->setSave(false);
    command->doIt();
    EXPECT_TRUE(roster->hasUnsavedChanges());
    command->undoIt();
    EXPECT_TRUE(roster->hasUnsavedChanges());
}

// ---- what the user sees

TEST_F(Commands, RestoreTheSelectionFirst)
{
    struct Seen {
        const char* what;
        Ref<ZRCommand> command;
        std::string undo;
        /// Where that differs.
        std::string redo = undo;
    };
    const auto cy = named(roster, "Cy");
    const auto card = Value::dictionary({{std::string(kZRLastNameProperty), Value(platform::NullMarker())}});
    const std::vector<Seen> all = {
        {"new card", make<ZRNewPersonCommand>(cy, empty), "groups empty; members Cy; "},
        {"delete", make<ZRDeleteRecordsCommand>(club, ZRRecordList{bo}), "groups club; members Bo; "},
        {"delete group", make<ZRDeleteGroupsCommand>(ZRRecordList{club}), "groups club; "},
        {"leave", make<ZRRemoveFromGroupCommand>(club, ZRRecordList{bo}),
            "groups club; groups club; members Bo; ", "groups club; members Bo; "},
        {"join", make<ZRAddToGroupCommand>(empty, ZRRecordList{bo}), "groups empty; members Bo; reload; "},
        {"edit", make<ZRChangePropertiesCommand>(bo, card, club), "groups club; members Bo; "},
        {"new group", make<ZRNewGroupCommand>(ZRRecordList{bo}, club), "groups untitled group; "},
        {"new smart group", make<ZRNewSmartGroupCommand>("B", search(), true), "groups B; "},
        {"rename", make<ZRRenameGroupCommand>(club, Value("team")), "groups team; ", "groups club; "},
        {"show as", make<ZRShowAsCommand>(ZRRecordList{bo}, club, 1), "groups club; members Bo; "},
        {"me", make<ZRMeCommand>(club, bo), "groups club; members Bo; "},
    };
    for (const auto& [what, command, undo, redo] : all) {
        ASSERT_TRUE(command->performWithActionName("ACTION")) << what;
        EXPECT_EQ(traceOf([&] { manager->undo(); }), undo) << what;
        EXPECT_EQ(traceOf([&] { manager->redo(); }), redo) << what;
        manager->undo();
    }
}

// ---- cards

TEST_F(Commands, BringANewCardBackWithItsLaterEdits)
{
    const auto card = ZRPerson::initWithRoster(ZRRoster::emptyMemoryBackedRoster());
    const std::string id = card->uniqueId();
    EXPECT_THAT(people(), ElementsAre("Ana", "Bo"));
    lists->startEditingNewPerson(card, club);
    card->setValue(Value("Cy"), kZRFirstNameProperty);
    lists->endEditing(card);
    EXPECT_EQ(manager->undoActionName(), "New Card");
    card->setValue(Value("Zoe"), kZRFirstNameProperty);
    card->setImageData(Value::data("later"));
    lists->changedMember(card);

    manager->undo();
    EXPECT_FALSE(roster->recordForUniqueId(id));
    EXPECT_THAT(people(), ElementsAre("Ana", "Bo"));
    EXPECT_THAT(members(club), ElementsAre("Ana", "Bo"));
    manager->redo();
    EXPECT_EQ(roster->recordForUniqueId(id), card);
    EXPECT_EQ(card->imageData(), Value::data("later"));
    EXPECT_THAT(people(), ElementsAre("Ana", "Bo", "Zoe"));
    EXPECT_THAT(members(club), ElementsAre("Ana", "Bo", "Zoe"));
}

TEST_F(Commands, BringDeletedRecordsBackWithAllThatTheyWere)
{
    club->addSubgroup(*empty);
    const Snapshot before = snapshotOf(roster);
    EXPECT_THAT(members(club), ElementsAre("empty", "Ana", "Bo"));
    // In this order the group has lost a member when it goes itself.
    ASSERT_TRUE(perform<ZRDeleteRecordsCommand>(club, ZRRecordList{bo, club, ana, empty}));
    EXPECT_THAT(people(), ElementsAre());
    EXPECT_FALSE(bo->zrDatabaseImpl());
    EXPECT_FALSE(fs::exists(*bo->pathForUIDTaggedImage()));
    manager->undo();
    EXPECT_EQ(differenceOf(before, snapshotOf(roster)), "");
    EXPECT_THAT(people(), ElementsAre("Ana", "Bo"));
    EXPECT_THAT(members(club), ElementsAre("empty", "Ana", "Bo"));
}

// Another process may delete a card that an undo wants to write.
TEST_F(Commands, BringBackACardWhoseRowIsGone)
{
    const auto command = platform::makeRef<ZRDeleteRecordsCommand>(club, ZRRecordList{bo}, roster);
    const Snapshot before = snapshotOf(roster);
    command->keepRecords();
    locked(*roster, ZRAccess::write,
        [&] { roster->managedObjectContext()->deleteObject(*bo->zrDatabaseImpl()); });
    roster->save();
    EXPECT_EQ(snapshotOf(roster).count(bo->uniqueId()), 0);
    command->undoIt();
    EXPECT_EQ(differenceOf(before, snapshotOf(roster)), "");
}

TEST_F(Commands, ChangePropertiesOfACardThatHasGoneMeanwhile)
{
    const auto command = platform::makeRef<ZRChangePropertiesCommand>(
        bo, Value::dictionary({{std::string(kZRFirstNameProperty), Value("Bob")}}), club, roster);
    roster->removeRecord(bo);
    command->undoIt();
    EXPECT_EQ(bo->valueForProperty(kZRFirstNameProperty), Value("Bob"));
    EXPECT_THAT(namesOf(bo->parentGroups()), ElementsAre("club"));
}

// What a group has chosen goes with the entry, and comes back with it; what it chose meanwhile stays.
TEST_F(Commands, BringBackChoicesWithTheirEntries)
{
    const Value former = bo->valueForProperty(kZREmailProperty),
                edited = multiValue({{Value("c@x"), kZRHomeLabel}});
    const std::string chosen = entryOf(bo, 1);
    const auto choice = [&] { return club->distributionIdentifierForProperty(kZREmailProperty, *bo); };
    const auto command = platform::makeRef<ZRChangePropertyCommand>(bo, "Email.part", former, roster);
    bo->setValue(edited, kZREmailProperty);
    command->setNewValue(edited);
    command->performWithActionName("EDIT");
    EXPECT_EQ(choice(), entryOf(bo, 0));
    manager->undo();
    EXPECT_EQ(choice(), chosen);
    club->setDistributionIdentifier(entryOf(bo, 0), kZREmailProperty, *bo);
    manager->redo();
    manager->undo();
    EXPECT_EQ(choice(), entryOf(bo, 0));
}

TEST_F(Commands, ShowThoseAsCompaniesThatAreNone)
{
    ana->setValue(Value(1 | 16), kZRPersonFlags);
    bo->setValue(Value(32), kZRPersonFlags);
    const auto flags = [&] {
        return std::pair(ana->valueForProperty(kZRPersonFlags).asInteger(),
            bo->valueForProperty(kZRPersonFlags).asInteger());
    };
    const Snapshot before = snapshotOf(roster);
    ASSERT_TRUE(perform<ZRShowAsCommand>(ZRRecordList{ana, bo, club}, club, 1));
    EXPECT_EQ(flags(), std::pair(17L, 33L));
    expectUndoable(before);
}

TEST_F(Commands, LeaveTheLargePictureWhereItCanBeFoundAgain)
{
    bo->setLargeImageData(Value::data("large Bo"));
    const auto command =
        platform::makeRef<ZRSetImageCommand>(bo, Value::data("new"), Value::data("large new"), roster);
    const std::string waiting = command->alternatePath();
    EXPECT_THAT(waiting, HasSubstr("/org.quillon.Roster/" + bo->_imageNameForPerson() + "-"));
    const auto pictures = [&] {
        return std::string(bo->imageData().asBytes()) + ", " + std::string(bo->largeImageData().asBytes())
            + ", " + *platform::readFile(waiting);
    };
    command->performWithActionName("IMAGE");
    EXPECT_EQ(pictures(), "new, large new, large Bo");
    EXPECT_EQ(fs::status(waiting).permissions(), fs::perms::owner_read | fs::perms::owner_write);
    manager->undo();
    EXPECT_EQ(pictures(), "picture of Bo, large Bo, large new");
    manager->redo();
    EXPECT_EQ(pictures(), "new, large new, large Bo");
}

TEST_F(Commands, TellOfALargePictureThatCannotBeMoved)
{
    bo->setLargeImageData(Value::data("large Bo"));
    const std::string caches = platform::Directories::current()->cacheHome() + "/org.quillon.Roster";
    static_cast<void>(platform::removeFile(caches));
    ASSERT_TRUE(platform::writeFileAtomically(caches, "in the way"));
    const platform::LogCapture log;
    EXPECT_TRUE(perform<ZRSetImageCommand>(bo, Value::data("new"), Value()));
    EXPECT_THAT(log.lines(), testing::Contains(testing::StartsWith("Error deleting large image: ")));
    EXPECT_EQ(bo->imageData(), Value::data("new"));
    EXPECT_EQ(bo->largeImageData(), Value::data("large Bo"));
    static_cast<void>(platform::removeFile(caches));
}

TEST_F(Commands, PutAnAddressUnderALabelOfItsOwn)
{
    ana->setValue(multiValue({{Value("http://a"), kZRHomePageLabel}}), kZRURLsProperty);
    const Snapshot before = snapshotOf(roster);
    ASSERT_TRUE(perform<ZRAddURLFromBrowserCommand>(ZRRecordList{ana, bo}, "http://b"));
    const Value value = ana->valueForProperty(kZRURLsProperty);
    const auto* urls = value.as<ZRMultiValue>();
    ASSERT_EQ(urls->count(), 2);
    EXPECT_EQ(urls->valueAtIndex(1), Value("http://b"));
    EXPECT_NE(urls->labelAtIndex(1), kZRHomePageLabel);
    expectUndoable(before);
}

// ---- groups

TEST_F(Commands, MakeGroupsWhereTheUserLooks)
{
    const auto made = [&](const Ref<ZRGroup>& in) {
        return performed<ZRNewGroupCommand>(ZRRecordList{ana, empty}, in, roster)->madeGroups().front();
    };
    const auto local = made(club), subscribed = made(subscribedGroup());
    EXPECT_EQ(local->remoteLocation(), "local");
    EXPECT_EQ(subscribed->remoteLocation(), "http://shared");
    EXPECT_EQ(subscribed->_table(), "ZRSubscribedGroup");
    for (const auto& group : {local, subscribed})
        EXPECT_THAT(static_cast<ZRGroup&>(*group).members(), ElementsAre(ana));
    EXPECT_THAT(namesOf({local}), ElementsAre("untitled group"));
}

TEST_F(Commands, PutGroupsBackIntoEachOther)
{
    // A group may be in another one and in a group of that, when it was put in first.
    const auto top = group(roster, "top");
    top->addSubgroup(*empty);
    club->addSubgroup(*empty);
    top->addSubgroup(*club);
    const Snapshot before = snapshotOf(roster);
    const Ref<ZRCommand> all[] = {
        make<ZRDeleteGroupsCommand>(ZRRecordList{empty}),
        make<ZRDeleteGroupsCommand>(ZRRecordList{top}),
        make<ZRDeleteRecordsCommand>(club, ZRRecordList({top, club, empty})),
        make<ZRRemoveFromGroupCommand>(top, ZRRecordList({club, empty})),
    };
    for (const auto& command : all) {
        ASSERT_TRUE(command->performWithActionName("ACTION"));
        manager->undo();
        EXPECT_EQ(differenceOf(before, snapshotOf(roster)), "");
    }
}

TEST_F(Commands, CopyWhatDoesNotFitASubscribedGroupOnce)
{
    const auto shared = subscribedGroup();
    // Ana is in both groups, and one of them is in the other.
    empty->addMember(*ana);
    club->addSubgroup(*empty);
    const Snapshot before = snapshotOf(roster);
    ASSERT_TRUE(perform<ZRAddToGroupCommand>(shared, ZRRecordList{ana, empty, club}));
    EXPECT_EQ(snapshotOf(roster).size(), before.size() + 4) << "copies of Ana, Bo and two groups";
    EXPECT_THAT(namesOf(shared->members()), ElementsAre("Ana"));
    for (const auto& member : shared->members())
        EXPECT_EQ(member->remoteLocation(), "http://shared");
    EXPECT_THAT(namesOf(shared->subgroups()), UnorderedElementsAre("club", "empty"));
    expectUndoable(before);
}

// ---- pasting

TEST_F(Commands, PasteGroupsUnderNamesOfTheirOwn)
{
    ZRRecord::writeRecords({club}, *board);
    const auto paste = [&] {
        return platform::refCast<ZRGroup>(
            performed<ZRPasteGroupsCommand>(roster, board)->madeGroups().front());
    };
    const auto first = paste();
    EXPECT_NE(first->uniqueId(), club->uniqueId());
    EXPECT_THAT(namesOf(first->members()), UnorderedElementsAre("Ana", "Bo"));
    EXPECT_EQ(first->distributionIdentifierForProperty(kZREmailProperty, *bo), entryOf(bo, 1));
    EXPECT_THAT(namesOf({first, paste(), paste()}), ElementsAre("club Copy", "club Copy 2", "club Copy 3"));
    manager->undo();
    manager->undo();
    EXPECT_EQ(paste()->name(), "club Copy 2");
}

TEST_F(Commands, LinkCardsThatAreThereAndCopyOthers)
{
    ZRRecord::writeRecords({ana, club}, *board);
    const auto linked = performed<ZRPastePeopleCommand>(empty, roster, board);
    EXPECT_THAT(linked->linkedPeople(), ElementsAre(ana));
    EXPECT_THAT(linked->people(), ElementsAre());
    EXPECT_THAT(namesOf(empty->members()), ElementsAre("Ana"));
    const auto copies = performed<ZRPastePeopleCommand>(nullptr, roster, board)->people();
    EXPECT_THAT(namesOf(copies), ElementsAre("Ana"));
    EXPECT_NE(copies.front()->uniqueId(), ana->uniqueId());
}

// In another roster a pasted group has the copies of its members that were pasted before it.
TEST_F(Commands, FindTheCopiesOfMembersElsewhere)
{
    const auto elsewhere = ZRRoster::emptyMemoryBackedRoster();
    ApplicationHost::install(nullptr);
    ZRRecord::writeRecords({ana, club}, *board);
    platform::makeRef<ZRPastePeopleCommand>(nullptr, elsewhere, board)->doIt();
    platform::makeRef<ZRPasteGroupsCommand>(elsewhere, board)->doIt();
    const auto pasted = platform::refCast<ZRGroup>(elsewhere->groups().front());
    EXPECT_THAT(pasted->members(), ElementsAre(elsewhere->people().front()));
}

// What another program put there may be anything.
TEST_F(Commands, PasteWhatCanBeReadOfAStrangePasteboard)
{
    const Value odd = Value::array({Value(5), Value(), Value(platform::NullMarker()), Value("no id")});
    const auto dictionary = [](std::vector<std::pair<std::string, Value>> entries) {
        return Value::dictionary(std::move(entries));
    };
    struct Pasted {
        Value value;
        std::size_t people, groups;
    };
    const std::vector<Pasted> pasted = {
        {Value("text"), 0, 0},
        {odd, 0, 0},
        {dictionary({{"x", Value("no dictionary")}, {"", odd}}), 0, 0},
        {dictionary({{"", dictionary({})}}), 1, 1},
        {dictionary({{"short", dictionary({{"UID", Value(7)}, {"First", odd}, {"GroupName", odd}})}}), 0, 0},
        {dictionary({{ana->uniqueId(), dictionary({{"First", Value("Eve")}, {"Email", Value("plain")}})}}), 1,
            1},
        {dictionary({{"x",
             dictionary({{std::string(kZRMembersDictionaryKey), odd},
                 {std::string(kZRSubgroupsDictionaryKey), odd},
                 {std::string(kZREmailDistributionListDictionaryKey), odd}, {"ZRMembers", Value("x")}})}}),
            0, 1},
    };
    for (const auto& [value, peopleCount, groupsCount] : pasted) {
        SCOPED_TRACE(value.description());
        board->setValue(value, ZRGroupDictPboardType);
        board->setValue(value, ZRPeopleDictPboardType);
        const Snapshot before = snapshotOf(roster);
        const auto people = platform::makeRef<ZRPastePeopleCommand>(nullptr, roster, board);
        const auto groups = platform::makeRef<ZRPasteGroupsCommand>(roster, board);
        EXPECT_EQ(people->doIt(), peopleCount != 0);
        EXPECT_EQ(groups->doIt(), groupsCount != 0);
        EXPECT_EQ(people->people().size(), peopleCount);
        EXPECT_EQ(groups->madeGroups().size(), groupsCount);
        EXPECT_EQ(snapshotOf(roster).size(), before.size() + peopleCount + groupsCount);
        groups->undoIt();
        people->undoIt();
        EXPECT_EQ(differenceOf(before, snapshotOf(roster)), "");
    }
}

// ---- the lists' own manager

TEST_F(Commands, GiveListsAnUndoManager)
{
    EXPECT_TRUE(dynamic_cast<ZRUndoManager*>(lists->undoManager()));
    EXPECT_NE(lists->undoManager(), manager.get());
    EXPECT_EQ(ZRUndoManager::sharedInstance(), ZRUndoManager::sharedInstance());
}

} // namespace test
