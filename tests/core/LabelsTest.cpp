// Which labels properties offer, and how they read in the user's language.
#include "core/ZRConstants.h"
#include "core/ZRLabels.h"
#include "platform/files/ZRUserDefaults.h"

#include <gmock/gmock.h>

namespace {

using platform::Value;
using testing::ElementsAre;
using testing::IsEmpty;

std::vector<std::string> tokens(std::initializer_list<const char*> names)
{
    std::vector<std::string> all;
    for (const char* name : names)
        all.push_back("_$!<" + std::string(name) + ">!$_");
    return all;
}

TEST(Labels, AreOfferedInTheOrderOfTheMenu)
{
    const struct {
        std::string_view property;
        std::vector<std::string> builtIn, initial;
    } cases[] = {
        {zr::kZROtherDatesProperty, tokens({"Anniversary"}), tokens({"Anniversary"})},
        {zr::kZRAddressProperty, tokens({"Home", "Work", "Other"}), tokens({"Work"})},
        {zr::kZRMSNInstantProperty, tokens({"Work", "Home", "Other"}), tokens({"Work"})},
        {zr::kZRICQInstantProperty, tokens({"Work", "Home", "Other"}), tokens({"Work"})},
        {zr::kZRJabberInstantProperty, tokens({"Work", "Home", "Other"}), tokens({"Work"})},
        {zr::kZRYahooInstantProperty, tokens({"Work", "Home", "Other"}), tokens({"Work"})},
        {zr::kZRURLsProperty, tokens({"HomePage", "Home", "Work", "Other"}), tokens({"HomePage"})},
        {zr::kZRRelatedNamesProperty,
            tokens({"Father", "Mother", "Parent", "Brother", "Sister", "Child", "Friend", "Spouse", "Partner",
                "Assistant", "Manager", "Other"}),
            tokens({"Friend", "Assistant"})},
        {zr::kZRFirstNameProperty, {}, {}},
        {zr::kZRCalendarURIsProperty, {}, {}},
        {"", {}, {}},
    };
    for (const auto& c : cases) {
        EXPECT_EQ(builtInLabelsForProperty(c.property), c.builtIn) << c.property;
        EXPECT_EQ(initialFieldsForProperty(c.property), c.initial) << c.property;
    }
    EXPECT_THAT(builtInLabelsForProperty(zr::kZRPhoneProperty),
        ElementsAre("_$!<Work>!$_", "_$!<Home>!$_", "Handset", "_$!<Mobile>!$_", "_$!<Main>!$_",
            "_$!<HomeFAX>!$_", "_$!<WorkFAX>!$_", "_$!<Pager>!$_", "_$!<Other>!$_"));
    for (const std::string_view property : {zr::kZREmailProperty, zr::kZRAIMInstantProperty})
        EXPECT_THAT(builtInLabelsForProperty(property),
            ElementsAre("_$!<Work>!$_", "_$!<Home>!$_", "SkyLocker", "_$!<Other>!$_"));
}

TEST(Labels, AreTheUsersWhereThereIsAtLeastOne)
{
    const struct {
        std::string_view preference, property;
        std::vector<std::string> (*query)(std::string_view);
    } lists[] = {
        {zr::ZRInitialLabelsPhone, zr::kZRPhoneProperty, initialFieldsForProperty},
        {zr::ZRBuildInLabelsRelatedRecords, zr::kZRRelatedNamesProperty, builtInLabelsForProperty},
        {zr::ZRBuiltInLabelsYahooInstant, zr::kZRYahooInstantProperty, builtInLabelsForProperty},
    };
    const auto preferences = ZRUserDefaults::rosterPreferences();
    for (const auto& list : lists) {
        const auto standard = list.query(list.property);
        preferences->setObject(Value::array({"boat", "_$!<Home>!$_"}), list.preference);
        EXPECT_THAT(list.query(list.property), ElementsAre("boat", "_$!<Home>!$_")) << list.preference;
        for (const Value& useless : {Value::array({}), Value("boat"), Value::array({1})}) {
            preferences->setObject(useless, list.preference);
            EXPECT_EQ(list.query(list.property), standard) << useless.description();
        }
        preferences->removeObjectForKey(list.preference);
        EXPECT_EQ(list.query(list.property), standard);
    }
}

TEST(Localization, NamesLabelsPropertiesAndAddressFields)
{
    const struct {
        const char* key;
        const char* text;
    } cases[] = {
        {"_$!<WorkFAX>!$_", "work fax"},
        {"Organization", "Company"},
        {"Street", "Street"},
        {"CountryCode", "Country Code"},
        {"my boat", "my boat"},
        {"_$!<Unheard>!$_", "_$!<Unheard>!$_"},
        {"", ""},
    };
    for (const auto& c : cases)
        EXPECT_EQ(ZRLocalizedPropertyOrLabel(c.key), c.text) << c.key;
    EXPECT_EQ(ZREnglishLocalizedPropertyOrLabel("_$!<Home>!$_"), "home");
    EXPECT_EQ(ZREnglishLocalizedPropertyOrLabel("my boat"), "my boat");
    // Only the first of the two tables is asked for English.
    EXPECT_EQ(ZREnglishLocalizedPropertyOrLabel("CountryCode"), "CountryCode");
}

} // namespace
