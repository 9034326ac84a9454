// How a program makes, reads, compares and releases values.
#pragma once

#include "api/ZRHandles.h"

// Values never change once they are made, so any number of threads may read one. A reader that is given NULL
// or another kind answers 0, NULL or an empty text.

#ifdef __cplusplus
extern "C" {
#endif

// ---- any handle

/// Adds an owner, who must release. Answers its argument; NULL for NULL.
ZR_EXPORT ZRTypeRef ZRRetain(ZRTypeRef value);
/// Gives one ownership back: the last one ends the value. Any thread; it waits for no lock. NULL is allowed.
ZR_EXPORT void ZRRelease(ZRTypeRef value);
/// Whether two values are equal in content, two handles the same record. Whole and floating numbers of one
/// amount are equal. Multi-values: same entries, identifiers included; which one is primary does not count.
/// NULL equals nothing, not even NULL.
ZR_EXPORT bool ZREqual(ZRTypeRef a, ZRTypeRef b);
/// Equal values have equal hashes; they are good for one run of the program. 0 for NULL.
ZR_EXPORT uint64_t ZRHash(ZRTypeRef value);
/// What it is: a code of ZRHandles.h; kZRTypeNone for NULL.
ZR_EXPORT ZRTypeID ZRGetTypeID(ZRTypeRef value);
/// Text for people who debug, never to be parsed. NULL for NULL.
ZR_EXPORT ZRStringRef ZRCopyDescription(ZRTypeRef value);

// ---- the null marker

/// "No value", where a container needs something to hold. One for the process; it needs no release.
ZR_EXPORT ZRNullRef ZRGetNull(void);

// ---- texts

/// Text from UTF-8 up to its zero. NULL for NULL, and for bytes that are no UTF-8.
ZR_EXPORT ZRStringRef ZRStringCreateWithUTF8(const char* text);
/// Text from `length` bytes, which may hold zeros. NULL for bytes that are no UTF-8, and for NULL with a
/// length above 0.
ZR_EXPORT ZRStringRef ZRStringCreateWithBytes(const void* bytes, size_t length);
/// The text as UTF-8 with a zero behind it, alive as long as the handle. "" for what is no text.
ZR_EXPORT const char* ZRStringGetUTF8(ZRStringRef text);
/// Its length in bytes, without the zero behind it.
ZR_EXPORT size_t ZRStringGetUTF8Length(ZRStringRef text);

// ---- numbers

/// A whole number.
ZR_EXPORT ZRNumberRef ZRNumberCreateWithInteger(int64_t number);
/// A floating number.
ZR_EXPORT ZRNumberRef ZRNumberCreateWithReal(double number);
/// A truth value, which as a number is 0 or 1. It fits no property of whole numbers.
ZR_EXPORT ZRNumberRef ZRNumberCreateWithBool(bool truth);
/// Any number as a whole one: cut towards zero, and kept within the range of the type.
ZR_EXPORT int64_t ZRNumberGetInteger(ZRNumberRef number);
/// Any number as a floating one; large whole ones lose low digits.
ZR_EXPORT double ZRNumberGetReal(ZRNumberRef number);

// ---- dates

/// A moment, as seconds since 1 January 1970 UTC, negative before it. A birthday or another day is kept as
/// noon of the day. NULL for an infinity or no number.
ZR_EXPORT ZRDateRef ZRDateCreateWithSecondsSince1970(double seconds);
/// Seconds since 1 January 1970 UTC.
ZR_EXPORT double ZRDateGetSecondsSince1970(ZRDateRef date);

// ---- data

/// A copy of `length` bytes. NULL for NULL with a length above 0.
ZR_EXPORT ZRDataRef ZRDataCreate(const void* bytes, size_t length);
/// The bytes, alive as long as the handle; NULL for what is no data.
ZR_EXPORT const void* ZRDataGetBytes(ZRDataRef data);
/// How many bytes.
ZR_EXPORT size_t ZRDataGetLength(ZRDataRef data);

// ---- arrays

/// An array of `count` values, of any kinds; it owns a share of each. NULL when one of them is NULL, or the
/// count negative; `values` may be NULL when it is 0.
ZR_EXPORT ZRArrayRef ZRArrayCreate(const ZRTypeRef* values, ZRIndex count);
/// How many elements.
ZR_EXPORT ZRIndex ZRArrayGetCount(ZRArrayRef array);
/// An element, borrowed from the array. NULL for an index that is negative, or not below the count.
ZR_EXPORT ZRTypeRef ZRArrayGetValueAtIndex(ZRArrayRef array, ZRIndex index);

// ---- dictionaries

/// A dictionary of `count` pairs; it owns a share of each value. Of several equal keys the last one counts.
/// NULL when a key or value is NULL or a key no UTF-8, or the count negative; both lists may be NULL when it
/// is 0.
ZR_EXPORT ZRDictionaryRef ZRDictionaryCreate(const char* const* keys, const ZRTypeRef* values, ZRIndex count);
/// How many entries.
ZR_EXPORT ZRIndex ZRDictionaryGetCount(ZRDictionaryRef dictionary);
/// The value of a key, borrowed from the dictionary; NULL where there is none.
ZR_EXPORT ZRTypeRef ZRDictionaryGetValue(ZRDictionaryRef dictionary, const char* key);
/// An array of the keys, ascending by their bytes.
ZR_EXPORT ZRArrayRef ZRDictionaryCopyKeys(ZRDictionaryRef dictionary);

#ifdef __cplusplus
}
#endif
