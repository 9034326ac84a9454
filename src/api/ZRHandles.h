// What plain functions take and answer: the one handle type, its names, and the kinds it can be.
#pragma once

#include "core/ZRExport.h"
#include "core/ZRTypes.h"

#include <stdbool.h>
#include <stddef.h>
#include <stdint.h>

/// A counted reference to a value or record; NULL is "absent". Its kind is known at run time: ZRGetTypeID.
typedef const struct ZROpaque* ZRTypeRef;

// Names for what a function expects or answers. The compiler does not tell them apart; the functions do.

/// Text (kZRTypeString).
typedef ZRTypeRef ZRStringRef;
/// A boolean, whole or floating number, which remembers what it was made as (kZRTypeNumber).
typedef ZRTypeRef ZRNumberRef;
/// A moment (kZRTypeDate).
typedef ZRTypeRef ZRDateRef;
/// Bytes that are no text (kZRTypeData).
typedef ZRTypeRef ZRDataRef;
/// A list of values (kZRTypeArray).
typedef ZRTypeRef ZRArrayRef;
/// Values by text keys (kZRTypeDictionary).
typedef ZRTypeRef ZRDictionaryRef;
/// The null marker (kZRTypeNull).
typedef ZRTypeRef ZRNullRef;
/// A contact database (kZRTypeRoster).
typedef ZRTypeRef ZRRosterRef;
/// A person, a group or a smart group (also kZRTypeRecord: a record that is none of them).
typedef ZRTypeRef ZRRecordRef;
/// A card (kZRTypePerson).
typedef ZRTypeRef ZRPersonRef;
/// A group; where one is expected a smart group is one too (kZRTypeGroup, kZRTypeSmartGroup).
typedef ZRTypeRef ZRGroupRef;
/// A group whose members are found by a search (kZRTypeSmartGroup).
typedef ZRTypeRef ZRSmartGroupRef;
/// Labelled entries, such as a card's telephone numbers (kZRTypeMultiValue, kZRTypeMutableMultiValue).
typedef ZRTypeRef ZRMultiValueRef;
/// One that can be edited (kZRTypeMutableMultiValue).
typedef ZRTypeRef ZRMutableMultiValueRef;
/// A condition on records (kZRTypeSearchElement).
typedef ZRTypeRef ZRSearchElementRef;
/// The choice of people in a window.
typedef ZRTypeRef ZRPickerRef;

/// The kind of a handle: one of the codes below, which never change.
typedef int32_t ZRTypeID;
enum {
    kZRTypeNone,
    kZRTypeNull,
    kZRTypeString,
    kZRTypeNumber,
    kZRTypeDate,
    kZRTypeData,
    kZRTypeArray,
    kZRTypeDictionary,
    kZRTypeMultiValue,
    kZRTypeMutableMultiValue,
    kZRTypePerson,
    kZRTypeGroup,
    kZRTypeSmartGroup,
    kZRTypeRecord,
    kZRTypeSearchElement,
    kZRTypeRoster
};
