// How the lines of a card are put in order.
#include "interchange/vcard/prepare/CardLines.h"

#include "interchange/vcard/prepare/Ascii.h"
#include "interchange/vcard/prepare/Lines.h"

#include <algorithm>
#include <charconv>

namespace vcard::prepare {

void CardLines::clear()
{
    _text.clear();
    _lines.clear();
    _preferred = 0;
}

bool CardLines::empty() const
{
    return std::all_of(_lines.begin(), _lines.end(), [](const Line& line) { return line.isGone; });
}

void CardLines::begin(const Row* row)
{
    _line = {};
    _line.row = row;
    _line.entries = row ? row->entries : Entries::none;
    _line.start = _line.value = _text.size();
}

void CardLines::begin(const Row* row, std::string_view name, std::string_view value)
{
    begin(row);
    _text.append(name).append(":");
    beginValue();
    _text.append(value);
}

CardLines::Index CardLines::keep()
{
    // A blank behind a value is no part of it, and keeps a value from ending in what looks like a card's
    // BEGIN.
    if (upper(_text.back()) == 'D' && endsInBegin(std::string_view(_text).substr(_line.start)))
        _text += ' ';
    _line.end = _text.size();
    if (_line.rank != kNoRank)
        _preferred |= 1U << static_cast<unsigned>(_line.entries);
    _lines.push_back(_line);
    return static_cast<Index>(_lines.size() - 1);
}

CardLines::Index CardLines::keepBehind(Index line)
{
    const auto kept = keep();
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

/// The lines that stand by themselves; preferred entries take the first places of their list.
std::vector<CardLines::Index> CardLines::preferredFirst() const
{
    std::vector<Index> order;
    order.reserve(_lines.size());
    for (Index line = 0; line < _lines.size(); ++line)
        if (!_lines[line].follows)
            order.push_back(line);
    for (unsigned list = 0; _preferred >> list != 0; ++list) {
        if ((_preferred >> list & 1) == 0)
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
    return order;
}

void CardLines::appendTo(std::string& out) const
{
    if (_preferred != 0) {
        for (const auto line : preferredFirst())
            appendFrom(line, out);
        return;
    }
    for (Index line = 0; line < _lines.size(); ++line)
        if (!_lines[line].follows)
            appendFrom(line, out);
}

/// A line, and those that stand behind it.
void CardLines::appendFrom(Index first, std::string& out) const
{
    for (auto line = first; line != kNone; line = _lines[line].next)
        if (!_lines[line].isGone)
            append(_lines[line], out);
}

void CardLines::append(const Line& line, std::string& out) const
{
    if (!line.group.empty()) {
        out.append(line.group).append(".");
    } else if (line.item != 0) {
        char digits[12];
        out.append("item")
            .append(digits, std::to_chars(digits, digits + sizeof digits, line.item).ptr)
            .append(".");
    }
    out.append(_text, line.start, line.end - line.start).append("\r\n");
}

} // namespace vcard::prepare
