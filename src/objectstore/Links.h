// The links of many-to-many relationships that were made or cut and are not saved.
#pragma once

#include "objectstore/Model.h"

#include <cstdint>
#include <map>
#include <string>
#include <unordered_map>
#include <utility>
#include <vector>

namespace objectstore {

/// Unsaved changes to join tables, seen from both ends.
///
/// Ownership: owns plain keys; a temporary key stands for an object that was not saved yet.
/// Threads:   like a plain container.
/// Errors:    none.
class Links {
public:
    enum class Change : bool { cut, made };
    using Ends = std::unordered_map<std::int64_t, Change>;

    /// Notes that `from` is linked by `slot` to `to`, or is not any more. A change and its opposite leave the
    /// last one standing: writing a link that is there, or removing none, does no harm.
    void note(const Slot& slot, std::int64_t from, std::int64_t to, Change change);
    /// The changes at `from` as seen through `slot`; null for none.
    const Ends* changes(const Slot& slot, std::int64_t from) const;
    /// Forgets every link with that end.
    void forget(std::int64_t key);

    /// Calls `visit(table, lead, other, change)` for each.
    template <class Visitor>
    void forEach(Visitor visit) const
    {
        for (const auto& [table, sides] : _tables)
            for (const auto& [lead, ends] : sides.byLead)
                for (const auto& [other, change] : ends)
                    visit(table, lead, other, change);
    }
    bool isEmpty() const { return _tables.empty(); }
    void clear() { _tables.clear(); }

private:
    struct Sides {
        std::unordered_map<std::int64_t, Ends> byLead;
        std::unordered_map<std::int64_t, Ends> byOther;
    };
    std::map<std::string, Sides> _tables;
};

} // namespace objectstore
