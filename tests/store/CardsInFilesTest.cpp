// What one process stores of a card, another reads: every property, in whatever time zone.
#include "store/RosterWorld.h"

#include "platform/text/Dates.h"

#include <gmock/gmock.h>

#include <stdexcept>

namespace test {

namespace {

Value birthday(int year, int month, int day)
{
    return Value(*platform::dateOf({.day = {year, month, day}, .hour = 8}));
}

Value wholeAddress()
{
    return Value::dictionary({{"Street", "1 Elm Rd\nBack door"}, {"City", "Springfield"}, {"State", "IL"},
        {"ZIP", "62701"}, {"Country", "United States"}, {"CountryCode", "us"}, {"Region", "Midwest"},
        {"Sama", "North"}, {"Floor", "3"}});
}

/// A value for every property that a person has, but for the identifier.
std::vector<std::pair<std::string_view, Value>> everything()
{
    std::vector<std::pair<std::string_view, Value>> all{{kZRFirstNameProperty, "Zoë"},
        {kZRMiddleNameProperty, "Q."}, {kZRLastNameProperty, "Åström"},
        {kZRFirstNamePhoneticProperty, "ゾーイ"}, {kZRMiddleNamePhoneticProperty, "キュー"},
        {kZRLastNamePhoneticProperty, "オーストレム"}, {kZRBirthdayProperty, birthday(1920, 2, 29)},
        {kZROrganizationProperty, "Elm & Sons"}, {kZRJobTitleProperty, "Carpenter"},
        {kZRTitleProperty, "Dr."}, {kZRSuffixProperty, "Jr."}, {kZRNicknameProperty, "Zo"},
        {kZRMaidenNameProperty, "Öberg"}, {kZRHomePageProperty, "http://zoe.example.com/"},
        {kZRNoteProperty, "two\nlines 🙂"}, {kZRPersonFlags, 1 | 16}, {kZRDepartmentProperty, "Stairs"},
        {kZRCreationDateProperty, Value(platform::Date{1000000.25})},
        {kZRModificationDateProperty, Value(platform::Date{2000000.5})},
        {kZRAddressProperty,
            multiValue(
                {{wholeAddress(), kZRAddressHomeLabel}, {Value::dictionary({{"City", "Kyoto"}}), "Cabin"}},
                1)},
        {kZROtherDatesProperty,
            multiValue({{birthday(2001, 9, 9), kZRAnniversaryLabel}, {birthday(2150, 1, 1), "End"}}, 1)}};
    for (const std::string_view property :
        std::initializer_list<std::string_view>{kZREmailProperty, kZRPhoneProperty, kZRAIMInstantProperty,
            kZRICQInstantProperty, kZRYahooInstantProperty, kZRMSNInstantProperty, kZRJabberInstantProperty,
            kZRRelatedNamesProperty, kZRRemoteLocationProperty, kZRURLsProperty, kZRCalendarURIsProperty})
        all.emplace_back(property,
            multiValue({{Value(std::string(property) + " 1"), kZRWorkLabel}, {Value("second"), "Own label"},
                           {Value("third"), kZRWorkLabel}},
                1));
    return all;
}

const std::vector<std::string_view> days{zr::kZRBirthdayProperty, zr::kZROtherDatesProperty};

const Role writesEverything("write everything", [](const Words& words) {
    const auto roster = openShared();
    const auto one = ZRPerson::initWithUniqueId(words.at(0), roster);
    for (const auto& [property, value] : everything())
        if (!one->setValue(value, property))
            throw std::runtime_error(std::string(property) + " refused");
    if (one->setValue("another", zr::kZRUIDProperty))
        throw std::runtime_error("the identifier was changed");
    one->zrosSetValue(Value(platform::Date{2000000.5}), "modificationDate");
    one->nts_setContextInfo(true, zr::kZRPreserveModificationDate);
    if (!roster->save())
        throw std::runtime_error(roster->lastSaveError().text);
    return textOf(*one, days);
});

const Role readsCard("read card", [](const Words& words) {
    const auto one = openShared()->recordForUniqueId(words.at(0));
    return one ? textOf(*one, days) : std::string("no card");
});

constexpr char cardId[] = "01234567-89AB-CDEF-0123-456789ABCDEF:ZRPerson";

} // namespace

TEST(CardsInFiles, AreReadEqualByAnotherProcessInAnyTimeZone)
{
    const std::vector<std::string> zones{"Pacific/Auckland", "Asia/Kolkata", "America/Los_Angeles"};
    for (const auto& writer : zones) {
        const Home home;
        const auto written = play("write everything", {cardId}, home.stage({{"TZ", writer}}));
        ASSERT_EQ(written.status, 0) << written.log;
        EXPECT_THAT(written.answer, testing::HasSubstr("Birthday: \"day 1920-02-29\""));
        EXPECT_THAT(written.answer, testing::Not(testing::HasSubstr("absent")));
        for (const auto& reader : zones) {
            const auto read = play("read card", {cardId}, home.stage({{"TZ", reader}}));
            EXPECT_EQ(read.answer, written.answer) << writer << " read in " << reader << "\n" << read.log;
        }
    }
}

TEST(CardsInFiles, AreCompleteInTheTable)
{
    const auto roster = ZRRoster::emptyMemoryBackedRoster();
    auto types = ZRPerson::builtInProperties();
    EXPECT_EQ(types.size(), 33U);
    for (const auto& [property, value] : everything()) {
        EXPECT_TRUE(_ZRCheckTypeOfValue(value, types.find(property)->second)) << property;
        types.erase(types.find(property));
    }
    EXPECT_THAT(types, testing::ElementsAre(testing::Key("UID")));
}

} // namespace test
