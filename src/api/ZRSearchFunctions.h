// How a program says which records it wants, and how an address reads in its country.
#pragma once

#include "api/ZRHandles.h"

#ifdef __cplusplus
extern "C" {
#endif

// ---- searches

/// A search for people: `property comparison value`.
///
/// \param property a property of people; NULL looks through the whole card.
/// \param label of a multi-value the entries of this label only; NULL for all.
/// \param key of dictionaries this key only, such as kZRAddressCityKey; NULL for all.
/// \param value a text, number, date or record. Comparisons with today take a number of seconds; membership
///   takes a group. NULL compares with "no value".
/// \param comparison kZREqual to kZRNotMemberOfGroup (core/ZRTypes.h).
/// \return NULL for an unknown comparison.
ZR_EXPORT ZRSearchElementRef ZRPersonCreateSearchElement(
    const char* property, const char* label, const char* key, ZRTypeRef value, ZRSearchComparison comparison);
/// The same for groups; NULL as property is the name.
ZR_EXPORT ZRSearchElementRef ZRGroupCreateSearchElement(
    const char* property, const char* label, const char* key, ZRTypeRef value, ZRSearchComparison comparison);
/// All of several searches (kZRConjunctionAnd), or any of them (kZRConjunctionOr). Of an array of one, that
/// one itself. NULL for an empty array, and for one that holds something else.
ZR_EXPORT ZRSearchElementRef ZRSearchElementCreateWithConjunction(
    ZRSearchConjunction conjunction, ZRArrayRef children);
/// Whether one record, saved or not, is what is looked for. False on failure.
ZR_EXPORT bool ZRSearchElementMatchesRecord(ZRSearchElementRef search, ZRRecordRef record);

// ---- addresses

/// The country of addresses that name none, as ISO 3166 code in lower case. NULL on failure.
ZR_EXPORT ZRStringRef ZRCopyDefaultCountryCode(ZRRosterRef roster);
/// An address as its country writes it, several lines with LF between them. `address`: texts by the keys
/// kZRAddressStreetKey and so on, as entries of kZRAddressProperty are. Marks of U+200E, which show nothing,
/// keep the order of the fields of a line in right-to-left text. NULL on failure.
ZR_EXPORT ZRStringRef ZRCreateFormattedAddressFromDictionary(ZRRosterRef roster, ZRDictionaryRef address);

#ifdef __cplusplus
}
#endif
