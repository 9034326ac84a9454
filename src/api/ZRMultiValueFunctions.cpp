// How a program reads and edits the labelled entries of a property, such as a card's telephone numbers.
#include "api/ZRMultiValueFunctions.h"

#include "api/Border.h"
#include "core/ZRMutableMultiValue.h"

using border::as;
using border::guarded;
using border::owned;
using platform::makeRef;

namespace {

/// Runs `insert`, which answers the identifier of a new entry, and hands that out where it is asked for.
template <class Insert>
bool inserted(ZRStringRef* outIdentifier, Insert insert)
{
    if (outIdentifier)
        *outIdentifier = nullptr;
    return guarded([&] {
        const std::string identifier = insert();
        if (outIdentifier)
            *outIdentifier = owned(identifier);
        return true;
    });
}

} // namespace

// ---- making

ZRMultiValueRef ZRMultiValueCreate()
{
    return guarded([] { return owned(makeRef<ZRMultiValue>()); });
}

ZRMutableMultiValueRef ZRMultiValueCreateMutable()
{
    return guarded([] { return owned(makeRef<ZRMutableMultiValue>()); });
}

ZRMultiValueRef ZRMultiValueCreateCopy(ZRMultiValueRef multiValue)
{
    return guarded([&] { return owned(as<ZRMultiValue>(multiValue).copy()); });
}

ZRMutableMultiValueRef ZRMultiValueCreateMutableCopy(ZRMultiValueRef multiValue)
{
    return guarded([&] { return owned(as<ZRMultiValue>(multiValue).mutableCopy()); });
}

// ---- reading

ZRIndex ZRMultiValueCount(ZRMultiValueRef multiValue)
{
    return guarded([&] { return as<ZRMultiValue>(multiValue).count(); });
}

ZRPropertyType ZRMultiValuePropertyType(ZRMultiValueRef multiValue)
{
    return guarded([&] { return as<ZRMultiValue>(multiValue).propertyType(); });
}

ZRTypeRef ZRMultiValueCopyValueAtIndex(ZRMultiValueRef multiValue, ZRIndex index)
{
    return guarded([&] { return owned(as<ZRMultiValue>(multiValue).valueAtIndex(index)); });
}

ZRStringRef ZRMultiValueCopyLabelAtIndex(ZRMultiValueRef multiValue, ZRIndex index)
{
    return guarded([&] { return owned(as<ZRMultiValue>(multiValue).labelAtIndex(index)); });
}

ZRStringRef ZRMultiValueCopyIdentifierAtIndex(ZRMultiValueRef multiValue, ZRIndex index)
{
    return guarded([&] { return owned(as<ZRMultiValue>(multiValue).identifierAtIndex(index)); });
}

ZRIndex ZRMultiValueIndexForIdentifier(ZRMultiValueRef multiValue, const char* identifier)
{
    return guarded([&] { return as<ZRMultiValue>(multiValue).indexForIdentifier(border::text(identifier)); });
}

ZRStringRef ZRMultiValueCopyPrimaryIdentifier(ZRMultiValueRef multiValue)
{
    return guarded([&] { return border::ownedText(as<ZRMultiValue>(multiValue).primaryIdentifier()); });
}

// ---- editing

bool ZRMultiValueAdd(
    ZRMutableMultiValueRef multiValue, ZRTypeRef value, const char* label, ZRStringRef* outIdentifier)
{
    return inserted(outIdentifier, [&] {
        return as<ZRMutableMultiValue>(multiValue).addValue(border::value(value), border::text(label));
    });
}

bool ZRMultiValueInsert(ZRMutableMultiValueRef multiValue, ZRTypeRef value, const char* label, ZRIndex index,
    ZRStringRef* outIdentifier)
{
    return inserted(outIdentifier, [&] {
        return as<ZRMutableMultiValue>(multiValue)
            .insertValue(border::value(value), border::text(label), index);
    });
}

bool ZRMultiValueRemove(ZRMutableMultiValueRef multiValue, ZRIndex index)
{
    return guarded([&] { return as<ZRMutableMultiValue>(multiValue).removeValueAndLabelAtIndex(index); });
}

bool ZRMultiValueReplaceValue(ZRMutableMultiValueRef multiValue, ZRIndex index, ZRTypeRef value)
{
    return guarded(
        [&] { return as<ZRMutableMultiValue>(multiValue).replaceValueAtIndex(index, border::value(value)); });
}

bool ZRMultiValueReplaceLabel(ZRMutableMultiValueRef multiValue, ZRIndex index, const char* label)
{
    return guarded(
        [&] { return as<ZRMutableMultiValue>(multiValue).replaceLabelAtIndex(index, border::text(label)); });
}

bool ZRMultiValueSetPrimaryIdentifier(ZRMutableMultiValueRef multiValue, const char* identifier)
{
    return guarded(
        [&] { return as<ZRMutableMultiValue>(multiValue).setPrimaryIdentifier(border::text(identifier)); });
}
