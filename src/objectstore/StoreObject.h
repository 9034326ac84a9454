// One stored object as a context sees it: its row, with the changes that are not saved yet.
#pragma once

#include "objectstore/Model.h"
#include "objectstore/Row.h"
#include "platform/value/Object.h"
#include "platform/value/Value.h"

#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace objectstore {

class Overlay;
class PersistentStore;
struct RelationshipCaches;
class StoreContext;
class StoreObject;
struct ContextAnchor;

using ObjectRef = platform::Ref<StoreObject>;
using ObjectList = std::vector<ObjectRef>;

/// Names one object of one store for as long as the process runs.
///
/// Before its first save an object has a temporary id (a negative key) that only its context knows.
///
/// Ownership: a plain value; the model behind `entity` must live.
/// Threads:   like any plain value.
/// Errors:    none. The default names nothing.
struct StoreId {
    /// Which store: a number that no two stores of a process share, and no later one reuses.
    std::uint32_t store = 0;
    std::int64_t key = 0;
    const Entity* entity = nullptr;

    bool isTemporary() const { return key < 0; }
    explicit operator bool() const { return key != 0; }
    friend bool operator==(const StoreId& a, const StoreId& b)
    {
        return a.key == b.key && a.store == b.store;
    }
};

/// An object in a context, made by an entity's factory.
///
/// It holds the row that the store last showed and, once edited, the changed slots. Without a row it is a
/// fault: the first read of a stored slot fetches it. What is read of a relationship to the object's own
/// parts is held by the object; every other relationship is held by key, so that nothing owns itself in a
/// circle.
///
/// Three ways lead to a slot. The *public* way (`value`, `setValue`, key paths) runs the model's hooks. The
/// *primitive* way passes them by. The *plain reads* (`text`, `integer`, …) are the public way without
/// making a Value.
///
/// Ownership: shared. The context registers it weakly, and holds it while it has unsaved changes.
/// Threads:   the caller holds the context's lock. Only the last release may come from any thread, at any
///            time: the object then waits for the next holder of the lock.
/// Errors:    an unknown key, or a value of a wrong type, throws InvalidKey. Reading an object whose row is
///            gone throws InaccessibleObject; a store that cannot be read throws StoreFailure. An object that
///            was deleted and saved has no context: what was read of it stays readable, so that observers can
///            ask who it was, the rest reads as absent, and setting throws InaccessibleObject. After its
///            context has gone or was reset, an object reads as absent.
class StoreObject : public platform::Object {
public:
    const Entity& entity() const { return *_entity; }
    /// Null once the object is deleted and that is saved, or its context is gone.
    StoreContext* context() const;
    StoreId storeId() const;
    std::int64_t key() const { return _key; }
    /// Null until the object is assigned to a store, at the latest by the save.
    PersistentStore* store() const { return _store; }

    /// True while no row is here. An inserted object is none.
    bool isFault() const { return !_row && !isInserted(); }
    bool isInserted() const { return (_state & kInserted) != 0; }
    /// Has unsaved changes, and is neither inserted nor deleted.
    bool isUpdated() const { return (_state & (kUpdated | kInserted | kDeleted | kGone)) == kUpdated; }
    /// Deleted here and not saved yet, or deleted in the store.
    bool isDeleted() const { return (_state & (kDeleted | kGone)) != 0; }
    bool hasChanges() const { return (_state & (kInserted | kUpdated | kDeleted)) != 0; }
    /// Whether the slot was changed since the last save. Any kind of slot.
    bool hasChanged(const Slot& slot) const;
    /// The commit that last wrote the row, 0 without one.
    std::int64_t version() const { return _row ? _row->version() : 0; }

    /// The slot of that key, or an InvalidKey failure.
    const Slot& slot(std::string_view key) const;

    /// Any slot as a value: to-one as the object or absent, to-many as an array of objects.
    platform::Value value(const Slot& slot);
    /// `value` by key; an unknown key goes to `valueForUndefinedKey`.
    platform::Value valueForKey(std::string_view key);
    /// Keys joined by dots. Across a to-many, the array of the values found behind its objects.
    platform::Value valueForKeyPath(std::string_view path);

    /// Plain reads of stored attributes; "" and 0 where the value is absent. The text and bytes live until
    /// the object changes, is refreshed or is saved: use them at once.
    std::string_view text(const Slot& slot);
    std::string_view bytes(const Slot& slot);
    std::int64_t integer(const Slot& slot);
    double real(const Slot& slot);
    bool boolean(const Slot& slot);
    bool isAbsent(const Slot& slot);

