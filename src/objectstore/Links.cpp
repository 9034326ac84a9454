// How unsaved links are kept from both ends.
#include "objectstore/Links.h"

namespace objectstore {

void Links::note(const Slot& slot, std::int64_t from, std::int64_t to, Change change)
{
    Sides& sides = _tables[slot.table];
    const std::int64_t lead = slot.leads ? from : to;
    const std::int64_t other = slot.leads ? to : from;
    sides.byLead[lead][other] = change;
    sides.byOther[other][lead] = change;
}

const Links::Ends* Links::changes(const Slot& slot, std::int64_t from) const
{
    const auto table = _tables.find(slot.table);
    if (table == _tables.end())
        return nullptr;
    const auto& side = slot.leads ? table->second.byLead : table->second.byOther;
    const auto ends = side.find(from);
    return ends == side.end() ? nullptr : &ends->second;
}

void Links::forget(std::int64_t key)
{
    for (auto& [table, sides] : _tables) {
        for (auto* pair : {&sides.byLead, &sides.byOther}) {
            auto& near = *pair;
            auto& far = pair == &sides.byLead ? sides.byOther : sides.byLead;
            const auto found = near.find(key);
            if (found == near.end())
                continue;
            for (const auto& [end, change] : found->second)
                far[end].erase(key);
            near.erase(found);
        }
    }
}

} // namespace objectstore
