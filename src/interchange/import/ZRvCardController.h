// Imports files of vCards into a roster, and suggests how exported ones are called.
#pragma once

#include "core/ZRExport.h"
#include "core/ZRGroup.h"
#include "core/ZRRecord.h"
#include "interchange/vcard/prepare/Report.h"
#include "platform/value/Error.h"

#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

class ZRPerson;

namespace vcard::prepare {
struct GroupCard;
} // namespace vcard::prepare

namespace interchange {
struct ReadCard;
enum class DuplicateHandling;
struct ImportDecision;
} // namespace interchange

/// Why a card, or a whole file, was not imported.
struct ZRvCardRefusal {
    std::string file;
    /// Its number in the file and the number of its first line, from 1; 0 for the file itself.
    std::size_t card = 0;
    std::size_t line = 0;
    /// A line of it that tells people which card is meant.
    std::string firstLine;
    std::string reason;
};

/// What came of an import.
struct ZRvCardImport {
    /// New cards that are on the disk now.
    std::size_t added = 0;
    /// People of the roster into whom a card flowed, or whose place one took.
    std::size_t updated = 0;
    /// Cards that bring nothing new.
    std::size_t same = 0;
    /// Cards passed over since somebody of their name is there, who is to be kept.
    std::size_t kept = 0;
    /// Cards that are groups, which were made or joined.
    std::size_t groups = 0;
    /// Files left out: they are this roster's own cached cards.
    std::size_t skipped = 0;
    /// Cards that could not be read. The first `kMostRefusals` are told in `refusals`.
    std::size_t refused = 0;
    std::vector<ZRvCardRefusal> refusals;
    /// What was done to the cards of each file so that they could be read.
    std::vector<vcard::prepare::Report> reports;
    /// Why the import ended before its end; its domain is empty when it did not.
    platform::Error failure;

    static constexpr std::size_t kMostRefusals = 10'000;
};

/// The driver of one import of vCards.
///
/// Each card becomes one data, which a parser of its own reads, so that a damaged card harms no other. People
/// are made in a second roster on the target's store and saved there: up to 2,000 cards in one transaction,
/// more in several, so that memory stays bounded. The pictures of a transaction are on the disk before it is.
///
/// Who is in the roster already is updated, unless another way was set; `interchange/import/ImportPlan.h`
/// says how it is decided about each card. What a transaction changes, and the cards that it adds, are saved
/// together. Cards that came or were changed carry the mark of the last import, which those of the one before
/// lose.
///
/// It has no panel: callbacks tell how the work goes on.
///
/// Ownership: shares ownership of the target; borrows the bytes it is given while it works.
/// Threads:   one, which works; `cancel` from any. Callbacks come on the working thread, without locks. Files
///            are read ahead, and their cards parsed, on a second thread.
/// Errors:    cards that cannot be read are refused and named. An unreadable file or a failed save ends the
///            import; what was saved before stays.
class ZR_EXPORT ZRvCardController {
public:
    /// Whether what the world writes is mended before the parser sees it.
    enum class Preparation { full, none };
    /// Whether people are saved, or only read and forgotten.
    enum class Outcome { saved, readOnly };

    /// An import into `target`, or the default source when absent.
    explicit ZRvCardController(platform::Ref<ZRRoster> target = nullptr);
    ~ZRvCardController();
    ZRvCardController(const ZRvCardController&) = delete;
    ZRvCardController& operator=(const ZRvCardController&) = delete;

    void setPreparation(Preparation preparation);
    /// `readOnly` writes nothing. Without a target it opens no store either, and all cards are new.
    void setOutcome(Outcome outcome);
    /// What is done about people who are there already. Until it is set: they are updated, or, where the
    /// preference "ZRDontAutoMerge" is true, both cards stay.
    void setDuplicateHandling(interchange::DuplicateHandling handling);

    /// What cards say of groups goes to notes until it is asked for: cards of `KIND:group` become groups, and
    /// CATEGORIES are names of groups that the person is in. A group of that name that is there is joined.
    struct GroupsAsked {
        bool cards = false;
        bool categories = false;
    };
    void setGroupsAsked(const GroupsAsked& asked);

    // ---- callbacks, all of which may be empty

