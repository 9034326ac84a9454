// What a card says, and what is found of it, when two rosters changed its entries at once.
#include "store/NoticeWorld.h"

#include "core/ZRMultiValue.h"

#include <algorithm>
#include <map>
#include <sqlite3.h>

#include <gtest/gtest.h>

namespace test {

namespace {

/// Edits of a card's addresses; entries are named by their texts.
struct EntryEdit {
    std::vector<std::string> removed;
    std::map<std::string, std::string> replaced;
    std::vector<std::string> added;
};

struct MergedCase {
    const char* name;
    EntryEdit mine, theirs;
    /// The entries in order, the primary one with a star.
    std::string merged;
};

const std::vector<MergedCase>& mergedCases()
{
    static const std::vector<MergedCase> all = {
        {"removed here and rewritten there", {{"b"}, {}, {}}, {{}, {{"b", "bb"}}, {}}, "a* "},
        {"rewritten here and removed there", {{}, {{"b", "bb"}}, {}}, {{"b"}, {}, {}}, "a* "},
        {"rewritten here and there", {{}, {{"b", "mine"}}, {}}, {{}, {{"b", "theirs"}}, {}}, "a* mine "},
        {"added here, all removed there", {{}, {}, {"c"}}, {{"a", "b"}, {}, {}}, "c* "},
        {"all removed here, added there", {{"a", "b"}, {}, {}}, {{}, {}, {"c"}}, "c* "},
        {"the primary removed here, the other there", {{"a"}, {}, {}}, {{"b"}, {}, {"c"}}, "c* "},
    };
    return all;
}

ZRIndex indexOf(const ZRMultiValue& entries, std::string_view text)
{
    ZRIndex index = 0;
    while (entries.valueAtIndex(index).asText() != text)
        ++index;
    return index;
}

void apply(const EntryEdit& edit, ZRRecord& card)
{
    const Value before = card.valueForProperty(kZREmailProperty);
    const auto entries = before.as<ZRMultiValue>()->mutableCopy();
    for (const auto& text : edit.removed)
        entries->removeValueAndLabelAtIndex(indexOf(*entries, text));
    for (const auto& [text, other] : edit.replaced)
        entries->replaceValueAtIndex(indexOf(*entries, text), Value(other));
    for (const auto& text : edit.added)
        entries->addValue(Value(text), kZREmailWorkLabel);
    card.setValue(Value(entries), kZREmailProperty);
}

/// The entries as the rows have them, since a reader makes up a primary that is missing.
std::string entriesOf(const std::string& store)
{
    std::string text;
    sqlite3* connection = nullptr;
    sqlite3_open_v2(store.c_str(), &connection, SQLITE_OPEN_READONLY, nullptr);
    sqlite3_exec(
        connection, "SELECT address || iif(isPrimary, '* ', ' ') FROM email_address ORDER BY orderingIndex",
        [](void* found, int, char** columns, char**) {
            *static_cast<std::string*>(found) += columns[0];
            return 0;
        },
        &text, nullptr);
    sqlite3_close(connection);
    return text;
}

/// What goes wrong, and what a look through the roster finds wrong; empty when nothing does.
std::string playMerge(const MergedCase& merge)
{
    NoticeWorld world;
    world.ana->setValue(
        multiValue({{Value("a"), kZREmailWorkLabel}, {Value("b"), kZREmailWorkLabel}}, 0), kZREmailProperty);
    world.roster->save();
    const auto parallel = world.roster->parallelUniverseRoster();
    apply(merge.theirs, *parallel->recordForUniqueId(world.ana->uniqueId()));
    apply(merge.mine, *world.ana);
    std::string text = parallel->save() && world.roster->save() ? "" : "a save was refused; ";
    for (const auto& problem : world.roster->check().problems)
        text += problem + "; ";
    return text;
}

const Role merges("merge a card", [](const Words& words) {
    return playMerge(*std::ranges::find(
        mergedCases(), words.at(0), [](const MergedCase& merge) { return std::string(merge.name); }));
});

TEST(MergedCards, SayAndFindTheSame)
{
    for (const auto& merge : mergedCases()) {
        SCOPED_TRACE(merge.name);
        const Home home;
        const auto outcome = home.play("merge a card", {merge.name});
        EXPECT_EQ(outcome.answer, "") << outcome.log;
        EXPECT_EQ(entriesOf(home.storeFile()), merge.merged);
    }
}

} // namespace

} // namespace test
