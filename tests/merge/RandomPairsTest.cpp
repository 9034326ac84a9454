// What is lost of two random cards when one is imported into the other, and when both are merged.
#include "core/ZRStringAdditions.h"
#include "merge/MergeWorld.h"
#include "merge/ZRMergePeopleCommand.h"

#include <fmt/format.h>

#include <algorithm>
#include <random>
#include <set>

namespace test {

namespace {

/// One value of a card: of a single property, or of an entry with its label.
struct Fact {
    std::string property, label, value;
};
using Facts = std::vector<Fact>;

constexpr std::string_view kSingles[] = {
    "First", "Last", "Organization", "Nickname", "text", "number", "list"};
constexpr std::string_view kSeveral[] = {"Email", "URLs", "Phone", "AIMInstant", "texts"};

/// Few values and labels, so that cards meet in many ways. Values of one property may differ in case only.
class RandomCards {
public:
    explicit RandomCards(unsigned seed) : _random(seed) { }

    Facts card()
    {
        Facts facts;
        for (const auto property : kSingles)
            if (pick(2) == 0)
                facts.push_back({std::string(property), "", property == "number" ? number() : word()});
        if (pick(2) == 0)
            facts.push_back({"Note", "", word() + word()});
        for (const auto property : kSeveral)
            for (int entries = pick(4); entries > 0; --entries)
                facts.push_back({std::string(property), std::string(1, "hwo"[pick(3)]), word()});
        return facts;
    }

private:
    int pick(int below) { return std::uniform_int_distribution(0, below - 1)(_random); }
    std::string number() { return std::to_string(pick(3)); }
    std::string word() { return fmt::format("{}{}{}", "vV"[pick(2)], "abcd"[pick(4)], "xy"[pick(2)]); }

    std::mt19937 _random;
};

std::string lineOf(const Facts& facts)
{
    std::string line;
    for (const auto& [property, label, value] : facts)
        line += fmt::format(
            "{}{}{}{}: {}", line.empty() ? "" : " | ", property, label.empty() ? "" : " ", label, value);
    return line;
}

Facts factsOf(const ZRPerson& card)
{
    Facts facts;
    const std::string line = test::lineOf(card);
    for (std::size_t at = 0; at < line.size();) {
        const std::size_t end = std::min(line.find(" | ", at), line.size());
        const std::string part = line.substr(at, end - at), head = part.substr(0, part.find(": "));
        const auto blank = head.find(' ');
        facts.push_back({head.substr(0, blank), blank == std::string::npos ? "" : head.substr(blank + 1),
            part.substr(part.find(": ") + 2)});
        at = end + 3;
    }
    return facts;
}

bool holds(const Facts& facts, const Fact& fact)
{
    return std::ranges::any_of(facts, [&](const Fact& other) {
        return other.property == fact.property && other.label == fact.label
            && zrEqualIgnoringCase(other.value, fact.value);
    });
}

bool standsInNote(const Facts& facts, const std::string& text)
{
    return std::ranges::any_of(facts, [&](const Fact& fact) {
        return fact.property == "Note"
            && ("/" + fact.value + "/").find("/" + text + "/") != std::string::npos;
    });
}

class RandomPairs : public MergeTest { };

TEST_F(RandomPairs, MergedLoseOnlyWhatNoNoteCanHold)
{
    for (unsigned seed = 1; seed <= 150; ++seed) {
        RandomCards cards(seed);
        const Facts first = cards.card(), second = cards.card();
        SCOPED_TRACE(fmt::format("{}: {} and {}", seed, lineOf(first), lineOf(second)));
        const auto command = ZRMergePeopleCommand::initWithGroup(
            nullptr, {card(roster, lineOf(first)), card(roster, lineOf(second))}, roster);
        ASSERT_TRUE(command->doIt());
        const Facts merged = factsOf(*reread(*command->resultingPerson()));
        for (const Facts& facts : {first, second})
            for (const Fact& fact : facts)
                EXPECT_TRUE(
                    holds(merged, fact) || standsInNote(merged, fact.value) || fact.property == "list")
                    << fact.property << " " << fact.value << " is lost in " << lineOf(merged);
        for (const Fact& fact : merged)
            EXPECT_TRUE(holds(first, fact) || holds(second, fact) || fact.property == "Note")
                << fact.property << " " << fact.value << " is invented";
    }
}

/// Values whatever their labels and case; notes apart.
std::set<std::string> valuesOf(const Facts& facts)
{
    std::set<std::string> values;
    for (const Fact& fact : facts)
        if (fact.property != "Note")
            values.insert(fact.property + "=" + zrCaseNormalizedCopy(fact.value));
    return values;
}

std::set<std::string> without(std::set<std::string> values, const std::set<std::string>& others)
{
    std::erase_if(values, [&](const std::string& value) { return others.contains(value); });
    return values;
}

/// The values that an update replaces and nothing brings back, told by the rules entry by entry.
std::set<std::string> replacedIn(Facts card, const Facts& imported)
{
    const std::set<std::string> known = valuesOf(card);
    Facts replaced;
    for (const Fact& newcomer : imported) {
        if (newcomer.property == "Note")
            continue;
        const auto isSibling = [&](const Fact& fact) { return fact.property == newcomer.property; };
        const auto isRival = [&](const Fact& fact) {
            return isSibling(fact) && fact.label == newcomer.label;
        };
        const bool comesWhole = std::ranges::none_of(
            known, [&](const std::string& value) { return value.starts_with(newcomer.property + "="); });
        const bool isKnown =
            !newcomer.label.empty() && valuesOf(card).contains(*valuesOf({newcomer}).begin());
        if (comesWhole || (!isKnown && std::ranges::count_if(card, isRival) != 1)) {
            card.push_back(newcomer);
        } else if (!isKnown) {
            const auto rival = std::ranges::find_if(card, isRival);
            replaced.push_back(*rival);
            rival->value = newcomer.value;
        }
    }
    return without(valuesOf(replaced), valuesOf(card));
}

TEST_F(RandomPairs, UpdatedLoseExactlyWhatIsReplaced)
{
    const auto merger = ZRNewMerger::initWithGroup(nullptr);
    std::vector<std::pair<Facts, Facts>> pairs;
    std::vector<Ref<ZRPerson>> people;
    for (unsigned seed = 1; seed <= 150; ++seed) {
        RandomCards cards(seed);
        pairs.emplace_back(cards.card(), cards.card());
        people.push_back(card(roster, lineOf(pairs.back().first)));
    }
    ASSERT_TRUE(roster->save());
    for (std::size_t i = 0; i < pairs.size(); ++i)
        merger->updateCard(personIn(merger->targetRoster(), *people[i]), imported(lineOf(pairs[i].second)));
    ASSERT_TRUE(merger->applyChanges());
    for (std::size_t i = 0; i < pairs.size(); ++i) {
        const auto& [first, second] = pairs[i];
        SCOPED_TRACE(fmt::format("{}: {} takes in {}", i + 1, lineOf(first), lineOf(second)));
        const Facts updated = factsOf(*reread(*people[i]));
        for (const Facts& facts : {first, second})
            for (const Fact& fact : facts)
                EXPECT_TRUE(fact.property != "Note" || standsInNote(updated, fact.value)) << fact.value;
        Facts both = first;
        both.insert(both.end(), second.begin(), second.end());
        EXPECT_EQ(without(valuesOf(both), valuesOf(updated)), replacedIn(first, second))
            << "in " << lineOf(updated);
    }
}

} // namespace

} // namespace test
