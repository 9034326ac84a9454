// Which mail addresses a few typed letters may mean, the best first.
#pragma once

#include "Command.h"

/// Where the text stands, the best place first. Of several words the worst place counts.
enum class MatchPlace { startOfNameWord, startOfAddress, inside };

/// One mail address of a person.
struct AddressCompletion {
    MatchPlace place;
    std::string address;
    std::string name;
    /// Sorts as the name does in the user's language.
    std::string nameKey;
    /// The label of the address in the user's language.
    std::string label;
    std::string personId;
};

/// The mail addresses that `text` may mean, sorted by place, then by name, then by address.
///
/// Each word of the text must stand somewhere in the card, whatever the case and the accents; a text of
/// digits and what is written between them is one number, found however a card writes it. Of a card with
/// several addresses those are left out that lack a word which only another one has. The best `limit` are
/// given; 0: all.
std::vector<AddressCompletion> addressCompletions(
    ZRRoster& roster, const std::string& text, std::size_t limit);
