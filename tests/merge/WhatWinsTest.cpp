// What stands in a card when another one brings the same property: row by row, and on each path.
#include "merge/MergeWorld.h"
#include "merge/ZRMergePeopleCommand.h"
#include "store/ZRDBCache.h"

namespace test {

namespace {

struct WinsCase {
    const char* what;
    std::string first, second;
    /// The first card once the second was imported into it; and what a preview marks, by property and entry,
    /// "+" for added.
    std::string updated, marks;
    /// The one card that the two become.
    std::string merged;
};

const std::vector<WinsCase>& winsCases()
{
    static const std::vector<WinsCase> all = {
        {"a single value", "First: Ana", "First: Bea", "First: Bea", "First", "First: Ana | Note: Bea"},
        {"one that the newcomer lacks", "First: Ana | Last: Lima", "First: Ana", "First: Ana | Last: Lima",
            "", "First: Ana | Last: Lima"},
        {"one that only the newcomer has", "First: Ana", "Last: Lima", "First: Ana | Last: Lima", "Last+",
            "First: Ana | Last: Lima"},
        {"equal but for case", "First: Ana", "First: ANA", "First: ANA", "First", "First: Ana"},
        {"a date", "Birthday: 1970-05-01", "Birthday: 1971-06-02", "Birthday: 1971-06-02", "Birthday",
            "Birthday: 1970-05-01 | Note: 1971-06-02"},
        {"flags", "ZRPersonFlags: 1", "ZRPersonFlags: 16", "ZRPersonFlags: 16", "ZRPersonFlags",
            "Note: 16 | ZRPersonFlags: 1"},
        {"a custom text", "text: a", "text: b", "text: b", "text", "Note: b | text: a"},
        {"a custom number", "number: 5 | real: 1.5", "number: 6 | real: 2.5", "number: 6 | real: 2.5",
            "number real", "Note: 6/2.5 | number: 5 | real: 1.5"},
        {"an array", "list: a", "list: b", "list: b", "list", "list: a"},
        {"a dictionary", "table: k=a", "table: k=b", "table: k=b", "table", "table: k=a"},
        {"data", "bytes: a", "bytes: b", "bytes: b", "bytes", "bytes: a"},
        {"an array that is missing", "First: Ana", "list: b", "First: Ana | list: b", "list+",
            "First: Ana | list: b"},
        {"a note", "Note: one", "Note: two", "Note: one/two", "Note", "Note: one/two"},
        {"an equal note", "Note: one", "Note: one", "Note: one", "", "Note: one"},
        {"a first note", "First: Ana", "Note: two", "First: Ana | Note: two", "Note+",
            "First: Ana | Note: two"},
        {"a note and conflicts", "Note: one | First: Ana | Last: Lima",
            "Note: two | First: Bea | Last: Silva", "First: Bea | Last: Silva | Note: one/two",
            "First Last Note", "First: Ana | Last: Lima | Note: one/two/Bea/Silva"},
        {"entries where none was", "First: Ana", "Email home: a | Email work: b",
            "Email home: a | Email work: b | First: Ana", "Email+",
            "Email home: a | Email work: b | First: Ana"},
        {"no entries", "Email home: a", "First: Ana", "Email home: a | First: Ana", "First+",
            "Email home: a | First: Ana"},
        {"a known value in another case and under another label", "Email home: a@b.c", "Email work: A@B.C",
            "Email home: a@b.c", "", "Email home: a@b.c | Email work: A@B.C"},
        {"a known value under its label", "Email home: a", "Email home: A", "Email home: a", "",
            "Email home: a"},
        {"a label that no entry has", "Email home: a", "Email work: b", "Email home: a | Email work: b",
            "Email.2+", "Email home: a | Email work: b"},
        {"a label that one entry has", "Email home: a | Email work: w", "Email home: b",
            "Email home: b | Email work: w", "Email.1", "Email home: a | Email work: w | Email home: b"},
        {"a label that two entries have", "Email home: a | Email home: b", "Email home: c",
            "Email home: a | Email home: b | Email home: c", "Email.3+",
            "Email home: a | Email home: b | Email home: c"},
        {"two for a label that one entry has", "Email home: a", "Email home: b | Email home: c",
            "Email home: c", "Email.1", "Email home: a | Email home: b | Email home: c"},
        {"two for a label that no entry has", "Email work: w", "Email home: b | Email home: c",
            "Email work: w | Email home: c", "Email.2", "Email work: w | Email home: b | Email home: c"},
        {"addresses", "Address home: City=Rome", "Address home: City=ROME | Address work: City=Oslo",
            "Address home: City=Rome | Address work: City=Oslo", "Address.2+",
            "Address home: City=Rome | Address work: City=Oslo"},
        {"dates", "ZRDate a: 1999-01-02", "ZRDate a: 1999-01-03", "ZRDate a: 1999-01-03", "ZRDate.1",
            "ZRDate a: 1999-01-02 | ZRDate a: 1999-01-03"},
        {"services apart", "AIMInstant home: a", "ICQInstant home: b",
            "AIMInstant home: a | ICQInstant home: b", "ICQInstant+",
            "AIMInstant home: a | ICQInstant home: b"},
        {"custom entries", "texts a: 1 | tables t: k=1", "texts a: 2 | tables u: k=2",
            "tables t: k=1 | tables u: k=2 | texts a: 2", "tables.2+ texts.1",
            "tables t: k=1 | tables u: k=2 | texts a: 1 | texts a: 2"},
        {"a number that is formatted on the way", "Phone home: (212) 555-0100", "Phone home: 2125550100",
            "Phone home: 2125550100", "Phone.1", "Phone home: (212) 555-0100"},
        {"a number that is new", "Phone home: (212) 555-0100", "Phone work: 2125550199",
            "Phone home: (212) 555-0100 | Phone work: 2125550199", "Phone.2+",
            "Phone home: (212) 555-0100 | Phone work: (212) 555-0199"},
    };
    return all;
}

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

class WhatWins : public MergeTest { };

// The store is read anew: what the merger did in memory does not count.
TEST_F(WhatWins, WhenACardIsUpdated)
{
    for (const auto& wins : winsCases()) {
        SCOPED_TRACE(wins.what);
        const auto existing = saved(wins.first);
        const auto merger = ZRNewMerger::initWithGroup(nullptr);
        const auto card =
            platform::refCast<ZRPerson>(merger->targetRoster()->recordForUniqueId(existing->uniqueId()));
        ZRPropertyChanges changes;
        merger->updateCard(card, imported(wins.second), &changes);
        EXPECT_EQ(marksOf(changes, *card), wins.marks);
        EXPECT_EQ(lineOf(*existing), lineOf(*reread(*existing))) << "changed before it was applied";
        EXPECT_TRUE(merger->applyChanges());
        EXPECT_EQ(lineOf(*reread(*existing)), wins.updated);
        EXPECT_EQ(lineOf(*existing), wins.updated);
    }
}

// What the second newcomer says was true before the first one came.
TEST_F(WhatWins, WhenACardIsUpdatedTwice)
{
    const auto existing = saved("First: Ana | Email home: a");
    const auto merger = ZRNewMerger::initWithGroup(nullptr);
    const auto card =
        platform::refCast<ZRPerson>(merger->targetRoster()->recordForUniqueId(existing->uniqueId()));
    merger->updateCard(card, imported("First: Bea | Email home: b"));
    merger->updateCard(card, imported("First: Ana | Email work: a"));
    merger->applyChanges();
    EXPECT_EQ(lineOf(*reread(*existing)), "Email home: b | Email work: a | First: Ana");
}

TEST_F(WhatWins, WhenAnUpdateIsPreviewed)
{
    const auto merger = ZRNewMerger::initWithGroup(nullptr);
    for (const auto& wins : winsCases()) {
        SCOPED_TRACE(wins.what);
        const auto existing = saved(wins.first);
        ZRPropertyChanges changes;
        const auto preview = merger->emulateUpdateCard(*existing, *imported(wins.second), changes);
        EXPECT_EQ(lineOf(*preview), wins.updated);
        EXPECT_EQ(marksOf(changes, *preview), wins.marks);
        EXPECT_EQ(lineOf(*existing), lineOf(*reread(*existing)));
    }
    EXPECT_EQ(roster->people().size(), winsCases().size());
}

TEST_F(WhatWins, WhenChosenCardsAreMerged)
{
    for (const auto& wins : winsCases()) {
        SCOPED_TRACE(wins.what);
        const auto first = saved(wins.first), second = saved(wins.second);
        const auto command = ZRMergePeopleCommand::initWithGroup(nullptr, {first, second}, roster);
        ASSERT_TRUE(command->doIt());
        EXPECT_EQ(lineOf(*reread(*command->resultingPerson())), wins.merged);
        EXPECT_FALSE(reread(*first) || reread(*second));
    }
}

} // namespace

} // namespace test
