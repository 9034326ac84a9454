// How texts are compared and searched under the options.
#include "platform/text/Compare.h"

#include "platform/text/Collation.h"
#include "platform/text/Fold.h"
#include "platform/text/FoldTable.h"

#include <algorithm>

namespace platform {

namespace {

bool isHighByte(char byte) { return byte & 0x80; }
bool isDigit(char byte) { return byte >= '0' && byte <= '9'; }

std::uint32_t foldOptionsOf(std::uint32_t options)
{
    return (options & kCompareCaseInsensitive ? kFoldCase : kFoldNothing)
        | (options & kCompareDiacriticInsensitive ? kFoldDiacritics : kFoldNothing);
}

// Folds only behind the first difference: folds work character by character, so an equal ASCII start
// decides nothing.
std::weak_ordering compareFolded(std::string_view a, std::string_view b, std::uint32_t fold)
{
    std::size_t at = 0;
    const std::size_t shared = std::min(a.size(), b.size());
    const bool foldsCase = fold & kFoldCase;
    for (; at < shared && !isHighByte(a[at]) && !isHighByte(b[at]); ++at) {
        const char left = foldsCase ? smallLetter(a[at]) : a[at];
        const char right = foldsCase ? smallLetter(b[at]) : b[at];
        if (left != right)
            return left <=> right;
    }
    a.remove_prefix(at);
    b.remove_prefix(at);
    if (a.empty() && b.empty())
        return std::weak_ordering::equivalent;
    return transformed(a, fold) <=> transformed(b, fold);
}

std::string_view takeDigits(std::string_view& text)
{
    const auto end = std::find_if_not(text.begin(), text.end(), isDigit);
    std::string_view digits = text.substr(0, static_cast<std::size_t>(end - text.begin()));
    text.remove_prefix(digits.size());
    digits.remove_prefix(std::min(digits.find_first_not_of('0'), digits.size()));
    return digits;
}

std::weak_ordering compareAmounts(std::string_view a, std::string_view b)
{
    return a.size() != b.size() ? a.size() <=> b.size() : a <=> b;
}

std::weak_ordering compareNumeric(std::string_view a, std::string_view b)
{
    while (!a.empty() && !b.empty()) {
        if (isDigit(a[0]) && isDigit(b[0])) {
            const std::string_view left = takeDigits(a), right = takeDigits(b);
            if (const auto order = compareAmounts(left, right); order != 0)
                return order;
            continue;
        }
        if (a[0] != b[0])
            return static_cast<unsigned char>(a[0]) <=> static_cast<unsigned char>(b[0]);
        a.remove_prefix(1);
        b.remove_prefix(1);
    }
    return a.size() <=> b.size();
}

std::optional<std::size_t> place(std::string_view needle, std::string_view haystack, std::uint32_t options)
{
    if (needle.empty() || needle.size() > haystack.size())
        return std::nullopt;
    const bool backwards = options & kCompareBackwards;
    const std::size_t last = haystack.size() - needle.size();
    if (options & kCompareAnchored) {
        const std::size_t at = backwards ? last : 0;
        return haystack.substr(at, needle.size()) == needle ? std::optional(at) : std::nullopt;
    }
    const std::size_t at = backwards ? haystack.rfind(needle) : haystack.find(needle);
    return at == std::string_view::npos ? std::nullopt : std::optional(at);
}

// The characters of `text` whose folds make up the bytes of `folded`, with those behind that fold away.
TextRange sourceOf(TextRange folded, std::string_view text, std::uint32_t fold)
{
    std::size_t start = text.size(), end = text.size(), length = 0;
    for (std::size_t at = 0; at < text.size();) {
        const std::size_t first = at;
        const std::size_t part = foldOfCharacter(nextCharacter(text, at), fold).size();
        if (part && length >= folded.end()) {
            end = first;
            break;
        }
        length += part;
        if (start == text.size() && length > folded.start)
            start = first;
    }
    return {start, end - start};
}

} // namespace

std::weak_ordering compare(std::string_view a, std::string_view b, std::uint32_t options)
{
    if (options & kCompareLocalized)
        return compareLocalized(a, b, options);
    const std::uint32_t fold = foldOptionsOf(options);
    if (options & kCompareNumeric)
        return fold ? compareNumeric(transformed(a, fold), transformed(b, fold)) : compareNumeric(a, b);
    return fold ? compareFolded(a, b, fold) : std::weak_ordering(a <=> b);
}

std::optional<TextRange> rangeOf(std::string_view needle, std::string_view haystack, std::uint32_t options)
{
    const std::uint32_t fold = foldOptionsOf(options);
    if (!fold) {
        const auto at = place(needle, haystack, options);
        return at ? std::optional(TextRange{*at, needle.size()}) : std::nullopt;
    }
    const std::string foldedNeedle = transformed(needle, fold);
    const auto at = place(foldedNeedle, transformed(haystack, fold), options);
    if (!at)
        return std::nullopt;
    const TextRange folded{*at, foldedNeedle.size()};
    return isASCII(haystack) ? folded : sourceOf(folded, haystack, fold);
}

bool contains(std::string_view haystack, std::string_view needle, std::uint32_t options)
{
    const std::uint32_t fold = foldOptionsOf(options);
    return (fold ? place(transformed(needle, fold), transformed(haystack, fold), options)
                 : place(needle, haystack, options))
        .has_value();
}

} // namespace platform
