// How texts, days and pictures are written into a vCard.
#include "interchange/vcard/VCardText.h"

#include "platform/text/Dates.h"
#include "platform/text/Utf.h"

#include <algorithm>
#include <array>
#include <chrono>
#include <cmath>
#include <cstdint>
#include <cstdlib>

namespace {

constexpr auto kIsEscaped = [] {
    std::array<bool, 256> escaped{};
    for (const char character : {';', ',', ':', '\r', '\n'})
        escaped[static_cast<unsigned char>(character)] = true;
    return escaped;
}();

/// What the days of a chrono calendar cover, with room at both ends.
constexpr double kCalendarDays = 32000 * 365.0;
constexpr double kSecondsOfDay = 86400;

void appendNumber(std::string& to, unsigned number, std::size_t width)
{
    std::array<char, 10> digits;
    std::size_t at = digits.size();
    for (; number > 0 || at > digits.size() - width; number /= 10)
        digits[--at] = static_cast<char>('0' + number % 10);
    to.append(&digits[at], digits.size() - at);
}

constexpr std::size_t kCodesOfLine = 76;
constexpr std::size_t kBytesOfLine = kCodesOfLine / 4 * 3;
constexpr std::string_view kLineBreak = "\n  ";
constexpr std::string_view kDigits = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
constexpr std::string_view kDigitsWithoutSlash =
    "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+,";

/// Four codes for each three bytes, the last ones padded.
void appendCodes(std::string& to, std::string_view bytes, std::string_view digits, char padChar)
{
    const std::size_t begin = to.size();
    to.resize(begin + (bytes.size() + 2) / 3 * 4);
    char* out = to.data() + begin;
    for (std::size_t at = 0; at < bytes.size(); at += 3) {
        const std::size_t taken = std::min<std::size_t>(bytes.size() - at, 3);
        std::uint32_t bits = 0;
        for (std::size_t byte = 0; byte < taken; ++byte)
            bits |= std::uint32_t(static_cast<unsigned char>(bytes[at + byte])) << (16 - 8 * byte);
        for (std::size_t digit = 0; digit < 4; ++digit)
            *out++ = digit <= taken ? digits[bits >> (18 - 6 * digit) & 0x3F] : padChar;
    }
}

} // namespace

std::optional<std::string_view> zrEscapeStringForUnichar(char character, char next, std::size_t& advance)
{
    advance = 1;
    switch (character) {
    case ';':
        return "\\;";
    case ',':
        return "\\,";
    case ':':
        return "\\:";
    case '\n':
        return "\\n";
    case '\r':
        advance = next == '\n' ? 2 : 1;
        return advance == 2 ? "\\n\\n" : "\\n";
    default:
        return std::nullopt;
    }
}

void zrAppendKoshified(std::string& to, std::string_view text)
{
    const char *from = text.data(), *const end = from + text.size();
    for (const char* at = from; at != end;) {
        if (!kIsEscaped[static_cast<unsigned char>(*at)]) {
            ++at;
            continue;
        }
        to.append(from, static_cast<std::size_t>(at - from));
        std::size_t advance = 0;
        to.append(*zrEscapeStringForUnichar(*at, at + 1 != end ? at[1] : '\0', advance));
        from = at += advance;
    }
    to.append(from, static_cast<std::size_t>(end - from));
}

std::string zrVCardKoshify(std::string_view text)
{
    std::string escaped;
    escaped.reserve(text.size());
    zrAppendKoshified(escaped, text);
    return escaped;
}

void zrAppendString(std::string& to, std::string_view text)
{
    if (platform::isASCII(text))
        to.append(text);
}

std::optional<std::string> zrVCardDataRepresenation(std::string_view text)
{
    return platform::isValidUTF8(text) ? std::optional<std::string>(text) : std::nullopt;
}

std::string zrEncodeBase64Data(std::string_view bytes, bool breakLines, bool allowSlash, char padChar)
{
    const std::string_view digits = allowSlash ? kDigits : kDigitsWithoutSlash;
    const std::size_t codes = (bytes.size() + 2) / 3 * 4;
    std::string text;
    text.reserve(codes + (codes / kCodesOfLine + 1) * kLineBreak.size());
    if (breakLines)
        text += kLineBreak.substr(1);
    const std::size_t wholeLine = breakLines ? kBytesOfLine : bytes.size();
    while (!bytes.empty()) {
        const std::string_view line = bytes.substr(0, wholeLine);
        appendCodes(text, line, digits, padChar);
        if (breakLines && line.size() > kBytesOfLine - 3)
            text += kLineBreak;
        bytes.remove_prefix(line.size());
    }
    return text;
}

std::string zrISO8061StringFromStoredDay(double seconds)
{
    const double days = std::floor(seconds / kSecondsOfDay);
    if (!(std::abs(days) < kCalendarDays))
        return {};
    const std::chrono::year_month_day day{
        std::chrono::sys_days(std::chrono::days(static_cast<std::int32_t>(days)))};
    std::string text;
    appendNumber(text, static_cast<unsigned>(std::abs(static_cast<int>(day.year()))), 4);
    text += '-';
    appendNumber(text, static_cast<unsigned>(day.month()), 2);
    text += '-';
    appendNumber(text, static_cast<unsigned>(day.day()), 2);
    return text;
}

std::string ISO8061StringFromDate(platform::Date date)
{
    return zrISO8061StringFromStoredDay(date.seconds + platform::TimeZone::local().offsetFromGMT(date));
}
