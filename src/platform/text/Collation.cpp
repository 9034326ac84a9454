// The order of the user's language, by a collator for each thread.
#include "platform/text/Collation.h"

#include "platform/text/Compare.h"
#include "platform/text/Locale.h"
#include "platform/text/Utf.h"

#include <unicode/coll.h>
#include <unicode/uversion.h>

#include <array>
#include <memory>

namespace platform {

namespace {

// One collator for each combination of the case, diacritic and numeric bits.
constexpr std::size_t kVariants = 8;

std::size_t variantOf(std::uint32_t options)
{
    return (options & kCompareCaseInsensitive ? 1u : 0u) | (options & kCompareDiacriticInsensitive ? 2u : 0u)
        | (options & kCompareNumeric ? 4u : 0u);
}

// Case without diacritics is a level of its own above the primary one; case is the tertiary level otherwise.
std::unique_ptr<icu::Collator> makeCollator(const std::string& locale, std::size_t variant)
{
    UErrorCode status = U_ZERO_ERROR;
    std::unique_ptr<icu::Collator> collator(
        icu::Collator::createInstance(icu::Locale(locale.c_str()), status));
    if (U_FAILURE(status) || !collator)
        return nullptr;
    const bool ignoresCase = variant & 1, ignoresMarks = variant & 2, isNumeric = variant & 4;
    collator->setAttribute(UCOL_STRENGTH,
        ignoresMarks      ? UCOL_PRIMARY
            : ignoresCase ? UCOL_SECONDARY
                          : UCOL_TERTIARY,
        status);
    collator->setAttribute(UCOL_CASE_LEVEL, ignoresMarks && !ignoresCase ? UCOL_ON : UCOL_OFF, status);
    collator->setAttribute(UCOL_NUMERIC_COLLATION, isNumeric ? UCOL_ON : UCOL_OFF, status);
    return collator;
}

// The collators of this thread, for the locale that the environment names.
struct Collators {
    std::string variable;
    std::string locale;
    std::array<std::unique_ptr<icu::Collator>, kVariants> variants;
};

Collators& currentCollators()
{
    thread_local Collators collators;
    const std::string_view variable = localeVariable();
    if (collators.locale.empty() || collators.variable != variable) {
        collators.variants = {};
        collators.variable = variable;
        collators.locale = localeFromEnvironmentForm(variable);
    }
    return collators;
}

// Null only when ICU has no data at all.
const icu::Collator* currentCollator(std::size_t variant)
{
    Collators& collators = currentCollators();
    auto& collator = collators.variants[variant];
    if (!collator)
        collator = makeCollator(collators.locale, variant);
    return collator.get();
}

icu::StringPiece piece(std::string_view text) { return {text.data(), static_cast<int32_t>(text.size())}; }

std::string dotted(const UVersionInfo& version)
{
    char text[U_MAX_VERSION_STRING_LENGTH];
    u_versionToString(version, text);
    return text;
}

} // namespace

std::weak_ordering compareLocalized(std::string_view a, std::string_view b, std::uint32_t options)
{
    if (a == b)
        return std::weak_ordering::equivalent;
    const icu::Collator* collator = currentCollator(variantOf(options));
    if (!collator)
        return compare(a, b, options & ~std::uint32_t{kCompareLocalized});
    UErrorCode status = U_ZERO_ERROR;
    return collator->compareUTF8(piece(a), piece(b), status) <=> 0;
}

std::string collationKey(std::string_view text)
{
    const icu::Collator* collator = currentCollator(variantOf(kCompareLocalized));
    if (!collator)
        return std::string(text);
    const std::u16string units = toUTF16(text);
    const auto length = static_cast<int32_t>(units.size());
    std::uint8_t buffer[256];
    const int32_t needed = collator->getSortKey(units.data(), length, buffer, sizeof buffer);
    if (needed <= 0)
        return {};
    const auto size = static_cast<std::size_t>(needed);
    // The closing zero byte adds nothing to the order: a key that is a prefix of another is the lower one.
    if (size <= sizeof buffer)
        return {reinterpret_cast<const char*>(buffer), size - 1};
    std::string key(size, '\0');
    collator->getSortKey(units.data(), length, reinterpret_cast<std::uint8_t*>(key.data()), needed);
    key.pop_back();
    return key;
}

std::string collationVersion()
{
    const Collators& collators = currentCollators();
    UVersionInfo rules{};
    if (const icu::Collator* collator = currentCollator(variantOf(kCompareLocalized)))
        collator->getVersion(rules);
    return collators.locale + " ICU " + U_ICU_VERSION + " rules " + dotted(rules);
}

} // namespace platform
