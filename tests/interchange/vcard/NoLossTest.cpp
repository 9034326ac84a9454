// Nothing of a card is lost without a word: it is in the record, in its note, or told.
#include "ForeignCards.h"
#include "Journey.h"
#include "interchange/vcard/prepare/Preparation.h"
#include "store/RosterWorld.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>

namespace test {
namespace {

using vcard::prepare::Action;
using vcard::prepare::CanonicalCard;
using vcard::prepare::Preparation;

class NoLoss : public testing::TestWithParam<const char*> {
protected:
    static void SetUpTestSuite() { openShared(); }
    void SetUp() override
    {
        roster = ZRRoster::emptyMemoryBackedRoster();
        ASSERT_TRUE(roster);
    }

    /// All that is read of a card, pictures too.
    std::string read(const std::string& canonical)
    {
        std::string text;
        for (const auto& person : readAll(canonical, roster)) {
            const auto card = PlainCard::of(*person);
            text += card.text() + card.photo;
            person->setImageData(Value());
            roster->removeRecord(person);
        }
        return text;
    }

    Ref<ZRRoster> roster;
};

/// The lines of which something is told as dropped; a card that is refused is so as a whole.
bool isTold(const vcard::prepare::Report& report, std::size_t line)
{
    return std::ranges::any_of(report.entries(), [&](const auto& entry) {
        const Action action = actionOf(entry.finding);
        return action == Action::refused || (action == Action::dropped && entry.line == line);
    });
}

bool holds(const std::string& text, const ForeignCard::Word& word)
{
    return std::ranges::any_of(
        word.spellings, [&](const auto& spelling) { return text.find(spelling) != text.npos; });
}

/// ROSTER_CARDS asks for another number of them.
TEST_P(NoLoss, OfAnyPropertyWithoutAWord)
{
    const char* const asked = std::getenv("ROSTER_CARDS");
    const int cards = asked ? std::atoi(asked) : 1000;
    ForeignCards source(GetParam(), 20260717);
    std::size_t words = 0, lost = 0;
    for (int i = 0; i < cards && lost < 5; ++i) {
        const ForeignCard card = source.next();
        Preparation preparation(card.bytes, {"f", 0});
        std::string canonical, text;
        for (CanonicalCard made; preparation.next(made);) {
            canonical += made.text;
            text += read(made.text);
        }
        for (const auto& word : card.words) {
            ++words;
            if (holds(text, word) || isTold(preparation.report(), word.line))
                continue;
            ++lost;
            ADD_FAILURE() << word.spellings.front() << " of line " << word.line << " is nowhere:\n"
                          << card.bytes << "----\n"
                          << canonical << "----\n"
                          << text << preparation.report().text();
        }
    }
    EXPECT_GE(words, static_cast<std::size_t>(cards) * 5) << "most cards say something";
}

INSTANTIATE_TEST_SUITE_P(All, NoLoss, testing::Values("2.1", "3.0", "4.0"),
    [](const auto& version) { return "Of" + std::string(version.param).substr(0, 1); });

} // namespace
} // namespace test
