// Which of several cards somebody most likely means who has typed a text.
#pragma once

#include "core/ZRExport.h"
#include "core/ZRPerson.h"

#include <string>
#include <string_view>
#include <vector>

/// Ranks cards by how many of their names a typed text begins, and then by when they were last looked at.
///
/// Ownership: shares ownership of the records.
/// Threads:   one at a time.
/// Errors:    none; a card that was never looked at counts as looked at in the distant past.
class ZR_EXPORT ZRBestRecordFinder {
public:
    /// The order in which a host lists the records, by property. Kept for it, and of no effect here.
    using SortDescriptors = std::vector<std::string>;

    ZRBestRecordFinder(ZRRecordList records, std::string_view searchString);
    static platform::Ref<ZRRecord> findBestRecordIn(
        ZRRecordList records, std::string_view matchingSearchString, const SortDescriptors& sortDescriptors);

    /// The card with the highest score; of several the one that was looked at last, else the first. So one is
    /// found even where the text begins no name. Absent without records, and without a word in the text.
    platform::Ref<ZRRecord> findBestRecord() const;

private:
    ZRRecordList findRecordsWithHighestScore() const;
    int scoreForRecord(const ZRRecord& record) const;
    int scoreForString(std::string_view text) const;

    ZRRecordList _records;
    /// Folded.
    std::vector<std::string> _searchTerms;
    SortDescriptors _sortDescriptors;
};
