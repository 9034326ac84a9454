// How a model is asked.
#include "objectstore/Model.h"

#include "objectstore/StoreObject.h"

namespace objectstore {

const Slot* Entity::slot(std::string_view key) const
{
    const auto found = _byKey.find(key);
    return found == _byKey.end() ? nullptr : found->second;
}

platform::Ref<StoreObject> Entity::makeObject() const
{
    return _make ? _make(*this) : platform::makeRef<StoreObject>(*this);
}

const Entity* Entity::textEntry() const
{
    const Entity* entry = _model->textEntry();
    return entry && isKindOf(*entry->owner()->destination) ? entry : nullptr;
}

const Entity* Model::entity(std::string_view name) const
{
    const auto found = _byName.find(name);
    return found == _byName.end() ? nullptr : found->second;
}

std::string quoted(std::string_view name)
{
    std::string text = "\"";
    for (const char c : name) {
        if (c == '"')
            text += c;
        text += c;
    }
    return text += '"';
}

} // namespace objectstore
