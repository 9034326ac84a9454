// A file that is imported a second time, as it was and with changes; and what random cards lose to an import.
#include "interchange/Corpus.h"
#include "interchange/import/PlanWorld.h"

#include "core/ZRStringAdditions.h"
#include "interchange/import/ValueChange.h"
#include "interchange/vcard/RandomCards.h"

#include <gmock/gmock.h>

#include <iterator>
#include <map>

namespace {

using namespace test;
using interchange::ValueChange;

/// Whether the card has what people are looked for by.
bool hasName(const ZRRecord& card)
{
    const auto has = [&](const char* property) {
        const Value value = card.valueForProperty(property);
        return value.asText().find_first_not_of(" \t\r\n") != std::string::npos;
    };
    return static_cast<const ZRPerson&>(card)._isCompany()
        ? has(kZROrganizationProperty)
        : has(kZRFirstNameProperty) || has(kZRLastNameProperty);
}

TEST_F(PlanTest, EveryFileOfTheCorpusIsThereTheSecondTime)
{
    const auto folder = corpusFolder();
    if (!std::filesystem::is_directory(folder))
        GTEST_SKIP() << "no cards of other programs at " << folder;
    std::size_t cards = 0, nameless = 0;
    for (const auto& entry : std::filesystem::directory_iterator(folder)) {
        const std::string extension = entry.path().extension().string();
        if (extension != ".vcf" && extension != ".bin")
            continue;
        SCOPED_TRACE(entry.path().filename());
        for (const auto& person : roster->people())
            roster->removeRecord(person);
        ASSERT_TRUE(roster->save());
        ZRvCardController first(roster), second(roster);
        first.importFile(entry.path().string());
        const auto there = roster->people();
        const auto unnamed = static_cast<std::size_t>(
            std::ranges::count_if(there, [](const auto& card) { return !hasName(*card); }));
        EXPECT_EQ(there.size(), first.result().added);
        second.importFile(entry.path().string());
        EXPECT_EQ(second.result().updated, 0U);
        EXPECT_EQ(second.result().added, unnamed);
        EXPECT_EQ(second.result().same, first.result().added + first.result().same - unnamed);
        EXPECT_EQ(second.result().refused, first.result().refused);
        cards += first.result().added;
        nameless += unnamed;
    }
    EXPECT_GT(cards, 1000U);
    EXPECT_GT(nameless, 0U);
}

TEST_F(PlanTest, OneChangedCardOfAFileUpdatesThatCardOnly)
{
    Lines lines;
    for (int i = 0; i < 60; ++i)
        lines.push_back("First: Ana | Last: L" + std::to_string(i % 50) + " | Nickname: n" + std::to_string(i)
            + " | Phone m: " + std::to_string(i));
    import(vCards(lines));
    const Lines before = people();
    lines[7] += "0 | JobTitle: Chief";
    const auto done = import(vCards(lines));
    EXPECT_EQ(done.result.updated, 1U);
    EXPECT_EQ(done.result.same, 59U);
    EXPECT_EQ(wordFor(done.decisions[7]), std::string("update"));
    EXPECT_THAT(interchange::changedProperties(done.decisions[7].changes),
        testing::ElementsAre(kZRJobTitleProperty, kZRPhoneProperty));
    Lines differing;
    std::ranges::set_difference(people(), before, std::back_inserter(differing));
    EXPECT_THAT(differing,
        testing::ElementsAre("First: Ana | JobTitle: Chief | Last: L7 | Nickname: n7 | Phone m: 70"));
}

// ---- random cards

/// No save keeps entries that say nothing, such as an address that is a country code alone.
bool saysNothing(const PlainEntry& entry)
{
    return std::ranges::all_of(entry.value,
        [](const auto& part) { return part.second.empty() || part.first == kZRAddressCountryCodeKey; });
}

/// How often each property, with the label of an entry, loses a value.
using Losses = std::map<std::string, int>;

bool saysIgnoringCase(const PlainEntry& a, const PlainEntry& b)
{
    return std::ranges::equal(a.value, b.value, [](const auto& x, const auto& y) {
        return x.first == y.first && zrEqualIgnoringCase(x.second, y.second);
    });
}

void countLostEntries(const PlainCard& of, const PlainCard& after, Losses& losses)
{
    for (const auto& [property, entries] : of.entries)
        for (const auto& entry : entries) {
            const auto now = after.entries.find(property);
            const auto isHeir = [&](const PlainEntry& other) { return saysIgnoringCase(entry, other); };
            if (!saysNothing(entry)
                && (now == after.entries.end() || std::ranges::none_of(now->second, isHeir)))
                ++losses[property + " " + entry.label];
        }
}

Losses lossesBetween(const PlainCard& before, const PlainCard& incoming, const PlainCard& after)
{
    Losses losses;
    for (const auto& [property, text] : before.texts) {
        const auto now = after.texts.find(property);
        const std::string left = now == after.texts.end() ? "" : now->second;
        if (left != text && !text.empty() && !(property == kZRNoteProperty && left.starts_with(text + "\r")))
            ++losses[property];
    }
    if (before.flags != 0 && before.flags != after.flags)
        ++losses[kZRPersonFlags];
    if (!before.photo.empty() && before.photo != after.photo)
        ++losses[kZRImageProperty];
    countLostEntries(before, after, losses);
    countLostEntries(incoming, after, losses);
    return losses;
}

Losses lossesTold(const ImportDecision& decision)
{
    Losses losses;
    for (const ValueChange& change : decision.changes)
        if (change.isLoss)
            ++losses[change.property + (change.label.empty() ? "" : " " + change.label)];
    return losses;
}

// What is lost is told, and what is told is lost; the plan and the import agree, and a second import is none.
TEST_F(PlanTest, RandomCardsLoseWhatThePlanNames)
{
    RandomCards random(20261122);
    std::size_t lost = 0;
    const auto mergerInto = [](const Ref<ZRRoster>& target) {
        auto made = ZRNewMerger::initWithGroup(nullptr);
        made->setTargetRoster(target);
        return made;
    };
    for (int round = 0; round < 120; ++round) {
        SCOPED_TRACE(round);
        PlainCard there = random.next(), newcomer = random.next();
        for (auto* card : {&there, &newcomer}) {
            card->texts[kZRFirstNameProperty] = "Ana";
            card->texts[kZRLastNameProperty] = std::to_string(round);
            card->flags &= ~7;
            card->groups.clear();
        }
        const auto existing = there.addTo(roster);
        ASSERT_TRUE(roster->save());
        const auto before = PlainCard::of(*reread(*existing));
        interchange::ImportPlan plan(mergerInto(roster->parallelUniverseRoster()), DuplicateHandling::update);
        const auto card = newcomer.addTo(incoming);
        const auto incomingCard = PlainCard::of(*card);
        const std::string data = vCard(*card);
        plan.lookAt({{card}});
        const auto planned = plan.decide({card});

        const auto target = roster->parallelUniverseRoster();
        const auto again = newcomer.addTo(incoming);
        mergerInto(target)->updateCard(
            platform::refCast<ZRPerson>(target->recordForUniqueId(existing->uniqueId())), again);
        ASSERT_TRUE(target->save());
        const auto losses = lossesBetween(before, incomingCard, PlainCard::of(*reread(*existing)));
        EXPECT_EQ(lossesTold(planned), losses) << before.text() << "\nand\n" << incomingCard.text();
        lost += losses.size();
        incoming->removeRecord(card);
        incoming->removeRecord(again);
    }
    EXPECT_GT(lost, 200U);
}

} // namespace
