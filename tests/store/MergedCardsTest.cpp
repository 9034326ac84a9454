// What a card says, and what is found of it, when two rosters changed its entries at once.
#include "store/RosterWorld.h"
#include "support/SQL.h"

#include "core/ZRMultiValue.h"

#include <map>

#include <gmock/gmock.h>

namespace test {

namespace {

/// What becomes of the entry of that text: another text, or nothing for one that goes. What comes of no entry
/// is new.
using EntryEdits = std::map<std::string, std::string>;

ZRIndex indexOf(const ZRMultiValue& entries, std::string_view text)
{
    ZRIndex index = 0;
    while (entries.valueAtIndex(index).asText() != text)
        ++index;
    return index;
}

void editEntries(const EntryEdits& edits, ZRRecord& card)
{
    const Value before = card.valueForProperty(kZREmailProperty);
    const auto entries = before.as<ZRMultiValue>()->mutableCopy();
    for (const auto& [text, other] : edits)
        if (text.empty())
            entries->addValue(Value(other), kZREmailWorkLabel);
        else if (other.empty())
            entries->removeValueAndLabelAtIndex(indexOf(*entries, text));
        else
            entries->replaceValueAtIndex(indexOf(*entries, text), Value(other));
    card.setValue(Value(entries), kZREmailProperty);
}

} // namespace

TEST(MergedCards, SayAndFindTheSame)
{
    const struct {
        const char* name;
        EntryEdits mine, theirs;
        /// The entries in order, a line each, the primary one with a star.
        const char* merged;
    } cases[] = {
        {"removed here and rewritten there", {{"b", ""}}, {{"b", "bb"}}, "a*"},
        {"rewritten here and removed there", {{"b", "bb"}}, {{"b", ""}}, "a*"},
        {"rewritten here and there", {{"b", "mine"}}, {{"b", "theirs"}}, "a*\nmine"},
        {"added here, all removed there", {{"", "c"}}, {{"a", ""}, {"b", ""}}, "c*"},
        {"all removed here, added there", {{"a", ""}, {"b", ""}}, {{"", "c"}}, "c*"},
        {"the primary removed here, the other there", {{"a", ""}}, {{"b", ""}, {"", "c"}}, "c*"},
    };
    for (const auto& [name, mine, theirs, merged] : cases) {
        SCOPED_TRACE(name);
        const Home home;
        const auto roster = ZRRoster::rosterWithDatabaseDirectory(home.path().string());
        const auto ana = person(
            roster, {{kZREmailProperty, multiValue({{"a", kZREmailWorkLabel}, {"b", kZREmailWorkLabel}})}});
        ASSERT_TRUE(roster->save());
        const auto parallel = roster->parallelUniverseRoster();
        editEntries(theirs, *parallel->recordForUniqueId(ana->uniqueId()));
        editEntries(mine, *ana);
        EXPECT_TRUE(parallel->save() && roster->save());
        EXPECT_THAT(roster->check().problems, testing::IsEmpty());
        // In the rows, since a reader makes up a primary that is missing.
        EXPECT_EQ(runSQL(roster->rosterDatabaseFile(),
                      "SELECT address || iif(isPrimary, '*', '') FROM email_address ORDER BY orderingIndex"),
            merged);
    }
}

} // namespace test
