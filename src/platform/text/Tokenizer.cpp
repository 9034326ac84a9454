// How words are found, by ICU, with its faults undone.
#include "platform/text/Tokenizer.h"

#include "platform/text/Locale.h"

#include <unicode/brkiter.h>
#include <unicode/ubrk.h>
#include <unicode/utext.h>

#include <algorithm>
#include <array>
#include <memory>

namespace platform {

namespace {

// What an ASCII character does to a word: a joiner stands between two letters, two digits or either, and
// holds them together.
enum Class : std::uint8_t { kOther, kLetter, kDigit, kLine, kJoinsDigits, kJoinsBoth };

constexpr auto kClasses = [] {
    std::array<Class, 128> classes{};
    for (unsigned byte = 0; byte < 128; ++byte)
        if ((byte >= 'a' && byte <= 'z') || (byte >= 'A' && byte <= 'Z'))
            classes[byte] = kLetter;
        else if (byte >= '0' && byte <= '9')
            classes[byte] = kDigit;
    classes['_'] = kLine;
    classes['.'] = classes['\''] = kJoinsBoth;
    classes[','] = classes[';'] = kJoinsDigits;
    return classes;
}();

Class classAt(std::string_view text, std::size_t at)
{
    return at < text.size() ? kClasses[static_cast<unsigned char>(text[at])] : kOther;
}

bool isInWord(Class c) { return c == kLetter || c == kDigit || c == kLine; }

bool joins(Class before, Class joiner, Class after)
{
    if (before != after)
        return false;
    return before == kLetter ? joiner == kJoinsBoth
                             : before == kDigit && (joiner == kJoinsBoth || joiner == kJoinsDigits);
}

// The same words as the general rules give for text without colons, whose meaning depends on the language.
std::vector<TextRange> wordsOfASCII(std::string_view text)
{
    std::vector<TextRange> ranges;
    for (std::size_t at = 0; at < text.size();) {
        const std::size_t start = at;
        bool isWord = false;
        for (Class c = classAt(text, at); isInWord(c); c = classAt(text, at)) {
            isWord |= c != kLine;
            ++at;
            if (joins(c, classAt(text, at), classAt(text, at + 1)))
                ++at;
        }
        if (isWord)
            ranges.push_back({start, at - start});
        at += at == start;
    }
    return ranges;
}

// The break iterator of this thread, for the locale that the environment names.
icu::BreakIterator* currentIterator()
{
    thread_local std::string variable;
    thread_local std::unique_ptr<icu::BreakIterator> iterator;
    if (const std::string_view now = localeVariable(); !iterator || variable != now) {
        UErrorCode status = U_ZERO_ERROR;
        const icu::Locale locale(localeFromEnvironmentForm(now).c_str());
        iterator.reset(icu::BreakIterator::createWordInstance(locale, status));
        variable = now;
        if (U_FAILURE(status))
            iterator.reset();
    }
    return iterator.get();
}

std::vector<TextRange> wordsByRules(std::string text)
{
    // Some versions of ICU take this sign for a letter, though the standard does not.
    std::replace(text.begin(), text.end(), '@', ' ');
    std::vector<TextRange> ranges;
    icu::BreakIterator* iterator = currentIterator();
    UErrorCode status = U_ZERO_ERROR;
    UText source = UTEXT_INITIALIZER;
    utext_openUTF8(&source, text.data(), static_cast<int64_t>(text.size()), &status);
    if (!iterator || U_FAILURE(status))
        return ranges;
    iterator->setText(&source, status);
    int32_t start = iterator->first();
    for (int32_t end = iterator->next(); end != icu::BreakIterator::DONE; end = iterator->next()) {
        const TextRange range{static_cast<std::size_t>(start), static_cast<std::size_t>(end - start)};
        // The rules count two lines in a row as a word, though one line as none.
        const bool isLine = range.of(text).find_first_not_of('_') == std::string_view::npos;
        if (iterator->getRuleStatus() >= UBRK_WORD_NONE_LIMIT && !isLine)
            ranges.push_back(range);
        start = end;
    }
    utext_close(&source);
    return ranges;
}

} // namespace

std::vector<TextRange> wordRanges(std::string_view text)
{
    const bool isPlain = isASCII(text) && text.find(':') == std::string_view::npos;
    return isPlain ? wordsOfASCII(text) : wordsByRules(std::string(text));
}

std::vector<std::string> words(std::string_view text)
{
    std::vector<std::string> result;
    for (const TextRange& range : wordRanges(text))
        result.emplace_back(range.of(text));
    return result;
}

} // namespace platform
