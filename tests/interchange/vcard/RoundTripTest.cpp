// Cards go out and come back: equal, less the list that docs/vcard.md has.
#include "Journey.h"
#include "Losses.h"
#include "PlainCard.h"
#include "RandomCards.h"
#include "core/ZRConstants.h"
#include "core/ZRGroup.h"
#include "interchange/Corpus.h"
#include "interchange/vcard/RosterReaderContext.h"
#include "interchange/vcard/ZRVCardParser.h"
#include "interchange/vcard/prepare/Preparation.h"
#include "platform/files/ZRUserDefaults.h"
#include "platform/text/Encoding.h"
#include "store/RosterWorld.h"

#include <gtest/gtest.h>

#include <array>
#include <set>
#include <sstream>

namespace test {
namespace {

using Names = std::set<std::string_view>;

const std::array kRoads = {Road{.version = Version::v30}, Road{.version = Version::v21},
    Road{.version = Version::v30, .isPrepared = true}, Road{.version = Version::v21, .isPrepared = true},
    Road{.version = Version::v40, .isPrepared = true}};

/// Sends the person down the road, and compares what comes back with what must.
void travel(const ZRPerson& person, const Road& road, const Ref<ZRRoster>& roster, Names& met)
{
    const PlainCard before = PlainCard::of(person), wanted = expected(before, road, met);
    const std::string data = written(person, road);
    const PlainCard got = comesBack(data, road, roster);
    EXPECT_EQ(got.text(), wanted.text()) << "before:\n" << before.text() << data;
    EXPECT_TRUE(got.photo == wanted.photo);
}

class RoundTrip : public testing::Test {
protected:
    static void SetUpTestSuite() { openShared(); }
    void SetUp() override
    {
        roster = ZRRoster::emptyMemoryBackedRoster();
        ASSERT_TRUE(roster);
        roster->setDefaultCountryCode("us");
        preferences->setObject("windows-1252", kZR21vCardEncoding);
    }
    void TearDown() override { preferences->removeObjectForKey(kZR21vCardEncoding); }

