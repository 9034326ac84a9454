// Whether values come back out of handles as they went in, whatever they are inside of.
#include "api/Owned.h"

#include "platform/run/Log.h"
#include "store/ZRRoster.h"

#include <gtest/gtest.h>

#include <string_view>

namespace {

using test::Owned;

Owned integer(std::int64_t number) { return ZRNumberCreateWithInteger(number); }
Owned dictionary(const char* key, ZRTypeRef value) { return ZRDictionaryCreate(&key, &value, 1); }
Owned array(ZRTypeRef value) { return ZRArrayCreate(&value, 1); }

TEST(PlainValues, HaveTheirKindAndAreEqualByContent)
{
    const struct {
        const char* what;
        Owned value, equal, other;
        ZRTypeID kind;
    } cases[] = {
        {"text", Owned("a"), Owned("a"), Owned("b"), kZRTypeString},
        {"whole and floating", integer(2), ZRNumberCreateWithReal(2), integer(3), kZRTypeNumber},
        {"date", ZRDateCreateWithSecondsSince1970(2), ZRDateCreateWithSecondsSince1970(2), integer(2),
            kZRTypeDate},
        {"data", ZRDataCreate("a", 1), ZRDataCreate("a", 1), Owned("a"), kZRTypeData},
        {"null", ZRRetain(ZRGetNull()), ZRRetain(ZRGetNull()), integer(0), kZRTypeNull},
        {"array of numbers", array(integer(1)), array(integer(1)), array(integer(2)), kZRTypeArray},
        {"array of texts", array(Owned("1")), array(Owned("1")), array(integer(1)), kZRTypeArray},
        {"dictionary", dictionary("a", array(integer(1))), dictionary("a", array(integer(1))),
            dictionary("b", array(integer(1))), kZRTypeDictionary},
        {"multi-value", ZRMultiValueCreate(), ZRMultiValueCreateMutable(), ZRDataCreate("", 0),
            kZRTypeMultiValue},
    };
    for (const auto& each : cases) {
        EXPECT_EQ(ZRGetTypeID(each.value), each.kind) << each.what;
        EXPECT_TRUE(ZREqual(each.value, each.equal)) << each.what;
        EXPECT_EQ(ZRHash(each.value), ZRHash(each.equal)) << each.what;
        EXPECT_FALSE(ZREqual(each.value, each.other)) << each.what;
    }
    EXPECT_FALSE(ZREqual(nullptr, nullptr));
}

// What a caller borrows from a container must stay as long as the container, be it number or text.
TEST(PlainValues, LendTheElementsThatWerePutIn)
{
    const Owned number = integer(7), text("seven");
    const char* const keys[] = {"text", "number", "number"};
    const ZRTypeRef values[] = {text, text, number};
    const Owned list = ZRArrayCreate(values, 3), map = ZRDictionaryCreate(keys, values, 3);
    EXPECT_EQ(ZRArrayGetValueAtIndex(list, 2), number);
    EXPECT_EQ(ZRDictionaryGetCount(map), 2);
    EXPECT_EQ(ZRDictionaryGetValue(map, "number"), number);
    const Owned names = ZRDictionaryCopyKeys(map);
    EXPECT_STREQ(ZRStringGetUTF8(ZRArrayGetValueAtIndex(names, 0)), "number");

    const Owned outer = array(dictionary("a", array(integer(9))));
    const auto inner = ZRDictionaryGetValue(ZRArrayGetValueAtIndex(outer, 0), "a");
    EXPECT_EQ(ZRNumberGetInteger(ZRArrayGetValueAtIndex(inner, 0)), 9);
}

TEST(PlainValues, KeepTheBytesOfATextAndRefuseOthers)
{
    const std::string_view withZero("a\0b", 3);
    const Owned text = ZRStringCreateWithBytes(withZero.data(), withZero.size());
    EXPECT_EQ(std::string_view(ZRStringGetUTF8(text), ZRStringGetUTF8Length(text)), withZero);
    EXPECT_NE(Owned(ZRStringCreateWithBytes(nullptr, 0)), nullptr);
    for (const char* bytes : {"\xc3", "\xed\xa0\x80", "\xc0\xaf", "\xf4\x90\x80\x80"})
        EXPECT_EQ(ZRStringCreateWithUTF8(bytes), nullptr) << bytes;
}

TEST(PlainValues, NestOnlySoDeepThatTheirEndIsSafe)
{
    Owned nested = array(integer(1));
    int levels = 1;
    for (Owned next; (next = array(nested)); nested = std::move(next))
        ASSERT_LT(++levels, 2000);
    EXPECT_GT(levels, 100);
}

// ---- in the roster

class PlainProperties : public testing::Test {
protected:
    static void SetUpTestSuite() { ZRRoster::setShouldCreateEmptyDatabase(true); }
    const ZRRosterRef roster = ZRGetSharedRoster();
    const Owned person = ZRPersonCreate();
};

TEST_F(PlainProperties, HoldWhatTheirTypeSaysAndNothingElse)
{
    const struct {
        const char* name;
        ZRPropertyType type;
        Owned value;
    } cases[] = {
        {"org.example.string", kZRPropertyTypeString, Owned("text")},
        {"org.example.integer", kZRPropertyTypeInteger, integer(-5)},
        {"org.example.real", kZRPropertyTypeReal, ZRNumberCreateWithReal(0.25)},
        {"org.example.date", kZRPropertyTypeDate, ZRDateCreateWithSecondsSince1970(43200)},
        {"org.example.data", kZRPropertyTypeData, ZRDataCreate("\0\1", 2)},
        {"org.example.array", kZRPropertyTypeArray, array(integer(3))},
        {"org.example.dictionary", kZRPropertyTypeDictionary, dictionary("key", integer(4))},
    };
    for (const auto& each : cases) {
        const Owned declared = dictionary(each.name, integer(each.type));
        ASSERT_EQ(ZRAddPropertiesAndTypes(roster, kZRPersonRecordType, declared), 1) << each.name;
        EXPECT_EQ(ZRTypeOfProperty(roster, kZRPersonRecordType, each.name), each.type);
        for (const auto& other : cases) {
            const bool isOfNumbers = ZRGetTypeID(each.value) == kZRTypeNumber;
            if (ZRGetTypeID(other.value) != ZRGetTypeID(each.value))
                EXPECT_FALSE(ZRRecordSetValue(person, each.name, other.value)) << each.name << other.name;
            else
                EXPECT_TRUE(isOfNumbers || &other == &each);
        }
        EXPECT_TRUE(ZRRecordSetValue(person, each.name, each.value)) << each.name;
    }
    EXPECT_TRUE(ZRHasUnsavedChanges(roster));
    ASSERT_TRUE(ZRSave(roster));
    EXPECT_FALSE(ZRHasUnsavedChanges(roster));
    for (const auto& each : cases)
        EXPECT_TRUE(ZREqual(Owned(ZRRecordCopyValue(person, each.name)), each.value)) << each.name;
}

// A refusal comes before the rows that were there are gone.
TEST_F(PlainProperties, KeepTheirEntriesWhenOthersCannotBeStored)
{
    const auto entries = [](ZRTypeRef first, ZRTypeRef second) {
        Owned made = ZRMultiValueCreateMutable();
        for (const auto value : {first, second})
            ZRMultiValueAdd(made, value, kZRHomeLabel, nullptr);
        return made;
    };
    const Owned good = dictionary(kZRAddressCityKey, Owned("Ely")), number = integer(1), text("text");
    const Owned kept = entries(good, good);
    ASSERT_TRUE(ZRRecordSetValue(person, kZRAddressProperty, kept));
    const struct {
        const char* what;
        Owned value;
    } cases[] = {
        {"a city that is a number", entries(good, dictionary(kZRAddressCityKey, number))},
        {"a person in an address", entries(good, dictionary("company", person))},
        {"entries of several types", entries(good, text)},
        {"no multi-value", Owned("1 Mill Lane")},
    };
    for (const auto& each : cases) {
        EXPECT_FALSE(ZRRecordSetValue(person, kZRAddressProperty, each.value)) << each.what;
        EXPECT_TRUE(ZREqual(Owned(ZRRecordCopyValue(person, kZRAddressProperty)), kept)) << each.what;
    }
    EXPECT_TRUE(ZRRecordSetValue(person, kZRAddressProperty, Owned(ZRMultiValueCreate())));
    EXPECT_EQ(Owned(ZRRecordCopyValue(person, kZRAddressProperty)), nullptr);
}

// Old callers put the code itself where a number belongs.
TEST_F(PlainProperties, AreDeclaredByBareTypeCodesWithAWord)
{
    const platform::LogCapture log;
    const auto bare = reinterpret_cast<ZRTypeRef>(std::uintptr_t{kZRPropertyTypeDate});
    const Owned declared = dictionary("org.example.bare", bare);
    EXPECT_EQ(ZRAddPropertiesAndTypes(roster, kZRPersonRecordType, declared), 1);
    EXPECT_EQ(ZRTypeOfProperty(roster, kZRPersonRecordType, "org.example.bare"), kZRPropertyTypeDate);
    EXPECT_TRUE(
        log.contains("Bare ZRPropertyType received (not wrapped in number).  Assuming value of '4' and "
                     "continuing."));
}

TEST_F(PlainProperties, ReadAsTheUserReadsThem)
{
    const struct {
        const char* key;
        const char* expected;
    } cases[] = {{kZRWorkLabel, "work"}, {kZRFirstNameProperty, "First Name"}, {"my own", "my own"}};
    for (const auto& each : cases)
        EXPECT_EQ(Owned(ZRCopyLocalizedPropertyOrLabel(each.key)).text(), each.expected);
    const Owned city("Ely"), code("gb");
    const char* const keys[] = {kZRAddressCityKey, kZRAddressCountryCodeKey};
    const ZRTypeRef values[] = {city, code};
    const Owned address = ZRDictionaryCreate(keys, values, 2);
    EXPECT_NE(
        Owned(ZRCreateFormattedAddressFromDictionary(roster, address)).text().find("Ely"), std::string::npos);
    EXPECT_EQ(Owned(ZRCopyDefaultCountryCode(roster)).text(), "us");
}

TEST_F(PlainProperties, OfARemovedPersonAreGoneUntilOneIsSet)
{
    const Owned name("Ada"), picture = ZRDataCreate("GIF89a", 6), id = ZRRecordCopyUniqueId(person);
    ASSERT_TRUE(
        ZRRecordSetValue(person, kZRFirstNameProperty, name) && ZRPersonSetImageData(person, picture));
    ASSERT_TRUE(ZRRemoveRecord(roster, person));
    EXPECT_EQ(ZRRecordCopyValue(person, kZRFirstNameProperty), nullptr);
    EXPECT_EQ(ZRPersonCopyImageData(person), nullptr);
    EXPECT_FALSE(ZRPersonSetImageData(person, picture));
    EXPECT_TRUE(ZRRecordSetValue(person, kZRNicknameProperty, name));
    EXPECT_EQ(Owned(ZRCopyRecordForUniqueId(roster, id.text().c_str())), person);
    EXPECT_EQ(ZRRecordCopyValue(person, kZRFirstNameProperty), nullptr);
}

// The handle that Get answered is nobody's to release, so it must not go when the roster needs it no more.
TEST_F(PlainProperties, OfMeCanBeReadWhenSomebodyElseIsMe)
{
    ZRSetMe(roster, Owned(ZRPersonCreate()));
    const auto former = ZRGetMe(roster);
    ASSERT_TRUE(former && ZRSave(roster));
    ZRSetMe(roster, person);
    EXPECT_EQ(ZRGetMe(roster), person);
    ASSERT_TRUE(ZRSave(roster));
    EXPECT_FALSE(Owned(ZRRecordCopyUniqueId(former)).text().empty());
}

// ---- cards

TEST_F(PlainProperties, ComeFromEveryCardOfAFileWithAReport)
{
    constexpr std::string_view file =
        "BEGIN:VCARD\nVERSION:2.1\nN;CHARSET=ISO-8859-1:Str\xf6m;Eva\nEND:VCARD\n"
        "BEGIN:VCARD\nVERSION:3.0\nN:Cut;Off\n"
        "BEGIN:VCARD\nVERSION:4.0\nN:Lovelace;Ada\nFN:Ada\nEND:VCARD\n"
        "BEGIN:VCARD\nVERSION:3.0\nN:Gone";
    const Owned data = ZRDataCreate(file.data(), file.size());
    ZRArrayRef reportOut = nullptr;
    const Owned people = ZRCopyPeopleFromVCardData(roster, data, &reportOut);
    const Owned report = reportOut;
    ASSERT_EQ(ZRArrayGetCount(people), 3);
    const char* const lastNames[] = {"Str\u00f6m", "Cut", "Lovelace"};
    for (ZRIndex i = 0; i < 3; ++i)
        EXPECT_EQ(Owned(ZRRecordCopyValue(ZRArrayGetValueAtIndex(people, i), kZRLastNameProperty)).text(),
            lastNames[i]);
    const auto last = ZRArrayGetValueAtIndex(report, ZRArrayGetCount(report) - 1);
    EXPECT_EQ(ZRNumberGetInteger(ZRDictionaryGetValue(last, "card")), 4);
    EXPECT_EQ(ZRNumberGetInteger(ZRDictionaryGetValue(last, "line")), 13);
    EXPECT_STREQ(ZRStringGetUTF8(ZRDictionaryGetValue(last, "done")), "refused");
    EXPECT_STRNE(ZRStringGetUTF8(ZRDictionaryGetValue(last, "what")), "");

    const Owned card = ZRPersonCopyVCardRepresentation(ZRArrayGetValueAtIndex(people, 0));
    const Owned again = ZRPersonCreateWithVCardRepresentation(card);
    EXPECT_EQ(Owned(ZRRecordCopyValue(again, kZRFirstNameProperty)).text(), "Eva");
}

} // namespace
