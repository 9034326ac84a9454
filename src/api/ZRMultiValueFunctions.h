// How a program reads and edits the labelled entries of a property, such as a card's telephone numbers.
#pragma once

#include "api/ZRHandles.h"

// Each entry has a value, a label and an identifier; one entry is the primary one. The identifier is given
// when the entry is inserted, and survives every edit of it, every copy and the store. A multi-value is
// attached to no record: set it as a property's value with ZRRecordSetValue.

#ifdef __cplusplus
extern "C" {
#endif

// ---- making

/// One without entries that stays so. NULL on failure.
ZR_EXPORT ZRMultiValueRef ZRMultiValueCreate(void);
/// One without entries that can be edited. NULL on failure.
ZR_EXPORT ZRMutableMultiValueRef ZRMultiValueCreateMutable(void);
/// A copy of the same kind, with the same identifiers. NULL on failure.
ZR_EXPORT ZRMultiValueRef ZRMultiValueCreateCopy(ZRMultiValueRef multiValue);
/// A copy that can be edited, with the same identifiers. NULL on failure.
ZR_EXPORT ZRMutableMultiValueRef ZRMultiValueCreateMutableCopy(ZRMultiValueRef multiValue);

// ---- reading

/// How many entries; 0 on failure.
ZR_EXPORT ZRIndex ZRMultiValueCount(ZRMultiValueRef multiValue);
/// kZRPropertyTypeMulti with the type that all values share; kZRPropertyTypeUnknown without entries, when
/// they differ, and on failure.
ZR_EXPORT ZRPropertyType ZRMultiValuePropertyType(ZRMultiValueRef multiValue);
/// NULL for an index that is negative, or not below the count.
ZR_EXPORT ZRTypeRef ZRMultiValueCopyValueAtIndex(ZRMultiValueRef multiValue, ZRIndex index);
/// The label as it is stored, such as kZRWorkLabel; see ZRCopyLocalizedPropertyOrLabel. NULL for a bad index.
ZR_EXPORT ZRStringRef ZRMultiValueCopyLabelAtIndex(ZRMultiValueRef multiValue, ZRIndex index);
/// NULL for a bad index.
ZR_EXPORT ZRStringRef ZRMultiValueCopyIdentifierAtIndex(ZRMultiValueRef multiValue, ZRIndex index);
/// Where the entry is; kZRNotFound for an identifier that no entry has. Mind that NULL, an empty identifier
/// and a wrong handle are failures, which answer 0.
ZR_EXPORT ZRIndex ZRMultiValueIndexForIdentifier(ZRMultiValueRef multiValue, const char* identifier);
/// The identifier of the primary entry: the first one until another is set. NULL without entries.
ZR_EXPORT ZRStringRef ZRMultiValueCopyPrimaryIdentifier(ZRMultiValueRef multiValue);

// ---- editing, which only a mutable one allows, on one thread at a time

/// Adds an entry at the end; the first one becomes the primary one. False, with nothing changed, for an
/// absent value and for an absent or empty label.
///
/// \param outIdentifier NULL, or where to put the new identifier, which is the caller's; NULL on failure.
ZR_EXPORT bool ZRMultiValueAdd(
    ZRMutableMultiValueRef multiValue, ZRTypeRef value, const char* label, ZRStringRef* outIdentifier);
/// The same at `index`, which may be the count. The primary entry stays what it is.
ZR_EXPORT bool ZRMultiValueInsert(ZRMutableMultiValueRef multiValue, ZRTypeRef value, const char* label,
    ZRIndex index, ZRStringRef* outIdentifier);
/// Removes an entry; behind the primary one the first becomes primary. False for a bad index.
ZR_EXPORT bool ZRMultiValueRemove(ZRMutableMultiValueRef multiValue, ZRIndex index);
/// Gives an entry another value; it keeps its identifier. False for a bad index and an absent value.
ZR_EXPORT bool ZRMultiValueReplaceValue(ZRMutableMultiValueRef multiValue, ZRIndex index, ZRTypeRef value);
/// Gives an entry another label; it keeps its identifier. False for a bad index, an absent and an empty
/// label.
ZR_EXPORT bool ZRMultiValueReplaceLabel(ZRMutableMultiValueRef multiValue, ZRIndex index, const char* label);
/// Makes an entry the primary one. False for an identifier that no entry has.
ZR_EXPORT bool ZRMultiValueSetPrimaryIdentifier(ZRMutableMultiValueRef multiValue, const char* identifier);

#ifdef __cplusplus
}
#endif
