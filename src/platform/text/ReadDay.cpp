// How a day that a person wrote is read.
#include "platform/text/Dates.h"

#include "platform/text/FoldTable.h"

#include <algorithm>
#include <span>
#include <utility>
#include <vector>

namespace platform {

namespace {

constexpr std::string_view kMonths[] = {"january", "february", "march", "april", "may", "june", "july",
    "august", "september", "october", "november", "december"};
constexpr std::string_view kWeekdays[] = {
    "monday", "tuesday", "wednesday", "thursday", "friday", "saturday", "sunday"};
constexpr std::string_view kOrdinalEndings[] = {"st", "nd", "rd", "th"};
constexpr std::string_view kMarks = ",./-:+", kBlanks = " \t\r\n";
constexpr std::size_t kShortestName = 3;

bool isDigit(char byte) { return byte >= '0' && byte <= '9'; }
bool isLetter(char byte) { return smallLetter(byte) >= 'a' && smallLetter(byte) <= 'z'; }

std::string lowered(std::string_view text)
{
    std::string result(text);
    std::transform(result.begin(), result.end(), result.begin(), smallLetter);
    return result;
}

// The place of the name that `word` is or abbreviates, from 1 on; 0 when it is none.
int placeOfName(std::string_view word, std::span<const std::string_view> names)
{
    if (word.size() < kShortestName)
        return 0;
    const std::string name = lowered(word);
    const auto found = std::find_if(
        names.begin(), names.end(), [&](std::string_view each) { return each.starts_with(name); });
    return found == names.end() ? 0 : static_cast<int>(found - names.begin()) + 1;
}

// A word or number of the text, with the last mark before it: '/' and ':' mean something, blanks do not.
struct Token {
    std::string_view text;
    char mark = ' ';
    bool isAfterBlank = false;

    bool isNumber() const { return isDigit(text[0]); }
    bool isNumber(std::size_t fewest, std::size_t most) const
    {
        return isNumber() && text.size() >= fewest && text.size() <= most;
    }
    bool isWord(std::string_view word) const { return lowered(text) == word; }
    int number() const
    {
        int value = 0;
        for (const char digit : text.substr(0, 8))
            value = value * 10 + (digit - '0');
        return value;
    }
};

using Tokens = std::vector<Token>;

// Empty when the text holds a byte that has no place in a date.
Tokens tokensOf(std::string_view text)
{
    Tokens tokens;
    Token token;
    for (std::size_t at = 0; at < text.size();) {
        if (const auto isPart = isDigit(text[at]) ? isDigit : isLetter; isPart(text[at])) {
            const std::size_t start = at;
            at = static_cast<std::size_t>(
                std::find_if_not(text.begin() + static_cast<std::ptrdiff_t>(at), text.end(), isPart)
                - text.begin());
            token.text = text.substr(start, at - start);
            tokens.push_back(std::exchange(token, {}));
        } else if (kMarks.find(text[at]) != std::string_view::npos) {
            token.mark = text[at++];
        } else if (kBlanks.find(text[at]) != std::string_view::npos) {
            token.isAfterBlank = true;
            ++at;
        } else {
            return {};
        }
    }
    return tokens;
}

bool isOrdinalEnding(const Token& token)
{
    return !token.isAfterBlank && token.mark == ' '
        && std::find(std::begin(kOrdinalEndings), std::end(kOrdinalEndings), lowered(token.text))
        != std::end(kOrdinalEndings);
}

// Drops what names no part of the day: the weekday in front, "th" behind a number, "of".
void dropFillers(Tokens& tokens)
{
    if (!tokens.empty() && placeOfName(tokens[0].text, kWeekdays))
        tokens.erase(tokens.begin());
    for (std::size_t at = 1; at < tokens.size();)
        if ((tokens[at - 1].isNumber() && isOrdinalEnding(tokens[at])) || tokens[at].isWord("of"))
            tokens.erase(tokens.begin() + static_cast<std::ptrdiff_t>(at));
        else
            ++at;
}

bool isTime(std::span<const Token> tokens)
{
    if (tokens.empty())
        return true;
    const bool isAnnounced = tokens[0].isWord("t") || tokens[0].isWord("at");
    if (isAnnounced)
        return tokens.size() > 1 && tokens[1].isNumber();
    return tokens.size() > 1 && tokens[0].isNumber(1, 2) && tokens[1].isNumber(2, 2) && tokens[1].mark == ':';
}

// Of a year in two digits the latest that is not above `latest`; 0 for what is no year.
int yearOfToken(const Token& token, int latest)
{
    if (token.isNumber(4, 4))
        return token.number();
    if (!token.isNumber(2, 2))
        return 0;
    const int year = latest - latest % 100 + token.number();
    return year > latest ? year - 100 : year;
}

std::optional<CalendarDay> checked(CalendarDay day)
{
    return day.isValid() ? std::optional(day) : std::nullopt;
}

std::optional<CalendarDay> dayOfNumbers(std::span<const Token> tokens, DayOrder order, int latestYear)
{
    const Token &first = tokens[0], &second = tokens[1], &third = tokens[2];
    if (second.mark != third.mark || second.mark == ':' || !second.isNumber(1, 2))
        return std::nullopt;
    if (first.isNumber(4, 4) && third.isNumber(1, 2))
        return checked({first.number(), second.number(), third.number()});
    if (!first.isNumber(1, 2))
        return std::nullopt;
    const int year = yearOfToken(third, latestYear);
    const bool isDayFirst = order == DayOrder::dayFirst || second.mark == '.' || first.number() > 12;
    return isDayFirst ? checked({year, second.number(), first.number()})
                      : checked({year, first.number(), second.number()});
}

// "Mar 4 1998", "4 March 1998" and "1998 March 4".
std::optional<CalendarDay> dayWithName(std::span<const Token> tokens, int latestYear)
{
    const std::size_t namePlace = tokens[0].isNumber() ? 1 : 0;
    const int month = placeOfName(tokens[namePlace].text, kMonths);
    const Token *day = &tokens[1 - namePlace], *year = &tokens[2];
    if (day->isNumber(4, 4))
        std::swap(day, year);
    if (!month || !day->isNumber(1, 2))
        return std::nullopt;
    return checked({yearOfToken(*year, latestYear), month, day->number()});
}

} // namespace

std::optional<CalendarDay> readDay(std::string_view text, DayOrder order, int latestYear)
{
    Tokens tokens = tokensOf(text);
    dropFillers(tokens);
    const std::span<const Token> all(tokens);
    if (!all.empty() && all[0].isNumber(8, 8) && isTime(all.subspan(1))) {
        const int number = all[0].number();
        return checked({number / 10000, number / 100 % 100, number % 100});
    }
    if (all.size() < 3 || !isTime(all.subspan(3)))
        return std::nullopt;
    const bool hasNumbersOnly = all[0].isNumber() && all[1].isNumber();
    return hasNumbersOnly ? dayOfNumbers(all, order, latestYear) : dayWithName(all, latestYear);
}

} // namespace platform
