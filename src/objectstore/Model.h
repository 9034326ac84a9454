// What can be stored: entities, their slots, and the tables behind them.
#pragma once

#include "platform/value/Object.h"
#include "platform/value/Value.h"

#include <cstddef>
#include <cstdint>
#include <memory>
#include <span>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

namespace objectstore {

class Entity;
class Model;
class StoreObject;

/// What a key of an entity stands for.
enum class SlotKind : std::uint8_t {
    /// A value in a column of the entity's table.
    attribute,
    /// A value in a side table of its own, read only when asked for: keep pictures here.
    largeAttribute,
    /// Not stored: answered by the `get` hook, changed by the `set` hook.
    computed,
    /// Another object; its key stands in a column of this entity's table.
    toOne,
    /// At most one other object, found by its own to-one (the inverse) that points here.
    toOneInverse,
    /// The objects whose to-one (the inverse) points here.
    toMany,
    /// Objects linked by rows of a join table, from either side.
    manyToMany,
};

enum class AttributeType : std::uint8_t {
    /// Any value; only for transient and computed slots.
    any,
    string,
    integer,
    real,
    /// Whole or floating, as it was set.
    number,
    boolean,
    /// Stored as seconds since 1 January 1970 UTC.
    date,
    data,
};

/// What deleting an object does to those a relationship leads to.
enum class DeleteRule : std::uint8_t { none, nullify, cascade };

/// Bits of SlotDescription::flags.
enum SlotFlag : std::uint8_t {
    kPlain = 0,
    kIndexed = 1,
    /// A unique index; absent values do not clash.
    kUnique = 2,
    /// The entity's text goes into a trigram index by this slot; the entity must have an owner.
    kTextIndex = 4,
    /// Kept with the object in memory, never stored; setting it does not mark the object changed.
    kTransient = 8,
    /// The text, folded for case and diacritics, stands in the text-index entry of the root that it belongs
    /// to, once that is written: the trigram index then narrows every positive test of the text.
    kFeedsTextIndex = 16,
};

using LazyHook = platform::Value (*)(StoreObject&);
using GetHook = platform::Value (*)(StoreObject&);
using SetHook = void (*)(StoreObject&, const platform::Value&);
using ChangeHook = void (*)(StoreObject&);

/// One key of an entity, as an upper room writes it into a constant table.
struct SlotDescription {
    std::string_view key;
    SlotKind kind = SlotKind::attribute;
    AttributeType type = AttributeType::any;
    std::uint8_t flags = kPlain;
    /// Relationships: the entity at the other end, and its key that leads back here. A to-one need not name
    /// it: several relationships may be found through one to-one, each for rows of its own entity.
    std::string_view destination = {};
    std::string_view inverse = {};
    DeleteRule deleteRule = DeleteRule::nullify;
    /// Many-to-many: the table that both ends name, and which end fills its first column.
    std::string_view joinTable = {};
    bool leads = false;
    /// Computes the value of an attribute whose stored value is absent. The result is kept with the object
    /// without marking it changed, and is stored when the object is written anyway.
    LazyHook lazy = nullptr;
    /// For computed slots; a slot without `set` refuses to be set.
    GetHook get = nullptr;
    SetHook set = nullptr;
    /// Run after each public set, within the same change.
    ChangeHook didSet = nullptr;
};

/// For rows that together are one multi-value of their owner: which of their keys say so.
///
/// Rows of one owner and one discriminator are a unit. Within a unit an identifier occurs once. When two
/// contexts changed one unit, it is merged by identifier instead of row by row.
struct UnitDescription {
    /// Attribute (string): what an entry keeps when it is rewritten. Empty: the entity is no multi-value.
    std::string_view identifier = {};
    /// Attribute or to-one that parts the rows of one owner into several units; may be empty.
    std::string_view discriminator = {};
    /// Attribute (integer): the place of an entry in its unit.
    std::string_view ordering = {};
    /// Attribute (boolean): the one entry that comes first.
    std::string_view primary = {};
};

using MakeObject = platform::Ref<StoreObject> (*)(const Entity&);

/// One entity, as an upper room writes it into a constant table. Parents come before their children.
struct EntityDescription {
    std::string_view name;
    std::string_view parent = {};
    bool isAbstract = false;
    /// The table of the family; entities that name the same table share it. An entity without one takes its
    /// parent's; only an abstract entity may have none at all.
    std::string_view table = {};
    std::span<const SlotDescription> slots = {};
    /// Makes an object of the entity's class; absent: the parent's, or a plain StoreObject.
    MakeObject make = nullptr;
    /// The to-one that leads to the root object whose part this is; a change of the part counts as a change
    /// of the root. Empty: the parent's; with none at all, the entity is a root itself.
    std::string_view owner = {};
    UnitDescription unit = {};
    /// Keys that together name one object of this entity for all writers, such as a code list's code: whoever
    /// inserts one that is there already gets that one.
    std::span<const std::string_view> sharedBy = {};
};

/// One key of an entity, resolved. Inherited slots come first, so a slot of an entity is the slot of all its
/// descendants, under the same index.
///
/// Ownership: owned by its Model; lives as long.
/// Threads:   never changes.
/// Errors:    none.
struct Slot {
    std::string key;
    SlotKind kind;
    AttributeType type;
    std::uint8_t flags;
    DeleteRule deleteRule;
    bool leads;
    /// Position among the slots of every entity that has it.
    std::uint16_t index;
    /// Position in a row, for slots with a column; else kNoField.
    std::uint16_t field;
    /// The entity that declared it.
    const Entity* entity;
    const Entity* destination = nullptr;
    const Slot* inverse = nullptr;
    /// attribute, toOne: the column, quoted for SQL. manyToMany: the join table's column of this end.
    std::string column;
    /// manyToMany: the join table's column of the other end.
    std::string farColumn;
    /// largeAttribute: the side table ("_key", "value"). manyToMany: the join table. Quoted for SQL.
    std::string table;
    /// Some relationship is found through this to-one.
    bool isInverted = false;
    /// Leads to parts of the object: the destination's owner is the inverse, and they are deleted with it. An
    /// object holds its parts once it has read them.
    bool holdsParts = false;
    LazyHook lazy;
    GetHook get;
    SetHook set;
    ChangeHook didSet;

