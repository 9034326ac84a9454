// Which cards are the same, which are similar, and by which key an import looks for them.
#include "merge/ComparePeople.h"
#include "merge/MergeWorld.h"
#include "platform/files/ZRUserDefaults.h"
#include "store/ZROSRecord.h"

namespace test {

namespace {

class ComparePeople : public MergeTest { };

TEST_F(ComparePeople, TellsTheSameFromTheSimilar)
{
    struct Case {
        const char *one, *other;
        bool areIdentical, areSimilar;
    };
    const Case cases[] = {
        {"First: Ana | Last: Lima", "First: Ana | Last: Lima", true, true},
        {"First: Ana | Last: Lima", "First: ANA | Last: lima", false, true},
        {"First: Ana | Note: a", "First: Ana | Note: b", false, true},
        {"First: Ana | Note: a", "First: Ana", false, true},
        {"First: Ana | Email home: a", "First: Ana | Email home: a", true, true},
        {"First: Ana | Email home: a", "First: Ana | Email work: a", false, true},
        {"First: Ana | Email home: a | Email home: b", "First: Ana | Email home: b | Email home: a", false,
            true},
        {"First: Ana | list: a", "First: Ana | list: b", false, true},
        {"First: Ana", "First: Bea", false, false},
        {"Organization: Acme | ZRPersonFlags: 1", "Organization: Acme | ZRPersonFlags: 1", true, true},
        {"Organization: Acme | ZRPersonFlags: 1 | First: Ana | Last: L",
            "Organization: Acme | ZRPersonFlags: 1 | First: Bea | Last: L", false, false},
        {"Organization: Acme | ZRPersonFlags: 1", "First: Acme", false, true},
        {"First: Ana | Last: Lima | Title: Dr", "First: Ana | Last: Lima", false, true},
    };
    for (const auto& [one, other, areIdentical, areSimilar] : cases) {
        SCOPED_TRACE(testing::Message() << one << " against " << other);
        const auto a = saved(one), b = saved(other);
        EXPECT_EQ(peopleAreIdentical(*a, *b), areIdentical);
        EXPECT_EQ(peopleAreSimilar(*a, *b), areSimilar);
        EXPECT_TRUE(!areIdentical || identicalHashPerson(*a) == identicalHashPerson(*b));
        EXPECT_EQ(similarHashPerson(*a) == similarHashPerson(*b), areSimilar);
        EXPECT_FALSE(peopleAreIdentical(*a, *reread(*a)) || peopleAreSimilar(*a, *reread(*a)))
            << "of two rosters";
    }
}

TEST_F(ComparePeople, SortsLabelsWithWhatIsMissingAtTheEnd)
{
    const auto zip = [](const char* text) { return Value::dictionary({{kZRAddressZIPKey, Value(text)}}); };
    EXPECT_LT(compareZipCodes(zip("1000"), zip("2000")), 0);
    EXPECT_EQ(compareZipCodes(zip("ab1"), zip("AB1")), 0);
    EXPECT_EQ(compareZipCodes(Value(), Value()), 0);
    EXPECT_GT(compareZipCodes(Value(), zip("1000")), 0);
    EXPECT_LT(compareZipCodes(zip("1000"), Value()), 0);
    const Value person = Value::dictionary({{"LastName", Value("Lima")}, {"Name", Value("Zeta")}}),
                company = Value::dictionary({{"Name", Value("Mills")}});
    EXPECT_LT(compareLastNames(person, company), 0);
    EXPECT_TRUE(ZRFuzzyEqualSizes({10, 20}, {10.4F, 19.6F}));
    EXPECT_FALSE(ZRFuzzyEqualSizes({10, 20}, {10, 20.5F}));
}

TEST_F(ComparePeople, HaveTheKeysOfTheirNames)
{
    struct Case {
        const char* line;
        std::optional<std::string> key;
    };
    const Case cases[] = {
        {"First: Ana | Last: Lima", "lima ana"},
        {"First: Ána | Last: LÏMA | Middle: X | Phone a: 1", "lima ana"},
        {"First: Ana", "  ana"},
        {"Last: Lima", "lima  "},
        {"Note: n", "   "},
        {"Organization: Acmé | ZRPersonFlags: 1 | First: Ana", "acme"},
        {"First: Ana | ZRPersonFlags: 1", " "},
        {"First: Ana | ZRPersonFlags: 2", std::nullopt},
        {"First: Ana | Last: Lima | ZRPersonFlags: 16", "lima ana"},
    };
    for (const auto& [line, key] : cases) {
        const auto person = imported(line);
        const auto found = locked(*incoming, ZRAccess::read, [&]() ZR_NTS {
            return ZRNewMerger::newCollisionMapKeyForContact(
                static_cast<ZROSContact&>(*person->zrDatabaseImpl()));
        });
        EXPECT_EQ(found, key) << line;
    }
}

TEST_F(ComparePeople, AreFoundByThoseKeys)
{
    const auto first = saved("First: Ana | Last: Lima"), last = saved("First: ANA | Last: Lima"),
               company = saved("Organization: Acme | ZRPersonFlags: 1");
    saved("Note: only");
    const auto merger = ZRNewMerger::initWithGroup(nullptr);
    const auto waiting = card(merger->targetRoster(), "First: ana | Last: lima");
    const auto bea = imported("First: Bea"), acme = imported("Organization: ACME | ZRPersonFlags: 1"),
               blank = imported("Email a: b");
    const auto found = merger->duplicatesForPeople({waiting, bea, acme, blank});
    ASSERT_EQ(found.size(), 2U);
    EXPECT_EQ(found.at(waiting->uniqueId())->uniqueId(), last->uniqueId()) << "the one stored last";
    EXPECT_EQ(found.at(acme->uniqueId())->uniqueId(), company->uniqueId());
    EXPECT_EQ(found.at(acme->uniqueId())->roster(), merger->targetRoster());
    EXPECT_EQ(
        merger->uniqueIdsForCollisionMapKey("lima ana"), (std::vector{first->uniqueId(), last->uniqueId()}));

    ZRUserDefaults::rosterPreferences()->setBool(true, kZRDontAutoMerge);
    EXPECT_TRUE(merger->duplicatesForPeople({waiting}).empty());
    ZRUserDefaults::rosterPreferences()->removeObjectForKey(kZRDontAutoMerge);
}

} // namespace

} // namespace test
