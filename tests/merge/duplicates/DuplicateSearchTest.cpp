// Which cards the search for duplicates finds: as the plain rules do, pair by pair, on random rosters.
#include "merge/DuplicateSearch.h"

#include "core/ZRStringAdditions.h"
#include "merge/CardsInOneLine.h"
#include "merge/ComparePeople.h"
#include "merge/SharedContact.h"
#include "merge/ZRNewMerger.h"
#include "platform/text/Fold.h"

#include <gmock/gmock.h>

#include <functional>
#include <map>
#include <random>
#include <set>

namespace test {
namespace {

using Buckets = std::set<std::vector<std::string>>;

/// What cards say of a property: so many in ten do, one of these texts.
struct Choice {
    const char* property;
    int inTen;
    std::vector<std::string> texts;
};

// Few words, so that many cards are alike.
const std::vector<Choice> kSingles = {
    {kZRFirstNameProperty, 8, {"Ana", "ANA", "ana", "Bo", "\u00C5sa", "\u00E5SA", std::string(256, 'x')}},
    {kZRLastNameProperty, 6, {"Ek", "EK", "Lima"}},
    {kZRMiddleNameProperty, 2, {"Q", ""}},
    {kZRTitleProperty, 1, {"Dr."}},
    {kZRSuffixProperty, 1, {"Jr."}},
    {kZROrganizationProperty, 3, {"Ek", "Ana Ek", ""}},
    {kZRNicknameProperty, 2, {"Bo", ""}},
    {kZRNoteProperty, 1, {"one", "two"}},
    {kZRPersonFlags, 3, {"0", "1", "16", "17", "32", "128", "129"}},
    {kZRBirthdayProperty, 2, {"1970-05-01", "1970-05-02"}},
};

/// Those who say something say it of one to three entries.
const std::vector<Choice> kSeveral = {
    {kZREmailProperty, 2, {"a@b.example", "A@B.example", "a.@b.example", "n/a", "bo@b.example", " "}},
    {kZRPhoneProperty, 2, {"+1 555 0100", "+1 (555) 01-00", "555", "5-55", "", "()", "call me"}},
    {kZRURLsProperty, 2, {"http://a.example", "HTTP a.example", "http://b.example/"}},
    {kZRAIMInstantProperty, 2, {"ana", "a-na"}},
    {kZRJabberInstantProperty, 2, {"ana", "Ana"}},
    {kZRRelatedNamesProperty, 2, {"Bo", "bo.", "Cy"}},
    {kZROtherDatesProperty, 2, {"1970-05-01", "1970-05-02"}},
    {kZRAddressProperty, 2,
        {"Street=Row 1,Floor=x", "Street=ROW 1,Floor=X", "Street=Row 1,Floor=y", "Street=Lane 2,Floor="}},
    {"Haunts", 2, {"Pier", "pier", "Park"}},
};

/// Makes cards by those choices.
class RandomCards {
public:
    RandomCards(Ref<ZRRoster> roster, unsigned seed) : _roster(std::move(roster)), _random(seed) { }

    Ref<ZRPerson> add()
    {
        std::string line;
        const auto say = [&](const std::string& what, const Choice& choice) {
            line += (line.empty() ? "" : " | ") + what + ": " + pick(choice.texts);
        };
        for (const auto& choice : kSingles)
            if (chance(choice.inTen))
                say(choice.property, choice);
        for (const auto& choice : kSeveral)
            for (std::size_t left = chance(choice.inTen) ? 1 + _random() % 3 : 0; left > 0; --left)
                say(std::string(choice.property) + " " + (chance(5) ? kZRHomeLabel : kZRWorkLabel), choice);
        return card(_roster, line);
    }

    /// Another card that says the same, now and then with one thing changed.
    void addCopyOf(const ZRPerson& card)
    {
        const auto copy = card.duplicate();
        if (chance(4))
            copy->setValue(Value(pick({"three", "four"})), kZRNoteProperty);
        if (chance(2))
            copy->setValue(Value(), kZRPhoneProperty);
        constexpr std::int64_t lastImport = 128;
        if (chance(4))
            copy->zrosSetValue(
                Value(copy->zrosValueForKey("displayFlags").asInteger() ^ lastImport), "displayFlags");
    }

