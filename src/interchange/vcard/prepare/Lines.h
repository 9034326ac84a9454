// How bytes become lines: the character width, the line ends, and which lines belong together.
#pragma once

#include "interchange/vcard/prepare/Ascii.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace vcard::prepare {

/// UTF-16 and UTF-32 of either order, by their mark or by the zeros in the first two characters, as UTF-8;
/// absent when the bytes are neither. What is no character becomes U+FFFD.
std::optional<std::string> textOfWideBytes(std::string_view bytes);

/// The bytes without the UTF-8 mark in front.
std::string_view withoutMark(std::string_view bytes);

inline constexpr std::string_view kBeginMark = "BEGIN:VCARD";

/// The mark of a card's beginning at the very end of a line of other text: what a card that was cut off
/// leaves when the next one follows at once. Not so behind "AGENT:", where a nested card begins.
bool hasBeginBehindText(std::string_view line);
inline bool endsInBegin(std::string_view line)
{
    return line.size() > kBeginMark.size() && upper(line.back()) == 'D' && hasBeginBehindText(line);
}

/// Where the next of one kind of byte is: one that is rare is looked for in long stretches, not in each line.
/// Not in all that is left, which may be a mapped file that is to be read bit by bit.
///
/// Ownership: borrows the bytes.
/// Threads:   a plain value.
/// Errors:    none.
class NextByte {
public:
    static constexpr std::size_t kStretch = 1U << 16;

    NextByte(std::string_view bytes, char byte) : _bytes(bytes), _byte(byte) { }

    /// Its first place from `start`, which never goes back, to in front of `end`; or `end`.
    std::size_t between(std::size_t start, std::size_t end)
    {
        if (_looked < start) {
            _looked = start;
            _isFound = false;
        }
        while (!_isFound && _looked < end)
            look(std::min(std::max(end, _looked + kStretch), _bytes.size()));
        return std::min(_looked, end);
    }

private:
    void look(std::size_t end)
    {
        const auto at = _bytes.substr(_looked, end - _looked).find(_byte);
        _isFound = at != _bytes.npos;
        _looked = _isFound ? _looked + at : end;
    }

    std::string_view _bytes;
    char _byte;
    /// In front of this there is none that counts; here is one if it was found.
    std::size_t _looked = 0;
    bool _isFound = false;
};

/// The physical lines of some bytes, ended by CR, LF or CR LF; a position that is cheap to copy.
///
/// A line that `endsInBegin` is two lines, so that the card which begins there is not lost with the other.
///
/// Ownership: borrows the bytes.
/// Threads:   a plain value.
/// Errors:    none. Behind the last line `atEnd` is true and `line` empty.
class PhysicalLines {
public:
    explicit PhysicalLines(std::string_view bytes)
        : _bytes(bytes), _lineFeed(bytes, '\n'), _carriageReturn(bytes, '\r')
    {
        findEnd();
    }

    bool atEnd() const { return _start >= _bytes.size(); }
    /// The line here, without its end.
    std::string_view line() const { return {_bytes.data() + _start, _end - _start}; }
    /// Its number in the file, from 1.
    std::size_t number() const { return _number; }
    /// Where it begins, in bytes.
    std::size_t offset() const { return _start; }

    void advance()
    {
        if (_endsAtMark || atEnd()) {
            _start = _end;
        } else {
            const bool both = _end + 1 < _bytes.size() && _bytes[_end] == '\r' && _bytes[_end + 1] == '\n';
            _start = std::min(_end + (both ? 2 : 1), _bytes.size());
            ++_number;
        }
        findEnd();
    }

private:
    void findEnd()
    {
        _end = _carriageReturn.between(_start, _lineFeed.between(_start, _bytes.size()));
        _endsAtMark = endsInBegin(line());
        if (_endsAtMark)
            _end -= kBeginMark.size();
    }

    std::string_view _bytes;
    std::size_t _start = 0;
    std::size_t _end = 0;
    NextByte _lineFeed;
    NextByte _carriageReturn;
    std::size_t _number = 1;
    /// The line ends at a mark, not at a line end.
    bool _endsAtMark = false;
};

enum class Mark : std::uint8_t { none, begin, end };

/// Whether a physical line is BEGIN:VCARD or END:VCARD: any case, blanks around the words.
Mark markOf(std::string_view line);

/// What happens to the blank or tab at which a line goes on: vCard 2.1 folds in front of a blank of the text
/// and keeps it, RFC 2425 and RFC 6350 put one in.
enum class Folding : std::uint8_t { dropBlank, keepBlank };

/// Appends one logical line, that is at least one physical line, and moves behind it. A line goes on
/// - over a next line that starts with a blank or tab;
/// - as quoted-printable, declared in its header, over a "=" at its end, which is dropped, unless
///   the next line is a BEGIN or END mark: a soft break left open must not swallow a card;
/// - as base64, declared in its header, over lines of nothing but digits; one empty line ends it.
/// Once `out` has more than `limit` bytes the rest of the line is read but not appended.
void readLogicalLine(PhysicalLines& lines, Folding folding, std::size_t limit, std::string& out);

} // namespace vcard::prepare
