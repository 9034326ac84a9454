// What is in a roster, and whether it is sound.
#include "core/ZRConstants.h"
#include "core/ZRPerson.h"
#include "core/ZRUniqueId.h"
#include "objectstore/PersistentStore.h"
#include "objectstore/StoreContext.h"
#include "platform/files/Files.h"
#include "store/ZRModelHooks.h"
#include "store/ZRModelSlots.h"
#include "store/ZROSRecord.h"
#include "store/ZRRosterState.h"

#include <fmt/format.h>

#include <filesystem>
#include <unordered_set>

using objectstore::ObjectList;
using objectstore::StoreFetch;
using platform::Ref;
using platform::Value;
namespace fs = std::filesystem;

namespace {

/// What is counted, in the order in which it is shown.
constexpr std::pair<const char*, std::string_view> countedEntities[] = {
    {"people", zr::kZRObjectStoreContactEntityName}, {"groups", zr::kZRObjectStoreGroupEntityName},
    {"smart groups", zr::kZRObjectStoreSmartGroupEntityName},
    {"e-mail addresses", zr::kZRObjectStoreEmailAddressEntityName},
    {"phone numbers", zr::kZRObjectStorePhoneNumberEntityName},
    {"postal addresses", zr::kZRObjectStorePostalAddressEntityName},
    {"URLs", zr::kZRObjectStoreURLAddressEntityName},
    {"messaging addresses", zr::kZRObjectStoreMessagingAddressEntityName},
    {"dates", zr::kZRObjectStoreDateEntityName}, {"related names", zr::kZRObjectStoreRelatedNameEntityName},
    {"notes", zr::kZRObjectStoreNoteEntityName},
    {"custom properties", zr::kZRObjectStoreCustomPropertyEntityName},
    {"deleted records", zr::kZRObjectStoreDeletedRecordLogEntityName}};

/// Cards are checked so many at a time, with all their values in memory.
constexpr std::size_t kCardsAtOnce = 500;
/// Of one kind of finding so many are named.
constexpr std::size_t kMostNamed = 20;

/// The names of the picture files, as the part of a unique id that they stand for.
std::vector<fs::path> picturesIn(const std::string& directory)
{
    std::vector<fs::path> pictures;
    std::error_code failure;
    for (fs::directory_iterator at(directory, failure), end; !failure && at != end; at.increment(failure))
        if (at->is_regular_file(failure))
            pictures.push_back(at->path());
    return pictures;
}

std::int64_t sizeOf(const std::string& path)
{
    std::error_code failure;
    const auto size = fs::file_size(path, failure);
    return failure ? 0 : static_cast<std::int64_t>(size);
}

void addNamed(std::vector<std::string>& findings, const std::vector<std::string>& named)
{
    findings.insert(findings.end(), named.begin(),
        named.begin() + static_cast<std::ptrdiff_t>(std::min(named.size(), kMostNamed)));
    if (named.size() > kMostNamed)
        findings.push_back(fmt::format("and {} more of the kind", named.size() - kMostNamed));
}

/// Goes through the cards of a roster, whose lock is held.
class CardChecker {
public:
    explicit CardChecker(ZRManagedObjectContext& context) : _context(context) { }

    platform::Result<void> check()
    {
        StoreFetch fetch(contactSlots().entity);
        fetch.limit = kCardsAtOnce;
        for (;; fetch.offset += kCardsAtOnce) {
            const auto cards = _context.runFetch(fetch);
            if (!cards)
                return cards.error();
            if (cards->empty())
                return {};
            checkCards(*cards);
        }
    }

    std::vector<std::string> wrongTexts;
    std::vector<std::string> wrongIds;
    /// The UUIDs of the cards, upper case.
    std::unordered_set<std::string> uuids;

private:
    void checkCards(const ObjectList& cards)
    {
        _context.preheatContacts(cards, ZROSContact::stringForIndexingKeypaths());
        for (const auto& card : cards) {
            auto& contact = static_cast<ZROSContact&>(*card);
            const std::string uniqueId(contact.value(contactSlots().uniqueId).asText());
            if (uniqueId.size() <= kZRUniqueIdTextLength
                || !uuids.insert(uniqueId.substr(0, kZRUniqueIdTextLength)).second)
                wrongIds.push_back(fmt::format("the id '{}' is not that of one card", uniqueId));
            checkText(contact, uniqueId);
        }
    }

    void checkText(ZROSContact& contact, const std::string& uniqueId)
    {
        const auto index = contact.related(contactSlots().contactIndex);
        if (!index) {
            wrongTexts.push_back(fmt::format("the card {} has no text to search in", uniqueId));
            return;
        }
        const Value kept = index->primitiveValue(contactIndexSlots().stringForIndexing);
        if (kept != hooks::stringForIndexing(*index))
            wrongTexts.push_back(
                fmt::format("the text to search in of the card {} is not what it says", uniqueId));
    }

    ZRManagedObjectContext& _context;
};

} // namespace

std::vector<std::pair<std::string, std::int64_t>> ZRRoster::statistics()
{
    return locked(*this, ZRAccess::read, [&]() ZR_NTS {
        std::vector<std::pair<std::string, std::int64_t>> counts;
        const auto context = managedObjectContext();
        for (const auto& [name, entity] : countedEntities) {
            StoreFetch fetch(*rosterModel()->entity(entity));
            fetch.includesSubentities = false;
            const auto count = context->countFetch(fetch);
            counts.emplace_back(name, count ? static_cast<std::int64_t>(*count) : 0);
        }
        counts.emplace_back("pictures", std::ssize(picturesIn(rosterImagesDirectory())));
        const std::string file = rosterObjectStoreDatabaseFile();
        counts.emplace_back("bytes in the store", sizeOf(file) + sizeOf(file + "-wal"));
        return counts;
    });
}

ZRRoster::CheckReport ZRRoster::check()
{
    return locked(*this, ZRAccess::read, [&]() ZR_NTS {
        CheckReport report;
        auto* const coordinator = storeCoordinator();
        if (!coordinator)
            return CheckReport{{"the store cannot be opened"}, {}};
        for (auto* store : coordinator->stores()) {
            const auto problems = coordinator->checkStore(store);
            if (problems)
                addNamed(report.problems, *problems);
            else
                report.problems.push_back(problems.error().text);
        }
        // Rows of a damaged file say nothing.
        if (!report.problems.empty())
            return report;
        CardChecker cards(*managedObjectContext());
        if (const auto checked = cards.check(); !checked)
            report.problems.push_back(checked.error().text);
        addNamed(report.problems, cards.wrongIds);
        addNamed(report.problems, cards.wrongTexts);
        std::vector<std::string> orphans;
        for (const auto& picture : picturesIn(rosterImagesDirectory()))
            if (!cards.uuids.contains(picture.stem().string()))
                orphans.push_back(fmt::format("the picture {} belongs to no card", picture.string()));
        addNamed(report.remarks, orphans);
        return report;
    });
}
