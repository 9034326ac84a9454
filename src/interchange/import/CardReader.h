// The cards of one data, each read into values that a person can be made of.
#pragma once

#include "interchange/vcard/CardRecording.h"
#include "interchange/vcard/prepare/CanonicalCard.h"

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

class VCardReaderContext;
class ZRVCardParser;

namespace interchange {

/// A card of an import as it was read.
struct ReadCard {
    /// What it says; absent when it is refused, and when it is a group.
    std::optional<CardRecording> values;
    /// Why it is refused; empty when it is not.
    std::string refusal;

    /// Set when it is a group; and what a prepared card says of groups, where the import asks for them.
    std::optional<vcard::prepare::GroupCard> group;
    std::string uid;
    std::vector<std::string> categories;

    /// Which of the import's files, from 0.
    std::size_t file = 0;
    /// The number of the card in its file and of its first line, from 1; 0 for the file itself.
    std::size_t number = 1;
    std::size_t line = 1;
    /// A line that tells people which card is meant.
    std::string firstLine;
    /// The card as prepared; empty for one that was not.
    std::string text;
    /// How many bytes it was read from, and what `digestOfCard` says of them.
    std::size_t length = 0;
    std::uint64_t digest = 0;
    /// Behind this card, of all files together.
    std::uint64_t bytesDone = 0;
};

/// Reads one data front to back with a parser of its own, so that what breaks it breaks nothing else.
///
/// Ownership: borrows the data and the context.
/// Threads:   one at a time.
/// Errors:    a card that cannot be read is refused, and the last one.
class CardReader {
public:
    CardReader(std::string_view bytes, const VCardReaderContext& context);
    ~CardReader();
    CardReader(const CardReader&) = delete;
    CardReader& operator=(const CardReader&) = delete;

    /// Reads the next card into the values or the refusal of `card`, with length and digest. False behind the
    /// last.
    bool next(ReadCard& card);
    /// What was not read yet.
    std::string_view rest() const { return _bytes.substr(_done); }

private:
    const std::string_view _bytes;
    const std::unique_ptr<ZRVCardParser> _parser;
    std::size_t _done = 0;
    bool _isBroken = false;
};

/// The first line that holds something, cut where it gets long.
std::string_view firstLineOf(std::string_view text);

} // namespace interchange
