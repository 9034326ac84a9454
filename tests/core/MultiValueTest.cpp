// Multi-values: what survives an edit, what counts as equal, what is refused.
#include "core/ZRConstants.h"
#include "core/ZRFailure.h"
#include "core/ZRMutableMultiValue.h"
#include "platform/run/Log.h"

#include <gmock/gmock.h>

namespace {

using platform::Date;
using platform::makeRef;
using platform::NullMarker;
using platform::Ref;
using platform::Value;
using testing::ElementsAre;
using Identifiers = ZRMultiValue::CompareIdentifiers;

/// A multi-value with the identifiers "1", "2", ... and no primary entry yet.
Ref<ZRMutableMultiValue> entries(std::initializer_list<std::pair<const char*, Value>> labelled)
{
    auto multiValue = makeRef<ZRMutableMultiValue>();
    int number = 0;
    for (const auto& [label, value] : labelled)
        multiValue->_appendValue(value, label, std::to_string(++number));
    return multiValue;
}

Ref<ZRMutableMultiValue> strings(std::initializer_list<const char*> texts)
{
    auto multiValue = makeRef<ZRMutableMultiValue>();
    int number = 0;
    for (const char* text : texts)
        multiValue->_appendValue(text, "label", std::to_string(++number));
    return multiValue;
}

/// "label=value" for each entry.
std::vector<std::string> shown(const ZRMultiValue& multiValue)
{
    std::vector<std::string> all;
    for (ZRIndex i = 0; i < multiValue.count(); ++i)
        all.push_back(multiValue.labelAtIndex(i) + "=" + multiValue.valueAtIndex(i).description());
    return all;
}

std::string refusal(const std::function<void()>& call)
{
    try {
        call();
    } catch (const ZRInvalidArgument& failure) {
        return failure.text();
    }
    return "accepted";
}

std::string refusing(const std::string& condition)
{
    return "Invalid parameter not satisfying '" + condition + "'";
}

TEST(MultiValue, IsNothingWhileItIsEmpty)
{
    for (const auto& empty : {makeRef<ZRMultiValue>(), Ref<ZRMultiValue>(makeRef<ZRMutableMultiValue>())}) {
        EXPECT_EQ(empty->count(), 0);
        EXPECT_EQ(empty->primaryIdentifier(), std::nullopt);
        EXPECT_EQ(empty->primaryIndex(), kZRNotFound);
        EXPECT_EQ(empty->propertyType(), 0);
        EXPECT_EQ(empty->_makeMutableStringWithValues(), "");
        EXPECT_EQ(empty->description(), "{\n}");
        EXPECT_TRUE(empty->isEqual(*makeRef<ZRMutableMultiValue>()));
    }
}

TEST(MultiValue, RefusesBadArgumentsBeforeAnythingChanges)
{
    auto list = entries({{"a", "x"}, {"b", "y"}});
    const auto before = list->copy();
    const std::string index = refusing("index < [self count]");
    const std::string identifier = refusing("identifier != nil && [identifier length] > 0");
    const std::string insertion =
        refusing("value != nil && label != nil && [label length] > 0 && index < ([self count] + 1)");
    const std::string label = refusing("index < [self count] && label != nil && [label length] > 0");
    const std::string value = refusing("index < [self count] && value != nil");
    const struct {
        const char* name;
        std::function<void()> call;
        std::string expected;
    } cases[] = {
        {"identifierAtIndex", [&] { list->identifierAtIndex(2); }, index},
        {"labelAtIndex", [&] { list->labelAtIndex(-1); }, index},
        {"valueAtIndex", [&] { list->valueAtIndex(kZRNotFound); }, index},
        {"remove", [&] { list->removeValueAndLabelAtIndex(2); }, index},
        {"remove before", [&] { list->removeValueAndLabelAtIndex(-1); }, index},
        {"empty identifier", [&] { list->indexForIdentifier(""); }, identifier},
        {"null identifier", [&] { list->indexForIdentifier({}); }, identifier},
        {"insert past count", [&] { list->insertValue("v", "l", 3); }, insertion},
        {"insert before", [&] { list->insertValue("v", "l", -1); }, insertion},
        {"insert without label", [&] { list->insertValue("v", "", 0); }, insertion},
        {"insert without value", [&] { list->addValue({}, "l"); }, insertion},
        {"relabel past end", [&] { list->replaceLabelAtIndex(2, "l"); }, label},
        {"relabel with nothing", [&] { list->replaceLabelAtIndex(0, ""); }, label},
        {"replace past end", [&] { list->replaceValueAtIndex(2, "v"); }, value},
        {"replace with nothing", [&] { list->replaceValueAtIndex(0, {}); }, value},
        {"insert at count", [&] { list->mutableCopy()->insertValue("v", "l", 2); }, "accepted"},
        {"insert the null marker", [&] { list->mutableCopy()->addValue(NullMarker(), "l"); }, "accepted"},
    };
    for (const auto& c : cases) {
        EXPECT_EQ(refusal(c.call), c.expected) << c.name;
        EXPECT_TRUE(list->isEqual(*before)) << c.name;
    }
}

TEST(MultiValue, FindsEntriesByIdentifier)
{
    const auto list = entries({{"a", "x"}, {"b", "y"}});
    EXPECT_EQ(list->indexForIdentifier("2"), 1);
    EXPECT_EQ(list->indexForIdentifier("3"), kZRNotFound);
    EXPECT_EQ(list->labelForIdentifier("2"), "b");
    EXPECT_EQ(list->valueForIdentifier("1"), Value("x"));
    EXPECT_EQ(list->labelForIdentifier("3"), std::nullopt);
    EXPECT_TRUE(list->valueForIdentifier("3").isAbsent());
    platform::LogCapture log;
    EXPECT_EQ(list->_labelForIdentifier("1"), "a");
    EXPECT_EQ(list->_valueForIdentifier("1"), Value("x"));
    EXPECT_THAT(log.lines(),
        ElementsAre("-[ZRMultiValue _labelForIdentifier:] is SPI that has been promoted to API: "
                    "-[ZRMultiValue labelForIdentifier:]",
            "The SPI method will be removed by GM",
            "-[ZRMultiValue _valueForIdentifier:] is SPI that has been promoted to API: "
            "-[ZRMultiValue valueForIdentifier:]",
            "The SPI method will be removed by GM"));
}

TEST(MultiValue, MakesItsFirstEntryPrimaryOnceSomebodyAsks)
{
    const auto list = strings({"x", "y"});
    const auto unasked = list->mutableCopy();
    EXPECT_EQ(list->primaryIdentifier(), "1");
    list->_moveContentsAt(0, 1);
    EXPECT_EQ(list->primaryIdentifier(), "1");
    // A copy takes the primary as it stands: nobody had asked the other one.
    unasked->_moveContentsAt(0, 1);
    EXPECT_EQ(unasked->primaryIdentifier(), "2");
}

TEST(MultiValue, KeepsItsPrimaryEntryThroughEdits)
{
    auto list = makeRef<ZRMutableMultiValue>();
    const std::string first = list->addValue("x", "a");
    EXPECT_EQ(list->primaryIdentifier(), first);
    const std::string before = list->insertValue("w", "a", 0);
    EXPECT_EQ(list->primaryIdentifier(), first);
    const std::string last = list->addValue("y", "a");
    EXPECT_FALSE(list->setPrimaryIdentifier("unknown"));
    EXPECT_EQ(list->primaryIdentifier(), first);
    EXPECT_TRUE(list->setPrimaryIdentifier(last));
    EXPECT_THAT(shown(*list), ElementsAre("a=w", "a=x", "a=y"));
    EXPECT_TRUE(list->removeValueAndLabelAtIndex(1));
    EXPECT_EQ(list->primaryIdentifier(), last);
    EXPECT_TRUE(list->removeValueAndLabelAtIndex(1));
    EXPECT_EQ(list->primaryIdentifier(), before);
    EXPECT_TRUE(list->removeValueAndLabelAtIndex(0));
    EXPECT_EQ(list->primaryIdentifier(), std::nullopt);
}

TEST(MultiValue, IsEqualByItsEntriesInOrder)
{
    const auto base = entries({{"a", "x"}, {"b", 1}});
    auto otherPrimary = base->mutableCopy();
    otherPrimary->setPrimaryIdentifier("2");
    auto otherIdentifiers = makeRef<ZRMutableMultiValue>();
    otherIdentifiers->_appendValue("x", "a", "8");
    otherIdentifiers->_appendValue(1, "b", "9");
    auto otherOrder = base->mutableCopy();
    otherOrder->_moveContentsAt(0, 1);
    const struct {
        const char* name;
        Ref<platform::Object> other;
        bool equal, equalButForIdentifiers;
    } cases[] = {
        {"itself", base, true, true},
        {"a copy", base->copy(), true, true},
        {"an immutable one",
            ZRMultiValue::_initWithIdentifiers({"1", "2"}, {"x", 1}, {"a", "b"}, std::nullopt), true, true},
        {"another primary", otherPrimary, true, true},
        {"other identifiers", otherIdentifiers, false, true},
        {"another order", otherOrder, false, false},
        {"another label", entries({{"a", "x"}, {"B", 1}}), false, false},
        {"another value", entries({{"a", "X"}, {"b", 1}}), false, false},
        {"one entry fewer", entries({{"a", "x"}}), false, false},
        {"another kind", makeRef<platform::Array>(std::vector<Value>()), false, false},
    };
    for (const auto& c : cases) {
        EXPECT_EQ(base->isEqual(*c.other), c.equal) << c.name;
        EXPECT_EQ(base->isEqual(*c.other, Identifiers::no), c.equalButForIdentifiers) << c.name;
        if (c.equal) {
            EXPECT_EQ(base->hash(), c.other->hash()) << c.name;
        }
    }
}

TEST(MultiValue, IsItsOwnCopyUnlessItCanBeEdited)
{
    const auto fixed = ZRMultiValue::_initWithIdentifiers({"1"}, {"x"}, {"a"}, "1");
    EXPECT_EQ(fixed->copy(), fixed);
    const auto editable = fixed->mutableCopy();
    const auto copy = editable->copy();
    editable->addValue("y", "b");
    EXPECT_TRUE(copy->isEqual(*fixed));
    EXPECT_NE(platform::refCast<ZRMutableMultiValue>(copy), nullptr);
    EXPECT_EQ(fixed->count(), 1);
}

TEST(MultiValue, FindsValuesWhateverTheirCase)
{
    const auto texts = strings({"Ana@x.org", "BO@x.org", "bo@X.org"});
    EXPECT_EQ(texts->_containsValue("bo@x.ORG"), 1);
    EXPECT_EQ(texts->_containsValue("cy@x.org"), kZRNotFound);
    EXPECT_EQ(texts->_containsValue(1), kZRNotFound);
    const auto places = entries(
        {{"home", Value::dictionary({{"City", "Bonn"}})}, {"work", Value::dictionary({{"City", "Köln"}})}});
    EXPECT_EQ(places->_containsValue(Value::dictionary({{"City", "KÖLN"}})), 1);
    EXPECT_TRUE(places->containsValue(Value::dictionary({{"City", "Köln"}}), "work"));
    EXPECT_FALSE(places->containsValue(Value::dictionary({{"City", "Köln"}}), "home"));
    EXPECT_FALSE(places->containsValue(Value::dictionary({{"City", "KÖLN"}}), "work"));
}

TEST(MultiValue, FindsValuesThatReadTheSame)
{
    const struct {
        std::string_view property;
        Value held, wanted;
        bool found;
    } cases[] = {
        {zr::kZRPhoneProperty, "(030) 12 34", "030-1234", true},
        {zr::kZRPhoneProperty, "+49 30 1234", "030 1234", false},
        {zr::kZRPhoneProperty, "0800-flowers", "0800 FLOWERS", true},
        {zr::kZREmailProperty, "(030) 12 34", "030-1234", false},
        {zr::kZRURLsProperty, "http://x.org/", "HTTP://x.org", true},
        {zr::kZRPhoneProperty, 5, "5", false},
        {zr::kZRPhoneProperty, "5", 5, false},
        {zr::kZROtherDatesProperty, Date{1}, Date{1}, true},
    };
    for (const auto& c : cases) {
        const auto list = entries({{"other", "unlike"}, {"label", c.held}});
        EXPECT_EQ(list->_containsSimilarValue(c.wanted, c.property), c.found ? 1 : kZRNotFound)
            << c.held.description() << " and " << c.wanted.description();
    }
}

TEST(MultiValue, JoinsItsStrings)
{
    EXPECT_EQ(strings({"a"})->_makeMutableStringWithValues(), "a");
    EXPECT_EQ(strings({"", "b", "", ""})->_makeMutableStringWithValues(), "\rb\r\r");
}

TEST(MultiValue, ShowsItsEntriesInColumns)
{
    auto list = entries({{"_$!<HomeFAX>!$_", "1"}, {"né", 2}});
    list->setPrimaryIdentifier("2");
    EXPECT_EQ(list->description(), "{\n\t\t   home fax  1\n\t\t*  né        2\n}");
}

TEST(MultiValue, BecomesADictionaryAndComesBack)
{
    auto list = entries({{"a", Value::dictionary({{"City", "Bonn"}, {"ZIP", NullMarker()}})},
        {"b", Value::dictionary({{"City", "Köln"}})}});
    list->setPrimaryIdentifier("2");
    const Value dictionary = list->_dictionary();
    EXPECT_EQ(dictionary,
        Value::dictionary({{"identifiers", Value::array({"1", "2"})}, {"labels", Value::array({"a", "b"})},
            {"values",
                Value::array({Value::dictionary({{"City", "Bonn"}}), Value::dictionary({{"City", "Köln"}})})},
            {"primaryIdentifier", "2"}}));
    const auto back = ZRMultiValue::_initWithDictionary(dictionary, 262);
    EXPECT_THAT(back->_allIdentifiers(), ElementsAre("1", "2"));
    EXPECT_EQ(back->primaryIdentifier(), "2");
    EXPECT_EQ(back->_dictionary(), dictionary);
    // In values of any other kind a null marker is a value like others.
    const auto mixed = entries({{"a", "text"}, {"b", Value::dictionary({{"ZIP", NullMarker()}})}});
    EXPECT_EQ(mixed->_dictionary()["values"].asArray()[1], mixed->valueAtIndex(1));
    EXPECT_EQ(ZRMultiValue::_initWithDictionary("no dictionary")->count(), 0);
}

TEST(MultiValue, SortsByTheLabelsGiven)
{
    const struct {
        const char* name;
        std::vector<std::string> labels;
        std::vector<std::string> expected;
    } cases[] = {
        {"some", {"b", "a"}, {"b=2", "b=4", "a=1", "a=5", "c=3", "d=6"}},
        {"all", {"d", "c", "b", "a"}, {"d=6", "c=3", "b=2", "b=4", "a=1", "a=5"}},
        {"none", {}, {"a=1", "b=2", "c=3", "b=4", "a=5", "d=6"}},
        {"unknown and repeated", {"x", "c", "c"}, {"c=3", "a=1", "b=2", "b=4", "a=5", "d=6"}},
    };
    for (const auto& c : cases) {
        auto list = entries({{"a", 1}, {"b", 2}, {"c", 3}, {"b", 4}, {"a", 5}, {"d", 6}});
        list->_sortLabelsUsing(c.labels);
        EXPECT_EQ(shown(*list), c.expected) << c.name;
        for (ZRIndex i = 0; i < list->count(); ++i)
            EXPECT_EQ(list->identifierAtIndex(i), list->valueAtIndex(i).description()) << c.name;
    }
}

TEST(MultiValue, CombinesWithAnother)
{
    const auto other = entries({{"a", "new"}, {"c", "third"}, {"c", "fourth"}});
    auto added = entries({{"a", "x"}, {"b", "y"}, {"a", "z"}});
    added->_combineWithMultiValue(*other, ZRMutableMultiValue::Updating::no);
    EXPECT_THAT(shown(*added), ElementsAre("a=x", "b=y", "a=z", "a=new", "c=third", "c=fourth"));
    EXPECT_NE(added->identifierAtIndex(3), "1");

    auto updated = entries({{"a", "x"}, {"b", "y"}, {"a", "z"}});
    updated->_combineWithMultiValue(*other, ZRMutableMultiValue::Updating::yes);
    EXPECT_THAT(shown(*updated), ElementsAre("a=new", "b=y", "a=z", "c=fourth"));
    EXPECT_EQ(updated->identifierAtIndex(0), "1");

    auto self = entries({{"a", "x"}, {"b", "y"}});
    self->_combineWithMultiValue(*self, ZRMutableMultiValue::Updating::no);
    EXPECT_THAT(shown(*self), ElementsAre("a=x", "b=y", "a=x", "b=y"));
}

TEST(MultiValue, RemovesEveryEqualValue)
{
    auto list = entries({{"a", "x"}, {"b", "y"}, {"c", "x"}, {"d", "X"}});
    list->_removeValue(list->valueAtIndex(0));
    EXPECT_THAT(shown(*list), ElementsAre("b=y", "d=X"));
}

// Rows that lost their label once left the three lists out of step.
TEST(MultiValue, SurvivesListsOutOfStep)
{
    const auto damaged = ZRMultiValue::_initWithIdentifiers({"1", "2"}, {"x"}, {}, std::nullopt);
    EXPECT_EQ(damaged->labelAtIndex(1), "");
    EXPECT_TRUE(damaged->valueAtIndex(1).isAbsent());
    EXPECT_FALSE(damaged->description().empty());
    auto editable = damaged->mutableCopy();
    editable->removeValueAndLabelAtIndex(1);
    EXPECT_THAT(shown(*editable), ElementsAre("=x"));
    const auto unnamed = ZRMultiValue::_initWithIdentifiers({}, {"x"}, {"a"}, std::nullopt);
    EXPECT_EQ(unnamed->primaryIdentifier(), std::nullopt);
    EXPECT_EQ(unnamed->mutableCopy()->count(), 0);
}

} // namespace
