// How names are taken apart, compared and joined.
#include "interchange/vcard/prepare/Names.h"

#include "interchange/vcard/prepare/Ascii.h"

#include <algorithm>
#include <cstddef>
#include <span>
#include <vector>

namespace vcard::prepare {

namespace {

using Words = std::vector<std::string_view>;

constexpr std::string_view kTitles[] = {"mr", "mrs", "ms", "miss", "mx", "dr", "prof", "rev", "sir", "lady",
    "lord", "herr", "frau", "mme", "mlle", "sr", "sra", "srta", "sig", "dhr", "mevr", "dipl.-ing"};
constexpr std::string_view kTitlesBehind[] = {"jr", "sr", "ii", "iii", "iv", "esq", "phd", "ph.d", "md",
    "m.d", "dds", "msc", "m.sc", "bsc", "b.sc", "mba", "m.a", "b.a", "cpa"};
constexpr std::string_view kParticles[] = {"van", "von", "vom", "zu", "zum", "zur", "der", "den", "de", "del",
    "della", "di", "da", "das", "dos", "du", "la", "le", "ten", "ter", "bin", "ibn", "al", "af", "av", "y"};

bool isOneOf(std::string_view word, std::span<const std::string_view> words)
{
    while (!word.empty() && (word.back() == '.' || word.back() == ','))
        word.remove_suffix(1);
    return std::any_of(words.begin(), words.end(), [&](auto known) { return equalInAnyCase(word, known); });
}

bool areAll(const Words& words, std::span<const std::string_view> known)
{
    return !words.empty()
        && std::all_of(words.begin(), words.end(), [&](auto word) { return isOneOf(word, known); });
}

/// The words of a canonical text, between blanks, commas, field ends and line ends.
Words wordsOf(std::string_view text)
{
    Words words;
    std::size_t start = 0;
    const auto end = [&](std::size_t at, std::size_t length) {
        if (at > start)
            words.push_back(text.substr(start, at - start));
        start = at + length;
    };
    for (std::size_t at = 0; at < text.size(); ++at) {
        const bool escape = text[at] == '\\' && at + 1 < text.size();
        const char c = text[at + escape];
        if (isBlank(c) || c == ',' || c == ';' || (escape && c == 'n'))
            end(at, escape ? 2 : 1);
        at += escape;
    }
    end(text.size(), 0);
    return words;
}

bool isBeforeInAnyCase(std::string_view a, std::string_view b)
{
    return std::lexicographical_compare(
        a.begin(), a.end(), b.begin(), b.end(), [](char x, char y) { return upper(x) < upper(y); });
}

std::string_view withoutPunctuation(std::string_view word)
{
    const auto isPunctuation = [](char c) {
        return std::string_view(".,'\"()\\").find(c) != std::string_view::npos;
    };
    while (!word.empty() && isPunctuation(word.front()))
        word.remove_prefix(1);
    while (!word.empty() && isPunctuation(word.back()))
        word.remove_suffix(1);
    return word;
}

std::string joined(std::span<const std::string_view> words)
{
    std::string text;
    for (const auto word : words)
        text.append(text.empty() ? "" : " ").append(word);
    return text;
}

/// Where the last comma is, with the backslash in front of it if there is one, or npos.
std::size_t findLastComma(std::string_view text)
{
    std::size_t found = text.npos;
    for (std::size_t at = 0; at < text.size(); ++at) {
        const bool escape = text[at] == '\\' && at + 1 < text.size();
        if (text[at + escape] == ',')
            found = at;
        at += escape;
    }
    return found;
}

struct Parts {
    std::string last, first, middle, title, suffix;

    std::string text() const { return last + ';' + first + ';' + middle + ';' + title + ';' + suffix; }
};

/// Titles in front of the words, and behind them, are taken away from them.
void takeTitles(std::span<const std::string_view>& words, Parts& parts)
{
    std::size_t front = 0, back = words.size();
    while (front + 1 < back && isOneOf(words[front], kTitles))
        ++front;
    while (back > front + 2 && isOneOf(words[back - 1], kTitlesBehind))
        --back;
    parts.title = joined(words.first(front));
    const auto behind = joined(words.subspan(back));
    parts.suffix =
        parts.suffix.empty() || behind.empty() ? behind + parts.suffix : behind + "\\, " + parts.suffix;
    words = words.subspan(front, back - front);
}

void takeNames(std::span<const std::string_view> words, Parts& parts)
{
    std::size_t last = words.empty() ? 0 : words.size() - 1;
    while (last > 1 && isOneOf(words[last - 1], kParticles))
        --last;
    parts.last = joined(words.subspan(last));
    if (last == 0)
        return;
    parts.first = words.front();
    parts.middle = joined(words.subspan(1, last - 1));
}

} // namespace

std::string nameFromText(std::string_view text)
{
    Parts parts;
    std::size_t comma = findLastComma(text);
    auto behind = comma == text.npos ? Words() : wordsOf(text.substr(comma));
    if (areAll(behind, kTitlesBehind)) {
        parts.suffix = joined(behind);
        text = text.substr(0, comma);
        comma = findLastComma(text);
        behind = comma == text.npos ? Words() : wordsOf(text.substr(comma));
    }
    const auto before = wordsOf(text.substr(0, comma));
    std::span<const std::string_view> words(before);
    if (behind.empty() || before.empty()) {
        if (before.empty())
            words = behind;
        takeTitles(words, parts);
        takeNames(words, parts);
        return parts.text();
    }
    // "Lima, Ana Maria": the last name in front.
    parts.last = joined(words);
    words = behind;
    takeTitles(words, parts);
    parts.first = words.front();
    parts.middle = joined(words.subspan(1));
    return parts.text();
}

bool isSaidBy(std::string_view text, std::string_view others)
{
    auto known = wordsOf(others);
    for (auto& word : known)
        word = withoutPunctuation(word);
    std::sort(known.begin(), known.end(), isBeforeInAnyCase);
    for (const auto written : wordsOf(text))
        if (const auto word = withoutPunctuation(written);
            !word.empty() && !std::binary_search(known.begin(), known.end(), word, isBeforeInAnyCase))
            return false;
    return true;
}

namespace {

void joinValues(std::string& canonical, std::size_t from, std::size_t fieldOfTitlesBehind)
{
    if (canonical.find(',', from) == canonical.npos)
        return;
    std::string text;
    std::size_t field = 0;
    for (auto at = from; at < canonical.size(); ++at) {
        const char c = canonical[at];
        const char next = at + 1 < canonical.size() ? canonical[at + 1] : '\0';
        field += c == ';';
        if (c == '\\' && next != '\0') {
            text.append({c, next});
            ++at;
        } else if (c != ',') {
            text += c;
        } else if (isBlank(next)) {
            text += "\\,";
        } else {
            text += field == fieldOfTitlesBehind ? "\\, " : " ";
        }
    }
    canonical.replace(from, canonical.npos, trimmed(text));
}

} // namespace

void joinNameValues(std::string& canonical, std::size_t from) { joinValues(canonical, from, 4); }

void joinListValues(std::string& canonical, std::size_t from) { joinValues(canonical, from, 0); }

} // namespace vcard::prepare
