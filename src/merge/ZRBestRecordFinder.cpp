// How cards are ranked for a typed text.
#include "merge/ZRBestRecordFinder.h"

#include "core/ZRConstants.h"
#include "core/ZRStringAdditions.h"
#include "core/ZRTokens.h"
#include "platform/files/DesktopIndex.h"
#include "store/ZRRoster.h"

#include <algorithm>
#include <limits>

using platform::Ref;

namespace {

/// When somebody last looked at the card, as the desktop knows from the file that stands for it.
double lastViewed(const ZRRecord& record)
{
    const auto index = platform::DesktopIndex::current();
    const auto used = index
        ? index->lastUsed(record.roster()->rosterMetaDataDirectory() + "/" + record.uniqueId() + ".zrosp")
        : std::nullopt;
    return used ? used->seconds : std::numeric_limits<double>::lowest();
}

} // namespace

ZRBestRecordFinder::ZRBestRecordFinder(ZRRecordList records, std::string_view searchString)
    : _records(std::move(records)), _searchTerms(zrTokens(searchString))
{
    for (auto& term : _searchTerms)
        term = zrCaseNormalizedCopy(term);
}

Ref<ZRRecord> ZRBestRecordFinder::findBestRecordIn(
    ZRRecordList records, std::string_view matchingSearchString, const SortDescriptors& sortDescriptors)
{
    ZRBestRecordFinder finder(std::move(records), matchingSearchString);
    finder._sortDescriptors = sortDescriptors;
    return finder.findBestRecord();
}

Ref<ZRRecord> ZRBestRecordFinder::findBestRecord() const
{
    if (_searchTerms.empty() || _records.empty())
        return nullptr;
    const ZRRecordList best = findRecordsWithHighestScore();
    std::vector<double> viewed;
    for (const auto& record : best)
        viewed.push_back(lastViewed(*record));
    return best[static_cast<std::size_t>(std::ranges::max_element(viewed) - viewed.begin())];
}

ZRRecordList ZRBestRecordFinder::findRecordsWithHighestScore() const
{
    int highest = 0;
    ZRRecordList best;
    for (const auto& record : _records) {
        const int score = scoreForRecord(*record);
        if (score > highest)
            best.clear();
        if (score >= highest)
            best.push_back(record);
        highest = std::max(highest, score);
    }
    return best;
}

int ZRBestRecordFinder::scoreForRecord(const ZRRecord& record) const
{
    const auto* const person = dynamic_cast<const ZRPerson*>(&record);
    const auto score = [&](std::string_view property) {
        return scoreForString(record.valueForProperty(property).asText());
    };
    if (!person)
        return 0;
    return person->_isCompany() ? score(zr::kZROrganizationProperty)
                                : score(zr::kZRFirstNameProperty) + score(zr::kZRLastNameProperty);
}

int ZRBestRecordFinder::scoreForString(std::string_view text) const
{
    const std::string folded = zrCaseNormalizedCopy(text);
    return std::ranges::any_of(_searchTerms, [&](const auto& term) { return folded.starts_with(term); }) ? 1
                                                                                                         : 0;
}
