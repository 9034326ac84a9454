// The groups that an import makes: of cards that are groups, and of the categories of people.
#pragma once

#include "core/ZRGroup.h"
#include "interchange/vcard/prepare/CanonicalCard.h"
#include "store/ZRRoster.h"

#include <cstddef>
#include <functional>
#include <map>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

namespace interchange {

/// Gathers what the cards of an import say of groups, and puts people into them.
///
/// A group of a name that is there already is meant by that name; a missing one is made. Cards of groups are
/// carried out at the end, since those who are in them may come later.
///
/// Ownership: shares ownership of the roster, and of the groups that it has used.
/// Threads:   one at a time; takes the global lock.
/// Errors:    members that no card of the import is are handed to `finish`'s caller.
class ImportGroups {
public:
    explicit ImportGroups(platform::Ref<ZRRoster> roster) : _roster(std::move(roster)) { }

    /// A card that is a group. `uid` is its own, by which others may name it.
    void addCard(vcard::prepare::GroupCard card, std::string_view uid, std::size_t file, std::size_t number,
        std::size_t line);
    /// Somebody who is in the roster now, by the UID of the card and in the groups of its categories.
    void addPerson(ZRPerson& person, std::string_view uid, const std::vector<std::string>& categories);

    struct Unknown {
        std::size_t file, number, line;
        const std::string& member;
    };
    using Tell = std::function<void(const Unknown&)>;
    /// Makes the groups of cards, and tells of members whom nobody is.
    void finish(const Tell& tell);

private:
    struct Card {
        vcard::prepare::GroupCard card;
        std::string uid;
        std::size_t file, number, line;
    };

    /// The groups of cards, by the UIDs of these.
    using Groups = std::unordered_map<std::string, platform::Ref<ZRGroup>>;

    void fill(const Card& card, const Groups& groups, const Tell& tell);
    platform::Ref<ZRGroup> groupCalled(const std::string& name);

    platform::Ref<ZRRoster> _roster;
    std::vector<Card> _cards;
    /// The unique ids of people by the UIDs of their cards.
    std::unordered_map<std::string, std::string> _people;
    /// By name; all of the roster, once one was asked for.
    std::map<std::string, platform::Ref<ZRGroup>> _groups;
    bool _areGroupsKnown = false;
};

} // namespace interchange
