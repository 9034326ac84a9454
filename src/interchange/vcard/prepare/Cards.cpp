// How logical lines are gathered into cards, and what becomes of text outside them.
#include "interchange/vcard/prepare/Cards.h"

#include "interchange/vcard/prepare/Ascii.h"
#include "interchange/vcard/prepare/Property.h"

#include <algorithm>

namespace vcard::prepare {

namespace {

/// Whether a line may end in "VCARD", as few lines do.
bool mayEndInCard(std::string_view line) { return upper(line.back()) == 'D' || isBlank(line.back()); }

/// A mark counts only at the start of a line: behind a blank it continues the line before.
Mark markInCard(std::string_view line)
{
    return line.empty() || isBlank(line.front()) || !mayEndInCard(line) ? Mark::none : markOf(line);
}

Version versionNamed(std::string_view value)
{
    value = trimmed(value);
    if (value == "2.1")
        return Version::v21;
    if (value == "3.0" || value == "3")
        return Version::v30;
    return value == "4.0" || value == "4" ? Version::v40 : Version::other;
}

/// The version decides how lines are joined, and may stand in any line of the card.
Version versionAhead(PhysicalLines lines)
{
    for (; !lines.atEnd() && markInCard(lines.line()) == Mark::none; lines.advance()) {
        const auto line = lines.line();
        const auto colon = startsInAnyCase(line, "VERSION") ? line.find(':') : line.npos;
        if (colon != line.npos && trimmed(nameOf(line)).size() == 7)
            return versionNamed(line.substr(colon + 1));
    }
    return Version::missing;
}

enum class Nested : std::uint8_t { no, opens, mayFollow };

/// A nested card opens behind AGENT: on its line, or in the line behind it when nothing is there.
Nested nestedBy(std::string_view line)
{
    if (line.back() != ':' && !mayEndInCard(line))
        return Nested::no;
    const auto colon = valueColon(line);
    const auto value = colon == line.npos ? line : trimmed(line.substr(colon + 1));
    Property property;
    if ((!value.empty() && markOf(value) != Mark::begin) || !property.parse(line)
        || !equalInAnyCase(property.name, "AGENT"))
        return Nested::no;
    return value.empty() ? Nested::mayFollow : Nested::opens;
}

} // namespace

CardReader::Found CardReader::next(RawCard& card)
{
    card.bytes.clear();
    card.lines.clear();
    card.nested.clear();
    card.version = Version::missing;
    while (!_lines.atEnd() && trimmed(_lines.line()).empty())
        _lines.advance();
    if (_lines.atEnd())
        return Found::nothing;
    card.line = _lines.number();
    if (markOf(_lines.line()) != Mark::begin)
        return readOutside(card);
    _lines.advance();
    readCard(card);
    return Found::card;
}

CardReader::Found CardReader::readOutside(RawCard& card)
{
    constexpr std::size_t excerpt = 200;
    card.bytes = _lines.line().substr(0, excerpt);
    card.lines.push_back({0, card.bytes.size(), card.line});
    bool properties = false;
    for (; !_lines.atEnd(); _lines.advance()) {
        const auto mark = markOf(_lines.line());
        if (mark == Mark::begin)
            break;
        if (mark == Mark::end && properties) {
            _lines.advance();
            card.ending = Ending::neverBegun;
            return Found::card;
        }
        properties |= mark == Mark::none && _lines.line().find(':') != std::string_view::npos;
    }
    return Found::textOutside;
}

void CardReader::readCard(RawCard& card)
{
    card.version = versionAhead(_lines);
    card.ending = Ending::cutOff;
    _depth = 0;
    _nestedMayFollow = _nestedClosed = false;
    bool tooLarge = false;
    while (!_lines.atEnd() && card.ending == Ending::cutOff) {
        const auto mark = markInCard(_lines.line());
        if (mark == Mark::begin && !_nestedMayFollow) {
            card.ending = Ending::begunAgain;
        } else if (mark == Mark::begin) {
            ++_depth;
            _nestedMayFollow = false;
            _lines.advance();
        } else if (mark == Mark::end) {
            if (_depth == 0)
                card.ending = Ending::closed;
            else
                --_depth;
            _nestedClosed = true;
            _lines.advance();
        } else if (_lines.line().empty()) {
            _lines.advance();
        } else {
            readLine(card);
        }
        if (card.bytes.size() > kMaximumCardBytes || card.lines.size() > kMaximumCardLines) {
            tooLarge = true;
            card.bytes.clear();
            card.lines.clear();
        }
    }
    if (card.ending == Ending::cutOff && _nestedClosed)
        card.ending = Ending::nestedOpen;
    if (tooLarge)
        card.ending = Ending::tooLarge;
}

void CardReader::readLine(RawCard& card)
{
    const auto start = card.bytes.size();
    const auto number = _lines.number();
    const auto offset = _lines.offset();
    const auto folding = card.version == Version::v21 ? Folding::keepBlank : Folding::dropBlank;
    readLogicalLine(_lines, folding, kMaximumCardBytes, card.bytes);
    // A NUL means nothing in a card, and a separator to its reader.
    if (_nul.between(offset, _lines.offset()) < _lines.offset())
        card.bytes.erase(
            std::remove(card.bytes.begin() + static_cast<std::ptrdiff_t>(start), card.bytes.end(), '\0'),
            card.bytes.end());
    const auto line = std::string_view(card.bytes).substr(start);
    const auto nested = line.empty() ? Nested::no : nestedBy(line);
    _nestedMayFollow = nested == Nested::mayFollow;
    if (nested != Nested::no) {
        if (_depth == 0)
            card.nested.push_back(number);
        _depth += nested == Nested::opens;
        card.bytes.resize(start);
    } else if (_depth > 0 || isBlank(line)) {
        card.bytes.resize(start);
    } else {
        _nestedClosed = false;
        card.lines.push_back({start, line.size(), number});
        card.bytes += '\n';
    }
}

} // namespace vcard::prepare
