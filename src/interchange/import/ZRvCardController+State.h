// What an import holds while it works, for the files that implement it.
#pragma once

#include "interchange/import/CardFeed.h"
#include "interchange/import/ImportGroups.h"
#include "interchange/import/ImportPlan.h"
#include "interchange/import/ZRvCardController.h"
#include "interchange/vcard/RosterReaderContext.h"
#include "store/ZRRoster.h"

#include <atomic>
#include <optional>

struct ZRvCardController::State {
    /// A card that was read and waits for its transaction; a refused one only to be told of in its turn.
    struct Waiting {
        interchange::ImportPlan::Card card;
        std::size_t file = 0;
        std::size_t number = 0;
        std::size_t line = 0;
        std::string firstLine = {};
        std::string text = {};
        std::string refusal = {};
        std::string uid = {};
        std::vector<std::string> categories = {};
        std::optional<vcard::prepare::GroupCard> group = {};
    };

    const std::string& nameOf(const interchange::ReadCard& card) const { return sources[card.file].name; }

    /// Takes a card that was read and is not saved out of the roster again, with its picture.
    void drop(ZRPerson& card);

    platform::Ref<ZRRoster> target;
    platform::Ref<ZRGroup> group;
    Preparation preparation = Preparation::full;
    Outcome outcome = Outcome::saved;
    GroupsAsked groupsAsked;
    std::optional<interchange::DuplicateHandling> handling;

    std::vector<interchange::CardSource> sources;
    std::uint64_t totalBytes = 0;
    /// Where promised files were put; empty without.
    std::string promisedFolder;

    std::atomic<bool> isCancelled = false;
    bool hasImportErrors = false;
    /// The second roster on the target's store, and the group in it.
    platform::Ref<ZRRoster> roster;
    platform::Ref<ZRGroup> groupHere;
    std::optional<RosterReaderContext> surroundings;
    std::optional<interchange::CardFeed> feed;
    /// Absent where nobody can be there already.
    std::optional<interchange::ImportPlan> plan;
    /// Absent where nothing is written.
    std::optional<interchange::ImportGroups> groups;
    /// Updates the people of one transaction.
    platform::Ref<ZRNewMerger> merger;
    /// Whether the cards of the import before have lost their mark.
    bool hasBegunLastImport = false;

    /// Read and not yet saved; how many of them are people, and the bytes that they were read from.
    std::vector<Waiting> waiting;
    std::size_t peopleWaiting = 0;
    std::size_t bytesWaiting = 0;
    std::size_t cardsRead = 0;
    /// What the transaction under way will have done.
    ZRvCardImport underWay;
    ZRvCardImport result;
};
