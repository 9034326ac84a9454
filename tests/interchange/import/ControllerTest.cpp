// What an import does with its cards: kept, refused, saved in transactions, or dropped.
#include "interchange/import/ImportWorld.h"

#include "interchange/import/CardFeed.h"
#include "objectstore/StoreContext.h"
#include "platform/files/Files.h"
#include "platform/notify/NotificationCenter.h"
#include "store/ZRManagedObjectContext.h"

#include <cerrno>

namespace {

using test::ImportTest;
using testing::ElementsAre;
using testing::UnorderedElementsAre;

constexpr char kPhoto[] = "PHOTO;ENCODING=b;TYPE=JPEG:/9j/4AAQSkZJRg==\r\n";

std::size_t filesIn(const std::string& directory)
{
    std::error_code none;
    return static_cast<std::size_t>(std::distance(
        std::filesystem::directory_iterator(directory, none), std::filesystem::directory_iterator()));
}

TEST_F(ImportTest, KeepsTheGoodCardsAndNamesTheRefusedOne)
{
    const std::string file =
        write("people.vcf", card("Lima") + "BEGIN:VCARD\r\nVERSION:3.0\r\nEND:VCARD\r\n" + card("Ek"));
    ZRvCardController import(roster);
    EXPECT_FALSE(import.importFile(file));
    EXPECT_TRUE(import.hasImportErrors());
    EXPECT_EQ(import.result().added, 2U);
    ASSERT_EQ(import.result().refusals.size(), 1U);
    const auto& refusal = import.result().refusals.front();
    EXPECT_EQ(refusal.file, file);
    EXPECT_EQ(refusal.card, 2U);
    EXPECT_EQ(refusal.line, 5U);
    EXPECT_FALSE(refusal.reason.empty());
    EXPECT_THAT(families(), UnorderedElementsAre("Lima", "Ek"));
}

TEST_F(ImportTest, WithoutPreparationAFileEndsAtItsFirstBrokenCard)
{
    const std::string data = card("Lima") + "\r\nrubbish\r\n" + card("Ek");
    ZRvCardController import(roster);
    import.setPreparation(ZRvCardController::Preparation::none);
    EXPECT_FALSE(import.importVCardData(data));
    EXPECT_THAT(families(), UnorderedElementsAre("Lima"));
    ASSERT_EQ(import.result().refusals.size(), 1U);
    EXPECT_EQ(import.result().refusals.front().card, 2U);
    EXPECT_EQ(import.result().refusals.front().firstLine, "rubbish");
}

// Blank lines behind the last card are no card.
TEST_F(ImportTest, WithoutPreparationBlankLinesAtTheEndAreNoError)
{
    ZRvCardController import(roster);
    import.setPreparation(ZRvCardController::Preparation::none);
    EXPECT_TRUE(import.importVCardData(card("Lima") + "\r\n \r\n"));
    EXPECT_THAT(families(), UnorderedElementsAre("Lima"));
}

TEST_F(ImportTest, SavesTwoThousandCardsInATransaction)
{
    std::vector<std::size_t> saves;
    const auto token = platform::NotificationCenter::shared().subscribe(
        objectstore::kStoreContextDidSave, nullptr, [&](const platform::Notification& notice) {
            const auto* changes = notice.userInfo.as<objectstore::StoreChanges>();
            std::size_t people = 0;
            for (const auto& object : changes->inserted)
                people += object->entity().name() == "ZROSContact" ? 1 : 0;
            saves.push_back(people);
        });
    ZRvCardController import(roster);
    EXPECT_TRUE(import.importVCardData(cards(4500)));
    EXPECT_THAT(saves, ElementsAre(2000U, 2000U, 500U));
    EXPECT_EQ(import.result().added, 4500U);
    EXPECT_EQ(roster->countOfRecordsForClass(ZRPerson::recordClassDescription), 4500);
}

TEST_F(ImportTest, APictureIsThereWithItsCard)
{
    ZRvCardController import(roster);
    EXPECT_TRUE(import.importVCardData(card("Lima", kPhoto)));
    const auto people = roster->people();
    ASSERT_EQ(people.size(), 1U);
    EXPECT_EQ(static_cast<ZRPerson&>(*people.front()).imageData().asBytes(),
        std::string_view("\xff\xd8\xff\xe0\0\x10JFIF", 10));
}

// The parser has set the picture by the time that it finds the card unfinished.
TEST_F(ImportTest, ARefusedCardLeavesNoPicture)
{
    ZRvCardController import(roster);
    import.setPreparation(ZRvCardController::Preparation::none);
    const std::string open = card("Ek", kPhoto);
    EXPECT_FALSE(import.importVCardData(card("Lima") + open.substr(0, open.find("END"))));
    EXPECT_THAT(families(), UnorderedElementsAre("Lima"));
    EXPECT_EQ(filesIn(roster->rosterImagesDirectory()), 0U);
}

TEST_F(ImportTest, AFailedSaveEndsTheImportAndLeavesWhatWasSavedBefore)
{
    const std::string file = write("many.vcf", cards(2000) + card("Late", kPhoto) + cards(2500));
    platform::setFileFault([&](platform::FileStep step, const std::string& at) {
        return step == platform::FileStep::write && at.find("/Images/") != std::string::npos ? ENOSPC : 0;
    });
    ZRvCardController import(roster);
    const bool imported = import.importFile(file);
    platform::setFileFault({});
    EXPECT_FALSE(imported);
    EXPECT_FALSE(import.result().failure.domain.empty());
    EXPECT_EQ(import.result().added, 2000U);
    EXPECT_EQ(roster->countOfRecordsForClass(ZRPerson::recordClassDescription), 2000);
    EXPECT_EQ(filesIn(roster->rosterImagesDirectory()), 0U);
    EXPECT_THAT(roster->check().problems, testing::IsEmpty());
}

TEST_F(ImportTest, ACancelledImportDropsWhatIsNotSaved)
{
    ZRvCardController import(roster);
    import.cardWasRead = [&](const auto& card) { if (card.number == 5) import.cancel();
};
EXPECT_FALSE(import.importVCardData(cards(3000)));
EXPECT_EQ(import.result().added, 0U);
EXPECT_THAT(families(), testing::IsEmpty());
} // namespace

TEST_F(ImportTest, ReadingOnlyTellsTheCardsAndKeepsNone)
{
    std::vector<std::string> names;
    ZRvCardController import(roster);
    import.setOutcome(ZRvCardController::Outcome::readOnly);
    import.cardWasRead = [&](const auto& card) { names.push_back(card.person->compositeName());
};
EXPECT_TRUE(import.importVCardData(card("Lima") + card("Ek", kPhoto)));
EXPECT_THAT(names, ElementsAre("Ana Lima", "Ana Ek"));
EXPECT_EQ(import.result().added, 2U);
EXPECT_THAT(families(), testing::IsEmpty());
}

TEST_F(ImportTest, PutsPeopleIntoAGroup)
{
    const auto group = ZRGroup::initWithRoster(roster);
    group->setValue(platform::Value("Friends"), kZRGroupNameProperty);
    ASSERT_TRUE(roster->save());
    ZRvCardController import(roster);
    EXPECT_TRUE(import.importVCardData(cards(3), group));
    const auto other = roster->parallelUniverseRoster();
    const auto again = platform::refCast<ZRGroup>(other->recordForUniqueId(group->uniqueId()));
    ASSERT_TRUE(again);
    EXPECT_EQ(again->members().size(), 3U);
}

TEST_F(ImportTest, AnUnreadableFileEndsTheImport)
{
    const std::string first = write("a.vcf", card("Lima")), missing = path("b.vcf"),
                      last = write("c.vcf", card("Ek"));
    ZRvCardController import(roster);
    EXPECT_FALSE(import.importVCardFiles({first, missing, last}));
    EXPECT_THAT(families(), UnorderedElementsAre("Lima"));
    ASSERT_EQ(import.result().refusals.size(), 2U);
    EXPECT_EQ(import.result().refusals[0].file, missing);
    EXPECT_EQ(import.result().refusals[1].file, last);
}

TEST_F(ImportTest, WidensFoldersToTheCardFilesInThem)
{
    const std::string a = write("in/a.vcf", ""), b = write("in/deep/B.VCF", ""), text = write("in/c.txt", "");
    EXPECT_THAT(ZRvCardController::allImportableFilesFromPaths({path("in"), text}), ElementsAre(a, b, text));
}

TEST_F(ImportTest, LeavesOutTheRostersOwnCachedCards)
{
    const std::string cached = write("roster/Metadata/x.vcf", card("Lima"));
    std::filesystem::create_directory_symlink(path("roster"), path("link"));
    for (const auto& file : {cached, path("link/Metadata/x.vcf")}) {
        ZRvCardController import(roster);
        EXPECT_TRUE(import.importVCardFiles({file})) << file;
        EXPECT_EQ(import.result().skipped, 1U);
    }
    ZRvCardController import(roster);
    EXPECT_FALSE(import.containsMetaDataCacheCards({write("roster/Metadata2/x.vcf", "")}));
    EXPECT_THAT(families(), testing::IsEmpty());
}

TEST_F(ImportTest, TellsHowItGoesOnAtEveryTenthCard)
{
    const std::string data = cards(35);
    std::uint64_t total = 0;
    std::vector<std::uint64_t> steps;
    int finished = 0;
    ZRvCardController import(roster);
    import.importBegan = [&](std::uint64_t bytes) { total = bytes;
};
import.importContinued = [&](std::uint64_t bytes) { steps.push_back(bytes);
}
;
import.importFinished = [&] { ++finished;
}
;
EXPECT_TRUE(import.importVCardData(data));
EXPECT_EQ(total, data.size());
ASSERT_EQ(steps.size(), 3U);
EXPECT_LT(steps[0], steps[1]);
EXPECT_LT(steps[1], steps[2]);
EXPECT_LE(steps[2], total);
EXPECT_EQ(finished, 1);
}

struct Length {
    std::size_t files;
    std::size_t bytes;
    bool shows;
};

TEST_F(ImportTest, ShowsProgressOfLongWorkOnly)
{
    for (const auto& [files, bytes, shows] :
        {Length{1, 204'800, false}, {1, 204'801, true}, {50, 10, false}, {51, 10, true}}) {
        std::vector<std::string> paths;
        for (std::size_t i = 0; i < files; ++i)
            paths.push_back(write("f" + std::to_string(i), std::string(bytes, '\n')));
        ZRvCardController import(roster);
        import.importVCardFiles(paths);
        EXPECT_EQ(import.showsImportProgress(), shows) << files << " files of " << bytes;
    }
}

TEST_F(ImportTest, PromisedFilesLandInAPrivateFolderThatGoes)
{
    std::string landed;
    {
        ZRvCardController import(roster);
        EXPECT_TRUE(import.importPromisedFiles([&](const std::string& place) {
            landed = place;
            std::ofstream(place + "/p.vcf", std::ios::binary) << card("Lima");
            return std::vector<std::string>{place + "/p.vcf"};
        }));
        const auto mode = std::filesystem::status(landed).permissions();
        EXPECT_EQ(mode, std::filesystem::perms::owner_all);
    }
    EXPECT_FALSE(std::filesystem::exists(landed));
    EXPECT_THAT(families(), UnorderedElementsAre("Lima"));
}

TEST_F(ImportTest, SuggestsAFileNameForWhatIsExported)
{
    ZRvCardController import(roster);
    ASSERT_TRUE(import.importVCardData(card("Lima") + card("Ek")));
    const auto group = ZRGroup::initWithRoster(roster);
    group->setValue(platform::Value("Friends"), kZRGroupNameProperty);
    const auto people = roster->sortedPeople(ZRNameOrder::lastName, 0);
    EXPECT_EQ(ZRvCardController::exportRecords({people[1]}), "Ana Lima.vcf");
    EXPECT_EQ(ZRvCardController::exportRecords({group}), "Friends.vcf");
    EXPECT_EQ(ZRvCardController::exportRecords({ZRPerson::initWithRoster(roster)}), "vCard.vcf");
    EXPECT_EQ(ZRvCardController::exportRecords(people), "vCards.vcf");
}

TEST_F(ImportTest, FlattensAGroupToItsPeopleEachOnce)
{
    ZRvCardController import(roster);
    ASSERT_TRUE(import.importVCardData(cards(3)));
    const auto group = ZRGroup::initWithRoster(roster);
    const auto people = roster->people();
    for (const auto& person : people)
        group->addMember(static_cast<ZRPerson&>(*person));
    ZRRecordList flat{people[1]};
    ZRvCardController::addRecord(group, flat);
    ZRvCardController::addRecord(people[0], flat);
    EXPECT_THAT(flat, UnorderedElementsAre(people[0], people[1], people[2]));
}

} // namespace