    static constexpr std::uint16_t kNoField = 0xffff;

    bool isAttribute() const { return kind <= SlotKind::computed; }
    bool isRelationship() const { return kind >= SlotKind::toOne; }
    bool isToMany() const { return kind >= SlotKind::toMany; }
    bool isTransient() const { return (flags & kTransient) != 0; }
    bool hasColumn() const { return field != kNoField; }
    /// Found by the to-one of the other end.
    bool isThroughInverse() const { return kind == SlotKind::toMany || kind == SlotKind::toOneInverse; }
};

/// A table and the entities that share it.
///
/// Every table has the columns `_key` (integer primary key), `_version`, and `_entity` (the store's number of
/// the entity); then one column a stored slot, called by its key.
struct Family {
    struct Column {
        std::string name;
        AttributeType type;
        std::uint8_t flags;
        /// A to-one's column.
        bool isReference;
    };

    std::string name;
    /// `name` quoted for SQL.
    std::string table;
    std::vector<const Entity*> entities;
    std::vector<Column> columns;
    /// The to-one that leads to the root, or null for a family of roots.
    const Slot* owner = nullptr;
    /// Position among the families of the model.
    std::size_t index = 0;

    bool isRoot() const { return owner == nullptr; }
};

/// The resolved form of UnitDescription.
struct UnitSlots {
    const Slot* identifier = nullptr;
    const Slot* discriminator = nullptr;
    const Slot* ordering = nullptr;
    const Slot* primary = nullptr;
    explicit operator bool() const { return identifier != nullptr; }
};

/// A kind of stored object.
///
/// Ownership: owned by its Model; lives as long.
/// Threads:   never changes.
/// Errors:    none; an unknown key answers null.
class Entity {
public:
    const std::string& name() const { return _name; }
    const Entity* parent() const { return _parent; }
    bool isAbstract() const { return _isAbstract; }
    const Model& model() const { return *_model; }
    bool isKindOf(const Entity& other) const
    {
        for (const Entity* entity = this; entity; entity = entity->_parent)
            if (entity == &other)
                return true;
        return false;
    }

