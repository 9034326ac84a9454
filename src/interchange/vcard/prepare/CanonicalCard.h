// What one card of a file becomes.
#pragma once

#include "interchange/vcard/prepare/Report.h"

#include <cstddef>
#include <optional>
#include <string>
#include <vector>

namespace vcard::prepare {

/// A card that is a group rather than a person.
struct GroupCard {
    std::string name;
    /// The UIDs of those who are in it.
    std::vector<std::string> members;
};

/// What cards say about groups, and how much of it an import asks for. What it does not ask for goes to
/// notes.
struct GroupWishes {
    /// A card of `KIND:group` becomes a group.
    bool cards = false;
    /// CATEGORIES are the names of groups that the person is in.
    bool categories = false;
};

/// One card of a file, ready for a reader of its own.
struct CanonicalCard {
    /// BEGIN:VCARD, VERSION:3.0, one physical line a property in UTF-8 with CR LF, END:VCARD. No
    /// quoted-printable, base64 as one line of `;ENCODING=b`, no escapes but `\\ \n \, \;`, types as TYPE
    /// lists, and only properties that the reader knows. Empty when the card is refused, or a group.
    std::string text;
    /// Its number in the file, from 1, refused cards included.
    std::size_t number = 0;
    /// The number of its first line in the file, from 1.
    std::size_t line = 0;
    /// Its first line that is neither BEGIN nor VERSION, to tell people which card is meant; may be cut.
    std::string firstLine;
    /// Why there is no text, or absent.
    std::optional<Finding> refusal;
    /// Set where cards of groups are asked for, and this is one.
    std::optional<GroupCard> group;
    /// By what a group card names this one; set where cards of groups are asked for.
    std::string uid;
    /// Set where they are asked for.
    std::vector<std::string> categories;
};

} // namespace vcard::prepare
