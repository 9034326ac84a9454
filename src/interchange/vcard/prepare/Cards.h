// Where each card begins and ends, when its lines have been joined.
#pragma once

#include "interchange/vcard/prepare/Lines.h"

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace vcard::prepare {

enum class Version : std::uint8_t { missing, other, v21, v30, v40 };
inline constexpr std::size_t kVersions = 5;

/// How a card's text came to its end.
enum class Ending : std::uint8_t {
    closed,
    /// Another BEGIN stood where the END should be.
    begunAgain,
    /// A card nested in it was never closed, and took its END.
    nestedOpen,
    /// The data end inside the card.
    cutOff,
    /// Properties and an END, but no BEGIN.
    neverBegun,
    /// More than `kMaximumCardBytes` or `kMaximumCardLines`.
    tooLarge
};

/// A card as it was written, its lines joined. One object is filled again and again.
struct RawCard {
    struct Line {
        std::size_t start;
        std::size_t length;
        /// The number of its first physical line in the file.
        std::size_t number;
    };

    /// The logical lines, each ended by LF so that no character runs over two, without BEGIN and END, and
    /// without NULs.
    std::string bytes;
    std::vector<Line> lines;
    /// The number of the line of BEGIN.
    std::size_t line = 0;
    Version version = Version::missing;
    Ending ending = Ending::closed;
    /// The numbers of the lines at which a nested card (AGENT) was taken out.
    std::vector<std::size_t> nested;

    std::string_view text(const Line& where) const
    {
        return std::string_view(bytes).substr(where.start, where.length);
    }
};

/// A card with more than this is refused: its text could not be held beside an import's other memory.
inline constexpr std::size_t kMaximumCardBytes = 16U << 20;
inline constexpr std::size_t kMaximumCardLines = 100'000;

/// Splits a file into cards, one at a time.
///
/// Lines are joined before cards are split, so that an END in a folded value ends nothing; and a BEGIN
/// that opens no nested card ends the card before it, so that a damaged card takes no other with it.
///
/// Ownership: borrows the bytes.
/// Threads:   one thread at a time.
/// Errors:    none; what is wrong with a card is its `ending`.
class CardReader {
public:
    explicit CardReader(std::string_view bytes) : _lines(bytes), _nul(bytes, '\0') { }

    enum class Found : std::uint8_t { card, textOutside, nothing };

    /// The next card, or a stretch of text that is in no card: then `card` has its first line.
    Found next(RawCard& card);

    /// How far reading has come, in bytes.
    std::size_t offset() const { return _lines.offset(); }

private:
    Found readOutside(RawCard& card);
    void readCard(RawCard& card);
    void readLine(RawCard& card);

    PhysicalLines _lines;
    NextByte _nul;
    /// Nested cards that are open.
    std::size_t _depth = 0;
    /// "AGENT:" with nothing behind it: a BEGIN in the next line opens a nested card.
    bool _nestedMayFollow = false;
    /// The last line was the END of a nested card, or perhaps of the card around it.
    bool _nestedClosed = false;
};

} // namespace vcard::prepare
