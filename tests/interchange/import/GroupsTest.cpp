// Groups that come with cards: those that are cards themselves, and those that categories name.
#include "ImportWorld.h"

#include "core/ZRGroup.h"

#include <fmt/format.h>

#include <map>

namespace {

using test::ImportTest;

constexpr const char* kCards =
    "BEGIN:VCARD\r\nVERSION:4.0\r\nKIND:group\r\nFN:The Does\r\nUID:g1\r\n"
    "MEMBER:urn:uuid:AA\r\nMEMBER:urn:uuid:bb\r\nMEMBER:mailto:x@y.z\r\nEND:VCARD\r\n"
    "BEGIN:VCARD\r\nVERSION:4.0\r\nKIND:group\r\nFN:All\r\nMEMBER:g1\r\nEND:VCARD\r\n"
    "BEGIN:VCARD\r\nVERSION:4.0\r\nN:Doe;John\r\nUID:urn:uuid:aa\r\n"
    "CATEGORIES:Friends,Boats\r\nEND:VCARD\r\n"
    "BEGIN:VCARD\r\nVERSION:4.0\r\nN:Doe;Jane\r\nUID:bb\r\nCATEGORIES:Boats\r\nEND:VCARD\r\n";

class GroupsTest : public ImportTest {
protected:
    ZRvCardImport import(const ZRvCardController::GroupsAsked& asked)
    {
        ZRvCardController controller(roster);
        controller.setGroupsAsked(asked);
        controller.importVCardData(kCards);
        return controller.result();
    }

    /// "2 people, 0 groups" of each group by its name.
    std::map<std::string, std::string> groups() const
    {
        std::map<std::string, std::string> groups;
        for (const auto& record : roster->groups()) {
            const auto& group = static_cast<const ZRGroup&>(*record);
            groups[group.name()] =
                fmt::format("{} people, {} groups", group.members().size(), group.subgroups().size());
        }
        return groups;
    }
};

TEST_F(GroupsTest, AreMadeOnceOfCardsAndCategories)
{
    const std::map<std::string, std::string> expected{{"All", "0 people, 1 groups"},
        {"Boats", "2 people, 0 groups"}, {"Friends", "1 people, 0 groups"},
        {"The Does", "2 people, 0 groups"}};
    const auto first = import({.cards = true, .categories = true});
    EXPECT_EQ(first.added, 2U);
    EXPECT_EQ(first.groups, 2U);
    EXPECT_EQ(first.reports.at(0).count(vcard::prepare::Finding::memberUnknown), 1U);
    EXPECT_EQ(groups(), expected);
    const auto second = import({.cards = true, .categories = true});
    EXPECT_EQ(second.same, 2U);
    EXPECT_EQ(groups(), expected);
}

TEST_F(GroupsTest, StayInNotesUntilTheyAreAskedFor)
{
    EXPECT_EQ(import({}).added, 4U);
    EXPECT_EQ(groups(), (std::map<std::string, std::string>()));
    std::multiset<std::string> notes;
    for (const auto& person : roster->people())
        notes.emplace(person->valueForProperty(kZRNoteProperty).asText());
    EXPECT_THAT(notes,
        testing::ElementsAre("CATEGORIES: Boats", "CATEGORIES: Friends,Boats", "KIND: group\nMEMBER: g1",
            "KIND: group\nMEMBER: urn:uuid:AA\nMEMBER: urn:uuid:bb\nMEMBER: mailto:x@y.z"));
}

} // namespace
