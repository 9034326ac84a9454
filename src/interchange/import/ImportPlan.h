// What becomes of each card of an import, given who is in the roster already.
#pragma once

#include "interchange/import/CardContent.h"
#include "interchange/import/Namesakes.h"
#include "interchange/import/ValueChange.h"

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <unordered_map>
#include <unordered_set>
#include <vector>

namespace interchange {

/// What is done about a card whose person is in the roster already.
enum class DuplicateHandling {
    /// The card flows into the one that is there.
    update,
    /// The card takes its place.
    replace,
    /// The one that is there stays as it is, and the card is passed over.
    keep,
    /// Both stay: nobody is looked for.
    both,
};

/// What becomes of one card.
struct ImportDecision {
    enum class Fate { added, same, updated, replaced, kept };

    Fate fate = Fate::added;
    /// Who is in the roster: said of every fate but `added`. Null where the card that says the same came with
    /// this very import.
    platform::Ref<ZRPerson> existing;
    /// What an update or a replacement changes.
    std::vector<ValueChange> changes;
};

/// Decides between `ZRNewMerger::duplicatesForPeople` and what is done: it only refines the merger's answer,
/// that an incoming card is the card of the same name.
///
/// - A card without a name is nobody's duplicate.
/// - A card that would change nothing of the one that is there is the *same*; where the old one is to be
///   replaced, only one that says exactly as much.
/// - Of several people of one name the one who says the same is meant, then one who shares an e-mail address
///   or a telephone number, then the one whom the merger names.
/// - Cards of one import are different people, as whoever wrote the file kept them apart: each person of the
///   roster is updated or replaced by one card at most, and a further card of the name is added. Only a card
///   that is in the import twice, word for word, is taken once. So a second import of a file changes nothing.
///   (Where those who are there are kept, no card of their name is added.)
///
/// Cards are decided about in their order, a transaction's worth at a time; that a person belongs to a later
/// card, which says the same, is known within the transaction only.
///
/// Ownership: shares ownership of the merger, whose target roster holds those who are there.
/// Threads:   one at a time; takes the global lock.
/// Errors:    a store that cannot be read makes every card new, which is logged.
class ImportPlan {
public:
    ImportPlan(platform::Ref<ZRNewMerger> merger, DuplicateHandling handling);

    struct Card {
        platform::Ref<ZRPerson> person;
        /// Of its text, see `digestOfCard`.
        std::uint64_t digest = 0;
    };
    /// Looks for the people of these cards. What was decided about former ones stays known.
    void lookAt(const std::vector<Card>& cards);
    /// The cards of `lookAt`, in their order, each once. What was decided must be done before the next call.
    /// A card that is to update one which has its note already loses it, so that it is not appended again.
    ImportDecision decide(const Card& card);

private:
    /// One who is in the roster, as decisions leave them.
    struct Candidate {
        platform::Ref<ZRPerson> person;
        /// Absent when it must be read anew.
        std::optional<CardContent> content;
    };
    /// What is known of a card that was looked at.
    struct Look {
        std::string key;
        Namesakes::Found there;
        std::optional<CardContent> content;
        /// The id of the one who says the same.
        std::string same;
    };

    void readCandidates();
    Candidate* candidate(const std::string& id);
    const CardContent& contentOf(Candidate& candidate);
    /// Who says the same, by id; a person who belongs to no other card before one who does.
    std::string findSame(const Look& look);
    /// Whether nothing comes of the card once more.
    bool isKnown(const CardContent& existing, const CardContent& incoming) const;
    std::string findFree(const Look& look);
    bool isFree(const std::string& id) { return !_taken.contains(id) && candidate(id); }
    ImportDecision decideAbout(const Look& look, const Card& card);
    ImportDecision change(const std::string& id, const Look& look, const Card& card);
    ImportDecision update(Candidate& existing, const Look& look, const Card& card);
    CardContent preview(Candidate& existing, const Look& look, const Card& card);

    const platform::Ref<ZRNewMerger> _merger;
    const DuplicateHandling _handling;
    Namesakes _namesakes;
    /// Of people in the merger's roster, and in that of the cards.
    ZRPropertyTypes _properties, _propertiesOfCards;
    std::unordered_map<const ZRPerson*, Look> _looks;
    std::unordered_map<std::string, Candidate> _candidates;
    /// The ids of those who belong to a card of this import.
    std::unordered_set<std::string> _taken;
    /// What was in this import.
    std::unordered_set<std::uint64_t> _digests;
};

/// A number that two cards share when their texts are the same, but for the lines that say which card it is
/// and who wrote it when. 0 for no text.
std::uint64_t digestOfCard(std::string_view text);

} // namespace interchange
