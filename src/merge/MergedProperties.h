// Which properties of a person take part when cards are compared and merged.
#pragma once

#include "core/ZRConstants.h"

#include <string_view>

namespace merge {

/// Facts of one card that no other takes over: its id and its dates.
inline bool isOfOneCardOnly(std::string_view property)
{
    return property == zr::kZRUIDProperty || property == zr::kZRCreationDateProperty
        || property == zr::kZRModificationDateProperty;
}

} // namespace merge
