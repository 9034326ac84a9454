// A card as the rules of names see it, where only its columns were read.
#pragma once

#include "core/NameParts.h"
#include "core/PersonFlags.h"
#include "objectstore/Row.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <span>
#include <string>
#include <string_view>

/// The columns that names are made of, one row after the other.
///
/// Ownership: borrows the fields of a row until the next `set`.
/// Threads:   one.
/// Errors:    none.
class NamedColumns {
public:
    /// What to read, in this order, in front of whatever else is read of a row.
    static constexpr std::array<std::string_view, 8> keys = {
        "firstName", "middleName", "lastName", "title", "suffix", "organization", "nickname", "displayFlags"};
    static constexpr std::size_t indexOfOrganization = 5, indexOfNickname = 6, indexOfFlags = 7;

    /// `defaultOrdering` is that of cards that have none of their own (`ZRRoster::defaultNameOrdering`).
    explicit NamedColumns(std::int64_t defaultOrdering) : _defaultOrdering(defaultOrdering) { }

    void set(std::span<const objectstore::FieldValue> fields) { _fields = fields; }

    std::string text(std::string_view property) const
    {
        const auto at = std::ranges::find(_properties, property) - _properties.begin();
        return std::string(_fields[static_cast<std::size_t>(at)].bytes);
    }
    bool isCompany() const { return (flags() & personFlags::kShowAsMask) == personFlags::kShowAsCompany; }
    bool isLastNameFirst() const
    {
        const std::int64_t ordering = flags() & personFlags::kNameOrderingMask;
        return (ordering != 0 ? ordering : _defaultOrdering) == personFlags::kLastNameFirst;
    }
    std::string fullName(bool auxiliary) const ZR_NTS { return nameParts::fullName(*this, auxiliary); }
    /// As far as the card's own columns say it.
    std::string alternateName() const
    {
        return std::string(_fields[isThere(indexOfNickname) ? indexOfNickname : indexOfOrganization].bytes);
    }

    /// Whether what the card is called, if anything, stands in its entries.
    bool isUnnamed() const ZR_NTS
    {
        return !isThere(indexOfOrganization) && !isThere(indexOfNickname)
            && nameParts::realCompositeName(*this, false).empty();
    }

private:
    bool isThere(std::size_t at) const { return _fields[at].kind != objectstore::FieldKind::absent; }
    std::int64_t flags() const { return _fields[indexOfFlags].integer; }

    static constexpr std::array<std::string_view, 7> _properties = {zr::kZRFirstNameProperty,
        zr::kZRMiddleNameProperty, zr::kZRLastNameProperty, zr::kZRTitleProperty, zr::kZRSuffixProperty,
        zr::kZROrganizationProperty, zr::kZRNicknameProperty};

    const std::int64_t _defaultOrdering;
    std::span<const objectstore::FieldValue> _fields;
};
