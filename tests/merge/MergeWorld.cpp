// How the rosters of a merge are set up.
#include "merge/MergeWorld.h"

#include <algorithm>

namespace test {

void MergeTest::SetUp()
{
    openShared();
    roster = ZRRoster::rosterWithDatabaseDirectory((home.path() / "Roster").string(), false);
    ASSERT_TRUE(roster);
    incoming = ZRRoster::emptyMemoryBackedRoster();
    declareCustomProperties(*roster);
    declareCustomProperties(*incoming);
    formerHost = ApplicationHost::install(std::make_shared<RosterHost>(roster));
}

void MergeTest::TearDown() { ApplicationHost::install(std::move(formerHost)); }

Ref<ZRPerson> MergeTest::saved(std::string_view line)
{
    auto made = card(roster, line);
    EXPECT_TRUE(roster->save());
    return made;
}

Ref<ZRGroup> MergeTest::group(std::string_view name, const std::vector<Ref<ZRPerson>>& members)
{
    auto made = ZRGroup::initWithRoster(roster);
    made->setValue(Value(name), kZRGroupNameProperty);
    for (const auto& member : members)
        EXPECT_TRUE(made->addMember(*member));
    EXPECT_TRUE(roster->save());
    return made;
}

Ref<ZRPerson> MergeTest::personIn(const Ref<ZRRoster>& roster, const ZRRecord& record)
{
    return platform::refCast<ZRPerson>(roster->recordForUniqueId(record.uniqueId()));
}

std::vector<std::string> MergeTest::linesOf(const ZRRecordList& records)
{
    std::vector<std::string> lines;
    for (const auto& record : records)
        lines.push_back(lineOf(static_cast<ZRPerson&>(*record)));
    std::ranges::sort(lines);
    return lines;
}

void MergeTest::removeEverybody()
{
    for (const auto& person : roster->people())
        roster->removeRecord(person);
}

std::string MergeTest::groupsOf(const ZRRecord& record)
{
    std::vector<std::string> names;
    for (const auto& parent : record.parentGroups())
        names.push_back(static_cast<ZRGroup&>(*parent).name());
    std::ranges::sort(names);
    std::string text;
    for (const auto& name : names)
        text += (text.empty() ? "" : ",") + name;
    return text;
}

} // namespace test
