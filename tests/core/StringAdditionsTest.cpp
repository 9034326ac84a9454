// What counts as the same number, word or value.
#include "core/ZRStringAdditions.h"

#include "core/ZRTokens.h"

#include <gmock/gmock.h>

namespace {

using platform::NullMarker;
using platform::Value;

TEST(StandardizedPhoneNumber, KeepsWhatIsDialled)
{
    const struct {
        const char* written;
        const char* kept;
    } cases[] = {
        {"", ""}, {"+1 (555) 010-9999", "+15550109999"}, {"555.0100;ext=7", "5550100ext7"},
        {"*21*030/123456#", "*21*030123456#"}, {"0800-FLOWERS,,2", "0800FLOWERS,,2"},
        {"\xC2\xA0"
         "12\xE2\x80\x93"
         "34",
            "1234"}, // no-break space, en dash
        {"\xD9\xA1\xD9\xA2", "\xD9\xA1\xD9\xA2"}, // Arabic-Indic digits are decimal digits
        {"1\xC2\xB2\xE2\x85\xA7", "1"}, // superscript two, Roman eight are none
        {"\xC3\xA9x", "x"}, // only plain letters
        {"1\xFF"
         "2\xC3",
            "12"}, // ill-formed
    };
    for (const auto& c : cases)
        EXPECT_EQ(zrStandardizedPhoneNumber(c.written), c.kept) << c.written;
}

TEST(Tokens, AreWordsWithWhatJoinsThemToAddresses)
{
    const struct {
        const char* typed;
        std::vector<std::string> tokens;
    } cases[] = {
        {"", {}},
        {" ?! ", {}},
        {"@", {}},
        {"Ana Lima", {"Ana", "Lima"}},
        {"ana@mail.example.org, lima", {"ana@mail.example.org", "lima"}},
        {"Smith-Jones", {"Smith-Jones"}},
        {"-a_-b c-", {"-a_-b", "c-"}},
        {"x. y", {"x.", "y"}},
    };
    for (const auto& c : cases)
        EXPECT_EQ(zrTokens(c.typed), c.tokens) << c.typed;
}

TEST(StringByRemovingPunctuation, LeavesLettersBlanksAndSymbols)
{
    const struct {
        const char* written;
        const char* kept;
    } cases[] = {
        {"", ""},
        {"O'Neil, Jr.", "ONeil Jr"},
        {"a@b.c", "abc"},
        {"http://x.y/z_1", "httpxyz1"},
        {"1 + 2 = $3 ^ ~", "1 + 2 = $3 ^ ~"}, // symbols are no punctuation
        {"\xC2\xABja\xC2\xBB\xE3\x80\x82\xC2\xBF", "ja"}, // quotes, ideographic stop, inverted mark
        {"\xC3\xA4\xE2\x82\xAC", "\xC3\xA4\xE2\x82\xAC"},
    };
    for (const auto& c : cases)
        EXPECT_EQ(zrStringByRemovingPunctuation(c.written), c.kept) << c.written;
}

TEST(CaseInsensitiveIsEqual, LooksIntoContainers)
{
    const auto city = [](const char* key, const char* name) { return Value::dictionary({{key, name}}); };
    const struct {
        Value a, b;
        bool same;
    } cases[] = {
        {"Straße", "STRASSE", true},
        {"É", "é", true},
        {"É", "E", false},
        {city("City", "Bonn"), city("City", "BONN"), true},
        {city("City", "Bonn"), city("city", "Bonn"), false},
        {city("City", "Bonn"), Value::dictionary({{"City", "Bonn"}, {"ZIP", "1"}}), false},
        {Value::array({"a", city("k", "V")}), Value::array({"A", city("k", "v")}), true},
        {Value::array({"a", "b"}), Value::array({"b", "a"}), false},
        {Value::array({"a"}), Value::array({"a", "b"}), false},
        {2, 2.0, true},
        {"2", 2, false},
        {Value::data("a"), Value::data("A"), false},
        {{}, {}, true},
        {{}, "", false},
    };
    for (const auto& c : cases) {
        EXPECT_EQ(zrCaseInsensitiveIsEqual(c.a, c.b), c.same) << c.a.description() << c.b.description();
        EXPECT_EQ(zrCaseInsensitiveIsEqual(c.b, c.a), c.same) << c.b.description() << c.a.description();
    }
}

TEST(CaseNormalizedCopy, IsOneForAllSpellingsOfAName)
{
    for (const char* spelling : {"Ångström Élan", "ANGSTROM ELAN", "A\xCC\x8Angström elan"})
        EXPECT_EQ(zrCaseNormalizedCopy(spelling), "angstrom elan") << spelling;
}

TEST(NullMarkers, AreNoValuesOfADictionary)
{
    const Value dictionary = Value::dictionary({{"a", 1}, {"b", NullMarker()}});
    EXPECT_EQ(nonNullValueForKey("a", dictionary), Value(1));
    EXPECT_TRUE(nonNullValueForKey("b", dictionary).isAbsent());
    EXPECT_TRUE(nonNullValueForKey("c", dictionary).isAbsent());
    EXPECT_TRUE(nonNullValueForKey("a", "no dictionary").isAbsent());
    EXPECT_EQ(zrDictionaryByRemovingNulls(dictionary), Value::dictionary({{"a", 1}}));
    EXPECT_EQ(zrDictionaryByRemovingNulls("no dictionary"), Value("no dictionary"));
}

} // namespace
