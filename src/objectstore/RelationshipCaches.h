// What an object remembers of where its relationships lead.
#pragma once

#include "objectstore/StoreObject.h"

#include <cstdint>
#include <vector>

namespace objectstore {

/// The far ends of one relationship as the store showed them, and those that unsaved changes added. Whether
/// they still lead here is asked of themselves.
struct RelationshipCache {
    std::uint16_t slot = 0;
    bool isLoaded = false;
    /// The context's `linkEpoch` at loading; a later one means that `keys` may be outdated.
    std::uint64_t epoch = 0;
    /// Parts are held; everything else is only known by key.
    ObjectList parts;
    std::vector<std::int64_t> keys;
    /// Found through their changed to-one: parts held, others by key.
    ObjectList addedParts;
    std::vector<std::int64_t> addedKeys;
};

/// The caches of one object; few slots of few objects have one.
struct RelationshipCaches {
    /// As many relationships as a new card has.
    static constexpr std::size_t kUsualCaches = 6;
    /// At a time, where there are more: many objects are read whole at once, and doubling would be half
    /// empty.
    static constexpr std::size_t kMoreCaches = 4;
    std::vector<RelationshipCache> list;

    RelationshipCache* find(const Slot& slot)
    {
        for (auto& cache : list)
            if (cache.slot == slot.index)
                return &cache;
        return nullptr;
    }
    RelationshipCache& of(const Slot& slot)
    {
        if (RelationshipCache* cache = find(slot))
            return *cache;
        if (list.size() == list.capacity())
            list.reserve(list.empty() ? kUsualCaches : list.size() + kMoreCaches);
        list.emplace_back().slot = slot.index;
        return list.back();
    }
    /// Forgets what the store showed; unsaved additions stay.
    void unload()
    {
        for (auto& cache : list) {
            cache.isLoaded = false;
            cache.parts.clear();
            cache.keys.clear();
        }
    }
};

} // namespace objectstore
