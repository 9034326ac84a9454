// The searches that the classes of records make.
#include "core/ZRConstants.h"
#include "core/ZRGroup.h"
#include "core/ZRPerson.h"
#include "search/ZRSearchElementMatch.h"
#include "search/ZRSmartGroup.h"

using platform::Ref;
using platform::Value;
using TextView = ZRSearchElementMatch::TextView;

Ref<ZRSearchElement> ZRPerson::searchElementForProperty(
    TextView property, TextView label, TextView key, const Value& value, ZRSearchComparison comparison)
{
    return ZRSearchElementMatch::initWithProperty(property, label, key, value, true, false, comparison);
}

Ref<ZRSearchElement> ZRSubscribedPerson::searchElementForProperty(
    TextView property, TextView label, TextView key, const Value& value, ZRSearchComparison comparison)
{
    return ZRSearchElementMatch::initWithProperty(property, label, key, value, true, true, comparison);
}

Ref<ZRSearchElement> ZRGroup::searchElementForProperty(
    TextView property, TextView label, TextView key, const Value& value, ZRSearchComparison comparison)
{
    return ZRSearchElementMatch::initWithProperty(property ? property : TextView(zr::kZRGroupNameProperty),
        label, key, value, false, false, comparison);
}

Ref<ZRSearchElement> ZRSubscribedGroup::searchElementForProperty(
    TextView property, TextView label, TextView key, const Value& value, ZRSearchComparison comparison)
{
    return ZRSearchElementMatch::initWithProperty(property, label, key, value, false, true, comparison);
}

Ref<ZRSearchElement> ZRRecord::searchElementForTerms(const std::vector<std::string>& terms)
{
    return searchElementForTerms(ZRPerson::recordClassDescription, terms);
}

Ref<ZRSearchElement> ZRRecord::searchElementForTerms(
    const ZRRecordClass& recordClass, const std::vector<std::string>& terms)
{
    auto make = &ZRPerson::searchElementForProperty;
    if (&recordClass == &ZRSubscribedPerson::recordClassDescription)
        make = &ZRSubscribedPerson::searchElementForProperty;
    else if (&recordClass == &ZRSubscribedGroup::recordClassDescription)
        make = &ZRSubscribedGroup::searchElementForProperty;
    else if (recordClass.isKindOf(ZRGroup::recordClassDescription))
        make = &ZRGroup::searchElementForProperty;
    else if (!recordClass.isKindOf(ZRPerson::recordClassDescription))
        return nullptr;

    std::vector<Ref<ZRSearchElement>> elements;
    for (const auto& term : terms)
        elements.push_back(
            make(std::nullopt, std::nullopt, std::nullopt, Value(term), kZRContainsSubStringCaseInsensitive));
    return elements.empty() ? nullptr
                            : ZRSearchElement::searchElementForConjunction(kZRConjunctionAnd, elements);
}
