// Whether the ids and names read of the people that a search finds are those of the records that it finds.
#include "search/SearchWorld.h"

#include "core/ZRGroup.h"
#include "search/ZRPeopleMatching.h"

namespace test {

namespace {

constexpr std::int64_t company = 1, lastNameFirst = 16;

class PeopleMatching : public SearchWorld {
protected:
    PeopleMatching()
    {
        add({{kZRFirstNameProperty, "Ana"}, {kZRMiddleNameProperty, "Bo"}, {kZRLastNameProperty, "Lund"},
            {kZRTitleProperty, "Dr."}, {kZRSuffixProperty, "Jr."}, {kZRNicknameProperty, "Annie"}});
        add({{kZRFirstNameProperty, "Ana"}, {kZRLastNameProperty, "Kim"},
            {kZRPersonFlags, Value(lastNameFirst)}});
        add({{kZROrganizationProperty, "Lund & Anatol"}, {kZRFirstNameProperty, "Cy"},
            {kZRPersonFlags, Value(company)}});
        add({{kZRLastNameProperty, "Anaheim"}, {kZRPersonFlags, Value(company)}});
        add({{kZROrganizationProperty, "Ana Inc."}});
        add({{kZRNicknameProperty, "ana"}});
        add({{kZREmailProperty, multiValue({{"other@b.example", "home"}, {"ana@b.example", "work"}}, 1)}});
        add({{kZRNoteProperty, "ana"}});
        add({{kZRFirstNameProperty, std::string(256, 'x')}, {kZRNoteProperty, "banana"}});
        group = ZRGroup::initWithRoster(roster);
        group->setValue("Ana's", kZRGroupNameProperty);
        roster->save();
        // Told to nobody yet.
        const auto people = roster->people();
        people.front()->setValue("Anabel", kZRFirstNameProperty);
        roster->removeRecord(people.back());
        add({{kZRFirstNameProperty, "Anatole"}});
    }

    void add(const std::vector<std::pair<std::string_view, Value>>& properties)
    {
        person(roster, properties);
    }

    Ref<ZRGroup> group;
};

} // namespace

TEST_F(PeopleMatching, ReadsOfEachWhatItsRecordSays)
{
    const Ref<ZRSearchElement> searches[] = {
        wholeCard("ana", kZRContainsSubString),
        wholeCard("an", kZRContainsSubString),
        wholeCard("anat", kZRContainsSubString),
        wholeCard("ana", kZRDoesNotContainSubString),
        wholeCard("nobody", kZRContainsSubString),
        where(kZRFirstNameProperty, kZREqual, "Ana"),
        // A key of a property that has none: only memory can tell.
        where(kZRFirstNameProperty, kZREqual, "Ana", std::nullopt, "Street"),
        ZRGroup::searchElementForProperty(
            kZRGroupNameProperty, std::nullopt, std::nullopt, Value("Ana's"), kZREqual),
    };
    std::size_t found = 0;
    for (const bool isSaved : {false, true}) {
        for (const auto& search : searches) {
            std::vector<std::string> ids, names, wantedIds, wantedNames;
            for (const auto& record : roster->recordsMatchingSearchElement(search))
                if (const auto* one = dynamic_cast<const ZRPerson*>(record.get())) {
                    wantedIds.push_back(one->uniqueId());
                    wantedNames.push_back(one->compositeName() + "|"
                        + std::string(one->valueForProperty(kZRNicknameProperty).asText()));
                }
            for (const auto& one : ZRNamesOfPeopleMatching(*roster, search)) {
                ids.push_back(one.uniqueId);
                names.push_back(one.name + "|" + one.nickname);
            }
            EXPECT_EQ(ids, wantedIds) << search->description() << " saved: " << isSaved;
            EXPECT_EQ(names, wantedNames) << search->description() << " saved: " << isSaved;
            EXPECT_EQ(ZRIdsOfPeopleMatching(*roster, search), wantedIds) << search->description();
            found += ids.size();
        }
        ASSERT_TRUE(roster->save());
    }
    EXPECT_GT(found, 40u);
}

} // namespace test
