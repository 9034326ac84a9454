// What a program does with people and groups beyond their properties: cards as text, pictures, membership.
#pragma once

#include "api/ZRHandles.h"

#ifdef __cplusplus
extern "C" {
#endif

// ---- people

/// A new card in the shared roster, without values; it is kept by the next ZRSave. NULL without a roster.
ZR_EXPORT ZRPersonRef ZRPersonCreate(void);
/// The first card of vCard data (2.1; 3.0 is RFC 2426), as a new card of the shared roster. It reads what the
/// formats say and nothing more; for files of other programs use ZRCopyPeopleFromVCardData. NULL when the
/// card cannot be read.
ZR_EXPORT ZRPersonRef ZRPersonCreateWithVCardRepresentation(ZRDataRef vCard);
/// The card as vCard 3.0 (RFC 2426) in UTF-8. Whether notes and pictures go along is a preference of the
/// user. NULL on failure.
ZR_EXPORT ZRDataRef ZRPersonCopyVCardRepresentation(ZRPersonRef person);
/// Reads every card of a file, whatever program wrote it: vCard 2.1 to 4.0 (RFC 6350), any character set. A
/// damaged card harms no other. Answers an array of new people of the roster, unsaved, in the order of the
/// file; whom the caller does not want is removed with ZRRemoveRecord. NULL on failure.
///
/// \param outReport NULL, or where to put an array, the caller's own, of what was found wrong: dictionaries
///   with "card" and "line" (numbers from 1; card 0 is outside of cards), "subject" (the property, or the
///   text itself), "what" (in English), and "done": "repaired", "kept in the note", "dropped" or "refused".
///   On failure it becomes NULL.
ZR_EXPORT ZRArrayRef ZRCopyPeopleFromVCardData(ZRRosterRef roster, ZRDataRef vCards, ZRArrayRef* outReport);
/// An array of the groups that a person is a member of. NULL on failure.
ZR_EXPORT ZRArrayRef ZRPersonCopyParentGroups(ZRPersonRef person);
/// The picture, in the format in which it was set. NULL where there is none, and on failure.
ZR_EXPORT ZRDataRef ZRPersonCopyImageData(ZRPersonRef person);
/// Sets the picture (JPEG, PNG, TIFF or GIF); NULL removes it. Of a person who is saved already it is on the
/// disk when this returns. False on failure, and for a person who was removed.
ZR_EXPORT bool ZRPersonSetImageData(ZRPersonRef person, ZRDataRef image);

// ---- groups

/// A new group in the shared roster, without a name (kZRGroupNameProperty) and members; it is kept by the
/// next ZRSave. NULL without a roster.
ZR_EXPORT ZRGroupRef ZRGroupCreate(void);
/// An array of the groups that this one is in. NULL on failure.
ZR_EXPORT ZRArrayRef ZRGroupCopyParentGroups(ZRGroupRef group);
/// True when the person is a member then, whether or not it was before. False for a person of another
/// roster, and for a smart group, whose search alone says who is in it.
ZR_EXPORT bool ZRGroupAddMember(ZRGroupRef group, ZRPersonRef person);
/// True when the person is no member then; the person itself stays. False for a smart group.
ZR_EXPORT bool ZRGroupRemoveMember(ZRGroupRef group, ZRPersonRef person);
/// Puts `subgroup` into `group`. False, with nothing changed, when one of them contains the other already, at
/// any depth.
ZR_EXPORT bool ZRGroupAddGroup(ZRGroupRef group, ZRGroupRef subgroup);
/// Takes it out again; the subgroup itself stays.
ZR_EXPORT bool ZRGroupRemoveGroup(ZRGroupRef group, ZRGroupRef subgroup);
/// An array of the people in the group, not of those in its subgroups, in no particular order. NULL on
/// failure.
ZR_EXPORT ZRArrayRef ZRGroupCopyArrayOfAllMembers(ZRGroupRef group);
/// An array of the groups in the group, one level deep, in no particular order. NULL on failure.
ZR_EXPORT ZRArrayRef ZRGroupCopyArrayOfAllSubgroups(ZRGroupRef group);
/// By which entry of a multi-value property (kZREmailProperty, kZRPhoneProperty, kZRAddressProperty) a member
/// is reached when the group is addressed as a whole: the identifier of the chosen entry, else of the primary
/// one. NULL without an entry, and on failure.
ZR_EXPORT ZRStringRef ZRGroupCopyDistributionIdentifier(
    ZRGroupRef group, const char* property, ZRPersonRef person);
/// Chooses that entry. False, with nothing changed, for an identifier that the person's multi-value does not
/// have, and for a property for which groups keep no choice.
ZR_EXPORT bool ZRGroupSetDistributionIdentifier(
    ZRGroupRef group, const char* identifier, const char* property, ZRPersonRef person);

#ifdef __cplusplus
}
#endif
