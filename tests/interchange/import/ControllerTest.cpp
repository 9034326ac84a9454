// What an import does with its cards: kept, refused, saved in transactions, or dropped.
#include "interchange/import/ImportWorld.h"

#include "interchange/import/CardFeed.h"
#include "objectstore/StoreContext.h"
#include "platform/files/Files.h"
#include "platform/notify/NotificationCenter.h"
#include "store/ZRManagedObjectContext.h"
#include "support/SQL.h"

#include <fmt/format.h>

#include <algorithm>
#include <cerrno>
#include <functional>

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
    using Preparation = ZRvCardController::Preparation;
    const struct {
        const char* what;
        Preparation preparation;
        std::string behind;
        std::multiset<std::string> families;
        const char* refusal;
    } cases[] = {
        {"an empty card", Preparation::full, "BEGIN:VCARD\r\nVERSION:3.0\r\nEND:VCARD\r\n" + card("Ek"),
            {"Ek", "Lima"}, "card 2, line 5: BEGIN:VCARD"},
        {"without preparation a file ends at its first broken card", Preparation::none,
            "\r\nrubbish\r\n" + card("Ek"), {"Lima"}, "card 2, line 6: rubbish"},
        {"blank lines behind the last card are no card", Preparation::none, "\r\n \r\n", {"Lima"}, ""},
    };
    for (const auto& [what, preparation, behind, expected, refusal] : cases) {
        SCOPED_TRACE(what);
        removePeople();
        const std::string file = write("people.vcf", card("Lima") + behind);
        ZRvCardController import(roster);
        import.setPreparation(preparation);
        EXPECT_EQ(import.importFile(file), *refusal == '\0');
        EXPECT_EQ(import.hasImportErrors(), *refusal != '\0');
        EXPECT_EQ(import.result().added, expected.size());
        EXPECT_EQ(families(), expected);
        std::string refusals;
        for (const auto& refused : import.result().refusals) {
            EXPECT_EQ(refused.file, file);
            EXPECT_FALSE(refused.reason.empty());
            refusals += fmt::format("card {}, line {}: {}", refused.card, refused.line, refused.firstLine);
        }
        EXPECT_EQ(refusals, refusal);
    }
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

// The parser has set the picture by the time that it finds the card unfinished.
// Each of its ten transactions leaves a piece.
TEST_F(ImportTest, LeavesTheTextIndexOfALargeNewRosterInOnePiece)
{
    ZRvCardController import(roster);
    ASSERT_TRUE(import.importFile(write("many.vcf", cards(20000))));
    EXPECT_EQ(test::runSQL(
                  roster->rosterDatabaseFile(), "SELECT count(DISTINCT segid) FROM contact_index_text_idx"),
        "1");
    EXPECT_THAT(roster->check().problems, testing::IsEmpty());
}

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

TEST_F(ImportTest, AnUnreadableFileEndsTheImport)
{
    const std::string first = write("a.vcf", card("Lima")), missing = path("b.vcf"),
                      last = write("c.vcf", card("Ek"));
    ZRvCardController import(roster);
    EXPECT_FALSE(import.importVCardFiles({first, missing, last}));
    EXPECT_THAT(families(), ElementsAre("Lima"));
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
    std::vector<std::uint64_t> told;
    ZRvCardController import(roster);
    const auto tell = [&](std::uint64_t bytes) { told.push_back(bytes); };
    import.importBegan = tell;
    import.importContinued = tell;
    import.importFinished = [&] { tell(data.size());
};
EXPECT_TRUE(import.importVCardData(data));
ASSERT_EQ(told.size(), 5U);
EXPECT_EQ(told.front(), data.size());
EXPECT_EQ(std::adjacent_find(told.begin() + 1, told.end(), std::greater_equal<>()), told.end())
    << "it goes on";
}

TEST_F(ImportTest, ShowsProgressOfLongWorkOnly)
{
    const struct {
        std::size_t files, bytes;
        bool shows;
    } cases[] = {{1, 204'800, false}, {1, 204'801, true}, {50, 10, false}, {51, 10, true}};
    for (const auto& [files, bytes, shows] : cases) {
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
