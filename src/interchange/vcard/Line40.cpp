// How one property is spelled in a vCard 4.0: parameters, escapes, folding.
#include "interchange/vcard/Line40.h"

#include <fmt/format.h>

#include <algorithm>

namespace vcard {

namespace {

constexpr std::size_t kLongestLine = 75;
/// The bytes of a character of UTF-8 behind its first one.
constexpr std::size_t kMostFollowing = 3;

/// Any line end becomes one "\n". A "," is escaped in every text, `separator` too.
void appendEscaped(std::string& to, std::string_view text, char separator)
{
    for (std::size_t at = 0; at < text.size(); ++at) {
        const char c = text[at];
        if (c == '\r' && at + 1 < text.size() && text[at + 1] == '\n')
            continue;
        if (c == '\r' || c == '\n')
            to += "\\n";
        else if (c == '\\' || c == ',' || c == separator)
            (to += '\\') += c;
        else
            to += c;
    }
}

/// Where a piece of at most `most` bytes ends, in front of a character. What is no UTF-8 is cut anywhere.
std::size_t endOfPiece(std::string_view line, std::size_t most)
{
    if (line.size() <= most)
        return line.size();
    const auto isFollowing = [&](std::size_t at) { return (line[at] & 0xC0) == 0x80; };
    std::size_t end = most;
    while (end > most - kMostFollowing && isFollowing(end))
        --end;
    return isFollowing(end) ? most : end;
}

/// A line that ends so would look like two, of which the second begins a card.
bool endsInBegin(std::string_view line)
{
    constexpr std::string_view begin = "begin:vcard";
    return line.size() >= begin.size()
        && std::ranges::equal(line.substr(line.size() - begin.size()), begin,
            [](char c, char lower) { return c == lower || c == lower - 'a' + 'A'; });
}

} // namespace

Line40::Line40(std::string& to, std::string_view name, std::int64_t group)
    : _to(to), _line(group ? fmt::format("item{}.{}", group, name) : std::string(name))
{
}

Line40& Line40::with(std::string_view parameter, std::string_view value)
{
    if (!value.empty())
        _line.append(";").append(parameter).append("=").append(value);
    return *this;
}

void Line40::text(std::string_view text) { texts({&text, 1}, ','); }

void Line40::uri(std::string_view uri)
{
    _line.append(":").append(uri);
    end();
}

void Line40::texts(std::span<const std::string_view> texts, char separator)
{
    char before = ':';
    for (const std::string_view text : texts) {
        _line += before;
        appendEscaped(_line, text, separator);
        before = separator;
    }
    end();
}

/// The blank that begins a further line counts.
void Line40::end()
{
    std::string_view rest = _line;
    for (std::size_t room = kLongestLine; room; room = rest.empty() ? 0 : kLongestLine - 1) {
        std::size_t piece = endOfPiece(rest, room);
        piece -= endsInBegin(rest.substr(0, piece)) ? 1 : 0;
        _to.append(room == kLongestLine ? "" : " ").append(rest.substr(0, piece)).append("\r\n");
        rest.remove_prefix(piece);
    }
}

} // namespace vcard
