// The words that callers use: names of record types, properties, labels, address keys and notices.
#pragma once

#include "core/ZRExport.h"

// Compare texts by their content, never by these addresses: several labels have the same text, and values
// that come out of a roster are texts of their own. The texts are stored, so they never change.

#ifdef __cplusplus
extern "C" {
#endif

// ---- Record types

/// A card.
ZR_EXPORT extern const char kZRPersonRecordType[];
/// A group whose members are chosen one by one.
ZR_EXPORT extern const char kZRGroupRecordType[];
/// A group whose members are found by a search.
ZR_EXPORT extern const char kZRSmartGroupRecordType[];
/// A card, a group that came with a subscription.
ZR_EXPORT extern const char kZRSubscribedPersonRecordType[];
ZR_EXPORT extern const char kZRSubscribedGroupRecordType[];
/// Somebody with whom mail was exchanged.
ZR_EXPORT extern const char kZRMailRecentRecordType[];

// ---- Properties of people and groups

/// String: the unique id. It is given with the record, and cannot be set.
ZR_EXPORT extern const char kZRUIDProperty[];
/// Date: when the record was made, and when it was last changed. The save sets it.
ZR_EXPORT extern const char kZRCreationDateProperty[];
ZR_EXPORT extern const char kZRModificationDateProperty[];
/// Multi-string: the subscription that it came with.
ZR_EXPORT extern const char kZRRemoteLocationProperty[];

// ---- Properties of people

/// String: the given name, further given names, the family name.
ZR_EXPORT extern const char kZRFirstNameProperty[];
ZR_EXPORT extern const char kZRMiddleNameProperty[];
ZR_EXPORT extern const char kZRLastNameProperty[];
/// String: how these names are pronounced; lists are sorted by it.
ZR_EXPORT extern const char kZRFirstNamePhoneticProperty[];
ZR_EXPORT extern const char kZRMiddleNamePhoneticProperty[];
ZR_EXPORT extern const char kZRLastNamePhoneticProperty[];
/// String: what stands before the name ("Dr."), and behind it ("Jr.").
ZR_EXPORT extern const char kZRTitleProperty[];
ZR_EXPORT extern const char kZRSuffixProperty[];
/// String.
ZR_EXPORT extern const char kZRNicknameProperty[];
ZR_EXPORT extern const char kZRMaidenNameProperty[];
/// String: the company, the part of it, the position there.
ZR_EXPORT extern const char kZROrganizationProperty[];
ZR_EXPORT extern const char kZRDepartmentProperty[];
ZR_EXPORT extern const char kZRJobTitleProperty[];
/// Date: noon of the day.
ZR_EXPORT extern const char kZRBirthdayProperty[];
/// String.
ZR_EXPORT extern const char kZRNoteProperty[];
/// Integer. Bits 0 to 2: 1 shows the card as a company. Bits 3 to 5: 16 shows the last name first, 32 the
/// first name, 0 as the user prefers.
ZR_EXPORT extern const char kZRPersonFlags[];
/// Multi-string: addresses; telephone numbers, as they were typed.
ZR_EXPORT extern const char kZREmailProperty[];
ZR_EXPORT extern const char kZRPhoneProperty[];
/// Multi-dictionary: postal addresses, texts by the keys below.
ZR_EXPORT extern const char kZRAddressProperty[];
/// Multi-string: pages, and calendars.
ZR_EXPORT extern const char kZRURLsProperty[];
ZR_EXPORT extern const char kZRCalendarURIsProperty[];
/// Multi-date: days other than the birthday, such as anniversaries; noon of the day.
ZR_EXPORT extern const char kZROtherDatesProperty[];
/// Multi-string: names of relatives, friends, colleagues.
ZR_EXPORT extern const char kZRRelatedNamesProperty[];
/// Multi-string: addresses of messaging services, a property for each service.
ZR_EXPORT extern const char kZRAIMInstantProperty[];
ZR_EXPORT extern const char kZRICQInstantProperty[];
ZR_EXPORT extern const char kZRJabberInstantProperty[];
ZR_EXPORT extern const char kZRMSNInstantProperty[];
ZR_EXPORT extern const char kZRYahooInstantProperty[];
/// String: the one page of old cards; new ones use kZRURLsProperty.
ZR_EXPORT extern const char kZRHomePageProperty[];
/// For searches: the groups that somebody is in (kZRMemberOfGroup, kZRNotMemberOfGroup); as their value,
/// any group at all.
ZR_EXPORT extern const char kZRParentGroupsProperty[];
ZR_EXPORT extern const char kZRSmartGroupAnyGroupMembershipProperty[];

// ---- Properties of groups

/// String.
ZR_EXPORT extern const char kZRGroupNameProperty[];
/// Multi-string: who may read, and who may change, a group that is published.
ZR_EXPORT extern const char kZRReadSharingACLProperty[];
ZR_EXPORT extern const char kZRReadWriteSharingACLProperty[];

// ---- Properties of smart groups

/// Data: the search, archived.
ZR_EXPORT extern const char kZRSearchElementProperty[];
/// Integer, and array of unique ids: whether the user wants to be told of new members, and who they are.
ZR_EXPORT extern const char kZRSmartGroupFlagsProperty[];
ZR_EXPORT extern const char kZRSmartGroupModifiedUIDsProperty[];

// ---- Properties of mail recents

/// String: the card of that address; array of dates: when mail was exchanged.
ZR_EXPORT extern const char kZRPersonUIDProperty[];
ZR_EXPORT extern const char kZRMailLastDatesProperty[];

// ---- Labels of entries. Any other text is a label of the user's own

/// Of every property.
ZR_EXPORT extern const char kZRHomeLabel[];
ZR_EXPORT extern const char kZRWorkLabel[];
ZR_EXPORT extern const char kZROtherLabel[];
/// Of kZREmailProperty.
ZR_EXPORT extern const char kZREmailHomeLabel[];
ZR_EXPORT extern const char kZREmailWorkLabel[];
ZR_EXPORT extern const char kZREmailSkyLockerLabel[];
/// Of kZRPhoneProperty.
ZR_EXPORT extern const char kZRPhoneHomeLabel[];
ZR_EXPORT extern const char kZRPhoneWorkLabel[];
ZR_EXPORT extern const char kZRPhoneMobileLabel[];
ZR_EXPORT extern const char kZRPhoneMainLabel[];
ZR_EXPORT extern const char kZRPhoneHomeFAXLabel[];
ZR_EXPORT extern const char kZRPhoneWorkFAXLabel[];
ZR_EXPORT extern const char kZRPhonePagerLabel[];
ZR_EXPORT extern const char kZRPhoneHandsetLabel[];
/// Of kZRAddressProperty.
ZR_EXPORT extern const char kZRAddressHomeLabel[];
ZR_EXPORT extern const char kZRAddressWorkLabel[];
/// Of kZRURLsProperty.
ZR_EXPORT extern const char kZRHomePageLabel[];
/// Of kZROtherDatesProperty.
ZR_EXPORT extern const char kZRAnniversaryLabel[];
/// Of kZRRelatedNamesProperty.
ZR_EXPORT extern const char kZRMotherLabel[];
ZR_EXPORT extern const char kZRFatherLabel[];
ZR_EXPORT extern const char kZRParentLabel[];
ZR_EXPORT extern const char kZRBrotherLabel[];
ZR_EXPORT extern const char kZRSisterLabel[];
ZR_EXPORT extern const char kZRChildLabel[];
ZR_EXPORT extern const char kZRFriendLabel[];
ZR_EXPORT extern const char kZRSpouseLabel[];
ZR_EXPORT extern const char kZRPartnerLabel[];
ZR_EXPORT extern const char kZRAssistantLabel[];
ZR_EXPORT extern const char kZRManagerLabel[];
/// Of the messaging services.
ZR_EXPORT extern const char kZRAIMHomeLabel[];
ZR_EXPORT extern const char kZRAIMWorkLabel[];
ZR_EXPORT extern const char kZRAIMSkyLockerLabel[];
ZR_EXPORT extern const char kZRICQHomeLabel[];
ZR_EXPORT extern const char kZRICQWorkLabel[];
ZR_EXPORT extern const char kZRJabberHomeLabel[];
ZR_EXPORT extern const char kZRJabberWorkLabel[];
ZR_EXPORT extern const char kZRMSNHomeLabel[];
ZR_EXPORT extern const char kZRMSNWorkLabel[];
ZR_EXPORT extern const char kZRYahooHomeLabel[];
ZR_EXPORT extern const char kZRYahooWorkLabel[];
/// Of kZRRemoteLocationProperty.
ZR_EXPORT extern const char kZRPublishLabel[];
ZR_EXPORT extern const char kZRSubscribeLabel[];

// ---- Keys of a postal address, all texts

/// May have several lines, with LF between them.
ZR_EXPORT extern const char kZRAddressStreetKey[];
ZR_EXPORT extern const char kZRAddressCityKey[];
ZR_EXPORT extern const char kZRAddressStateKey[];
ZR_EXPORT extern const char kZRAddressZIPKey[];
ZR_EXPORT extern const char kZRAddressCountryKey[];
/// ISO 3166 code in lower case, which says how the address is written.
ZR_EXPORT extern const char kZRAddressCountryCodeKey[];

// ---- Names of notices

/// A save of this process changed people or groups; one of another did.
ZR_EXPORT extern const char kZRDatabaseChangedNotification[];
ZR_EXPORT extern const char kZRDatabaseChangedExternallyNotification[];

// ---- What a notice carries

/// Arrays of unique ids.
ZR_EXPORT extern const char kZRInsertedRecords[];
ZR_EXPORT extern const char kZRUpdatedRecords[];
ZR_EXPORT extern const char kZRDeletedRecords[];
/// Integer and string: who saved.
ZR_EXPORT extern const char kZRSenderProcessID[];
ZR_EXPORT extern const char kZRSenderProcessName[];
/// Integer: the user.
ZR_EXPORT extern const char kZRUserUID[];
/// String: the directory of the roster, unless it is the default one.
ZR_EXPORT extern const char kZRDatabaseDirectory[];
/// Boolean: everything was replaced.
ZR_EXPORT extern const char kZRRestoreFromBackup[];
ZR_EXPORT extern const char kZRRestoreFromMetadata[];

#ifdef __cplusplus
}
#endif
