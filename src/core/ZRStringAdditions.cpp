// Reduces and compares strings by their characters' classes.
#include "core/ZRStringAdditions.h"

#include "platform/text/Compare.h"
#include "platform/text/Fold.h"
#include "platform/text/Utf.h"

#include <algorithm>
#include <compare>

#include <unicode/uchar.h>

using platform::Value;

namespace {

/// The characters of `text` for which `keeps` holds; ill-formed sequences are dropped.
template <class Keeps>
std::string filtered(std::string_view text, Keeps keeps)
{
    std::string kept;
    kept.reserve(text.size());
    for (std::size_t at = 0; at < text.size();) {
        const std::size_t start = at;
        const char32_t character = platform::nextCharacter(text, at);
        if (character != platform::kIllFormed && keeps(static_cast<UChar32>(character)))
            kept += text.substr(start, at - start);
    }
    return kept;
}

bool isDialled(UChar32 c)
{
    if (c < 0x80)
        return (c >= '0' && c <= '9') || (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || c == '+'
            || c == '#' || c == '*' || c == ',';
    return u_charType(c) == U_DECIMAL_DIGIT_NUMBER;
}

} // namespace

std::string zrStandardizedPhoneNumber(std::string_view text) { return filtered(text, isDialled); }

std::string zrStringByRemovingPunctuation(std::string_view text)
{
    return filtered(text, [](UChar32 c) { return !u_ispunct(c); });
}

bool zrIsCompatibleWithSubscription(std::string_view location, std::string_view subscription)
{
    return location == subscription;
}

std::string zrCaseNormalizedCopy(std::string_view text) { return platform::foldCaseAndDiacritics(text); }

bool zrEqualIgnoringCase(std::string_view a, std::string_view b)
{
    return a == b || std::is_eq(platform::compare(a, b, platform::kCompareCaseInsensitive));
}

bool zrCaseInsensitiveIsEqual(const Value& a, const Value& b)
{
    if (a.kind() != b.kind())
        return a == b;
    switch (a.kind()) {
    case Value::Kind::string:
        return zrEqualIgnoringCase(a.asText(), b.asText());
    case Value::Kind::array:
        return std::ranges::equal(a.asArray(), b.asArray(),
            [](const Value& x, const Value& y) { return zrCaseInsensitiveIsEqual(x, y); });
    case Value::Kind::dictionary:
        return std::ranges::equal(
            a.asDictionary()->entries(), b.asDictionary()->entries(), [](const auto& x, const auto& y) {
                return x.first == y.first && zrCaseInsensitiveIsEqual(x.second, y.second);
            });
    default:
        return a == b;
    }
}

Value nonNullValueForKey(std::string_view key, const Value& dictionary)
{
    const Value& value = dictionary[key];
    return value.isNull() ? Value() : value;
}

Value zrDictionaryByRemovingNulls(const Value& dictionary)
{
    const platform::Dictionary* all = dictionary.asDictionary();
    const auto isNull = [](const auto& entry) { return entry.second.isNull(); };
    if (!all || std::ranges::none_of(all->entries(), isNull))
        return dictionary;
    std::vector<platform::Dictionary::Entry> kept;
    std::ranges::remove_copy_if(all->entries(), std::back_inserter(kept), isNull);
    return Value::dictionary(std::move(kept));
}
