// What stands in a card when another one brings the same property: row by row, and on each path.
#include "merge/MergeWorld.h"
#include "merge/ZRMergePeopleCommand.h"
#include "store/ZRDBCache.h"
#include "support/TextCases.h"

namespace test {

namespace {

/// Entries are told by their places in the card.
std::string marksOf(const ZRPropertyChanges& changes, const ZRPerson& card)
{
    std::string text;
    for (const auto& [key, color] : changes) {
        const auto dot = key.find('.');
        const Value value = card.valueForProperty(key.substr(0, dot));
        text += (text.empty() ? "" : " ") + key.substr(0, dot);
        if (dot != std::string::npos)
            text +=
                "." + std::to_string(value.as<ZRMultiValue>()->indexForIdentifier(key.substr(dot + 1)) + 1);
        text += color == ZRPropertyAddedColor ? "+" : "";
    }
    return text;
}

class WhatWins : public MergeTest {
protected:
    /// What the second card makes of the first, and the marks of that.
    std::string updated(const std::string& first, const std::string& second)
    {
        const auto existing = saved(first);
        const auto merger = ZRNewMerger::initWithGroup(nullptr);
        const auto card = personIn(merger->targetRoster(), *existing);
        ZRPropertyChanges changes;
        merger->updateCard(card, imported(second), &changes);
        const std::string marks = marksOf(changes, *card);
        EXPECT_EQ(lineOf(*existing), lineOf(*reread(*existing))) << "changed before it was applied";
        EXPECT_TRUE(merger->applyChanges());
        EXPECT_EQ(lineOf(*existing), lineOf(*reread(*existing)));
        return told(lineOf(*existing), marks);
    }

    std::string previewed(const std::string& first, const std::string& second)
    {
        const auto existing = saved(first);
        ZRPropertyChanges changes;
        const auto preview =
            ZRNewMerger::initWithGroup(nullptr)->emulateUpdateCard(*existing, *imported(second), changes);
        EXPECT_EQ(lineOf(*existing), lineOf(*reread(*existing)));
        return told(lineOf(*preview), marksOf(changes, *preview));
    }

    std::string merged(const std::string& first, const std::string& second)
    {
        const auto one = saved(first), other = saved(second);
        const auto command = ZRMergePeopleCommand::initWithGroup(nullptr, {one, other}, roster);
        EXPECT_TRUE(command->doIt());
        EXPECT_FALSE(reread(*one) || reread(*other));
        return "merged: " + lineOf(*reread(*command->resultingPerson())) + "\n";
    }

private:
    static std::string told(const std::string& line, const std::string& marks)
    {
        return "updated: " + line + "\nmarks:" + (marks.empty() ? "" : " ") + marks + "\n";
    }
};

TEST_F(WhatWins, OnEachPath)
{
    for (const auto& each : casesIn(WINS)) {
        SCOPED_TRACE(each.place);
        const auto end = each.input.find('\n');
        const std::string first = each.input.substr(0, end),
                          second = each.input.substr(end + 1, each.input.size() - end - 2);
        const std::string wanted = merged(first, second);
        EXPECT_EQ(updated(first, second) + wanted, each.expected);
        EXPECT_EQ(previewed(first, second) + wanted, each.expected) << "previewed";
        EXPECT_EQ(roster->people().size(), 3U);
        removeEverybody();
    }
}

// What the second newcomer says was true before the first one came.
TEST_F(WhatWins, WhenACardIsUpdatedTwice)
{
    const auto existing = saved("First: Ana | Email home: a");
    const auto merger = ZRNewMerger::initWithGroup(nullptr);
    const auto card = personIn(merger->targetRoster(), *existing);
    merger->updateCard(card, imported("First: Bea | Email home: b"));
    merger->updateCard(card, imported("First: Ana | Email work: a"));
    merger->applyChanges();
    EXPECT_EQ(lineOf(*reread(*existing)), "Email home: b | Email work: a | First: Ana");
}

} // namespace

} // namespace test
