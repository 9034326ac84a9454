// What an editor of cards is offered: properties and labels; and what it copies.
#include "store/RosterWorld.h"

#include "core/ZRGroup.h"
#include "platform/files/Pasteboard.h"
#include "store/ZRRecordConstraint.h"
#include "store/ZRServices.h"

#include <gmock/gmock.h>

namespace test {

namespace {

using testing::Contains;
using testing::ElementsAre;
using testing::Not;

class EditorsView : public testing::Test {
protected:
    const Ref<ZRRoster> roster = ZRRoster::emptyMemoryBackedRoster();
};

} // namespace

TEST_F(EditorsView, OffersTheLabelsInUseWithThoseOfTheHost)
{
    const auto one = person(roster, {{zr::kZREmailProperty, multiValue({{"a", "mine"}, {"b", "mine"}})}});
    EXPECT_THAT(roster->activeLabelsForProperty(zr::kZREmailProperty, *one), ElementsAre("mine"));
    const ZRLabelsDelegate host{[](std::string_view property) {
        return property == zr::kZREmailProperty ? std::vector<std::string>{"hosts"}
                                                : std::vector<std::string>();
    }};
    EXPECT_THAT(
        roster->activeLabelsForProperty(zr::kZREmailProperty, *one, host), ElementsAre("mine", "hosts"));
    EXPECT_THAT(roster->activeLabelsForProperty(zr::kZRPhoneProperty, *one, host), testing::IsEmpty());
    const auto available = roster->availableLabelsForProperty(zr::kZREmailProperty, *one, host);
    EXPECT_EQ(available.front(), zr::kZREmailWorkLabel);
    EXPECT_EQ(available.back(), "hosts");
}

TEST_F(EditorsView, OffersASinglePropertyOnlyWhileItIsFree)
{
    const auto one =
        person(roster, {{zr::kZRNicknameProperty, "Nick"}, {zr::kZREmailProperty, multiValue({{"a", "x"}})}});
    const auto offered = roster->availablePropertiesForPerson(*one);
    EXPECT_THAT(offered, Not(Contains(zr::kZRNicknameProperty)));
    EXPECT_THAT(offered, Contains(zr::kZRTitleProperty));
    EXPECT_THAT(offered, Contains(zr::kZREmailProperty)) << "there is room for another";
}

TEST_F(EditorsView, CopiesEachKindUnderItsTypeAndPeopleAsCardsToo)
{
    const auto ana = person(roster, {{zr::kZRFirstNameProperty, "Ana"}}),
               bo = person(roster, {{zr::kZRFirstNameProperty, "Bo"}});
    const auto group = ZRRecord::initWithUniqueId(ZRGroup::recordClassDescription, {}, roster);
    const ZRRecordList all = {ana, group, bo};
    const auto pasteboard = platform::makePasteboard();
    pasteboard->setValue("old", "text");

    EXPECT_EQ(ZRRecord::copyPasteboardStringForRecords(all), "") << "nobody makes cards";
    ZRRecord::writeRecords(all, *pasteboard);
    EXPECT_THAT(pasteboard->types(), ElementsAre(zr::ZRPeopleDictPboardType, zr::ZRGroupDictPboardType));
    const Value people = pasteboard->valueForType(zr::ZRPeopleDictPboardType);
    EXPECT_EQ(people.asDictionary()->count(), 2U);
    EXPECT_EQ(people[bo->uniqueId()][zr::kZRFirstNameProperty].asText(), "Bo");
    EXPECT_TRUE(pasteboard->valueForType(zr::ZRGroupDictPboardType)[group->uniqueId()].isDictionary());

    ZRServices::registered().cardData = [](ZRRecord& card) {
        return std::string(card.nts_ValueForProperty(zr::kZRFirstNameProperty).asText()) + ";";
    };
    ZRRecord::writeRecords(all, *pasteboard);
    EXPECT_EQ(pasteboard->valueForType(zr::kZRvCardPboardType).asText(), "Ana;Bo;");
    ZRRecord::writeRecords({group}, *pasteboard);
    EXPECT_THAT(pasteboard->types(), ElementsAre(zr::ZRGroupDictPboardType))
        << "people of before are forgotten";
    ZRServices::registered().cardData = nullptr;
}

} // namespace test
