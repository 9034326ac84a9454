// Multi-values that two contexts changed: merged entry by entry.
#pragma once

#include "objectstore/StoreWrite.h"

#include <cstdint>
#include <map>
#include <string>
#include <tuple>
#include <unordered_set>
#include <vector>

namespace objectstore {

/// Settles, before and after the write of a save, what becomes of units that others changed too.
///
/// The entries of such a unit are theirs, plus those added here, less those removed here. An entry that both
/// changed is written as it is here; one that was rewritten here with nothing changed stays as theirs; one
/// that they removed is gone. Theirs keep their order, those added follow, and one is primary: the one chosen
/// here, else the one chosen there, else the first. An object that its owner has once is an entry without an
/// identifier.
///
/// Ownership: borrows the context and a draft of the write, which only says what would be written: `plan`
///            changes objects of the context, and what they are then is collected anew.
/// Threads:   under both locks.
/// Errors:    throws sqlite::Failure.
class UnitMerge {
public:
    UnitMerge(ContextState& context, StoreWrite& write) : _context(context), _write(write) { }

    /// Before the write, and before anything is derived from the objects: brings those of the context to what
    /// is to be written. Entries that were rewritten here and say nothing new leave it for theirs.
    void plan();
    /// After the write: brings order and primary of the merged units into line.
    void finishWriting();
    /// The owners of what was merged.
    const std::unordered_set<std::int64_t>& owners() const { return _owners; }

private:
    /// What is known of one identifier: where it stood at the last look, what was done to it here, and how it
    /// stands now.
    struct Entry {
        StoreObject* deleted = nullptr;
        RowRef base;
        Written* inserted = nullptr;
        Written* updated = nullptr;
        RowRef theirs;
    };
    struct Unit {
        const Entity* entity = nullptr;
        std::int64_t owner = 0;
        FieldValue discriminator;
        std::map<std::string, Entry> entries;
        std::vector<std::string> theirOrder;
        std::string theirPrimary;
        std::string myPrimary;
        bool isConflicted = false;
    };
    using UnitKey = std::tuple<std::size_t, std::int64_t, std::string>;

    void collect();
    Unit& unitOf(const Entity& entity, std::int64_t owner, const FieldValue& discriminator);
    Entry* entryOf(StoreObject& object, const RowRef& row);
    Entry* entryOfInserted(StoreObject& object);
    void readTheirs(Unit& unit);
    void decide(Unit& unit);
    bool yieldsRewritten(Entry& entry);
    void becomeTheirs(StoreObject& object, const RowRef& theirs);
    void forgetParts(std::int64_t owner);
    bool isUnchanged(StoreObject& object, const Row& base) const;
    void choosePrimary(Unit& unit);
    void arrange(const Unit& unit);
    std::string selection(const Unit& unit, std::string_view columns) const;
    void bindSelection(sqlite::Statement& statement, const Unit& unit, int first) const;

    ContextState& _context;
    StoreWrite& _write;
    std::map<UnitKey, Unit> _units;
    std::unordered_set<std::int64_t> _owners;
};

} // namespace objectstore
