// Whether a store is sound: its file, what its rows refer to, and its text indexes.
#include "objectstore/PersistentStore.h"
#include "objectstore/StoreCoordinator.h"
#include "objectstore/StoreState.h"
#include "objectstore/Transaction.h"

#include <fmt/format.h>

#include <set>
#include <string>
#include <vector>

namespace objectstore {

namespace {

/// Of the complaints of SQLite so many are told.
constexpr int kMostComplaints = 20;

/// Looks through one store. All of it is one transaction, so that what is compared belongs together.
class StoreChecker {
public:
    explicit StoreChecker(StoreState& store, const Model& model) : _store(store), _model(model) { }

    std::vector<std::string> check()
    {
        checkFile();
        if (!_problems.empty())
            return _problems;
        for (const Entity* entity : _model.entities())
            if (!entity->isAbstract())
                checkEntity(*entity);
        for (const Family* family : _model.families())
            checkNumbers(*family);
        return _problems;
    }

private:
    void checkFile()
    {
        sqlite::Use complaints(
            _store.connection->prepared(fmt::format("PRAGMA integrity_check({})", kMostComplaints)));
        while (complaints->step())
            if (complaints->text(0) != "ok")
                _problems.push_back(fmt::format("the file: {}", complaints->text(0)));
    }

    void checkEntity(const Entity& entity)
    {
        for (const Slot* slot : entity.slots()) {
            if (slot->kind == SlotKind::toOne && slot->hasColumn())
                checkReference(entity, *slot);
            if (slot->kind == SlotKind::manyToMany && slot->leads && _joins.insert(slot->table).second)
                checkJoin(*slot);
        }
        if (entity.textIndex() && _texts.insert(entity.textTable()).second)
            checkTextIndex(entity);
    }

    /// An owner must be there; any other reference may be absent, but must not lead nowhere.
    void checkReference(const Entity& entity, const Slot& slot)
    {
        const std::string nowhere = nowhereInAny(slot.column, slot.destination->families());
        const char* const mayBeAbsent = &slot == entity.owner() ? "IS NULL OR" : "IS NOT NULL AND";
        report(fmt::format("SELECT count(*) FROM {} WHERE \"_entity\" = {} AND ({} {} {})",
                   entity.family()->table, _store.numberOf(entity), slot.column, mayBeAbsent, nowhere),
            fmt::format("of {} have no {}", entity.name(), slot.key));
    }

    void checkJoin(const Slot& slot)
    {
        const std::string near = nowhereInAny(slot.column, slot.entity->families()),
                          far = nowhereInAny(slot.farColumn, slot.destination->families());
        report(fmt::format("SELECT count(*) FROM {} WHERE ({}) OR ({})", slot.table, near, far),
            fmt::format("of {} link to what is not there", slot.table));
    }

    static std::string nowhereInAny(const std::string& column, const std::vector<const Family*>& families)
    {
        std::string condition;
        for (const Family* family : families)
            condition += fmt::format("{}NOT EXISTS(SELECT 1 FROM {} AS there WHERE there.\"_key\" = {})",
                condition.empty() ? "" : " AND ", family->table, column);
        return condition;
    }

    /// Keys and versions that were never given out.
    void checkNumbers(const Family& family)
    {
        report(fmt::format("SELECT count(*) FROM {} WHERE \"_key\" > (SELECT sequence FROM store_state) OR"
                           " \"_version\" > (SELECT commitNumber FROM store_state)",
                   family.table),
            fmt::format("of {} have numbers that were never given out", family.name));
    }

    /// The index must stand for exactly the texts in the rows. Asking is a write for SQLite, though it
    /// changes nothing. Texts with a NUL are indexed under another character, so with them it is only asked
    /// whether the index is whole.
    void checkTextIndex(const Entity& entity)
    {
        if (_store.isReadOnly)
            return;
        const bool hasNul =
            _store.connection->integer(fmt::format("SELECT count(*) FROM {} WHERE instr({}, char(0))",
                entity.family()->table, entity.textIndex()->column))
            > 0;
        try {
            _store.connection->execute(
                fmt::format("INSERT INTO {0}({0}, rank) VALUES('integrity-check', {1})", entity.textTable(),
                    hasNul ? 0 : 1)
                    .c_str());
        } catch (const sqlite::Failure& failure) {
            _problems.push_back(fmt::format(
                "the text index of {} does not stand for its texts: {}", entity.name(), failure.what()));
        }
    }

    void report(const std::string& sql, const std::string& what)
    {
        if (const auto count = _store.connection->integer(sql); count > 0)
            _problems.push_back(fmt::format("{} {} {}", count, count == 1 ? "row" : "rows", what));
    }

    StoreState& _store;
    const Model& _model;
    std::set<std::string> _joins;
    std::set<std::string> _texts;
    std::vector<std::string> _problems;
};

} // namespace

platform::Result<std::vector<std::string>> StoreCoordinator::checkStore(PersistentStore* store)
{
    platform::Lock lock(_mutex);
    if (!store || !store->isOpen())
        return storeError(StoreFault::noStore, "the store is not open");
    StoreState& state = store->state();
    return answering(store->path(), [&] {
        if (state.isReadOnly) {
            const ReadTransaction reading(state);
            return StoreChecker(state, *_model).check();
        }
        // Without a commit, whatever asking touched is as before.
        const WriteTransaction asking(state);
        return StoreChecker(state, *_model).check();
    });
}

} // namespace objectstore
