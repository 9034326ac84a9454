// How texts, days and pictures are written into a vCard.
#include "interchange/vcard/VCardText.h"

#include "platform/text/Dates.h"
#include "platform/text/Utf.h"

#include <fmt/format.h>

#include <array>
#include <chrono>
#include <cmath>
#include <cstdint>
#include <cstdlib>

namespace {

constexpr auto kIsEscaped = [] {
    std::array<bool, 256> escaped{};
    for (const unsigned char character : {';', ',', ':', '\r', '\n'})
        escaped[character] = true;
    return escaped;
}();

/// What the days of a chrono calendar cover, with room at both ends.
constexpr double kCalendarDays = 32000 * 365.0;
constexpr double kSecondsOfDay = 86400;

constexpr std::size_t kCodesOfLine = 76;
constexpr std::string_view kLineBreak = "\n  ";

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
    std::size_t from = 0, at = 0;
    while (at < text.size()) {
        if (!kIsEscaped[static_cast<unsigned char>(text[at])]) {
            ++at;
            continue;
        }
        to.append(text, from, at - from);
        std::size_t advance = 0;
        to.append(*zrEscapeStringForUnichar(text[at], at + 1 < text.size() ? text[at + 1] : '\0', advance));
        from = at += advance;
    }
    to.append(text, from);
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
    std::string digits = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
    if (!allowSlash)
        digits.back() = ',';
    const std::size_t codes = (bytes.size() + 2) / 3 * 4;
    std::string text;
    text.reserve(codes + (codes / kCodesOfLine + 1) * kLineBreak.size());
    if (breakLines)
        text += kLineBreak.substr(1);
    std::size_t ofLine = 0;
    for (std::size_t at = 0; at < bytes.size(); at += 3) {
        const std::size_t taken = std::min<std::size_t>(bytes.size() - at, 3);
        std::uint32_t bits = 0;
        for (std::size_t byte = 0; byte < 3; ++byte)
            bits = bits << 8 | (byte < taken ? static_cast<unsigned char>(bytes[at + byte]) : 0);
        for (std::size_t digit = 0; digit < 4; ++digit)
            text += digit <= taken ? digits[bits >> (18 - 6 * digit) & 0x3F] : padChar;
        if (breakLines && (ofLine += 4) == kCodesOfLine) {
            text += kLineBreak;
            ofLine = 0;
        }
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
    return fmt::format("{:04}-{:02}-{:02}", std::abs(static_cast<int>(day.year())),
        static_cast<unsigned>(day.month()), static_cast<unsigned>(day.day()));
}

std::string ISO8061StringFromDate(platform::Date date)
{
    return zrISO8061StringFromStoredDay(date.seconds + platform::TimeZone::local().offsetFromGMT(date));
}
