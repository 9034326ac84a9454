// The lines of a canonical card while it is made, and the order that they get.
#pragma once

#include "interchange/vcard/prepare/Headers.h"
#include "interchange/vcard/prepare/Map.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace vcard::prepare {

/// The lines of one card.
///
/// It knows nothing of values: what is written is taken as it is. Lines come out as they were begun, but for
/// entries of a list of which some are preferred: these change places, the preferred ones first.
///
/// Ownership: owns the text; borrows the names of groups.
/// Threads:   one thread at a time.
/// Errors:    none.
class CardLines {
public:
    using Index = std::uint32_t;
    static constexpr Index kNone = ~Index{0};

    struct Line {
        const Row* row = nullptr;
        /// The group that was written, and stands in the text.
        std::string_view group;
        /// The number of a group of ours that takes its place, "item1"; 0 for none.
        std::uint32_t item = 0;
        Entries entries = Entries::none;
        std::uint8_t rank = kNoRank;
        bool isGone = false;
        /// Whether it stands behind another line.
        bool follows = false;
        /// Where it begins, its name and its value do, and where the value ends; CR LF stand behind it.
        std::size_t start = 0, name = 0, value = 0, end = 0;
        /// A line that was begun later and stands right behind this one.
        Index next = kNone;
    };

    void clear();
    bool empty() const;
    /// About how many bytes the lines have.
    std::size_t size() const { return _text.size() + 16 * _lines.size(); }

    /// Begins a line of which `text()` gets the name, the parameters and the colon, then `beginValue`, then
    /// the value. It counts once it is kept.
    void begin(const Row* row, std::string_view group);
    void beginValue() { _lines.back().value = _text.size(); }
    /// Begins a whole line, without parameters.
    void begin(const Row* row, std::string_view group, std::string_view name, std::string_view value);
    /// The line begun, if it is an entry, stands before those of higher rank.
    void prefer(std::uint8_t rank);
    std::string& text() { return _text; }
    const Line& begun() const { return _lines.back(); }
    /// What of the value is there.
    std::string_view begunValue() const { return std::string_view(_text).substr(begun().value); }
    void cutValue(std::size_t length) { _text.resize(begun().value + length); }
    Index keep();
    /// Keeps it as what stands behind, or in the place of, a line that is there; behind it, in the same group
    /// of ours.
    Index keepBehind(Index line);
    void keepInsteadOf(Index line);
    void giveUp()
    {
        _text.resize(begun().start);
        _lines.pop_back();
    }

    /// Those that were kept, while none is begun.
    std::vector<Line>& lines() { return _lines; }
    const std::vector<Line>& lines() const { return _lines; }
    const Line& operator[](Index line) const { return _lines[line]; }
    std::string_view valueOf(const Line& line) const
    {
        return std::string_view(_text).substr(line.value, line.end - line.value);
    }

    /// Appends all lines, each with its group and its end.
    void appendTo(std::string& out) const;

private:
    class Pieces;

    void preferFirst(std::vector<Index>& order) const;

    std::string _text;
    std::vector<Line> _lines;
    /// The lists of which a preferred entry stands behind another one, as bits.
    std::uint32_t _unsorted = 0;
    /// The rank of the last entry of each list.
    std::array<std::uint8_t, kLists> _lastRank{};
};

} // namespace vcard::prepare
