// Pictures: where their files lie, who may read them, and when they are written.
#include "store/RosterWorld.h"

#include "core/ZRUniqueId.h"
#include "platform/files/Files.h"

#include <gmock/gmock.h>

#include <cerrno>

namespace test {

namespace {

const Value picture = Value::data(std::string("\xff\xd8 picture \0 bytes", 17));

class Pictures : public testing::Test {
protected:
    Pictures() { roster->setRosterImagesDirectory(images.string()); }
    ~Pictures() override { platform::setFileFault({}); }

    fs::path fileOf(const Ref<ZRPerson>& card) const
    {
        return images / card->uniqueId().substr(0, kZRUniqueIdTextLength);
    }

    const Home home;
    const fs::path images = home.path() / "deep/Images";
    const Ref<ZRRoster> roster = ZRRoster::emptyMemoryBackedRoster();
    const Ref<ZRPerson> one = person(roster, {{kZRFirstNameProperty, "Ana"}});
};

} // namespace

TEST_F(Pictures, ArePrivateFilesNamedAfterTheCard)
{
    ASSERT_TRUE(roster->save());
    EXPECT_TRUE(one->imageData().isAbsent());
    ASSERT_TRUE(one->setImageData(picture));
    EXPECT_EQ(one->pathForUIDTaggedImage(), fileOf(one));
    EXPECT_EQ(one->imageData(), picture);
    ASSERT_TRUE(one->setLargeImageData(Value::data("large")));
    EXPECT_EQ(one->largeImagePath(), fileOf(one).string() + ".jpeg");
    EXPECT_EQ(one->largeImageData(), Value::data("large"));
    EXPECT_EQ(fs::status(images).permissions(), fs::perms::owner_all);
    for (const auto& file : {fileOf(one), fs::path(*one->largeImagePath())})
        EXPECT_EQ(fs::status(file).permissions(), fs::perms::owner_read | fs::perms::owner_write);

    ASSERT_TRUE(one->setImageData(Value()));
    EXPECT_TRUE(one->imageData().isAbsent());
    EXPECT_FALSE(fs::exists(fileOf(one)));
}

TEST_F(Pictures, GoWithTheirCard)
{
    one->setImageData(picture);
    ASSERT_TRUE(roster->save());
    roster->removeRecord(one);
    EXPECT_FALSE(fs::exists(fileOf(one)));
}

TEST_F(Pictures, ThatWaitForASaveGoWithTheirCardToo)
{
    locked(*roster, ZRAccess::write, [&]() ZR_NTS { roster->nts_SetKeepsPictures(true); });
    for (const std::string_view kind : {kZRImageProperty, kZRLargeImageProperty})
        one->setImageData(picture, kind);
    roster->removeRecord(one);
    person(roster, {{kZRFirstNameProperty, "Bo"}});
    ASSERT_TRUE(roster->save());
    EXPECT_TRUE(!fs::exists(images) || fs::is_empty(images));
}

TEST_F(Pictures, MarkTheCardAsModified)
{
    ASSERT_TRUE(roster->save());
    one->zrosSetValue(Value(), "modificationDate");
    one->setImageData(picture);
    EXPECT_TRUE(one->zrosValueForKey("modificationDate").isDate());
}

TEST_F(Pictures, OfAnImportWaitForTheSave)
{
    locked(*roster, ZRAccess::write, [&]() ZR_NTS { roster->nts_SetKeepsPictures(true); });
    ASSERT_TRUE(one->setImageData(picture));
    EXPECT_FALSE(fs::exists(images));
    EXPECT_EQ(one->imageData(), picture);
    ASSERT_TRUE(roster->save());
    EXPECT_TRUE(fs::exists(fileOf(one)));
    EXPECT_EQ(one->imageData(), picture);
    ASSERT_TRUE(one->setImageData(Value::data("second")));
    EXPECT_EQ(one->imageData(), Value::data("second")) << "a saved card's picture is written at once";
}

// A card whose picture cannot be written is not saved; and of two pictures, the one that was written goes
// again.
TEST_F(Pictures, OfAFailedSaveLeaveNoFile)
{
    locked(*roster, ZRAccess::write, [&]() ZR_NTS { roster->nts_SetKeepsPictures(true); });
    const auto two = person(roster, {{kZRFirstNameProperty, "Bea"}});
    one->setImageData(picture);
    two->setImageData(picture);
    platform::setFileFault([written = 0](platform::FileStep step, const std::string&) mutable {
        return step == platform::FileStep::rename && ++written == 2 ? ENOSPC : 0;
    });
    EXPECT_FALSE(roster->save());
    platform::setFileFault({});
    EXPECT_TRUE(fs::is_empty(images));
    EXPECT_EQ(one->imageData(), picture) << "it still waits";
    EXPECT_TRUE(roster->hasUnsavedChanges());
    ASSERT_TRUE(roster->save());
    EXPECT_TRUE(fs::exists(fileOf(one)) && fs::exists(fileOf(two)));
}

} // namespace test
