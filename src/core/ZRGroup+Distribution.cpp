// Which entry of a member is used when a group is addressed as a whole.
#include "core/ZRConstants.h"
#include "core/ZRFailure.h"
#include "core/ZRGroup.h"
#include "core/ZRMultiValue.h"
#include "core/ZRPerson.h"
#include "objectstore/StoreErrors.h"
#include "platform/run/Log.h"
#include "store/ZRManagedObjectContext.h"
#include "store/ZROSRecord.h"
#include "store/ZRRoster.h"

#include <fmt/format.h>

#include <exception>

using platform::Ref;
using platform::Value;

namespace {

void requireMultiValue(std::string_view property, const ZRPerson& person)
{
    zrRequire(
        zrIsMultiValueType(ZRRecord::typeOfProperty(person.recordClass(), property, person.nts_Roster())),
        "the property is a multi-value");
}

/// The identifier of the entry that was chosen; absent when none was.
std::optional<std::string> chosenIdentifier(
    ZROSGroup& group, ZROSRecord& person, std::string_view property) ZR_NTS
{
    const auto* entrySlot = ZROSGroup::entrySlotOfDistributionListConfig(property);
    const auto choice =
        entrySlot ? ZROSGroup::distributionListConfigWithKey(property, person, group) : nullptr;
    const auto entry = choice ? choice->related(*entrySlot) : nullptr;
    return entry ? std::optional<std::string>(entry->text(entry->slot("uniqueId"))) : std::nullopt;
}

std::optional<std::string> primaryIdentifier(const ZRPerson& person, std::string_view property) ZR_NTS
{
    const Value value = person.nts_ValueForProperty(property);
    const auto* entries = value.as<ZRMultiValue>();
    return entries ? entries->primaryIdentifier() : std::nullopt;
}

/// Reads the addresses of people, and the choices that groups made among them, in a few queries.
void readMembers(const ZRRecordList& members, ZRRoster& roster)
{
    roster.prefetchDataForRecords(members, {zr::kZREmailProperty});
    locked(roster, ZRAccess::read, [&]() ZR_NTS {
        objectstore::ObjectList contacts;
        for (const auto& member : members)
            if (auto* impl = dynamic_cast<ZROSContact*>(member->zrDatabaseImpl()); impl && impl->context())
                contacts.emplace_back(impl);
        if (const auto context = roster.managedObjectContext(); context && !contacts.empty())
            context->preheatContacts(contacts, {"distributionListConfigs"});
    });
}

/// Calls `visit(person, address)` for each member with an e-mail address, of `top` and of each group below
/// it.
template <class Visit>
void forEachAddress(const ZRGroup& top, Visit&& visit)
{
    std::vector<Ref<const ZRGroup>> groups{Ref<const ZRGroup>(&top)};
    std::unordered_set<Ref<const ZRGroup>> seen{groups.front()};
    for (std::size_t i = 0; i < groups.size(); ++i) {
        const auto group = groups[i];
        const ZRRecordList records = group->membersAndSubgroups();
        readMembers(records, *group->nts_Roster());
        for (const auto& record : records)
            if (const auto person = platform::refCast<ZRPerson>(record)) {
                Value address = group->distributionValueForProperty(zr::kZREmailProperty, *person);
                if (!address.asText().empty())
                    visit(person, std::move(address));
            } else if (auto below = platform::refCast<const ZRGroup>(record);
                       below && seen.insert(below).second) {
                groups.push_back(std::move(below));
            }
    }
}

} // namespace

bool ZRGroup::setDistributionIdentifier(
    std::optional<std::string_view> identifier, std::string_view property, ZRPerson& person)
{
    requireMultiValue(property, person);
    return locked(*nts_Roster(), ZRAccess::write, [&]() ZR_NTS {
        if (!nts_SetDistributionIdentifier(identifier, property, person, true))
            return false;
        nts_Touch();
        return true;
    });
}

bool ZRGroup::nts_SetDistributionIdentifier(std::optional<std::string_view> identifier,
    std::string_view property, ZRPerson& person, bool allowFetching)
{
    auto* group = dynamic_cast<ZROSGroup*>(zrDatabaseImpl());
    auto* member = person.zrDatabaseImpl();
    return group && member && group->context() && group->context() == member->context()
        && ZROSGroup::nts_SetDistributionIdentifier(identifier, property, *member, *group,
            allowFetching ? ZRFetching::allowed : ZRFetching::prevented);
}

std::optional<std::string> ZRGroup::distributionIdentifierForProperty(
    std::string_view property, const ZRPerson& person) const
{
    requireMultiValue(property, person);
    return locked(*nts_Roster(), ZRAccess::read, [&]() ZR_NTS -> std::optional<std::string> {
        try {
            auto* group = dynamic_cast<ZROSGroup*>(zrDatabaseImpl());
            auto* member = person.zrDatabaseImpl();
            if (group && member && group->context() && member->context())
                if (auto chosen = chosenIdentifier(*group, *member, property))
                    return chosen;
            return primaryIdentifier(person, property);
        } catch (const objectstore::InaccessibleObject&) {
            platform::log(fmt::format("The group '{}' has a corrupt distribution list entry for {}.",
                nts_ValueForProperty(zr::kZRGroupNameProperty).asText(), person.nts__fullName()));
        } catch (const std::exception& failure) {
            platform::log(fmt::format("Distribution List Exception: {}", failure.what()));
        }
        return {};
    });
}

ZRIndex ZRGroup::distributionIndexForProperty(std::string_view property, const ZRPerson& person) const
{
    const auto identifier = distributionIdentifierForProperty(property, person);
    const Value value = person.valueForProperty(property);
    const auto* entries = value.as<ZRMultiValue>();
    return entries && identifier ? entries->indexForIdentifier(*identifier) : kZRNotFound;
}

Value ZRGroup::distributionValueForProperty(std::string_view property, const ZRPerson& person) const
{
    const auto identifier = distributionIdentifierForProperty(property, person);
    const Value value = person.valueForProperty(property);
    const auto* entries = value.as<ZRMultiValue>();
    const ZRIndex at = entries && identifier ? entries->indexForIdentifier(*identifier) : kZRNotFound;
    return at == kZRNotFound ? Value() : entries->valueAtIndex(at);
}

std::vector<std::string> ZRGroup::distributionStringsForMembers() const
{
    std::vector<std::string> strings;
    forEachAddress(*this, [&](const Ref<ZRPerson>& person, const Value& address) {
        const std::string name = person->_realCompositeName();
        strings.push_back(
            name.empty() ? std::string(address.asText()) : fmt::format("{} <{}>", name, address.asText()));
    });
    return strings;
}

void ZRRecursivelyBuildPeopleList(const ZRGroup& group, std::unordered_map<Ref<ZRPerson>, Value>& result)
{
    const auto me = group.roster()->me();
    forEachAddress(group, [&](const Ref<ZRPerson>& person, Value address) {
        if (person != me)
            result[person] = std::move(address);
    });
}