    /// One lookup by hash; callers that ask often keep the answer.
    const Slot* slot(std::string_view key) const;
    const std::vector<const Slot*>& slots() const { return _slots; }
    /// The slots that have a column, by field.
    const std::vector<const Slot*>& fields() const { return _fields; }
    /// Where each field stands among the columns of the family.
    const std::vector<std::uint16_t>& familyColumns() const { return _familyColumns; }

    /// Null only for an abstract entity that spans several families.
    const Family* family() const { return _family; }
    /// The families of this entity and its descendants; those that rows of it can be in.
    const std::vector<const Family*>& families() const { return _families; }
    /// This entity and all below it that are not abstract.
    const std::vector<const Entity*>& concreteEntities() const { return _concrete; }

    /// The to-one that leads to the root object whose part this is, or null.
    const Slot* owner() const { return _owner; }
    const UnitSlots& unit() const { return _unit; }
    /// Whether its owner has at most one of it: the owner's slot for it is a toOneInverse.
    bool isSingle() const { return _isSingle; }
    bool hasLarge() const { return _hasLarge; }
    const std::vector<const Slot*>& sharedBy() const { return _sharedBy; }
    /// The slot whose text is indexed, or null.
    const Slot* textIndex() const { return _textIndex; }
    /// The full-text table behind `textIndex`, quoted; its row id is the owner's key.
    const std::string& textTable() const { return _textTable; }
    /// For roots: the entity with the text-index entry that objects of this one own, or null.
    const Entity* textEntry() const;
    /// Position among the entities of the model.
    std::size_t index() const { return _index; }

    /// A new object without context, row or changes.
    platform::Ref<StoreObject> makeObject() const;

private:
    friend class ModelBuilder;

    std::string _name;
    const Entity* _parent = nullptr;
    const Model* _model = nullptr;
    bool _isAbstract = false;
    std::size_t _index = 0;
    std::unordered_map<std::string_view, const Slot*> _byKey;
    std::vector<std::unique_ptr<Slot>> _own;
    std::vector<const Slot*> _slots;
    std::vector<const Slot*> _fields;
    std::vector<std::uint16_t> _familyColumns;
    const Family* _family = nullptr;
    std::vector<const Family*> _families;
    std::vector<const Entity*> _concrete;
    const Slot* _owner = nullptr;
    UnitSlots _unit;
    bool _isSingle = false;
    bool _hasLarge = false;
    std::vector<const Slot*> _sharedBy;
    const Slot* _textIndex = nullptr;
    std::string _textTable;
    MakeObject _make = nullptr;
};

/// All entities that stores of one kind can hold.
///
/// Ownership: shared; owns its entities, slots and families.
/// Threads:   never changes after `make`.
/// Errors:    `make` throws std::logic_error for descriptions that contradict each other.
class Model final : public platform::Object {
public:
    /// Reads the tables while it runs only.
    static platform::Ref<const Model> make(std::span<const EntityDescription> entities);

    /// Null when there is none of that name.
    const Entity* entity(std::string_view name) const;
    const std::vector<const Entity*>& entities() const { return _entities; }
    const std::vector<const Family*>& families() const { return _families; }

    /// The entity whose text is indexed, or null: a model has one at most.
    const Entity* textEntry() const { return _textEntry; }

    /// One line a table, column, index and entity, sorted: what a store that fits this model must have.
    const std::string& schemaText() const { return _schemaText; }
    /// Stands for `schemaText` in a store's metadata.
    const std::string& schemaHash() const { return _schemaHash; }

private:
    friend class ModelBuilder;
    template <class T, class... Arguments>
    friend platform::Ref<T> platform::makeRef(Arguments&&... arguments);

    Model() = default;
    ~Model() override = default;

    std::vector<std::unique_ptr<Entity>> _ownedEntities;
    std::vector<std::unique_ptr<Family>> _ownedFamilies;
    std::vector<const Entity*> _entities;
    std::vector<const Family*> _families;
    std::unordered_map<std::string_view, const Entity*> _byName;
    const Entity* _textEntry = nullptr;
    std::string _schemaText;
    std::string _schemaHash;
};

/// `name` as an SQL identifier.
std::string quoted(std::string_view name);

} // namespace objectstore
