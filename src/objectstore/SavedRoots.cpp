// Which roots a save touches, for who observes it.
#include "objectstore/SaveObserver.h"

#include "objectstore/PersistentStore.h"
#include "objectstore/RowReader.h"
#include "objectstore/StoreWrite.h"

#include <fmt/format.h>

#include <algorithm>
#include <map>

namespace objectstore {

void setSaveObserver(StoreCoordinator& coordinator, PersistentStore& store, SaveObserver* observer)
{
    const platform::Lock lock(coordinator.mutex());
    if (store.isOpen())
        store.state().saveObserver = observer;
}

SaveObserver* saveObserver(StoreCoordinator& coordinator, PersistentStore& store)
{
    const platform::Lock lock(coordinator.mutex());
    return store.isOpen() ? store.state().saveObserver : nullptr;
}

namespace {

/// What is known of each root so far. Objects without a key yet are among the inserted ones anyway.
class RootList {
public:
    void add(std::int64_t key, SavedRoot::Fate fate)
    {
        if (key > 0)
            _roots.insert_or_assign(key, fate);
    }
    void touch(std::int64_t key)
    {
        if (key > 0)
            _roots.try_emplace(key, SavedRoot::Fate::changed);
    }
    std::vector<SavedRoot> list() const
    {
        std::vector<SavedRoot> roots;
        roots.reserve(_roots.size());
        for (const auto& [key, fate] : _roots)
            roots.push_back({key, fate});
        return roots;
    }

private:
    std::map<std::int64_t, SavedRoot::Fate> _roots;
};

/// Roots that the object leads to, or led to, by a to-one that they know of.
void touchFarEnds(RootList& roots, const StoreObject& object, const Row* before)
{
    for (const Slot* slot : object.entity().fields()) {
        if (slot->kind != SlotKind::toOne || !slot->isInverted || slot->destination->owner())
            continue;
        roots.touch(ObjectAccess::keyIfKnown(object, *slot));
        if (before)
            roots.touch(before->integer(slot->field));
    }
}

bool hasCountedChange(StoreObject& object, const SaveObserver& observer)
{
    const Overlay& overlay = ObjectAccess::makeOverlay(object);
    const Row* row = ObjectAccess::row(object).get();
    for (const Slot* slot : object.entity().slots()) {
        if (!overlay.isChanged(*slot) || slot->isTransient() || slot->lazy)
            continue;
        if (slot->kind == SlotKind::largeAttribute)
            return true;
        if (slot->kind != SlotKind::attribute || !slot->hasColumn())
            continue;
        const FieldValue before = row ? row->value(slot->field) : FieldValue{};
        if (!row || observer.counts(*slot, before, ObjectAccess::field(object, *slot)))
            return true;
    }
    return false;
}

} // namespace

std::vector<SavedRoot> StoreWrite::touchedRoots(const SaveObserver& observer)
{
    RootList roots;
    std::vector<std::int64_t> deletedRoots;
    for (const auto& written : _inserted) {
        if (!written.object->entity().owner())
            roots.add(written.key, SavedRoot::Fate::inserted);
        touchFarEnds(roots, *written.object, nullptr);
    }
    for (const auto& written : _updated) {
        const bool isRoot = !written.object->entity().owner();
        if (isRoot && hasCountedChange(*written.object, observer))
            roots.touch(written.key);
        touchFarEnds(roots, *written.object, ObjectAccess::row(*written.object).get());
    }
    _context.links.forEach([&](const std::string&, std::int64_t lead, std::int64_t other, Links::Change) {
        roots.touch(lead);
        roots.touch(other);
    });
    for (const auto& object : _deleted) {
        const RowRef row = rowOf(*object);
        touchFarEnds(roots, *object, row.get());
        if (!object->entity().owner() && object->key() > 0)
            deletedRoots.push_back(object->key());
    }
    for (const std::int64_t key : rootsTiedTo(deletedRoots))
        roots.touch(key);
    for (const std::int64_t key : deletedRoots)
        roots.add(key, SavedRoot::Fate::deleted);
    return roots.list();
}

std::optional<std::vector<RowRef>> StoreWrite::insertedRows() const
{
    const auto isPart = [](const Written& written) { return written.object->entity().owner() != nullptr; };
    if (std::ranges::any_of(_updated, isPart))
        return std::nullopt;
    std::vector<RowRef> rows;
    rows.reserve(_inserted.size());
    for (const auto& written : _inserted)
        if (!written.row)
            return std::nullopt;
        else
            rows.push_back(written.row);
    return rows;
}

/// What stands at the other end of links and of parts that go with these roots.
std::vector<std::int64_t> StoreWrite::rootsTiedTo(const std::vector<std::int64_t>& deleted)
{
    std::vector<std::int64_t> tied;
    if (deleted.empty())
        return tied;
    const std::string keys = jsonOf(deleted);
    const auto read = [&](const std::string& column, const std::string& table, const std::string& by) {
        sqlite::Use find(prepared(fmt::format(
            "SELECT {} FROM {} WHERE {} IN (SELECT value FROM json_each(?))", column, table, by)));
        find->bindText(1, keys);
        while (find->step())
            tied.push_back(find->integer(0));
    };
    std::map<std::size_t, const Entity*> entities;
    for (const auto& object : _deleted)
        if (!object->entity().owner())
            entities.emplace(object->entity().index(), &object->entity());
    for (const auto& [index, entity] : entities)
        for (const Slot* slot : entity->slots()) {
            if (slot->kind == SlotKind::manyToMany)
                read(slot->farColumn, slot->table, slot->column);
            if (!slot->holdsParts)
                continue;
            for (const Slot* other : slot->destination->fields())
                if (other != slot->inverse && other->kind == SlotKind::toOne && other->isInverted
                    && !other->destination->owner())
                    read(other->column, slot->destination->family()->table, slot->inverse->column);
        }
    return tied;
}

} // namespace objectstore