    bool chance(int inTen) { return static_cast<int>(_random() % 10) < inTen; }

private:
    std::string pick(const std::vector<std::string>& from) { return from[_random() % from.size()]; }

    Ref<ZRRoster> _roster;
    std::mt19937 _random;
};

// ---- the rules, pair by pair

Buckets pairedBy(const ZRRecordList& people, bool (*areSame)(const ZRPerson&, const ZRPerson&))
{
    std::vector<std::vector<const ZRPerson*>> buckets;
    for (const auto& record : people) {
        const auto* person = static_cast<const ZRPerson*>(record.get());
        const auto same = [&](const auto& bucket) { return areSame(*bucket.front(), *person); };
        const auto at = std::ranges::find_if(buckets, same);
        at == buckets.end() ? buckets.push_back({person}) : at->push_back(person);
    }
    Buckets ids;
    for (const auto& bucket : buckets)
        if (bucket.size() > 1) {
            std::vector<std::string> of;
            for (const auto* person : bucket)
                of.push_back(person->uniqueId());
            ids.insert(of);
        }
    return ids;
}

Buckets withSimilarValues(const ZRRecordList& people, const Ref<ZRRoster>& roster)
{
    Buckets ids;
    for (const auto& person : people) {
        bool isFound = false;
        for (const auto& property : ZRRecord::propertiesWithRoster(person->recordClass(), roster.get())) {
            const Value value = person->valueForProperty(property);
            ZRPropertyChanges changes;
            if (const auto* entries = value.as<ZRMultiValue>())
                isFound |=
                    ZRNewMerger::mergedSimilarMultiValuesIn(*entries, property, changes) && !changes.empty();
        }
        if (isFound)
            ids.insert({person->uniqueId()});
    }
    return ids;
}

/// By property and key, those who have it.
Buckets withSharedValues(const ZRRecordList& people)
{
    std::map<std::pair<std::string_view, std::string>, std::vector<const ZRPerson*>> owners;
    for (const auto& record : people)
        for (const char* property : {kZREmailProperty, kZRPhoneProperty}) {
            const Value value = record->valueForProperty(property);
            const auto* entries = value.as<ZRMultiValue>();
            for (ZRIndex i = 0; entries && i < entries->count(); ++i) {
                auto& of =
                    owners[{property, merge::sharedContactKey(property, entries->valueAtIndex(i).asText())}];
                if (of.empty() || of.back() != record.get())
                    of.push_back(static_cast<const ZRPerson*>(record.get()));
            }
        }
    Buckets ids;
    for (const auto& [key, of] : owners) {
        const ZRPerson& first = *of.front();
        const auto isNamesake = [&](const ZRPerson* other) { return peopleAreSimilar(first, *other); };
        const bool isOneName = !first._realCompositeNameIncludingAuxiliaryElements(false).empty()
            && std::ranges::all_of(of, isNamesake);
        std::vector<std::string> bucket;
        for (const auto* person : of)
            bucket.push_back(person->uniqueId());
        if (!key.second.empty() && bucket.size() > 1 && !isOneName)
            ids.insert(bucket);
    }
    return ids;
}

Buckets idsIn(const ZRDuplicateBuckets& buckets)
{
    Buckets ids;
    for (const auto& bucket : buckets)
        EXPECT_TRUE(ids.insert(bucket.uniqueIds).second) << "a bucket came twice";
    return ids;
}

void expectThePlainRules(const Ref<ZRRoster>& roster)
{
    const auto people = roster->people();
    const auto found = zrFindDuplicates(*roster);
    EXPECT_EQ(found.people, people.size());
    EXPECT_EQ(idsIn(found.identical), pairedBy(people, peopleAreIdentical));
    EXPECT_EQ(idsIn(found.similar), pairedBy(people, peopleAreSimilar));
    EXPECT_EQ(idsIn(found.inner), withSimilarValues(people, roster));
    EXPECT_EQ(idsIn(found.shared), withSharedValues(people));
    for (const auto* buckets : {&found.identical, &found.similar, &found.inner, &found.shared})
        EXPECT_FALSE(buckets->empty()) << "the roster proves nothing";
    for (const auto* buckets : {&found.identical, &found.similar, &found.inner})
        for (std::size_t i = 1; i < buckets->size(); ++i) {
            const auto placeOf = [&](const ZRDuplicateBucket& bucket) {
                return std::ranges::find(people, bucket.uniqueIds.front(), &ZRRecord::uniqueId)
                    - people.begin();
            };
            EXPECT_LT(placeOf((*buckets)[i - 1]), placeOf((*buckets)[i]));
        }
}

class DuplicateSearchTest : public testing::TestWithParam<unsigned> { };

TEST_P(DuplicateSearchTest, FindsWhatThePlainRulesFindPairByPair)
{
    const auto roster = ZRRoster::emptyMemoryBackedRoster();
    ZRPerson::addPropertiesAndTypes(
        Value::dictionary({{"Haunts", Value(kZRPropertyTypeMulti | kZRPropertyTypeString)}}), roster.get());
    RandomCards random(roster, GetParam());
    for (int i = 0; i < 60; ++i) {
        const auto card = random.add();
        if (random.chance(3))
            random.addCopyOf(*card);
    }
    {
        SCOPED_TRACE("before the first save");
        expectThePlainRules(roster);
    }
    ASSERT_TRUE(roster->save());
    expectThePlainRules(roster);
    const auto people = roster->people();
    for (std::size_t i = 0; i < people.size(); i += 7)
        roster->removeRecord(people[i]);
    random.addCopyOf(static_cast<const ZRPerson&>(*people[1]));
    SCOPED_TRACE("with changes since the last save");
    expectThePlainRules(roster);
}

INSTANTIATE_TEST_SUITE_P(Seeds, DuplicateSearchTest, testing::Range(1U, 9U));

TEST(SharedContactTest, CountsWhatReachesSomebodyAndNothingElse)
{
    struct Case {
        const char* property;
        std::string_view a, b;
        bool isShared;
    };
    constexpr Case cases[] = {
        {kZREmailProperty, "Ana@Lima.example", " ana@lima.EXAMPLE ", true},
        {kZREmailProperty, "\u00C5sa@ek.example", "\u00E5sa@ek.example", true},
        {kZREmailProperty, "\u00E5sa@ek.example", "asa@ek.example", false},
        {kZREmailProperty, "n/a", "n/a", false},
        {kZREmailProperty, "@", "@", false},
        {kZREmailProperty, "ana@", "ana@", false},
        {kZREmailProperty, "", "", false},
        {kZRPhoneProperty, "+1 (555) 0100", "+1-555-0100", true},
        {kZRPhoneProperty, "1-800-FLOWERS 1234", "1800flowers1234", true},
        {kZRPhoneProperty, "+1 555 0100", "555 0100", false},
        {kZRPhoneProperty, "4711", "4711", false},
        {kZRPhoneProperty, "12345", "12345", false},
        {kZRPhoneProperty, "123456", "123 456", true},
        {kZRPhoneProperty, "000-000-0000", "000-000-0000", false},
        {kZRPhoneProperty, "call me", "call me", false},
        {kZRPhoneProperty, "", "", false},
        {kZRURLsProperty, "http://a.example", "http://a.example", false},
    };
    for (const auto& [property, a, b, isShared] : cases) {
        const auto key = merge::sharedContactKey(property, a);
        EXPECT_EQ(!key.empty() && key == merge::sharedContactKey(property, b), isShared) << a << " and " << b;
    }
}

// A search that was cancelled answers, and asks no further.
TEST(DuplicateSearchCancelling, StopsBetweenTwoSteps)
{
    const auto roster = ZRRoster::emptyMemoryBackedRoster();
    for (int i = 0; i < 3; ++i)
        person(roster,
            {{kZRLastNameProperty, Value("Ek")},
                {kZRPhoneProperty, multiValue({{Value("1"), kZRHomeLabel}, {Value("1"), kZRHomeLabel}})}});
    EXPECT_EQ(zrFindDuplicates(*roster).inner.size(), 3U);
    EXPECT_TRUE(zrFindDuplicates(*roster, [] { return true; }).inner.empty());
}

} // namespace
} // namespace test
