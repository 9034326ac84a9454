// What properties records of a roster have, and what an editor may offer of them.
#include "core/ZRConstants.h"
#include "core/ZRPerson.h"
#include "store/ZRCustomProperties.h"
#include "store/ZRMultiValueObjectStoreWrapper.h"
#include "store/ZROSRecord.h"
#include "store/ZRRecordConstraint.h"
#include "store/ZRRosterState.h"

#include <algorithm>

using platform::Ref;
using platform::Value;
using Names = std::vector<std::string>;

namespace {

bool contains(const Names& names, std::string_view name)
{
    return std::ranges::find(names, name) != names.end();
}

/// All of several lists, each once, in first-seen order.
template <class Lists>
Names unionOf(const Lists& lists)
{
    Names all;
    for (const auto& list : lists)
        for (const auto& name : list)
            if (!contains(all, name))
                all.push_back(name);
    return all;
}

} // namespace

ZRPropertyType ZRRoster::typeOfProperty(std::string_view property, std::string_view recordType)
{
    return locked(*this, ZRAccess::read, [&]() ZR_NTS { return nts_TypeOfProperty(property, recordType); });
}

ZRPropertyType ZRRoster::nts_TypeOfProperty(std::string_view property, std::string_view recordType)
{
    const auto* recordClass = ZRRecordClass::named(recordType);
    return recordClass ? ZRRecord::nts_TypeOfProperty(*recordClass, property, *this) : kZRPropertyTypeUnknown;
}

ZRPropertyTypes ZRRoster::nts_PropertyTypesForRecordOfClass(const ZRRecordClass& recordClass)
{
    return ZRCustomProperties::propertyTypesForClass(recordClass, *this, false);
}

bool ZRRoster::doesPropertyExist(std::string_view property, const ZRRecordClass& recordClass)
{
    return locked(
        *this, ZRAccess::read, [&]() ZR_NTS { return nts_DoesPropertyExist(property, recordClass); });
}

bool ZRRoster::nts_DoesPropertyExist(std::string_view property, const ZRRecordClass& recordClass)
{
    return ZRRecord::nts_TypeOfProperty(recordClass, property, *this) != kZRPropertyTypeUnknown;
}

void ZRRoster::clearCustomPropertyCaches()
{
    const platform::Lock guard(_state->monitor);
    _state->customProperties.clear();
}

std::vector<Ref<ZRRecordConstraint>> ZRRoster::constraints()
{
    {
        const platform::Lock guard(_state->monitor);
        if (!_state->constraints.empty())
            return _state->constraints;
    }
    // Making one asks for properties, which takes the global lock: never under the monitor. Of two threads
    // that come here at once, the second finds the list of the first.
    auto made = ZRRecordConstraint::initWithRecordClass(ZRPerson::recordClassDescription);
    const platform::Lock guard(_state->monitor);
    if (_state->constraints.empty())
        _state->constraints.push_back(std::move(made));
    return _state->constraints;
}

void ZRRoster::setConstraints(std::vector<Ref<ZRRecordConstraint>> constraints)
{
    const platform::Lock guard(_state->monitor);
    _state->constraints = std::move(constraints);
}

void ZRRoster::addConstraint(Ref<ZRRecordConstraint> constraint)
{
    constraints();
    const platform::Lock guard(_state->monitor);
    _state->constraints.push_back(std::move(constraint));
}

void ZRRoster::removeConstraint(const ZRRecordConstraint& constraint)
{
    const platform::Lock guard(_state->monitor);
    std::erase_if(_state->constraints, [&](const auto& known) { return known.get() == &constraint; });
}

Names ZRRoster::validProperties()
{
    const auto all = constraints();
    Names valid = all.back()->validProperties();
    for (const auto& constraint : all)
        std::erase_if(
            valid, [&](const auto& name) { return !contains(constraint->validProperties(), name); });
    return valid;
}

Names ZRRoster::initialProperties()
{
    std::vector<Names> lists;
    for (const auto& constraint : constraints())
        lists.push_back(constraint->initialProperties());
    Names initial = unionOf(lists);
    const Names valid = validProperties();
    std::erase_if(initial, [&](const auto& name) { return !contains(valid, name); });
    return initial;
}

Names ZRRoster::validLabelsForProperty(std::string_view property)
{
    return ZRPerson::builtInLabelsForProperty(property);
}

// Labels are no properties, so the filter that callers know of this list takes nothing out of it.
Names ZRRoster::initialLabelsForProperty(std::string_view property)
{
    std::vector<Names> lists;
    for (const auto& constraint : constraints())
        lists.push_back(constraint->initialLabelsForProperty(property));
    return unionOf(lists);
}

Names ZRRoster::availablePropertiesForPerson(ZRPerson& person, const ZRLabelsDelegate& delegate)
{
    return locked(*this, ZRAccess::read, [&]() ZR_NTS {
        return person.zrDatabaseImpl() ? availablePropertiesForContact(*person.zrDatabaseImpl(), delegate)
                                       : Names();
    });
}

Names ZRRoster::availablePropertiesForContact(ZROSRecord& contact, const ZRLabelsDelegate&)
{
    std::vector<Names> lists;
    for (const auto& constraint : constraints())
        lists.push_back(constraint->availablePropertiesForContact(contact));
    return unionOf(lists);
}

Names ZRRoster::availableLabelsForProperty(
    std::string_view property, ZRPerson& person, const ZRLabelsDelegate& delegate)
{
    return locked(*this, ZRAccess::read, [&]() ZR_NTS {
        return person.zrDatabaseImpl()
            ? availableLabelsForProperty(property, *person.zrDatabaseImpl(), delegate)
            : Names();
    });
}

Names ZRRoster::availableLabelsForProperty(
    std::string_view property, ZROSRecord& contact, const ZRLabelsDelegate& delegate)
{
    Names labels;
    for (const auto& constraint : constraints())
        for (auto& label : constraint->availableLabelsForProperty(property, contact, delegate))
            labels.push_back(std::move(label));
    return labels;
}

Names ZRRoster::activeLabelsForProperty(
    std::string_view property, ZRPerson& person, const ZRLabelsDelegate& delegate)
{
    return locked(*this, ZRAccess::read, [&]() ZR_NTS {
        return person.zrDatabaseImpl() ? activeLabelsForProperty(property, *person.zrDatabaseImpl(), delegate)
                                       : Names();
    });
}

Names ZRRoster::activeLabelsForProperty(
    std::string_view property, ZROSRecord& contact, const ZRLabelsDelegate& delegate)
{
    Names labels;
    if (const auto* place = contact.keyForProperty(property); place && place->isMultiValue)
        for (const auto& row : ZRMultiValueObjectStoreWrapper::rowsOf(contact, *place))
            if (const auto label = row->text(row->slot("label")); !label.empty() && !contains(labels, label))
                labels.emplace_back(label);
    if (delegate.additionalActiveLabelsForProperty)
        for (auto& label : delegate.additionalActiveLabelsForProperty(property))
            labels.push_back(std::move(label));
    return labels;
}
