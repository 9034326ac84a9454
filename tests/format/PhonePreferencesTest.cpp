// The user chooses a list of templates and edits it.
#include "core/ZRFailure.h"
#include "format/ZRPhoneFormatsPreferencesModule.h"
#include "store/RosterWorld.h"

#include <gmock/gmock.h>

namespace {

using platform::makeRef;
using testing::ElementsAre;

class PhonePreferences : public testing::Test {
protected:
    PhonePreferences() { test::openShared()->setDefaultCountryCode("fr"); }

    platform::Ref<ZRPhoneFormatter> formatter = makeRef<ZRPhoneFormatter>();
    ZRPhoneFormatsPreferencesModule module{formatter};
};

TEST_F(PhonePreferences, ShowsTemplatesByCountingDigits)
{
    EXPECT_EQ(module._sampleForFormat("+1 (###) ###-#### / ##"), "+1 (123) 456-7890 / 12");
    EXPECT_EQ(module._sampleForFormat(""), "");
}

TEST_F(PhonePreferences, TakesAListOfTheMenuOver)
{
    const auto lists = module._allPhoneFormats();
    ASSERT_EQ(lists.size(), 2U);
    formatter->addFormat("###");
    formatter->setEdited(true);
    module.chooseList(1);
    EXPECT_EQ(formatter->formats(), lists[1]);
    EXPECT_FALSE(formatter->edited());
    EXPECT_EQ(module.listChosen(), 1U);
    EXPECT_THROW(module.chooseList(2), ZRInvalidArgument);
    EXPECT_EQ(formatter->formats(), lists[1]);
}

TEST_F(PhonePreferences, MakesAnEditedListTheUsersOwn)
{
    for (const char* format : {"#", "##"})
        formatter->addFormat(format);
    EXPECT_EQ(module.listChosen(), 0U);
    EXPECT_FALSE(module.editRow(0, "# ext"));
    EXPECT_FALSE(formatter->edited());
    EXPECT_TRUE(module.editRow(0, " +# "));
    EXPECT_THAT(formatter->formats(), ElementsAre("+#", "##"));
    EXPECT_TRUE(formatter->edited());
    EXPECT_EQ(module.listChosen(), std::nullopt);
    EXPECT_EQ(ZRPhoneFormatsPreferencesModule(formatter).listChosen(), std::nullopt);
}

TEST_F(PhonePreferences, AddsARowThatIsFilledOrGoes)
{
    for (const char* format : {"#", "##"})
        formatter->addFormat(format);
    EXPECT_EQ(module.addRow(0), 1);
    EXPECT_THAT(formatter->formats(), ElementsAre("#", "", "##"));
    EXPECT_TRUE(module.editRow(1, "###"));
    EXPECT_EQ(module.addRow({}), 3);
    EXPECT_TRUE(module.editRow(3, "  "));
    EXPECT_THAT(formatter->formats(), ElementsAre("#", "###", "##"));

    EXPECT_FALSE(module.inExpertMode());
    module.chooseCustomList();
    EXPECT_TRUE(module.inExpertMode());
    module.addRow(0);
    EXPECT_THAT(formatter->formats(), ElementsAre("#", "", "###", "##", ""));
    module._deleteEmpty();
    EXPECT_THAT(formatter->formats(), ElementsAre("#", "###", "##"));
}

} // namespace
