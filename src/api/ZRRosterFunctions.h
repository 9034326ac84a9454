// How a program reaches the contact database: the roster, its records, and what it knows of properties.
#pragma once

#include "api/ZRHandles.h"

// Properties and record types are named in core/ZRVocabulary.h. Nothing is written to the disk before
// ZRSave, except the pictures of people that are saved already, and the definition of custom properties.

#ifdef __cplusplus
extern "C" {
#endif

// ---- the roster

/// The roster of the user, opened at the first call. It lives as long as the process and needs no release.
/// NULL when it cannot be opened, and then for good: the log says why.
ZR_EXPORT ZRRosterRef ZRGetSharedRoster(void);
/// An array of all people, in no particular order. NULL on failure.
ZR_EXPORT ZRArrayRef ZRCopyArrayOfAllPeople(ZRRosterRef roster);
/// An array of all groups and smart groups, in no particular order. NULL on failure.
ZR_EXPORT ZRArrayRef ZRCopyArrayOfAllGroups(ZRRosterRef roster);
/// The person or group with that id; the same handle as long as somebody has it. NULL where there is none.
ZR_EXPORT ZRRecordRef ZRCopyRecordForUniqueId(ZRRosterRef roster, const char* uniqueId);
/// The record type that an id names, such as "ZRPerson", whether or not there is such a record. NULL for what
/// is no id.
ZR_EXPORT ZRStringRef ZRCopyRecordTypeFromUniqueId(ZRRosterRef roster, const char* uniqueId);
/// An array of the records that match (ZRSearchFunctions.h); empty where none does. NULL on failure.
ZR_EXPORT ZRArrayRef ZRCopyArrayOfMatchingRecords(ZRRosterRef roster, ZRSearchElementRef search);

/// The card of the user, kept by the roster until it is another one. NULL where the user has none.
ZR_EXPORT ZRPersonRef ZRGetMe(ZRRosterRef roster);
/// Makes a person of the roster the user's card; NULL for nobody. What is no person is passed over.
ZR_EXPORT void ZRSetMe(ZRRosterRef roster, ZRPersonRef person);

/// Whether something has changed that ZRSave would write.
ZR_EXPORT bool ZRHasUnsavedChanges(ZRRosterRef roster);
/// Writes all changes, those of other threads too, in one transaction. True: they are on the disk, and other
/// programs are told. False: nothing was written, and every change is still there.
ZR_EXPORT bool ZRSave(ZRRosterRef roster);
/// Puts a record into the roster. Those of ZRPersonCreate and ZRGroupCreate are in the shared one already,
/// which is true as well. False when it is refused.
ZR_EXPORT bool ZRAddRecord(ZRRosterRef roster, ZRRecordRef record);
/// Deletes a record at the next save; its handle reads as empty from now on, and puts a new record with the
/// same id into the roster when a value is set. Members of a group stay. False when it is not in this roster.
ZR_EXPORT bool ZRRemoveRecord(ZRRosterRef roster, ZRRecordRef record);

// ---- records

/// The value of a property: a text, number, date, data, array, dictionary or multi-value, as
/// ZRTypeOfProperty tells. A multi-value is no window on the record: copy it with
/// ZRMultiValueCreateMutableCopy, edit the copy, and set that. NULL where there is no value, and on failure.
ZR_EXPORT ZRTypeRef ZRRecordCopyValue(ZRRecordRef record, const char* property);
/// Sets a property; NULL and the null marker remove it. False, with nothing changed, when it is refused: a
/// property that the record does not have, a value of another type, and the unique id, which never changes.
ZR_EXPORT bool ZRRecordSetValue(ZRRecordRef record, const char* property, ZRTypeRef value);
/// Removes a property. True also when it had no value.
ZR_EXPORT bool ZRRecordRemoveValue(ZRRecordRef record, const char* property);
/// The id of the record, which it has from the beginning and keeps for good: 36 characters of UUID, a colon
/// and the record type. NULL on failure.
ZR_EXPORT ZRStringRef ZRRecordCopyUniqueId(ZRRecordRef record);
/// Its record type, such as "ZRPerson". NULL on failure.
ZR_EXPORT ZRStringRef ZRRecordCopyRecordType(ZRRecordRef record);
/// A new record of the same roster with the same values, unsaved; the entries of its multi-values get
/// identifiers of their own. NULL on failure.
ZR_EXPORT ZRRecordRef ZRRecordCreateCopy(ZRRecordRef record);
/// Whether it cannot be changed: a card of a subscription that nobody may write to, for example. False on
/// failure too.
ZR_EXPORT bool ZRRecordIsReadOnly(ZRRecordRef record);

// ---- properties of records

/// Declares custom properties for the people (kZRPersonRecordType) or groups (kZRGroupRecordType) of the
/// user, for good, and saves. `typesByName`: names with numbers, codes of ZRPropertyType; a name that begins
/// with a domain of yours ("org.example.height") meets no other program's. A name that is there already is
/// passed over. Answers how many are new; 0 on failure.
ZR_EXPORT ZRIndex ZRAddPropertiesAndTypes(
    ZRRosterRef roster, const char* recordType, ZRDictionaryRef typesByName);
/// Always 0, and nothing changes: a roster keeps every property that was declared.
ZR_EXPORT ZRIndex ZRRemoveProperties(ZRRosterRef roster, const char* recordType, ZRArrayRef names);
/// An array of the names of all properties of a record type, custom ones included. NULL for an unknown type.
ZR_EXPORT ZRArrayRef ZRCopyArrayOfPropertiesForRecordType(ZRRosterRef roster, const char* recordType);
/// What a property holds: a code of ZRPropertyType; kZRPropertyTypeMulti is set in that of a multi-value.
/// kZRPropertyTypeUnknown for an unknown property or record type.
ZR_EXPORT ZRPropertyType ZRTypeOfProperty(ZRRosterRef roster, const char* recordType, const char* property);
/// A property's or label's name as people of the user's language read it: "work" for "_$!<Work>!$_". What is
/// unknown, such as a label of the user's own, comes back as it is. NULL for NULL.
ZR_EXPORT ZRStringRef ZRCopyLocalizedPropertyOrLabel(const char* key);

#ifdef __cplusplus
}
#endif
