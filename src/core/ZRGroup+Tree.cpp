// What is below a group at any depth, and what is above it.
#include "core/ZRGroup.h"

#include "objectstore/StoreContext.h"
#include "platform/run/Log.h"
#include "store/ZRManagedObjectContext.h"
#include "store/ZRModelSlots.h"
#include "store/ZROSRecord.h"
#include "store/ZRRoster.h"

#include <fmt/format.h>

#include <algorithm>
#include <utility>

using objectstore::ObjectList;
using platform::Ref;

namespace {

/// Reads what is in all these groups, so that asking each of them costs no query while the answer is held.
ObjectList readContents(const std::vector<Ref<const ZRGroup>>& groups) ZR_NTS
{
    const auto context = groups.front()->nts_Roster()->managedObjectContext();
    ObjectList stored, contents;
    for (const auto& group : groups)
        if (auto* impl = group->zrDatabaseImpl(); impl && context && impl->context() == context.get())
            stored.emplace_back(impl);
    for (const std::string_view key : {"childGroups", "contacts"}) {
        if (stored.empty())
            continue;
        const auto read = context->relatedObjects(stored, key);
        if (read)
            contents.insert(contents.end(), read->begin(), read->end());
        else
            platform::log(fmt::format("Exception preheating groups: {}", read.error().text));
    }
    return contents;
}

/// Calls `visit(group, subgroups)` for `top` and each group below it once, level by level.
template <class Visit>
void walk(const ZRGroup& top, Visit&& visit) ZR_NTS
{
    std::unordered_set<Ref<const ZRGroup>> seen{Ref<const ZRGroup>(&top)};
    std::vector<ObjectList> held;
    for (std::vector<Ref<const ZRGroup>> level{Ref<const ZRGroup>(&top)}, below; !level.empty();
         level = std::exchange(below, {})) {
        held.push_back(readContents(level));
        for (const auto& group : level) {
            const ZRRecordList subgroups = group->nts_Subgroups();
            visit(*group, subgroups);
            for (const auto& subgroup : subgroups)
                if (Ref<const ZRGroup> one = platform::refCast<const ZRGroup>(subgroup);
                    seen.insert(one).second)
                    below.push_back(std::move(one));
        }
    }
}

} // namespace

bool ZRGroup::nts_IsParentGroupOfRecord(const ZRRecord& record) const
{
    const ZRRecordList parents = record.nts_ParentGroups();
    return std::ranges::any_of(parents, [&](const auto& parent) { return parent.get() == this; });
}

bool ZRGroup::_isParentGroupOfRecord(const ZRRecord& record) const
{
    return locked(*nts_Roster(), ZRAccess::read, [&]() ZR_NTS { return nts_IsParentGroupOfRecord(record); });
}

bool ZRGroup::nts_RecursiveContainsGroup(const ZRGroup& group) const
{
    auto* above = dynamic_cast<ZROSGroup*>(zrDatabaseImpl());
    auto* below = dynamic_cast<ZROSGroup*>(group.zrDatabaseImpl());
    return above && below && above->context() && above->context() == below->context()
        && above->containsGroup(*below);
}

bool ZRGroup::recursiveContainsGroup(const ZRGroup& group) const
{
    return locked(*nts_Roster(), ZRAccess::read, [&]() ZR_NTS { return nts_RecursiveContainsGroup(group); });
}

ZRRecordList ZRGroup::membersAndSubgroups() const
{
    ZRRecordList all = members();
    for (auto& subgroup : subgroups())
        all.push_back(std::move(subgroup));
    return all;
}

ZRRecordSet ZRGroup::allAssociatedMembersAndSubgroups(bool) const
{
    return locked(*nts_Roster(), ZRAccess::read, [&]() ZR_NTS {
        ZRRecordSet all;
        walk(*this, [&](const ZRGroup& group, const ZRRecordList& subgroups) ZR_NTS {
            const ZRRecordList members = group.nts_Members();
            all.insert(members.begin(), members.end());
            all.insert(subgroups.begin(), subgroups.end());
        });
        return all;
    });
}

ZRRecordSet ZRGroup::nts_MembersRecursive() const
{
    ZRRecordSet all;
    walk(*this, [&](const ZRGroup& group, const ZRRecordList&) ZR_NTS {
        const ZRRecordList members = group.nts_Members();
        all.insert(members.begin(), members.end());
    });
    return all;
}

// Of the stored objects: what a group answers as its members need not be what is stored.
void ZRGroup::nts_CascadeRemove()
{
    auto* impl = zrDatabaseImpl();
    if (!impl || !impl->context())
        return;
    const auto& slots = groupSlots();
    for (const auto* slot : {&slots.contacts, &slots.childGroups, &slots.parentGroups})
        impl->setObjects(*slot, {});
}
