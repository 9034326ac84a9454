// The rules by which a card's names are made of its fields, whoever reads the fields.
#pragma once

#include "core/PersonFlags.h"
#include "core/ZRConstants.h"
#include "core/ZRGlobalLock.h"
#include "platform/text/Fold.h"
#include "platform/text/Utf.h"

#include <cstdint>
#include <string>
#include <string_view>

/// Names of one card. `Card` is whatever knows its fields; each is asked for only when a name needs it:
///
///     std::string text(std::string_view property) const;
///     bool isCompany() const;
///     bool isLastNameFirst() const;
///     std::string fullName(bool auxiliary) const;     // what `nameParts::fullName` gives, or gave before
///     std::string alternateName() const;
///
/// Ownership: none.
/// Threads:   expect the global lock.
/// Errors:    none of their own.
namespace nameParts {

/// A name part counts as present by the low eight bits of its length: one of 256 characters is empty to us,
/// as it always was to programs that store these names.
inline bool isPresent(std::string_view part) { return (platform::utf16Length(part) & 0xFF) != 0; }

inline void appendWithBlankBefore(std::string& name, std::string_view part)
{
    if (isPresent(part))
        name.append(" ").append(part);
}

inline void appendWithBlankAfter(std::string& name, std::string_view part)
{
    if (isPresent(part))
        name.append(part).append(" ");
}

template <class Card>
std::string fullName(const Card& card, bool auxiliary) ZR_NTS
{
    const std::string first = card.text(zr::kZRFirstNameProperty), last = card.text(zr::kZRLastNameProperty);
    if (!isPresent(first))
        return isPresent(last) ? last : std::string();
    if (!isPresent(last))
        return first;
    const std::string middle = card.text(zr::kZRMiddleNameProperty),
                      suffix = card.text(zr::kZRSuffixProperty);
    std::string name;
    if (auxiliary)
        appendWithBlankAfter(name, card.text(zr::kZRTitleProperty));
    if (card.isLastNameFirst()) {
        name.append(last).append(" ").append(first);
        appendWithBlankBefore(name, suffix);
        appendWithBlankBefore(name, middle);
        return name;
    }
    name.append(first).append(" ");
    appendWithBlankAfter(name, middle);
    name.append(last);
    appendWithBlankBefore(name, suffix);
    return name;
}

/// Empty for a card without any name.
template <class Card>
std::string realCompositeName(const Card& card, bool auxiliary) ZR_NTS
{
    const bool isCompany = card.isCompany();
    std::string name;
    if (isCompany)
        name = card.text(zr::kZROrganizationProperty);
    if (name.empty())
        name = card.fullName(isCompany || auxiliary);
    if (name.empty())
        name = card.alternateName();
    return name;
}

/// What makes cards similar; `nameless` is what a card without any name is called.
template <class Card>
std::string similarName(const Card& card, std::string_view nameless) ZR_NTS
{
    std::string name = realCompositeName(card, false);
    if (name.empty())
        name = nameless;
    if (card.isCompany())
        name += card.fullName(true);
    return platform::foldCase(name);
}

} // namespace nameParts
