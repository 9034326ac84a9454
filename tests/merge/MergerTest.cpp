// What a merger writes once it is told to, what it leaves alone until then, and how that is undone.
#include "commands/ZRUndoManager.h"
#include "core/ZRFailure.h"
#include "core/ZRMutableMultiValue.h"
#include "merge/MergeWorld.h"
#include "merge/ZRMergePeopleCommand.h"
#include "merge/ZRMerger.h"
#include "objectstore/StoreCoordinator.h"
#include "objectstore/StoreErrors.h"
#include "store/RosterSnapshot.h"
#include "support/FaultyVfs.h"

#include <stdexcept>

namespace test {

namespace {

const Value kOldPicture = Value::data("old picture"), kNewPicture = Value::data("new picture");

class Merger : public MergeTest {
protected:
    void SetUp() override
    {
        MergeTest::SetUp();
        merger = ZRNewMerger::initWithGroup(nullptr);
    }

    /// The card as the merger's target has it.
    Ref<ZRPerson> inTarget(const ZRRecord& card) { return personIn(merger->targetRoster(), card); }

    static bool isOfLastImport(const ZRRecord& card)
    {
        return (card.zrosValueForKey("displayFlags").asInteger() & 128) != 0;
    }

    /// All that is written is taken back step by step, and made again.
    void expectUndoable(const Snapshot& before)
    {
        const auto after = snapshotOf(roster);
        for (int round = 0; round < 2; ++round) {
            undo->undo();
            EXPECT_EQ(differenceOf(before, snapshotOf(roster)), "") << "undone";
            undo->redo();
            EXPECT_EQ(differenceOf(after, snapshotOf(roster)), "") << "redone";
        }
    }

    void recordUndo() { roster->managedObjectContext()->setUndoManager(undo.get()); }

