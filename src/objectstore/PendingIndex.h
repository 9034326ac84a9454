// Unsaved objects by the text of one key, for imports that look up each name that they are about to add.
#pragma once

#include "objectstore/Model.h"

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

namespace objectstore {

class StoreObject;

/// Finds objects among the changed ones of a context by what their slot says now, without asking each.
///
/// It answers candidates: an object may have changed since, so whoever asks looks at each again; none that
/// fits is missing.
///
/// Ownership: borrows the objects of the context's list of changed ones.
/// Threads:   under the context's lock.
/// Errors:    none.
class PendingIndex {
public:
    explicit PendingIndex(const Slot& slot) : _slot(&slot) { }

    const Slot& slot() const { return *_slot; }
    /// Takes in what joined `changed` since the last time.
    template <class Objects>
    void update(const Objects& changed);
    /// An object that may be in here already got another text.
    void add(StoreObject& object, std::string_view text) { _byText.emplace(text, &object); }
    std::vector<StoreObject*> find(std::string_view text) const;

private:
    void take(StoreObject& object);

    const Slot* _slot;
    std::unordered_multimap<std::string, StoreObject*> _byText;
    std::size_t _taken = 0;
};

template <class Objects>
void PendingIndex::update(const Objects& changed)
{
    for (; _taken < changed.size(); ++_taken)
        take(*changed[_taken]);
}

} // namespace objectstore