    Ref<ZRRoster> roster;
    const Ref<ZRUserDefaults> preferences = ZRUserDefaults::rosterPreferences();
};

TEST_F(RoundTrip, OfRandomCardsLosesWhatTheListSays)
{
    constexpr std::size_t kCards = 1500;
    Names met;
    const auto group = ZRGroup::initWithRoster(roster);
    group->setValue("Friends", kZRGroupNameProperty);
    for (Road road : kRoads) {
        RandomCards cards(20260101);
        for (std::size_t i = 0; i < kCards / kRoads.size(); ++i) {
            const auto person = cards.next().addTo(roster);
            if (cards.once(10))
                group->addMember(*person);
            road.withNote = !cards.once(4);
            road.withPhoto = !cards.once(4);
            travel(*person, road, roster, met);
            person->setImageData(Value());
        }
    }
    for (const Loss& loss : allLosses())
        EXPECT_TRUE(met.contains(loss.name)) << loss.name << " never happened";
}

/// Every script in every set that a user may prefer: what the set does not have goes into another one, and so
/// does what a reader would not get back from it (the second byte of 表 in Shift_JIS is a backslash).
TEST_F(RoundTrip, Of21KeepsEveryScriptUnderEveryPreference)
{
    const char* const texts[] = {"José Müller", "Ωμέγα Παπαδάκη", "Ольга Ковалёва", "عبد الله",
        "张伟; 表示ソ能", "€ ∑ π", "\xE2\x80\x99", "👩‍💻, 7:30"};
    for (const char* const preferred : {"windows-1252", "koi8-r", "ISO-8859-7", "windows-1256", "Shift_JIS",
             "Big5", "GB18030", "ISO-2022-JP", "UTF-16", "UTF-7", "no such set", ""}) {
        preferences->setObject(preferred, kZR21vCardEncoding);
        for (const char* const text : texts) {
            PlainCard card;
            for (const auto property : {kZRLastNameProperty, kZRNoteProperty})
                card.texts[std::string(property)] = text;
            PlainEntry entry{kZRWorkLabel, {{"", text}}, true};
            for (const auto property : {kZREmailProperty, kZRAIMInstantProperty})
                card.entries[std::string(property)] = {entry};
            const auto person = card.addTo(roster);
            SCOPED_TRACE(std::string(preferred) + ": " + text);
            Names met;
            travel(*person, {.version = Version::v21}, roster, met);
            travel(*person, {.version = Version::v21, .isPrepared = true}, roster, met);
            EXPECT_EQ(met, Names()) << "nothing may be lost";
        }
    }
}

/// Whoever imports the cards of a file has these people.
std::vector<Ref<ZRPerson>> imported(const std::string& bytes, const Ref<ZRRoster>& roster)
{
    std::vector<Ref<ZRPerson>> people;
    vcard::prepare::Preparation preparation(bytes, {"cards", platform::kWindows1252Encoding});
    for (vcard::prepare::CanonicalCard card; preparation.next(card);)
        for (auto& person : readAll(card.text, roster))
            people.push_back(std::move(person));
    return people;
}

std::string exported(const std::vector<Ref<ZRPerson>>& people)
{
    std::string cards;
    for (const auto& person : people)
        person->_appendVCardRepresentation(cards, kZRVCardWithNote | kZRVCardWithPhoto);
    return cards;
}

std::string withoutIds(const std::string& cards)
{
    std::istringstream lines(cards);
    std::string text;
    for (std::string line; std::getline(lines, line);)
        if (!line.starts_with("X-ZRUID:"))
            text += line + "\n";
    return text;
}

TEST_F(RoundTrip, OfTheExamplesLosesWhatTheListSays)
{
    std::size_t count = 0;
    Names met;
    for (const auto& file : std::filesystem::directory_iterator(kExampleCards))
        for (const auto& person : imported(contentsOf(file.path()), roster)) {
            SCOPED_TRACE(file.path());
            for (const Road& road : kRoads)
                travel(*person, road, roster, met);
            ++count;
        }
    EXPECT_EQ(count, 48U);
}

/// Cards of other programs: what the first export lost is all that is ever lost.
TEST_F(RoundTrip, OfTheCorpusIsTheSameTheSecondTime)
{
    const auto folder = corpusFolder();
    if (!std::filesystem::is_directory(folder))
        GTEST_SKIP() << "no cards of other programs at " << folder;
    Names met;
    for (const auto& file : std::filesystem::directory_iterator(folder)) {
        if (file.path().extension() != ".vcf")
            continue;
        SCOPED_TRACE(file.path());
        const auto people = imported(contentsOf(file.path()), roster);
        for (const auto& person : people)
            for (const Version version : {Version::v30, Version::v40})
                travel(*person, {.version = version, .isPrepared = true}, roster, met);
        const auto again = imported(exported(people), roster);
        EXPECT_EQ(again.size(), people.size());
        const std::string first = exported(again);
        EXPECT_EQ(withoutIds(exported(imported(first, roster))), withoutIds(first));
    }
}

/// The list that people read is the one that holds.
TEST(Losses, StandInTheDocument)
{
    const std::string document = contentsOf(SOURCE_FOLDER "/docs/vcard.md");
    for (const Loss& loss : allLosses())
        EXPECT_NE(document.find("| " + std::string(loss.name) + " |"), document.npos) << loss.name;
    const std::size_t list = document.find("## What does not come back"),
                      end = document.find("\n## ", list + 1);
    const std::string section = document.substr(list, end - list);
    std::size_t rows = 0;
    for (std::size_t at = 0; (at = section.find("\n| ", at)) != section.npos; ++at)
        ++rows;
    EXPECT_EQ(rows, allLosses().size() + 1) << "one row of the table is its head";
}

} // namespace
} // namespace test