    /// The object that a to-one leads to, or null. It may be a fault.
    ObjectRef related(const Slot& slot);
    /// Its key without making it; 0 when absent. Only for SlotKind::toOne.
    std::int64_t relatedKey(const Slot& slot);
    /// The objects of a to-many, unsaved changes included, in order of their keys (new ones last).
    ObjectList objects(const Slot& slot);

    /// Absent and the null marker clear the slot. Numbers convert between whole, floating and boolean; other
    /// kinds must fit the slot. A relationship takes an object, or an array of objects for a to-many, and
    /// changes its inverse with it. Setting what is there already changes nothing, but runs `didSet`.
    void setValue(const Slot& slot, const platform::Value& value);
    void setValueForKey(std::string_view key, const platform::Value& value);
    void setValueForKeyPath(std::string_view path, const platform::Value& value);
    void setRelated(const Slot& slot, StoreObject* object);
    void addObject(const Slot& slot, StoreObject& object);
    void removeObject(const Slot& slot, StoreObject& object);
    /// Makes the slot hold exactly those objects.
    void setObjects(const Slot& slot, const ObjectList& objects);

    /// The value as stored or changed; no hook runs. Attributes and to-one only.
    platform::Value primitiveValue(const Slot& slot);
    /// Changes an attribute, marks the object changed, runs no hook.
    void setPrimitiveValue(const Slot& slot, const platform::Value& value);
    /// Keeps a value that follows from others, without marking the object changed: it is written when the
    /// object is written anyway, and forgotten when the row is exchanged. What a lazy hook answers is kept
    /// so.
    void keepDerivedValue(const Slot& slot, const platform::Value& value);

    /// Once, when the object was inserted into a context.
    virtual void awakeFromInsert() { }
    /// Before a save, for every changed object; may change anything, which is then saved too.
    virtual void willSave() { }
    /// Before `willSave`, when others have changed something while there were unsaved changes here: what was
    /// derived from the object may be stale.
    virtual void willMerge() { }
    /// After a save that succeeded.
    virtual void didSave() { }
    /// The row was dropped or exchanged, or parts of the object changed elsewhere: whatever was derived from
    /// them is stale. Must not touch the context.
    virtual void didTurnIntoFault() { }
    /// A slot was changed by a public set, by its inverse, or by a delete.
    virtual void didChange(const Slot&) { }
    /// Asked for a key that the entity does not have. Throws InvalidKey unless overridden.
    virtual platform::Value valueForUndefinedKey(std::string_view key);

    std::string description() const override;

protected:
    explicit StoreObject(const Entity& entity);
    ~StoreObject() override;
    void lastOwnerGone() noexcept override;

private:
    friend class Entity;
    friend struct ObjectAccess;
    template <class T, class... Arguments>
    friend platform::Ref<T> platform::makeRef(Arguments&&... arguments);

    enum State : std::uint32_t {
        kInserted = 1,
        kUpdated = 2,
        kDeleted = 4,
        /// Deleted in the store, or never saved and deleted.
        kGone = 8,
        /// In the context's list of objects whose parts or links changed.
        kTouched = 16,
        /// In the context's list of objects with changes.
        kListed = 32,
        /// Asked before the save under way.
        kAsked = 64,
        /// Written for the first time by the save under way.
        kCreated = 128,
    };

    const Row* row();
    platform::Value storedValue(const Slot& slot);
    platform::Value lazyValue(const Slot& slot);
    FieldValue field(const Slot& slot);
    FieldValue fieldOrLazy(const Slot& slot);
    platform::Value largeValue(const Slot& slot);
    void putAttribute(const Slot& slot, platform::Value value);
    void finishSet(const Slot& slot);
    void setInverse(const Slot& slot, StoreObject* object);
    StoreContext& requireContext() const;
    const RelationshipCaches* cachesIfAny() const { return _relationships.get(); }

    std::uint32_t _state = 0;
    const Entity* _entity;
    ContextAnchor* _anchor = nullptr;
    PersistentStore* _store = nullptr;
    std::int64_t _key = 0;
    RowRef _row;
    std::unique_ptr<Overlay> _overlay;
    std::unique_ptr<RelationshipCaches> _relationships;
    StoreObject* _nextGone = nullptr;
};

} // namespace objectstore

template <>
struct std::hash<objectstore::StoreId> {
    std::size_t operator()(const objectstore::StoreId& id) const
    {
        return std::hash<std::int64_t>{}(id.key * 31 + id.store);
    }
};
