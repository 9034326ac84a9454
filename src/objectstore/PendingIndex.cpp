// How unsaved objects are found by a text.
#include "objectstore/PendingIndex.h"

#include "objectstore/ObjectAccess.h"

#include <algorithm>

namespace objectstore {

void PendingIndex::take(StoreObject& object)
{
    if (!object.entity().isKindOf(*_slot->entity) || !object.hasChanges() || object.isDeleted())
        return;
    const FieldValue field = ObjectAccess::fieldIfKnown(object, *_slot);
    if (field.kind == FieldKind::text)
        _byText.emplace(field.bytes, &object);
}

std::vector<StoreObject*> PendingIndex::find(std::string_view text) const
{
    std::vector<StoreObject*> found;
    const auto [from, to] = _byText.equal_range(std::string(text));
    for (auto entry = from; entry != to; ++entry)
        found.push_back(entry->second);
    // An object that was set there and back stands here twice.
    std::ranges::sort(found);
    found.erase(std::unique(found.begin(), found.end()), found.end());
    return found;
}

} // namespace objectstore
