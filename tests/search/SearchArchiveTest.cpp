// Archived searches: they come back as they were, and a damaged, newer or hostile archive harms nobody.
#include "search/SearchWorld.h"

#include "core/ZRGroup.h"
#include "platform/value/PropertyList.h"

#include <gmock/gmock.h>

namespace test {

namespace {

class SearchArchives : public SearchWorld {
protected:
    static std::string archived(const ZRSearchElement& element)
    {
        const auto data = element.archivedData();
        EXPECT_TRUE(data) << (data ? "" : data.error().text);
        return data ? *data : std::string();
    }
    platform::Result<Ref<ZRSearchElement>> read(std::string_view data) const
    {
        return locked(
            *roster, ZRAccess::read, [&]() ZR_NTS { return ZRSearchElement::nts_unarchivedElement(data); });
    }
    /// The fields of the archived root object.
    static Value fieldsOf(const ZRSearchElement& element)
    {
        const auto list = platform::decodePropertyList(archived(element));
        EXPECT_TRUE(list);
        const Value objects = (*list)["objects"];
        return objects.asArray().at(0);
    }
    /// An archive of objects with those fields; the first is the root.
    static std::string archiveOf(std::vector<Value> objects)
    {
        const auto data = platform::encodePropertyList(
            Value::dictionary({{"archive", Value(1)}, {"root", Value::dictionary({{"root", reference(0)}})},
                {"objects", Value::array(std::move(objects))}}),
            platform::PropertyListFormat::binary);
        return *data;
    }
    static Value reference(int object) { return Value::dictionary({{"@object", Value(object)}}); }
    static Value conjunctionOf(std::vector<Value> children)
    {
        return Value::dictionary({{"@class", "ZRSearchElementConjunction"}, {"ZRSearchVersion", Value(1)},
            {"ZRSearchChildren", Value::array(std::move(children))}});
    }
    static Value matchWith(const std::string& field = "ZRSearchVersion", const Value& value = 1)
    {
        return Value::dictionary({{"@class", "ZRSearchElementMatch"}, {field, value}});
    }
};

const ZRSearchElementMatch& asMatch(const Ref<ZRSearchElement>& element)
{
    return dynamic_cast<const ZRSearchElementMatch&>(*element);
}

} // namespace

// All but that it was of subscribed records, which archives do not tell.
TEST_F(SearchArchives, GiveAComparisonBackWhole)
{
    const auto withoutDiacritics =
        where(kZRAddressProperty, kZRContainsSubStringCaseInsensitive, "x", "L", "City");
    withoutDiacritics->setDiacriticInsensitiveOption(true);
    const Ref<ZRSearchElement> rows[]{withoutDiacritics, wholeCard("x", kZREqual), where("", kZREqual, "x"),
        where(kZRParentGroupsProperty, kZRMemberOfGroup, kZRSmartGroupAnyGroupMembershipProperty),
        ZRSubscribedPerson::searchElementForProperty(kZRFirstNameProperty, {}, {}, "x", kZREqual)};
    for (const auto& element : rows) {
        SCOPED_TRACE(element->description());
        const auto back = read(archived(*element));
        ASSERT_TRUE(back) << back.error().text;
        EXPECT_TRUE((*back)->isEqual(*element));
        EXPECT_EQ((*back)->description(), element->description());
        EXPECT_EQ((*back)->diacriticInsensitiveOption(), element->diacriticInsensitiveOption());
        EXPECT_FALSE((*back)->searchSubscribed());
    }
}

TEST_F(SearchArchives, GiveAConjunctionBackWithItsChildren)
{
    const auto inner = ZRSearchElement::searchElementForConjunction(kZRConjunctionAnd,
        {where(kZRFirstNameProperty, kZREqual, "a"), where(kZRLastNameProperty, kZREqual, "b")});
    const auto outer = ZRSearchElement::searchElementForConjunction(
        kZRConjunctionOr, {inner, where(kZRNoteProperty, kZRPrefixMatch, "c")});
    dynamic_cast<ZRSearchElementConjunction&>(*inner).setIsRuleGrouping(true);
    const auto back = read(archived(*outer));
    ASSERT_TRUE(back);
    EXPECT_EQ((*back)->description(), outer->description());
    const auto& children = dynamic_cast<const ZRSearchElementConjunction&>(**back)._children();
    EXPECT_TRUE(dynamic_cast<const ZRSearchElementConjunction&>(*children[0]).isRuleGrouping());
}

TEST_F(SearchArchives, NameAGroupByItsIdAndFindItInItsRoster)
{
    const auto shared = ZRRoster::sharedRoster();
    const auto group = ZRGroup::initWithRoster(shared);
    ASSERT_TRUE(shared->save());
    const auto element = where(kZRParentGroupsProperty, kZRMemberOfGroup, Value(group));
    const Value fields = fieldsOf(*element);
    EXPECT_EQ(fields["ZRSearchVersion"], Value(105));
    EXPECT_EQ(fields["ZRSearchValue"], Value(group->uniqueId()));
    EXPECT_EQ(fields["ZRDatabasePath"], Value(shared->databaseDirectory()));
    EXPECT_TRUE(asMatch(*read(archived(*element))).usesGroupInDefinition(*group));

    ASSERT_TRUE(shared->removeRecord(group));
    ASSERT_TRUE(shared->save());
    EXPECT_TRUE(asMatch(*read(archived(*element)))._value().isNothing());
}

// A directory that an archive names is another program's word: no roster is made in it.
TEST_F(SearchArchives, MakeNoRosterWhereTheyPointTo)
{
    const Home elsewhere;
    auto fields = Value::dictionary({{"@class", "ZRSearchElementMatch"}, {"ZRSearchVersion", Value(105)},
        {"ZRSearchProperty", kZRParentGroupsProperty}, {"ZRSearchValue", "unknown"},
        {"ZRSearchComparison", Value(std::int64_t(kZRMemberOfGroup))},
        {"ZRDatabasePath", elsewhere.path().string()}});
    const auto back = read(archiveOf({fields}));
    ASSERT_TRUE(back) << back.error().text;
    EXPECT_TRUE(asMatch(*back)._value().isNothing());
    EXPECT_TRUE(fs::is_empty(elsewhere.path()));
}

TEST_F(SearchArchives, OfANewerVersionRaise)
{
    const auto withVersion = [&](int version) {
        return archiveOf({matchWith("ZRSearchVersion", Value(version))});
    };
    EXPECT_TRUE(read(withVersion(10500)));
    EXPECT_THROW(static_cast<void>(read(withVersion(10501))), ZRIncompatibleSearchElementVersionException);
}

TEST_F(SearchArchives, ThatAreDamagedOrHostileAreRefused)
{
    Value deep("x");
    for (int i = 0; i < 400; ++i)
        deep = Value::array({deep});
    std::vector<Value> chain, doubling;
    for (int i = 1; i <= 300; ++i)
        chain.push_back(conjunctionOf({reference(i)}));
    chain.push_back(matchWith());
    for (int i = 1; i <= 40; ++i)
        doubling.push_back(conjunctionOf({reference(i), reference(i)}));
    doubling.push_back(matchWith());
    const struct {
        const char* what;
        std::string archive;
    } rows[] = {
        {"no archive", "nonsense"},
        {"nothing", ""},
        {"another class", archiveOf({Value::dictionary({{"@class", "ZRPerson"}})})},
        {"a text for a number", archiveOf({matchWith("ZRSearchComparison", "x")})},
        {"a number for a text", archiveOf({matchWith("ZRSearchProperty", Value(1))})},
        {"an unknown comparison", archiveOf({matchWith("ZRSearchComparison", Value(27))})},
        {"a comparison beyond its type",
            archiveOf({matchWith("ZRSearchComparison", Value(std::int64_t(1) << 32))})},
        {"no children", archiveOf({conjunctionOf({})})},
        {"children that are none", archiveOf({conjunctionOf({Value("x")})})},
        {"its own child", archiveOf({conjunctionOf({reference(0)})})},
        {"a circle", archiveOf({conjunctionOf({reference(1)}), conjunctionOf({reference(0)})})},
        {"an object that is not there", archiveOf({conjunctionOf({reference(7)})})},
        {"a deep value", archiveOf({matchWith("ZRSearchValue", deep)})},
        {"deep children", archiveOf(chain)},
        {"children that double", archiveOf(doubling)},
    };
    for (const auto& row : rows)
        EXPECT_FALSE(read(row.archive)) << row.what;
}

} // namespace test
