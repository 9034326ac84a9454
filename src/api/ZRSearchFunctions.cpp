// How a program says which records it wants, and how an address reads in its country.
#include "search/ZRSearchElement.h"

#include "api/Border.h"
#include "api/ZRSearchFunctions.h"
#include "core/ZRGroup.h"
#include "core/ZRPerson.h"
#include "platform/value/AttributedString.h"
#include "store/ZRRoster.h"

using border::as;
using border::guarded;
using border::owned;
using border::Refused;
using platform::Ref;
using platform::Value;

namespace {

/// A search of one class of records; they differ in nothing else.
template <class RecordClass>
ZRSearchElementRef searchElement(
    const char* property, const char* label, const char* key, ZRTypeRef value, ZRSearchComparison comparison)
{
    return guarded([&] {
        if (comparison < kZREqual || comparison > kZRNotMemberOfGroup)
            throw Refused();
        return owned(RecordClass::searchElementForProperty(border::optionalText(property),
            border::optionalText(label), border::optionalText(key), border::value(value), comparison));
    });
}

} // namespace

ZRSearchElementRef ZRPersonCreateSearchElement(
    const char* property, const char* label, const char* key, ZRTypeRef value, ZRSearchComparison comparison)
{
    return searchElement<ZRPerson>(property, label, key, value, comparison);
}

ZRSearchElementRef ZRGroupCreateSearchElement(
    const char* property, const char* label, const char* key, ZRTypeRef value, ZRSearchComparison comparison)
{
    return searchElement<ZRGroup>(property, label, key, value, comparison);
}

ZRSearchElementRef ZRSearchElementCreateWithConjunction(ZRSearchConjunction conjunction, ZRArrayRef children)
{
    return guarded([&] {
        std::vector<Ref<ZRSearchElement>> elements;
        const Value array = border::value(children);
        for (const Value& child : array.asArray()) {
            auto* const element = child.as<ZRSearchElement>();
            elements.push_back(element ? Ref<ZRSearchElement>(element) : throw Refused());
        }
        return owned(ZRSearchElement::searchElementForConjunction(conjunction, elements));
    });
}

bool ZRSearchElementMatchesRecord(ZRSearchElementRef search, ZRRecordRef record)
{
    return guarded([&] { return as<ZRSearchElement>(search).matchesRecord(as<ZRRecord>(record)); });
}

// ---- addresses

ZRStringRef ZRCopyDefaultCountryCode(ZRRosterRef roster)
{
    return guarded([&] { return owned(as<ZRRoster>(roster).defaultCountryCode()); });
}

ZRStringRef ZRCreateFormattedAddressFromDictionary(ZRRosterRef roster, ZRDictionaryRef address)
{
    return guarded([&] {
        const Value fields = border::value(address);
        return fields.isDictionary()
            ? owned(as<ZRRoster>(roster).formattedAddressFromDictionary(fields)->string())
            : nullptr;
    });
}