    Ref<ZRNewMerger> merger;
    std::shared_ptr<ZRUndoManager> undo = std::make_shared<ZRUndoManager>();
};

TEST_F(Merger, WorksInARosterThatIsThrownAway)
{
    EXPECT_THROW(merger->setTargetRoster(roster), ZRInvalidArgument);
    const auto lasting = saved("First: Ana");
    EXPECT_THROW(merger->updateCard(lasting, imported("First: Bea")), ZRInvalidArgument);
    merger->setTargetRoster(incoming);
    merger->addPerson(imported("First: Bea"));
    EXPECT_THROW(merger->applyChanges(), ZRInvalidArgument) << "of another store";
    EXPECT_EQ(roster->people().size(), 1U);
}

TEST_F(Merger, UpdatesWhatACardSaysAndNothingElse)
{
    const auto ana = saved("First: Ana | ZRPersonFlags: 1"), bea = saved("First: Bea | Last: B"),
               cid = saved("First: Cid");
    group("Friends", {ana});
    const auto imports = group("Imports", {bea});
    roster->setMe(ana);
    ana->setImageData(kOldPicture);
    bea->setImageData(kOldPicture);
    cid->zrosSetValue(Value(128), "displayFlags");
    ASSERT_TRUE(roster->save());
    const auto before = snapshotOf(roster);
    recordUndo();

    const auto withPicture = imported("First: Ana | Last: Lima");
    withPicture->setImageData(kNewPicture);
    merger = ZRNewMerger::initWithGroup(imports);
    merger->updateCard(inTarget(*ana), withPicture);
    merger->updateCard(inTarget(*bea), imported("Last: Bo"));
    EXPECT_EQ(differenceOf(before, snapshotOf(roster)), "") << "before it is applied";
    EXPECT_EQ(merger->addedToGroup().size(), 1U) << "one was in it";

    EXPECT_TRUE(merger->applyChanges());
    EXPECT_EQ(lineOf(*reread(*ana)), "First: Ana | Last: Lima | ZRPersonFlags: 1");
    EXPECT_EQ(reread(*ana)->imageData(), kNewPicture);
    EXPECT_EQ(reread(*bea)->imageData(), kOldPicture) << "the newcomer had none";
    EXPECT_EQ(groupsOf(*reread(*ana)), "Friends,Imports");
    EXPECT_EQ(roster->me(), ana);
    EXPECT_EQ(ana->valueForProperty(kZRCreationDateProperty),
        reread(*ana)->valueForProperty(kZRCreationDateProperty));
    EXPECT_TRUE(isOfLastImport(*reread(*ana)) && isOfLastImport(*reread(*bea)));
    EXPECT_FALSE(isOfLastImport(*reread(*cid))) << "of the import before";
    EXPECT_TRUE(ApplicationHost::shared()->showsLastImportGroup());
    expectUndoable(before);
    EXPECT_EQ(groupsOf(*bea), "Imports");
}

TEST_F(Merger, AddsCardsUnderNewIds)
{
    const auto imports = group("Imports");
    const auto before = snapshotOf(roster);
    recordUndo();
    merger = ZRNewMerger::initWithGroup(imports);
    const auto fromElsewhere = imported("First: Ana | Email home: a | texts t: x"),
               waiting = card(merger->targetRoster(), "First: Bea");
    fromElsewhere->setImageData(kNewPicture);
    merger->addPerson(fromElsewhere);
    merger->addPerson(waiting);
    EXPECT_TRUE(merger->applyChanges());
    ASSERT_EQ(merger->appliedAddedPeople().size(), 2U);
    const auto ana = reread(*merger->appliedAddedPeople()[0]), bea = reread(*merger->appliedAddedPeople()[1]);
    EXPECT_EQ(lineOf(*ana), lineOf(*fromElsewhere));
    EXPECT_EQ(ana->imageData(), kNewPicture);
    EXPECT_EQ(lineOf(*bea), "First: Bea");
    EXPECT_EQ(groupsOf(*ana) + groupsOf(*bea), "ImportsImports");
    EXPECT_NE(ana->uniqueId(), fromElsewhere->uniqueId());
    EXPECT_TRUE(ana->uniqueId().ends_with(":ZRPerson") && isOfLastImport(*ana));
    EXPECT_EQ(roster->people().size(), 2U);
    expectUndoable(before);
}

// What a search for duplicates does with a bucket.
TEST_F(Merger, LetsOneCardTakeThePlaceOfAnother)
{
    const auto survivor = saved("First: Ana | Phone home: 1"), dropped = saved("First: ANA | Phone work: 2");
    dropped->setImageData(kOldPicture);
    const auto friends = group("Friends", {dropped});
    group("Family", {survivor});
    const auto before = snapshotOf(roster);
    recordUndo();
    merger->deletePerson(inTarget(*dropped));
    EXPECT_TRUE(merger->applyChanges());
    EXPECT_TRUE(reread(*dropped)) << "nothing else was to be done";
    merger->updateCard(inTarget(*survivor), inTarget(*dropped));
    merger->addMember(inTarget(*survivor), friends);
    EXPECT_TRUE(merger->applyChanges());
    EXPECT_FALSE(reread(*dropped));
    EXPECT_EQ(lineOf(*reread(*survivor)), "First: ANA | Phone home: 1 | Phone work: 2");
    EXPECT_EQ(reread(*survivor)->imageData(), kOldPicture);
    EXPECT_EQ(groupsOf(*reread(*survivor)), "Family,Friends");
    expectUndoable(before);
}

TEST_F(Merger, FindsValuesThatReadTheSame)
{
    struct Case {
        const char *line, *cleaned;
    };
    const Case cases[] = {
        {"Phone home: (12) 34 | Phone work: 12-34 | Phone home: +12-34",
            "Phone home: (12) 34 | Phone home: +12-34"},
        {"URLs a: x.de/a | URLs b: X.DE.a", "URLs a: x.de/a"},
        {"Email a: a@b | Email a: A@B", "Email a: a@b"},
        {"Email a: a b | Email a: ab", "Email a: a b | Email a: ab"},
        {"Address a: City=Rome | Address b: City=ROME", "Address a: City=Rome"},
        {"ZRDate a: 1999-01-01 | ZRDate b: 1999-01-01", "ZRDate a: 1999-01-01"},
        {"Email a: x | Phone a: x", "Email a: x | Phone a: x"},
    };
    recordUndo();
    for (const auto& [line, cleaned] : cases) {
        SCOPED_TRACE(line);
        const auto person = saved(line);
        const auto before = snapshotOf(roster);
        merger = ZRNewMerger::initWithGroup(nullptr);
        EXPECT_EQ(
            merger->findSimilarMultiValuesForPerson(inTarget(*person)), line != std::string_view(cleaned));
        EXPECT_EQ(lineOf(*person), line) << "before it is applied";
        merger->applyChanges();
        EXPECT_EQ(lineOf(*reread(*person)), cleaned);
        if (line != std::string_view(cleaned))
            expectUndoable(before);
    }
}

TEST_F(Merger, CleansWhatAnUpdateBroughtToo)
{
    const auto person = saved("Phone home: 1-2 | Phone work: 12 | Phone fax: 9");
    const Value phones = person->valueForProperty(kZRPhoneProperty);
    const std::string kept = phones.as<ZRMultiValue>()->identifierAtIndex(0);
    const auto before = snapshotOf(roster);
    recordUndo();
    merger->findSimilarMultiValuesForPerson(inTarget(*person));
    merger->updateCard(inTarget(*person), imported("First: Ana | Phone car: 3 | Phone boat: (9)"));
    merger->applyChanges();
    EXPECT_EQ(lineOf(*reread(*person)), "First: Ana | Phone home: 1-2 | Phone fax: 9 | Phone car: 3");
    const Value left = reread(*person)->valueForProperty(kZRPhoneProperty);
    EXPECT_EQ(left.as<ZRMultiValue>()->identifierAtIndex(0), kept);
    expectUndoable(before);
    merger = ZRNewMerger::initWithGroup(nullptr);
    merger->findSimilarMultiValuesForPerson(inTarget(*person));
    merger->deletePerson(inTarget(*person));
    EXPECT_TRUE(merger->applyChanges() && reread(*person)) << "a card that goes needs no cleaning";
}

TEST_F(Merger, PassesOverWhoWasDeletedMeanwhile)
{
    const auto gone = saved("First: Ana"), there = saved("First: Bea");
    merger->updateCard(inTarget(*gone), imported("Last: Lima"));
    merger->updateCard(inTarget(*there), imported("Last: Lima"));
    const auto other = roster->parallelUniverseRoster();
    ASSERT_TRUE(other->removeRecord(other->recordForUniqueId(gone->uniqueId())) && other->save());
    EXPECT_TRUE(merger->applyChanges());
    EXPECT_FALSE(merger->appliedUpdatedPeople()[0]);
    EXPECT_EQ(lineOf(*reread(*there)), "First: Bea | Last: Lima");
    EXPECT_EQ(roster->people().size(), 1U);
}

TEST_F(Merger, TellsWhyNothingCouldBeSaved)
{
    FaultyVfs disk;
    roster = ZRRoster::rosterWithDatabaseDirectory((home.path() / "Full").string(), false);
    const auto replaced = ApplicationHost::install(std::make_shared<RosterHost>(roster));
    auto ana = saved("First: Ana"), newcomer = imported("First: Bea");
    ana->setImageData(kOldPicture);
    ASSERT_TRUE(roster->save());
    newcomer->setImageData(kNewPicture);
    merger = ZRNewMerger::initWithGroup(nullptr);
    merger->updateCard(inTarget(*ana), newcomer);
    disk.setHook([](FaultyVfs::Operation operation, std::string_view) {
        return operation == FaultyVfs::Operation::write ? SQLITE_FULL : SQLITE_OK;
    });
    EXPECT_TRUE(merger->applyChanges());
    EXPECT_TRUE(objectstore::isFault(merger->failure(), objectstore::StoreFault::diskFull))
        << merger->failure().text;
    disk.letPass();
    EXPECT_EQ(lineOf(*reread(*ana)), "First: Ana");
    EXPECT_EQ(reread(*ana)->imageData(), kOldPicture);
    ApplicationHost::install(replaced);
    ana = nullptr;
    merger = nullptr;
    roster = nullptr;
}

TEST_F(Merger, TellsThatTheStoreIsGone)
{
    const auto ana = saved("First: Ana");
    merger->updateCard(inTarget(*ana), imported("First: Bea"));
    fs::remove(roster->rosterObjectStoreDatabaseFile());
    EXPECT_TRUE(merger->applyChanges());
    EXPECT_NE(merger->failure().domain, "");
}

TEST_F(Merger, MustKnowWhichStoreIsMeant)
{
    const auto added = roster->storeCoordinator()->addStore(objectstore::StoreType::inMemory, "");
    ASSERT_TRUE(added);
    merger->addPerson(imported("First: Ana"));
    try {
        merger->applyChanges();
        ADD_FAILURE() << "it chose one";
    } catch (const std::logic_error& failure) {
        EXPECT_STREQ(failure.what(), "Import failed: the destination store is ambiguously defined");
    }
}

TEST_F(Merger, OfTheOlderKindFindsByPlaceAndIssuesACommand)
{
    const auto ana = saved("First: Ana | Last: Lima"), twin = saved("First: Ana | Last: Lima");
    saved("First: Ana | Last: Zeta");
    const auto before = snapshotOf(roster);
    recordUndo();
    const auto older = ZRMerger::initWithUIController(incoming, nullptr);
    EXPECT_EQ(older->uiController(), incoming);
    const auto same = card(older->targetRoster(), "First: Ana | Last: Lima"),
               accented = card(older->targetRoster(), "First: Ána | Last: Lima"),
               last = card(older->targetRoster(), "First: Zoe | Last: Zz");
    const auto found = older->duplicatesForPeople({same, accented, last});
    ASSERT_EQ(found.size(), 1U);
    EXPECT_TRUE(found.begin()->second->uniqueId() == ana->uniqueId()
        || found.begin()->second->uniqueId() == twin->uniqueId());
    EXPECT_FALSE(older->issueCommand());
    older->addPerson(last);
    EXPECT_TRUE(older->issueCommandWithActionName("MERGE"));
    EXPECT_EQ(roster->people().size(), 4U);
    EXPECT_NE(undo->undoActionName(), "");
    expectUndoable(before);
}

TEST_F(Merger, OfChosenCardsMakesOneCardThatIsInTheirPlace)
{
    const auto first = saved("First: Ana | Email home: a"), second = saved("First: Bea | Email work: b"),
               third = saved("First: Ana");
    second->setImageData(kOldPicture);
    third->setImageData(kNewPicture);
    const auto friends = group("Friends", {first, second}), family = group("Family", {third});
    friends->setDistributionIdentifier(
        first->valueForProperty(kZREmailProperty).as<ZRMultiValue>()->identifierAtIndex(0), kZREmailProperty,
        *first);
    roster->setMe(third);
    ASSERT_TRUE(roster->save());
    const auto before = snapshotOf(roster);
    recordUndo();
    EXPECT_FALSE(ZRMergePeopleCommand::initWithGroup(nullptr, {first, first, imported("")}, roster)->doIt());
    const auto command =
        ZRMergePeopleCommand::initWithGroup(friends, {first, friends, second, third}, roster);
    EXPECT_TRUE(command->performWithActionName("MERGE"));
    const auto result = reread(*command->resultingPerson());
    EXPECT_EQ(lineOf(*result), "Email home: a | Email work: b | First: Ana | Note: Bea");
    EXPECT_EQ(result->imageData(), kOldPicture) << "the first that there is";
    EXPECT_EQ(groupsOf(*result), "Family,Friends");
    EXPECT_EQ(roster->me(), command->resultingPerson());
    EXPECT_EQ(roster->people().size(), 1U);
    EXPECT_EQ(
        friends->distributionValueForProperty(kZREmailProperty, *command->resultingPerson()), Value("a"));
    expectUndoable(before);
}

} // namespace

} // namespace test
