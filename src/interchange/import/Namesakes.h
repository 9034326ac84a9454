// Which people of a roster go by the name of a card that is to be imported, and which of them are worth a
// look.
#pragma once

#include "core/ZRPerson.h"
#include "merge/ZRNewMerger.h"

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <unordered_map>
#include <utility>
#include <vector>

namespace interchange {

/// Finds the people of one roster who have a card's name.
///
/// Of a name that many have, most people are not looked at: reading whole cards is what takes the time. The
/// e-mail addresses and telephone numbers of all people are read once, as hashes, and lead to those who share
/// one with the card; others come into question only where the card has neither.
///
/// Ownership: shares ownership of the merger, whose collision map is made once.
/// Threads:   one at a time; takes the global lock.
/// Errors:    a store that cannot be read makes nobody a namesake, which is logged.
class Namesakes {
public:
    explicit Namesakes(platform::Ref<ZRNewMerger> merger) : _merger(std::move(merger)) { }

    /// The name that a card is looked for by; absent where it has none, or nothing but blanks.
    static std::optional<std::string> keyOf(const ZRPerson& card);
    struct Found {
        /// The unique ids of those who may be the person of the card, or say the same.
        std::vector<std::string> ids;
        /// So many of them, the first ones, share an address with the card.
        std::size_t sharing = 0;
    };
    Found find(const std::string& key, const ZRPerson& card);

private:
    /// E-mail addresses and telephone numbers, as hashes of what they are compared by. Sorted.
    using Addresses = std::vector<std::uint64_t>;
    static Addresses addressesOf(const ZRPerson& card);
    bool readAddresses();
    bool shares(const std::string& uniqueId, const Addresses& addresses) const;
    bool hasAddresses(const std::string& uniqueId) const;

    platform::Ref<ZRNewMerger> _merger;
    /// Of every person with addresses, in the order of the hashes of their ids; read when a name has several.
    using OwnedAddress = std::pair<std::uint64_t, std::uint64_t>;
    std::optional<std::vector<OwnedAddress>> _addresses;
};

} // namespace interchange
