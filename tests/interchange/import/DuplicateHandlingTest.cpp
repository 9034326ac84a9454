// What the ways of handling duplicates do to Me, memberships, pictures and notes; and the mark of the last
// import.
#include "interchange/import/PlanWorld.h"

#include "store/ZRModelSlots.h"
#include "store/ZROSRecord.h"

#include <gmock/gmock.h>

namespace {

using namespace test;
using testing::ElementsAre;

/// Whether the card carries the mark of the last import, as the store has it.
bool isMarked(const ZRPerson& card)
{
    return locked(*card.nts_Roster(), ZRAccess::read,
        [&] { return (card.zrDatabaseImpl()->integer(contactSlots().displayFlags) & 0x80) != 0; });
}

/// "name: note, picture, groups" with a star for Me and an "i" for who came with the last import.
Lines peopleOf(ZRRoster& roster)
{
    Lines lines;
    const auto me = roster.me();
    for (const auto& record : roster.people()) {
        const auto& person = static_cast<ZRPerson&>(*record);
        std::string groups;
        for (const auto& group : person.parentGroups())
            groups += static_cast<ZRGroup&>(*group).name().substr(0, 1);
        std::ranges::sort(groups);
        std::string note(person.valueForProperty(kZRNoteProperty).asText());
        std::ranges::replace(note, '\r', '/');
        lines.push_back(std::string(person.valueForProperty(kZRFirstNameProperty).asText()) + ": " + note
            + ", " + std::string(person.imageData().asBytes()) + ", " + groups
            + (me && me->uniqueId() == person.uniqueId() ? " *" : "") + (isMarked(person) ? " i" : ""));
    }
    std::ranges::sort(lines);
    return lines;
}

struct HandlingCase {
    DuplicateHandling handling;
    Lines people;
    std::size_t added, updated, kept;
};

TEST_F(PlanTest, HandlesMeMembershipsPicturesAndNotes)
{
    const HandlingCase cases[] = {
        {DuplicateHandling::update, {"Ana: old/new, P2, FI * i", "Bo: , Q, F"}, 0, 1, 0},
        {DuplicateHandling::replace, {"Ana: new, P2, FI * i", "Bo: , Q, F"}, 0, 1, 0},
        {DuplicateHandling::keep, {"Ana: old, P1, F *", "Bo: , Q, F"}, 0, 0, 1},
        {DuplicateHandling::both, {"Ana: new, P2, I i", "Ana: old, P1, F *", "Bo: , Q, F"}, 1, 0, 0},
    };
    const auto newcomer = imported("First: Ana | Note: new");
    locked(*incoming, ZRAccess::write, [&]() ZR_NTS { incoming->nts_SetKeepsPictures(true); });
    newcomer->setImageData(Value::data("P2"));
    const std::string data = vCard(*newcomer);
    for (const auto& [handling, expected, added, updated, kept] : cases) {
        SCOPED_TRACE(static_cast<int>(handling));
        for (const auto& record : roster->people())
            roster->removeRecord(record);
        for (const auto& record : roster->groups())
            roster->removeRecord(record);
        const auto ana = saved("First: Ana | Note: old"), bo = saved("First: Bo");
        ana->setImageData(Value::data("P1"));
        bo->setImageData(Value::data("Q"));
        group("Friends", {ana, bo});
        roster->setMe(ana);
        const auto imports = group("Imports");
        const auto done = import(data, handling, imports);
        EXPECT_EQ(done.result.added, added);
        EXPECT_EQ(done.result.updated, updated);
        EXPECT_EQ(done.result.kept, kept);
        EXPECT_EQ(peopleOf(*roster->parallelUniverseRoster()), expected);
        EXPECT_EQ(roster->parallelUniverseRoster()->recordForUniqueId(ana->uniqueId()) != nullptr,
            handling != DuplicateHandling::replace);
        EXPECT_THAT(roster->check().problems, testing::IsEmpty());
    }
}

TEST_F(PlanTest, ACardWithoutAPictureLeavesThatOfTheRoster)
{
    const auto ana = saved("First: Ana");
    ana->setImageData(Value::data("P1"));
    import(vCards({"First: Ana | Note: new"}));
    EXPECT_THAT(peopleOf(*roster->parallelUniverseRoster()), ElementsAre("Ana: new, P1,  i"));
}

TEST_F(PlanTest, MarksTheCardsOfTheLastImportOnly)
{
    import(vCards({"First: Ana", "First: Bo"}));
    const auto modified = [&] {
        for (const auto& record : roster->parallelUniverseRoster()->people())
            if (record->valueForProperty(kZRFirstNameProperty).asText() == "Ana")
                return record->valueForProperty(kZRModificationDateProperty);
        return Value();
    };
    const Value before = modified();
    import(vCards({"First: Bo | Note: new", "First: Cid", "First: Ana"}));
    EXPECT_THAT(peopleOf(*roster->parallelUniverseRoster()),
        ElementsAre("Ana: , , ", "Bo: new, ,  i", "Cid: , ,  i"));
    EXPECT_EQ(modified(), before);
    // Nothing comes of these cards, so the last import is still the one before.
    import(vCards({"First: Ana"}));
    EXPECT_THAT(peopleOf(*roster->parallelUniverseRoster()),
        ElementsAre("Ana: , , ", "Bo: new, ,  i", "Cid: , ,  i"));
}

} // namespace
