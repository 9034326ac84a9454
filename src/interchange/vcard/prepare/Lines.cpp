// How physical lines are joined into logical ones.
#include "interchange/vcard/prepare/Lines.h"

#include "interchange/vcard/prepare/Block.h"
#include "interchange/vcard/prepare/Property.h"
#include "interchange/vcard/prepare/Values.h"
#include "platform/text/Utf.h"

#include <algorithm>
#include <cstring>

namespace vcard::prepare {

namespace {

struct Width {
    std::size_t bytes;
    bool bigEndian;
    std::size_t mark;
};

/// Two characters of ASCII in front show by their zeros how wide text is that has no mark.
std::optional<Width> widthByZeros(std::string_view bytes)
{
    std::string zeros;
    for (const char c : bytes.substr(0, 8))
        zeros += c ? 'x' : '0';
    for (const auto& [pattern, width] : {std::pair{"000x000x", Width{4, true, 0}},
             {"x000x000", Width{4, false, 0}}, {"0x0x", Width{2, true, 0}}, {"x0x0", Width{2, false, 0}}})
        if (zeros.starts_with(pattern))
            return width;
    return std::nullopt;
}

std::optional<Width> widthOf(std::string_view bytes)
{
    using namespace std::string_view_literals;
    for (const auto& [mark, width] :
        {std::pair{"\xFF\xFE\0\0"sv, Width{4, false, 4}}, {"\0\0\xFE\xFF"sv, Width{4, true, 4}},
            {"\xFF\xFE"sv, Width{2, false, 2}}, {"\xFE\xFF"sv, Width{2, true, 2}}})
        if (bytes.starts_with(mark))
            return width;
    return widthByZeros(bytes);
}

char32_t unitAt(std::string_view bytes, std::size_t at, const Width& width)
{
    char32_t unit = 0;
    for (std::size_t i = 0; i < width.bytes; ++i)
        unit =
            unit << 8 | static_cast<unsigned char>(bytes[at + (width.bigEndian ? i : width.bytes - 1 - i)]);
    return unit;
}

std::string_view headerOf(std::string_view line)
{
    const auto colon = valueColon(line);
    return colon == line.npos ? std::string_view{} : line.substr(0, colon);
}

/// Digits of base64, their padding, and blanks behind them. Most lines are properties, which show it at once.
bool isBase64Line(std::string_view line)
{
    if (line.size() >= sizeof(Block)) {
        const auto first = blockAt(line.data());
        if (isAny((first == ':') | (first == ';')))
            return false;
    }
    std::size_t end = 0;
    while (end < line.size() && (isBase64Digit(line[end]) || line[end] == '='))
        ++end;
    return end > 0 && isBlank(line.substr(end));
}

/// The transfer of the logical line so far. Only a header with parameters can declare one.
Transfer transferOf(std::string_view logical)
{
    const auto header = headerOf(logical);
    return header.find(';') == header.npos ? Transfer::plain : declaredTransfer(header);
}

} // namespace

std::optional<std::string> textOfWideBytes(std::string_view bytes)
{
    const auto width = widthOf(bytes);
    if (!width)
        return std::nullopt;
    std::string text;
    text.reserve(bytes.size() / width->bytes);
    for (std::size_t at = width->mark; at + width->bytes <= bytes.size(); at += width->bytes) {
        char32_t unit = unitAt(bytes, at, *width);
        if (unit >= 0xD800 && unit < 0xDC00 && width->bytes == 2 && at + 4 <= bytes.size())
            if (const auto low = unitAt(bytes, at + 2, *width); low >= 0xDC00 && low < 0xE000) {
                unit = 0x10000 + ((unit - 0xD800) << 10) + (low - 0xDC00);
                at += 2;
            }
        if (unit < 0x80)
            text += static_cast<char>(unit);
        else
            platform::appendUTF8(text, unit);
    }
    return text;
}

std::string_view withoutMark(std::string_view bytes)
{
    return bytes.starts_with("\xEF\xBB\xBF") ? bytes.substr(3) : bytes;
}

bool hasBeginBehindText(std::string_view line)
{
    const auto before = trimmed(line.substr(0, line.size() - kBeginMark.size()));
    if (before.empty() || !equalInAnyCase(line.substr(line.size() - kBeginMark.size()), kBeginMark))
        return false;
    Property property;
    return before.back() != ':' || !property.parse(before) || !equalInAnyCase(property.name, "AGENT");
}

Mark markOf(std::string_view line)
{
    if (!line.empty() && isBlank(line.front()))
        line = trimmed(line);
    if (line.empty() || (upper(line.front()) != 'B' && upper(line.front()) != 'E'))
        return Mark::none;
    const auto colon = line.find(':');
    if (colon == line.npos || !equalInAnyCase(trimmed(line.substr(colon + 1)), "VCARD"))
        return Mark::none;
    const auto word = trimmed(line.substr(0, colon));
    if (equalInAnyCase(word, "BEGIN"))
        return Mark::begin;
    return equalInAnyCase(word, "END") ? Mark::end : Mark::none;
}

void readLogicalLine(PhysicalLines& lines, Folding folding, std::size_t limit, std::string& out)
{
    const auto start = out.size();
    const auto append = [&](std::string_view text) {
        if (out.size() <= limit)
            out += text;
    };
    append(lines.line());
    lines.advance();
    // The header is looked at only where it matters: at a "=" in the end, and in front of digits alone.
    const auto so_far = [&] { return std::string_view(out).substr(start); };
    for (; !lines.atEnd(); lines.advance()) {
        const auto next = lines.line();
        if (so_far().ends_with('=') && transferOf(so_far()) == Transfer::quotedPrintable) {
            if (markOf(next) != Mark::none)
                return;
            out.pop_back();
            append(next);
        } else if (!next.empty() && isBlank(next.front())) {
            append(folding == Folding::keepBlank ? next : next.substr(1));
        } else if (isBase64Line(next) && transferOf(so_far()) == Transfer::base64) {
            append(next);
        } else {
            return;
        }
    }
}

} // namespace vcard::prepare
