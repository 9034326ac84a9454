// What is below a group at any depth, and what is above it.
#include "core/ZRGroup.h"

#include "core/ZRConstants.h"
#include "core/ZRMultiValue.h"
#include "core/ZRPerson.h"
#include "objectstore/StoreContext.h"
#include "platform/run/Log.h"
#include "store/ZRManagedObjectContext.h"
#include "store/ZRModelSlots.h"
#include "store/ZROSRecord.h"
#include "store/ZRRoster.h"

#include <fmt/format.h>

#include <algorithm>

using objectstore::ObjectList;
using platform::Ref;

namespace {

enum class WithMembers { no, yes };

/// Reads what is in all these groups, so that asking each of them costs no query while the answer is held.
ObjectList readContents(const std::vector<Ref<ZRGroup>>& groups, WithMembers withMembers) ZR_NTS
{
    const auto context = groups.front()->nts_Roster()->managedObjectContext();
    ObjectList stored, contents;
    for (const auto& group : groups)
        if (auto* impl = group->zrDatabaseImpl(); impl && context && impl->context() == context.get())
            stored.emplace_back(impl);
    for (const std::string_view key : {"childGroups", "contacts"}) {
        if (stored.empty() || (key == "contacts" && withMembers == WithMembers::no))
            continue;
        auto read = context->relatedObjects(stored, key);
        if (read)
            contents.insert(contents.end(), read->begin(), read->end());
        else
            platform::log(fmt::format("Exception preheating groups: {}", read.error().text));
    }
    return contents;
}

/// Calls `visit(group, subgroups)` for `top` and each group below it once, level by level.
template <class Visit>
void walk(const ZRGroup& top, WithMembers withMembers, Visit&& visit) ZR_NTS
{
    std::unordered_set<Ref<ZRRecord>> seen;
    std::vector<ObjectList> held;
    std::vector<Ref<ZRGroup>> level{Ref<ZRGroup>(const_cast<ZRGroup*>(&top))};
    while (!level.empty()) {
        held.push_back(readContents(level, withMembers));
        std::vector<Ref<ZRGroup>> below;
        for (const auto& group : level) {
            const ZRRecordList subgroups = group->nts_Subgroups();
            visit(*group, subgroups);
            for (const auto& subgroup : subgroups)
                if (subgroup.get() != &top && seen.insert(subgroup).second)
                    below.push_back(platform::refCast<ZRGroup>(subgroup));
        }
        level = std::move(below);
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
        walk(*this, WithMembers::yes, [&](const ZRGroup& group, const ZRRecordList& subgroups) ZR_NTS {
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
    walk(*this, WithMembers::yes, [&](const ZRGroup& group, const ZRRecordList&) ZR_NTS {
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

void ZRRecursivelyBuildPeopleList(
    const ZRGroup& group, std::unordered_map<Ref<ZRPerson>, platform::Value>& result)
{
    std::vector<Ref<ZRGroup>> groups;
    locked(*group.nts_Roster(), ZRAccess::read, [&]() ZR_NTS {
        walk(group, WithMembers::no, [&](ZRGroup& one, const ZRRecordList&) { groups.emplace_back(&one); });
    });
    const auto me = group.roster()->me();
    for (const auto& one : groups)
        for (const auto& member : one->members()) {
            const auto person = platform::refCast<ZRPerson>(member);
            if (!person || person == me)
                continue;
            const platform::Value address = one->distributionValueForProperty(zr::kZREmailProperty, *person);
            if (!address.isNothing())
                result[person] = address;
        }
}
