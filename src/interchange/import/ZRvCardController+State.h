// What an import holds while it works, for the files that implement it.
#pragma once

#include "interchange/import/CardFeed.h"
#include "interchange/import/ZRvCardController.h"
#include "interchange/vcard/RosterReaderContext.h"
#include "store/ZRRoster.h"

#include <atomic>
#include <optional>

struct ZRvCardController::State {
    const std::string& nameOf(const interchange::CardData& data) const { return sources[data.file].name; }

    platform::Ref<ZRRoster> target;
    platform::Ref<ZRGroup> group;
    Preparation preparation = Preparation::full;
    Outcome outcome = Outcome::saved;

    std::vector<interchange::CardSource> sources;
    std::uint64_t totalBytes = 0;
    /// Where promised files were put; empty without.
    std::string promisedFolder;

    std::atomic<bool> isCancelled = false;
    bool hasImportErrors = false;
    std::optional<interchange::CardFeed> feed;
    /// The second roster on the target's store, and the group in it.
    platform::Ref<ZRRoster> roster;
    platform::Ref<ZRGroup> groupHere;
    std::optional<RosterReaderContext> surroundings;
    /// Read and not yet saved, and the bytes that they were read from.
    ZRRecordList importedCards;
    std::size_t bytesWaiting = 0;
    std::size_t cardsRead = 0;
    ZRvCardImport result;
};