    std::function<void(std::uint64_t totalBytes)> importBegan;
    /// Every tenth card.
    std::function<void(std::uint64_t bytesDone)> importContinued;
    std::function<void()> importFinished;
    /// Each card, in order, once it is read. `person` is null when it was refused; it is not saved yet.
    struct CardRead {
        const std::string& file;
        /// The number of the card in its file.
        std::size_t number;
        ZRPerson* person;
        const std::string& refusal;
    };
    std::function<void(const CardRead&)> cardWasRead;
    /// Each card, in order, once it is decided what becomes of it, which is when its transaction is full.
    /// With this callback decisions tell what changes; that takes longer.
    struct CardDecided {
        const std::string& file;
        /// The number of the card in its file, and of its first line.
        std::size_t number;
        std::size_t line;
        /// A line that tells people which card is meant, and the card as prepared.
        const std::string& firstLine;
        const std::string& text;
        /// Null when it was refused, for that reason, or is a group.
        ZRPerson* person;
        const std::string& refusal;
        const interchange::ImportDecision& decision;
        /// Null but for a group.
        const vcard::prepare::GroupCard* group;
    };
    std::function<void(const CardDecided&)> cardWasDecided;

    // ---- importing

    /// Imports one data; without a group into the roster alone. True when everything was imported.
    bool importVCardData(std::string_view data, const platform::Ref<ZRGroup>& group = nullptr);
    bool importFile(const std::string& path);
    /// Imports files, and the vCard files in folders; "-" is standard input. Files that are the target's own
    /// cached cards are read and left out.
    bool importVCardFiles(
        const std::vector<std::string>& paths, const platform::Ref<ZRGroup>& group = nullptr);
    /// Lets `drop` write files into a private temporary folder and answer their paths, and imports those.
    bool importPromisedFiles(const std::function<std::vector<std::string>(const std::string& folder)>& drop,
        const platform::Ref<ZRGroup>& group = nullptr);
    /// Removes what `importPromisedFiles` left.
    void cleanUp();
    /// The import stops before its next card; cards that were read and not saved are dropped.
    void cancel();

    const ZRvCardImport& result() const;
    /// Whether a card or a file was refused.
    bool hasImportErrors() const;
    /// Whether the work is long enough to show how it goes on: over 200 KB, or more than 50 files.
    bool showsImportProgress() const;

    /// The files among `paths`, with the files "*.vcf" and "*.vcard" in folders, by name.
    static std::vector<std::string> allImportableFilesFromPaths(const std::vector<std::string>& paths);
    /// Whether the first path lies in the target's metadata directory, links resolved.
    bool containsMetaDataCacheCards(const std::vector<std::string>& paths) const;

    // ---- exporting                                          (ZRvCardController+Export.cpp)

    /// The suggested name of a file with these records: the record's own, or "vCards".
    static std::string exportRecords(const ZRRecordList& records);
    /// Adds a person, or the people of a group and of its subgroups, to `people`, each once.
    static void addRecord(const platform::Ref<ZRRecord>& record, ZRRecordList& people);
    /// In the format that the preference "kZRUse21vCardFormat" chooses. Empty without a writer.
    static std::string vCardRepresentationOfRecord(const platform::Ref<ZRRecord>& record);
    static std::string vCardRepresentationOfRecords(const ZRRecordList& records);
    static std::string _vCard21RepresentationOfRecords(const ZRRecordList& records);
    static std::string _vCard30RepresentationOfRecords(const ZRRecordList& records);

private:
    struct State;

    /// Works through what the state names: each card, its person, the saves.
    bool importVCards();
    /// The next card, or null at the end, at an unreadable file, at a failed save and once cancelled.
    interchange::ReadCard* nextCard();
    bool openRosters();
    bool findGroup();
    void importCard(interchange::ReadCard& card);
    /// Keeps the card until its transaction is full.
    void keep(interchange::ReadCard& card, const platform::Ref<ZRPerson>& person);
    void refuse(ZRvCardRefusal refusal);
    void nameUnread();
    /// Whether cards follow those that are saved, or what is known at the end alone is saved, too.
    enum class Rest { follows, none };
    bool commit(Rest rest = Rest::follows);
    void makeGroups();
    void forgetPeople();
    /// What becomes of the cards that wait, and doing it.                 (ZRvCardController+Duplicates.cpp)
    void makePlan();
    void settleCards();
    platform::Ref<ZRPerson> carryOut(
        const interchange::ImportDecision& decision, const platform::Ref<ZRPerson>& card);
    void beginLastImport();
    bool fail(platform::Error error);

    std::unique_ptr<State> _state;
};
