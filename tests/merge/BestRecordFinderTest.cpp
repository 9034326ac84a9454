// Which card a typed text means.
#include "merge/MergeWorld.h"
#include "merge/ZRBestRecordFinder.h"
#include "platform/files/DesktopIndex.h"

#include <gmock/gmock.h>

#include <map>

namespace test {

namespace {

/// Knows when the files of some cards were used, by the ids in their names.
class TestIndex : public platform::DesktopIndex {
public:
    explicit TestIndex(std::map<std::string, double> used) : _used(std::move(used)) { }
    std::optional<platform::Date> lastUsed(const std::string& path) override
    {
        const auto at = _used.find(fs::path(path).filename());
        return at == _used.end() ? std::nullopt : std::optional(platform::Date{at->second});
    }

private:
    std::map<std::string, double> _used;
};

struct FinderCase {
    const char* text;
    /// The first name of the card, or its organization; empty for none.
    const char* found;
};

TEST_F(MergeTest, TheBestRecordIsTheOneWithMostNamesThatATextBegins)
{
    const ZRRecordList records{card(roster, "First: Zoë | Last: Lima"), card(roster, "First: Ana | Last: Ek"),
        card(roster, "First: Ana | Last: Lima"),
        card(roster, "First: Bo | Last: Anker | Organization: Lima | ZRPersonFlags: 1"), group("Ana Lima")};
    const FinderCase cases[] = {
        {"", ""},
        {"?!", ""},
        {"ana", "Ana"},
        {"LI an", "Ana"},
        {"zoe", "Zoë"},
        {"lim", "Zoë"},
        {"ek ana lima", "Ana"},
        {"bo", "Zoë"},
        {"anastasia", "Zoë"},
    };
    for (const auto& [text, found] : cases) {
        const auto best = ZRBestRecordFinder::findBestRecordIn(records, text, {"Last"});
        EXPECT_EQ(best ? best->valueForProperty(kZRFirstNameProperty).asText() : "", found) << text;
    }
    EXPECT_EQ(ZRBestRecordFinder({records[3], records[0]}, "lima").findBestRecord(), records[3])
        << "a company";
    EXPECT_FALSE(ZRBestRecordFinder({}, "ana").findBestRecord());
}

// Where the text begins no name, everybody is in question; who was never looked at comes last.
TEST_F(MergeTest, OfEquallyGoodRecordsTheOneLookedAtLastIsTheBest)
{
    const ZRRecordList records{card(roster, "First: Ana"), card(roster, "First: Ana"),
        card(roster, "First: Bo"), card(roster, "First: Ana")};
    const auto former = platform::DesktopIndex::install(
        std::make_shared<TestIndex>(std::map<std::string, double>{{records[1]->uniqueId() + ".zrosp", -5e9},
            {records[2]->uniqueId() + ".zrosp", 9}, {records[3]->uniqueId() + ".zrosp", 7}}));
    EXPECT_EQ(ZRBestRecordFinder(records, "an").findBestRecord(), records[3]);
    EXPECT_EQ(ZRBestRecordFinder(records, "nobody").findBestRecord(), records[2]);
    EXPECT_EQ(ZRBestRecordFinder({records[0], records[1]}, "ana").findBestRecord(), records[1]);
    platform::DesktopIndex::install(former);
}

} // namespace

} // namespace test
