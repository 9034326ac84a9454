// The table itself, and the models made of it.
#include "store/ZRModelTable.h"

#include "core/ZRConstants.h"
#include "store/ZRModelHooks.h"
#include "store/ZROSRecord.h"

#include <algorithm>
#include <array>
#include <vector>

using enum objectstore::AttributeType;
using enum objectstore::DeleteRule;
using objectstore::EntityDescription;
using objectstore::SlotDescription;
using objectstore::SlotKind;
using objectstore::UnitDescription;

namespace {

constexpr SlotDescription attribute(std::string_view key, objectstore::AttributeType type,
    std::uint8_t flags = objectstore::kPlain, objectstore::ChangeHook didSet = nullptr)
{
    return {.key = key, .type = type, .flags = flags, .didSet = didSet};
}

/// A column that follows from others: computed when it is asked for and absent, stored with the next write.
constexpr SlotDescription derived(std::string_view key, objectstore::AttributeType type,
    objectstore::LazyHook lazy, std::uint8_t flags = objectstore::kPlain)
{
    return {.key = key, .type = type, .flags = flags, .lazy = lazy};
}

constexpr SlotDescription computed(
    std::string_view key, objectstore::GetHook get, objectstore::SetHook set = nullptr)
{
    return {.key = key, .kind = SlotKind::computed, .get = get, .set = set};
}

constexpr SlotDescription toOne(std::string_view key, std::string_view destination,
    std::string_view inverse = {}, std::uint8_t flags = objectstore::kPlain)
{
    return {
        .key = key, .kind = SlotKind::toOne, .flags = flags, .destination = destination, .inverse = inverse};
}

/// The one object that is part of this one.
constexpr SlotDescription part(std::string_view key, std::string_view destination, std::string_view inverse)
{
    return {.key = key,
        .kind = SlotKind::toOneInverse,
        .destination = destination,
        .inverse = inverse,
        .deleteRule = cascade};
}

/// The objects that are parts of this one.
constexpr SlotDescription parts(
    std::string_view key, std::string_view destination, std::string_view inverse = "owner")
{
    return {.key = key,
        .kind = SlotKind::toMany,
        .destination = destination,
        .inverse = inverse,
        .deleteRule = cascade};
}

constexpr SlotDescription linked(std::string_view key, std::string_view destination, std::string_view inverse,
    std::string_view table, bool leads)
{
    return {.key = key,
        .kind = SlotKind::manyToMany,
        .destination = destination,
        .inverse = inverse,
        .joinTable = table,
        .leads = leads};
}

constexpr std::uint8_t kIndexed = objectstore::kIndexed;
constexpr std::uint8_t kUnique = objectstore::kUnique;
constexpr std::uint8_t kTransient = objectstore::kTransient;
/// What `ZROSContact::_newStringForIndexing` writes down.
constexpr std::uint8_t kFeeds = objectstore::kFeedsTextIndex;

constexpr ModelKey recordKeys[] = {
    {attribute("uniqueId", string, kUnique), zr::kZRUIDProperty},
    {attribute("creationDate", date, 0, hooks::creationDateDidChange), zr::kZRCreationDateProperty},
    {derived("creationDateYear", integer, hooks::creationDateYear)},
    {derived("creationDateYearless", real, hooks::creationDateYearless)},
    {attribute("modificationDate", date, 0, hooks::modificationDateDidChange)},
    {derived("modificationDateYear", integer, hooks::modificationDateYear)},
    {derived("modificationDateYearless", real, hooks::modificationDateYearless)},
    {computed(
         "aggregateModificationDate", hooks::aggregateModificationDate, hooks::setAggregateModificationDate),
        zr::kZRModificationDateProperty},
};

constexpr ModelKey contactKeys[] = {
    {attribute("title", string, kFeeds, hooks::indexedTextDidChange), zr::kZRTitleProperty},
    {attribute("firstName", string, kFeeds, hooks::nameDidChange), zr::kZRFirstNameProperty},
    {attribute("middleName", string, kFeeds, hooks::indexedTextDidChange), zr::kZRMiddleNameProperty},
    {attribute("lastName", string, kFeeds, hooks::nameDidChange), zr::kZRLastNameProperty},
    {attribute("suffix", string, kFeeds, hooks::indexedTextDidChange), zr::kZRSuffixProperty},
    {attribute("nickname", string, kFeeds, hooks::indexedTextDidChange), zr::kZRNicknameProperty},
    {attribute("maidenName", string, kFeeds, hooks::indexedTextDidChange), zr::kZRMaidenNameProperty},
    {attribute("phoneticFirstName", string, kFeeds, hooks::nameDidChange), zr::kZRFirstNamePhoneticProperty},
    {attribute("phoneticMiddleName", string, kFeeds, hooks::indexedTextDidChange),
        zr::kZRMiddleNamePhoneticProperty},
    {attribute("phoneticLastName", string, kFeeds, hooks::nameDidChange), zr::kZRLastNamePhoneticProperty},
    {attribute("organization", string, kFeeds, hooks::nameDidChange), zr::kZROrganizationProperty},
    {attribute("department", string, kFeeds, hooks::indexedTextDidChange), zr::kZRDepartmentProperty},
    {attribute("jobTitle", string, kFeeds, hooks::indexedTextDidChange), zr::kZRJobTitleProperty},
    {attribute("displayFlags", integer, 0, hooks::displayFlagsDidChange), zr::kZRPersonFlags},
    {attribute("birthday", date, 0, hooks::birthdayDidChange), zr::kZRBirthdayProperty},
    {derived("birthdayYear", integer, hooks::birthdayYear)},
    {derived("birthdayYearless", real, hooks::birthdayYearless)},
    {{.key = "imageData", .kind = SlotKind::largeAttribute, .type = data}, zr::kZRImageProperty},
    {derived("sortingFirstName", string, hooks::sortingFirstName)},
    {derived("sortingLastName", string, hooks::sortingLastName)},
    {derived("sortingFirstKey", data, hooks::sortingFirstKey, kIndexed)},
    {derived("sortingLastKey", data, hooks::sortingLastKey, kIndexed)},
    {attribute("tmpIdentities", data), "identities"},
    {attribute("tmpRemoteLocation", data)},
    {attribute("tmpHomePage", string), zr::kZRHomePageProperty},
    {parts("emailAddresses", "ZROSEmailAddress"), zr::kZREmailProperty},
    {parts("phoneNumbers", "ZROSPhoneNumber"), zr::kZRPhoneProperty},
    {parts("postalAddresses", "ZROSPostalAddress"), zr::kZRAddressProperty},
    {parts("urlAddresses", "ZROSURLAddress"), zr::kZRURLsProperty},
    {parts("calendarURIs", "ZROSCalendarURI"), zr::kZRCalendarURIsProperty},
    {parts("relatedNames", "ZROSRelatedName"), zr::kZRRelatedNamesProperty},
    {parts("messagingAddresses", "ZROSMessagingAddress")},
    {parts("dates", "ZROSContactDate"), zr::kZROtherDatesProperty},
    {parts("remoteLocations", "ZROSRemoteLocation"), zr::kZRRemoteLocationProperty},
    {part("note", "ZROSNote", "contact"), zr::kZRNoteProperty},
    {part("contactIndex", "ZROSContactIndex", "contact")},
    {parts("customProperties", "ZROSCustomPropertyValue")},
    {linked("parentGroups", "ZROSAbstractGroup", "contacts", "group_contact", false)},
    {parts("distributionListConfigs", "ZROSDistributionListConfig", "contact")},
    {{.key = "sourceWhereContactIsMe",
        .kind = SlotKind::toOneInverse,
        .destination = "ZROSRosterSource",
        .inverse = "me"}},
};

constexpr ModelKey abstractGroupKeys[] = {
    {linked("contacts", "ZROSContact", "parentGroups", "group_contact", true)},
};

constexpr ModelKey groupKeys[] = {
    {attribute("name", string, 0, hooks::groupNameDidChange), zr::kZRGroupNameProperty},
    {attribute("nameNormalized", string, kIndexed)},
    {computed("sortingFirstName", hooks::groupSortingName)},
    {computed("sortingLastName", hooks::groupSortingName)},
    {linked("childGroups", "ZROSGroup", "parentGroups", "group_child", true)},
    {linked("parentGroups", "ZROSGroup", "childGroups", "group_child", false)},
    {parts("customProperties", "ZROSCustomPropertyValue")},
    {parts("distributionListConfigs", "ZROSDistributionListConfig", "group")},
    {parts("remoteLocations", "ZROSRemoteLocation")},
    {attribute("tmpRemoteLocation", data), zr::kZRRemoteLocationProperty},
    {attribute("tmpLabeledReadSharingACL", data), zr::kZRReadSharingACLProperty},
    {attribute("tmpLabeledReadWriteSharingACL", data), zr::kZRReadWriteSharingACLProperty},
};

constexpr ModelKey smartGroupKeys[] = {
    {attribute("searchElementData", data), zr::kZRSearchElementProperty},
    {attribute("displayFlags", integer), zr::kZRSmartGroupFlagsProperty},
    {attribute("modifiedUniqueIdsData", data)},
    {computed("modifiedUniqueIdsSet", hooks::modifiedUniqueIds, hooks::setModifiedUniqueIds),
        zr::kZRSmartGroupModifiedUIDsProperty},
};

constexpr ModelKey infoKeys[] = {
    {attribute("serialNumber", string), "SerialNumber"},
    {attribute("version", integer), "Version"},
    {attribute("createdVersion", string), "CreatedVersion"},
    {attribute("lastSavedVersion", string), "LastSavedVersion"},
    {attribute("lastSkyLockerAccount", string), "LastSkyLockerAccount"},
    {attribute("syncCount", integer), "Synced"},
    {attribute("shareCount", integer), "Shared"},
    {attribute("syncAnchor", string), "SyncAnchor"},
    {toOne("rosterSource", "ZROSRosterSource")},
    {computed("meUniqueId", hooks::meUniqueId, hooks::setMeUniqueId), "Me"},
    {computed("remoteLocations", hooks::sourceValues<0>), zr::kZRRemoteLocationProperty},
    {computed("readSharingACL", hooks::sourceValues<1>), zr::kZRReadSharingACLProperty},
    {computed("readWriteSharingACL", hooks::sourceValues<2>), zr::kZRReadWriteSharingACLProperty},
};

constexpr ModelKey sourceKeys[] = {
    {attribute("name", string), "displayName"},
    {attribute("local", boolean)},
    {attribute("isAll", integer), "isAll"},
    {attribute("remoteLocation", string)},
    {toOne("me", "ZROSContact", "sourceWhereContactIsMe", kIndexed)},
    {parts("remoteLocations", "ZROSRemoteLocation"), zr::kZRRemoteLocationProperty},
    {parts("readSharingACL", "ZROSSharingAccessControlEntry", "readACLSource"),
        zr::kZRReadSharingACLProperty},
    {parts("readWriteSharingACL", "ZROSSharingAccessControlEntry", "readWriteACLSource"),
        zr::kZRReadWriteSharingACLProperty},
};

constexpr ModelKey deletedRecordLogKeys[] = {
    {attribute("deletedRecordUniqueId", string, kIndexed), "DeletedUID"},
};

constexpr ModelKey propertyValueKeys[] = {
    {toOne("owner", "ZROSRecord")},
    {attribute("uniqueId", string)},
    {attribute("label", string)},
    {attribute("orderingIndex", integer)},
    {attribute("isPrimary", boolean)},
    {attribute("type", string, kTransient)},
    {attribute("property", string, kTransient)},
};

/// The choices of an entry: they go with it, however it goes.
constexpr SlotDescription distributionListConfigs(std::string_view inverse)
{
    return {.key = "distributionListConfigs",
        .kind = SlotKind::toMany,
        .destination = "ZROSDistributionListConfig",
        .inverse = inverse,
        .deleteRule = cascade};
}

constexpr ModelKey emailKeys[] = {
    {attribute("address", string, kFeeds, hooks::emailAddressDidChange)},
    {attribute("addressNormalized", string, kIndexed | kFeeds)},
    {distributionListConfigs("email")},
};
constexpr ModelKey phoneKeys[] = {
    {attribute("fullNumber", string, kFeeds)}, {distributionListConfigs("phone")}};
constexpr ModelKey postalAddressKeys[] = {
    {attribute("street", string, kFeeds), zr::kZRAddressStreetKey},
    {attribute("city", string, kFeeds), zr::kZRAddressCityKey},
    {attribute("state", string, kFeeds), zr::kZRAddressStateKey},
    {attribute("zipCode", string, kFeeds), zr::kZRAddressZIPKey},
    {attribute("countryName", string, kFeeds), zr::kZRAddressCountryKey},
    {attribute("countryCode", string), zr::kZRAddressCountryCodeKey},
    {attribute("region", string, kFeeds), "Region"},
    {attribute("sama", string, kFeeds), "Sama"},
    {attribute("customValuesDictionary", data)},
    {distributionListConfigs("address")},
};
constexpr ModelKey urlKeys[] = {{attribute("url", string, kFeeds)}};
constexpr ModelKey otherURLKeys[] = {{attribute("url", string)}};
constexpr ModelKey messagingKeys[] = {
    {attribute("address", string, kFeeds)}, {toOne("service", "ZROSService")}};
constexpr ModelKey relatedNameKeys[] = {{attribute("name", string, kFeeds)}};
constexpr ModelKey dateKeys[] = {
    {attribute("date", date, 0, hooks::dateDidChange)},
    {derived("dateYear", integer, hooks::dateYear)},
    {derived("dateYearless", real, hooks::dateYearless)},
};
constexpr ModelKey accessEntryKeys[] = {
    {attribute("accountName", string)},
    {toOne("readACLSource", "ZROSRosterSource", "readSharingACL")},
    {toOne("readWriteACLSource", "ZROSRosterSource", "readWriteSharingACL")},
};

constexpr ModelKey noteKeys[] = {
    {attribute("text", string, kFeeds)},
    {toOne("contact", "ZROSContact", "note")},
};
constexpr ModelKey contactIndexKeys[] = {
    {toOne("contact", "ZROSContact", "contactIndex")},
    {derived("stringForIndexing", string, hooks::stringForIndexing, objectstore::kTextIndex | kFeeds)},
};
constexpr ModelKey serviceKeys[] = {{attribute("serviceName", string)}};
constexpr ModelKey customPropertyKeys[] = {
    {attribute("recordType", string)},
    {attribute("propertyName", string)},
    {attribute("valueType", integer)},
};
constexpr ModelKey customPropertyValueKeys[] = {
    {toOne("customProperty", "ZROSCustomProperty")},
    {toOne("owner", "ZROSRecord")},
    {attribute("uniqueId", string)},
    {attribute("label", string)},
    {attribute("orderingIndex", integer)},
    {attribute("isPrimary", boolean)},
    {attribute("stringValue", string)},
    {attribute("numberValue", number)},
    {attribute("dataValue", data)},
    {attribute("dateValue", date, 0, hooks::dateValueDidChange)},
    {derived("dateValueYear", integer, hooks::dateValueYear)},
    {derived("dateValueYearless", real, hooks::dateValueYearless)},
};
constexpr ModelKey distributionListConfigKeys[] = {
    {attribute("propertyName", string)},
    {toOne("contact", "ZROSContact", "distributionListConfigs", kIndexed)},
    {toOne("group", "ZROSGroup", "distributionListConfigs", kIndexed)},
    {toOne("email", "ZROSEmailAddress", "distributionListConfigs", kIndexed)},
    {toOne("phone", "ZROSPhoneNumber", "distributionListConfigs", kIndexed)},
    {toOne("address", "ZROSPostalAddress", "distributionListConfigs", kIndexed)},
};

constexpr UnitDescription entriesOfOneKey{
    .identifier = "uniqueId", .ordering = "orderingIndex", .primary = "isPrimary"};
constexpr UnitDescription entriesBy(std::string_view discriminator)
{
    return {.identifier = "uniqueId",
        .discriminator = discriminator,
        .ordering = "orderingIndex",
        .primary = "isPrimary"};
}

constexpr std::string_view serviceIsSharedBy[] = {"serviceName"};
constexpr std::string_view customPropertyIsSharedBy[] = {"recordType", "propertyName"};

constexpr EntityDescription record{.name = "ZROSRecord", .isAbstract = true, .make = ZROSRecord::make};

constexpr ModelEntity valueEntity(std::string_view name, std::string_view table,
    std::span<const ModelKey> keys, std::string_view mainKey, UnitDescription unit = entriesOfOneKey)
{
    return {{.name = name, .parent = "ZROSPropertyValue", .table = table, .owner = "owner", .unit = unit},
        keys, mainKey};
}

constexpr ModelEntity rosterEntities[] = {
    {record, recordKeys},
    {{.name = "ZROSContact", .parent = "ZROSRecord", .table = "contact", .make = ZROSContact::make},
        contactKeys, {}, zr::kZRPersonRecordType, zr::kZRPersonRecordType, true},
    {{.name = "ZROSSubscribedContact", .parent = "ZROSContact"}, {}, {}, zr::kZRSubscribedPersonRecordType,
        zr::kZRSubscribedPersonRecordType},
    {{.name = "ZROSAbstractGroup",
         .parent = "ZROSRecord",
         .isAbstract = true,
         .table = "contact_group",
         .make = ZROSGroup::make},
        abstractGroupKeys},
    {{.name = "ZROSGroup", .parent = "ZROSAbstractGroup"}, groupKeys, {}, zr::kZRGroupRecordType,
        zr::kZRGroupRecordType, true},
    {{.name = "ZROSSmartGroup", .parent = "ZROSGroup"}, smartGroupKeys, {}, zr::kZRSmartGroupRecordType,
        zr::kZRSmartGroupRecordType, true},
    {{.name = "ZROSSubscribedGroup", .parent = "ZROSGroup"}, {}, {}, zr::kZRSubscribedGroupRecordType,
        zr::kZRSubscribedGroupRecordType},
    {{.name = "ZROSInfo", .parent = "ZROSRecord", .table = "info", .make = ZROSInfo::make}, infoKeys, {},
        "ZRInfo", "ZRInfo"},
    {{.name = "ZROSRosterSource", .parent = "ZROSRecord", .table = "source"}, sourceKeys, {},
        "ZRSubscriptionRecord", "ZRSubscription"},
    {{.name = "ZROSDeletedRecordLog", .parent = "ZROSRecord", .table = "deleted_record"},
        deletedRecordLogKeys, {}, "ZRDeletedRecordLog", "ZRLog"},
    {{.name = "ZROSPropertyValue", .isAbstract = true, .make = ZROSOwnedObject::make, .owner = "owner"},
        propertyValueKeys},
    valueEntity("ZROSEmailAddress", "email_address", emailKeys, "address"),
    valueEntity("ZROSPhoneNumber", "phone_number", phoneKeys, "fullNumber"),
    valueEntity("ZROSPostalAddress", "postal_address", postalAddressKeys, {}),
    valueEntity("ZROSURLAddress", "url_address", urlKeys, "url"),
    valueEntity("ZROSCalendarURI", "calendar_uri", otherURLKeys, "url"),
    valueEntity("ZROSMessagingAddress", "messaging_address", messagingKeys, "address", entriesBy("service")),
    valueEntity("ZROSRelatedName", "related_name", relatedNameKeys, "name"),
    valueEntity("ZROSContactDate", "contact_date", dateKeys, "date"),
    valueEntity("ZROSRemoteLocation", "remote_location", otherURLKeys, "url"),
    valueEntity("ZROSSharingAccessControlEntry", "access_entry", accessEntryKeys, "accountName",
        entriesBy("readACLSource")),
    {{.name = "ZROSNote", .table = "note", .make = ZROSOwnedObject::make, .owner = "contact"}, noteKeys,
        "text"},
    {{.name = "ZROSContactIndex",
         .table = "contact_index",
         .make = ZROSOwnedObject::make,
         .owner = "contact"},
        contactIndexKeys},
    {{.name = "ZROSService", .table = "service", .sharedBy = serviceIsSharedBy}, serviceKeys},
    {{.name = "ZROSCountry", .table = "country"}},
    {{.name = "ZROSCustomProperty", .table = "custom_property", .sharedBy = customPropertyIsSharedBy},
        customPropertyKeys},
    {{.name = "ZROSCustomPropertyValue",
         .table = "custom_property_value",
         .make = ZROSOwnedObject::make,
         .owner = "owner",
         .unit = entriesBy("customProperty")},
        customPropertyValueKeys},
    {{.name = "ZROSDistributionListConfig",
         .table = "distribution_list_config",
         .make = ZROSDistributionListConfig::make,
         .owner = "group"},
        distributionListConfigKeys},
};

constexpr ModelKey mailRecentKeys[] = {
    {attribute("firstName", string, 0, hooks::mailRecentDidChange), zr::kZRFirstNameProperty},
    {attribute("firstNameNormalized", string, kIndexed)},
    {attribute("lastName", string, 0, hooks::mailRecentDidChange), zr::kZRLastNameProperty},
    {attribute("lastNameNormalized", string, kIndexed)},
    {attribute("email", string, 0, hooks::mailRecentDidChange), zr::kZREmailProperty},
    {attribute("emailNormalized", string, kIndexed)},
    {attribute("personUniqueId", string), zr::kZRPersonUIDProperty},
    {parts("lastEmailDates", "ZROSLastEmailDate")},
    {computed("lastEmailDatesArray", hooks::lastEmailDates, hooks::setLastEmailDates),
        zr::kZRMailLastDatesProperty},
};
constexpr ModelKey lastEmailDateKeys[] = {
    {toOne("owner", "ZROSMailRecent", "lastEmailDates")}, {attribute("date", date)}};

constexpr ModelEntity mailRecentsEntities[] = {
    {record, recordKeys},
    {{.name = "ZROSMailRecent", .parent = "ZROSRecord", .table = "mail_recent"}, mailRecentKeys, {},
        zr::kZRMailRecentRecordType, zr::kZRMailRecentRecordType},
    {{.name = "ZROSLastEmailDate", .table = "last_email_date", .owner = "owner"}, lastEmailDateKeys},
};

/// Callers name entities by the exported words: each must be a row.
constexpr std::string_view exportedNames[] = {zr::kZRObjectStoreRecordEntityName,
    zr::kZRObjectStoreContactEntityName, zr::kZRObjectStoreSubscribedContactEntityName,
    zr::kZRObjectStoreAbstractGroupEntityName, zr::kZRObjectStoreGroupEntityName,
    zr::kZRObjectStoreSmartGroupEntityName, zr::kZRObjectStoreSubscribedGroupEntityName,
    zr::kZRObjectStoreInfoEntityName, zr::kZRObjectStoreRosterSourceEntityName,
    zr::kZRObjectStoreDeletedRecordLogEntityName, zr::kZRObjectStoreMailRecentEntityName,
    zr::kZRObjectStoreMailRecentLastEmailDateEntityName, zr::kZRObjectStorePropertyValueEntityName,
    zr::kZRObjectStoreEmailAddressEntityName, zr::kZRObjectStorePhoneNumberEntityName,
    zr::kZRObjectStorePostalAddressEntityName, zr::kZRObjectStoreURLAddressEntityName,
    zr::kZRObjectStoreCalendarURIEntityName, zr::kZRObjectStoreMessagingAddressEntityName,
    zr::kZRObjectStoreRelatedNameEntityName, zr::kZRObjectStoreDateEntityName,
    zr::kZRObjectStoreRemoteLocationEntityName, zr::kZRObjectStoreSharingAccessControlEntryEntityName,
    zr::kZRObjectStoreNoteEntityName, zr::kZRObjectStoreServiceEntityName,
    zr::kZRObjectStoreCountryEntityName, zr::kZRObjectStoreCustomPropertyEntityName,
    zr::kZRObjectStoreCustomPropertyValueEntityName, zr::kZRObjectStoreDistributionListConfigEntityName};

constexpr bool isEntity(std::string_view name)
{
    const auto is = [&](const ModelEntity& row) { return row.entity.name == name; };
    return std::ranges::any_of(rosterEntities, is) || std::ranges::any_of(mailRecentsEntities, is);
}
static_assert(std::ranges::all_of(exportedNames, isEntity));

platform::Ref<const objectstore::Model> makeModel(std::span<const ModelEntity> table)
{
    std::vector<EntityDescription> entities;
    std::vector<std::vector<SlotDescription>> slots;
    slots.reserve(table.size());
    for (const ModelEntity& row : table) {
        auto& own = slots.emplace_back();
        for (const ModelKey& key : row.keys)
            own.push_back(key.slot);
        entities.push_back(row.entity);
        entities.back().slots = own;
    }
    return objectstore::Model::make(entities);
}

} // namespace

std::span<const ModelEntity> rosterModelTable() { return rosterEntities; }
std::span<const ModelEntity> mailRecentsModelTable() { return mailRecentsEntities; }

const ModelEntity* modelEntityNamed(std::string_view name)
{
    for (const auto table : {rosterModelTable(), mailRecentsModelTable()})
        if (const auto row =
                std::ranges::find(table, name, [](const ModelEntity& e) { return e.entity.name; });
            row != table.end())
            return &*row;
    return nullptr;
}

platform::Ref<const objectstore::Model> rosterModel()
{
    static const auto* const model = new platform::Ref(makeModel(rosterModelTable()));
    return *model;
}

platform::Ref<const objectstore::Model> mailRecentsModel()
{
    static const auto* const model = new platform::Ref(makeModel(mailRecentsModelTable()));
    return *model;
}
