// Who an object is, and where it goes when nobody owns it.
#include "objectstore/StoreObject.h"

#include "objectstore/ContextState.h"

#include <fmt/format.h>

namespace objectstore {

StoreObject::StoreObject(const Entity& entity) : _entity(&entity) { }

StoreObject::~StoreObject()
{
    if (_anchor)
        _anchor->release();
}

void StoreObject::lastOwnerGone() noexcept
{
    ContextAnchor* anchor = _anchor;
    if (!anchor) {
        delete this;
        return;
    }
    // Once pushed, the object may end at any moment, and its share of the anchor with it.
    anchor->retain();
    anchor->push(*this);
    if (!anchor->context.load())
        anchor->drain([](StoreObject&) {});
    anchor->release();
}

StoreContext* StoreObject::context() const
{
    return _anchor && (_state & kGone) == 0 ? _anchor->context.load(std::memory_order_acquire) : nullptr;
}

StoreContext& StoreObject::requireContext() const
{
    if (StoreContext* found = context())
        return *found;
    throw InaccessibleObject(fmt::format("{}: deleted, or its context is gone", description()));
}

StoreId StoreObject::storeId() const { return {_store ? _store->number() : 0, _key, _entity}; }

bool StoreObject::hasChanged(const Slot& slot) const { return _overlay && _overlay->isChanged(slot); }

const Slot& StoreObject::slot(std::string_view key) const
{
    if (const Slot* found = _entity->slot(key))
        return *found;
    throw InvalidKey(fmt::format("{} has no key \"{}\"", _entity->name(), key));
}

platform::Value StoreObject::valueForUndefinedKey(std::string_view key)
{
    throw InvalidKey(fmt::format("{} has no key \"{}\"", _entity->name(), key));
}

std::string StoreObject::description() const
{
    return fmt::format("<{} {}{}>", _entity->name(), _key, isFault() ? " (fault)" : "");
}

} // namespace objectstore
