// How the lines of a card are put in order.
#include "interchange/vcard/prepare/CardLines.h"

#include "interchange/vcard/prepare/Ascii.h"
#include "interchange/vcard/prepare/Lines.h"

#include <algorithm>
#include <charconv>
#include <numeric>

namespace vcard::prepare {

namespace {

constexpr std::string_view kLineEnd = "\r\n";

} // namespace

/// Appends pieces of a text, those that stand behind one another at once: most lines stay in their order.
class CardLines::Pieces {
public:
    Pieces(std::string_view text, std::string& out) : _text(text), _out(out) { }

    void append(std::size_t start, std::size_t end)
    {
        if (start != _end) {
            finish();
            _start = start;
        }
        _end = end;
    }

    void appendItem(std::uint32_t number)
    {
        finish();
        _start = _end;
        char digits[12];
        _out.append("item")
            .append(digits, std::to_chars(digits, digits + sizeof digits, number).ptr)
            .append(".");
    }

    void finish() { _out.append(_text.substr(_start, _end - _start)); }

private:
    std::string_view _text;
    std::string& _out;
    std::size_t _start = 0, _end = 0;
};

void CardLines::clear()
{
    _text.clear();
    _lines.clear();
    _unsorted = 0;
    _lastRank.fill(0);
}

bool CardLines::empty() const
{
    return std::all_of(_lines.begin(), _lines.end(), [](const Line& line) { return line.isGone; });
}

void CardLines::begin(const Row* row, std::string_view group)
{
    auto& line = _lines.emplace_back();
    line.row = row;
    line.group = group;
    line.entries = row ? row->entries : Entries::none;
    line.start = _text.size();
    if (!group.empty())
        _text.append(group).append(".");
    line.name = line.value = _text.size();
}

void CardLines::begin(const Row* row, std::string_view group, std::string_view name, std::string_view value)
{
    begin(row, group);
    _text.append(name).append(":");
    beginValue();
    _text.append(value);
}

void CardLines::prefer(std::uint8_t rank)
{
    if (begun().entries != Entries::none)
        _lines.back().rank = rank;
}

CardLines::Index CardLines::keep()
{
    // A blank behind a value is no part of it, and keeps a value from ending in what looks like a card's
    // BEGIN.
    auto& line = _lines.back();
    if (endsInBegin(std::string_view(_text).substr(line.name)))
        _text += ' ';
    line.end = _text.size();
    _text += kLineEnd;
    auto& last = _lastRank[static_cast<std::size_t>(line.entries)];
    if (line.rank < last)
        _unsorted |= 1U << static_cast<unsigned>(line.entries);
    last = line.rank;
    return static_cast<Index>(_lines.size() - 1);
}

CardLines::Index CardLines::keepBehind(Index line)
{
    const auto kept = keep();
    _lines[kept].item = _lines[line].item;
    _lines[kept].next = _lines[line].next;
    _lines[kept].follows = true;
    _lines[line].next = kept;
    return kept;
}

void CardLines::keepInsteadOf(Index line)
{
    keep();
    const auto next = _lines[line].next;
    const bool follows = _lines[line].follows;
    _lines[line] = _lines.back();
    _lines[line].next = next;
    _lines[line].follows = follows;
    _lines.pop_back();
}

/// Preferred entries take the first places of their list.
void CardLines::preferFirst(std::vector<Index>& order) const
{
    for (unsigned list = 0; _unsorted >> list != 0; ++list) {
        if ((_unsorted >> list & 1) == 0)
            continue;
        const auto isEntry = [&](Index line) { return static_cast<unsigned>(_lines[line].entries) == list; };
        std::vector<Index> entries;
        std::copy_if(order.begin(), order.end(), std::back_inserter(entries), isEntry);
        std::stable_sort(entries.begin(), entries.end(),
            [&](Index a, Index b) { return _lines[a].rank < _lines[b].rank; });
        auto next = entries.begin();
        for (auto& line : order)
            if (isEntry(line))
                line = *next++;
    }
}

void CardLines::appendTo(std::string& out) const
{
    std::vector<Index> order(_lines.size());
    std::iota(order.begin(), order.end(), 0U);
    if (_unsorted != 0)
        preferFirst(order);
    Pieces pieces(_text, out);
    for (const auto first : order) {
        // One that follows another one comes with it.
        for (auto at = _lines[first].follows ? kNone : first; at != kNone; at = _lines[at].next) {
            const auto& line = _lines[at];
            if (line.isGone)
                continue;
            if (line.item != 0)
                pieces.appendItem(line.item);
            pieces.append(line.item != 0 ? line.name : line.start, line.end + kLineEnd.size());
        }
    }
    pieces.finish();
}

} // namespace vcard::prepare
