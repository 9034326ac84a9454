// Which properties of a person take part when cards are compared and merged.
#pragma once

#include "core/PersonFlags.h"
#include "core/ZRConstants.h"

#include <cstdint>
#include <string_view>

namespace merge {

/// Facts of one card that no other takes over: its id and its dates.
inline bool isOfOneCardOnly(std::string_view property)
{
    return property == zr::kZRUIDProperty || property == zr::kZRCreationDateProperty
        || property == zr::kZRModificationDateProperty;
}

/// What a card's flags say of the person: all but the mark that it came with the last import.
inline std::int64_t flagsOfPerson(std::int64_t flags) { return flags & ~personFlags::kLastImport; }

} // namespace merge
