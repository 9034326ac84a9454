// The keys that the code of records reads often, looked up once.
#pragma once

#include "objectstore/Model.h"
#include "store/ZRModelTable.h"

#include <string_view>

/// Keys of one entity; `of("firstName")` is checked when the process first needs them.
struct EntitySlots {
    explicit EntitySlots(std::string_view entityName) : entity(*rosterModel()->entity(entityName)) { }
    const objectstore::Slot& of(std::string_view key) const { return *entity.slot(key); }
    const objectstore::Entity& entity;
};

struct RecordSlots : EntitySlots {
    using EntitySlots::EntitySlots;
    const objectstore::Slot &uniqueId = of("uniqueId"), &creationDate = of("creationDate"),
                            &modificationDate = of("modificationDate");
};

struct ContactSlots : RecordSlots {
    ContactSlots() : RecordSlots("ZROSContact") { }
    const objectstore::Slot &title = of("title"), &firstName = of("firstName"),
                            &middleName = of("middleName"), &lastName = of("lastName"),
                            &suffix = of("suffix"), &nickname = of("nickname"),
                            &maidenName = of("maidenName"), &phoneticFirstName = of("phoneticFirstName"),
                            &phoneticMiddleName = of("phoneticMiddleName"),
                            &phoneticLastName = of("phoneticLastName"), &organization = of("organization"),
                            &department = of("department"), &jobTitle = of("jobTitle"),
                            &displayFlags = of("displayFlags"), &birthday = of("birthday"),
                            &imageData = of("imageData"), &sortingFirstName = of("sortingFirstName"),
                            &sortingLastName = of("sortingLastName"),
                            &sortingFirstKey = of("sortingFirstKey"), &sortingLastKey = of("sortingLastKey"),
                            &emailAddresses = of("emailAddresses"), &phoneNumbers = of("phoneNumbers"),
                            &postalAddresses = of("postalAddresses"), &urlAddresses = of("urlAddresses"),
                            &relatedNames = of("relatedNames"),
                            &messagingAddresses = of("messagingAddresses"), &dates = of("dates"),
                            &note = of("note"), &contactIndex = of("contactIndex"),
                            &customProperties = of("customProperties"), &parentGroups = of("parentGroups");
};

struct GroupSlots : RecordSlots {
    GroupSlots() : RecordSlots("ZROSGroup") { }
    const objectstore::Slot &name = of("name"), &contacts = of("contacts"), &childGroups = of("childGroups"),
                            &parentGroups = of("parentGroups"),
                            &distributionListConfigs = of("distributionListConfigs");
};

/// A choice of the entry by which a group reaches a member.
struct DistributionListConfigSlots : EntitySlots {
    DistributionListConfigSlots() : EntitySlots("ZROSDistributionListConfig") { }
    const objectstore::Slot &propertyName = of("propertyName"), &contact = of("contact"),
                            &group = of("group");
};

struct NoteSlots : EntitySlots {
    NoteSlots() : EntitySlots("ZROSNote") { }
    const objectstore::Slot& text = of("text");
};

struct ContactIndexSlots : EntitySlots {
    ContactIndexSlots() : EntitySlots("ZROSContactIndex") { }
    const objectstore::Slot &contact = of("contact"), &stringForIndexing = of("stringForIndexing");
};

/// Keys that the rows of every multi-value have.
struct ValueSlots : EntitySlots {
    using EntitySlots::EntitySlots;
    const objectstore::Slot &owner = of("owner"), &uniqueId = of("uniqueId"), &label = of("label"),
                            &orderingIndex = of("orderingIndex"), &isPrimary = of("isPrimary");
};

struct EmailSlots : ValueSlots {
    EmailSlots() : ValueSlots("ZROSEmailAddress") { }
    const objectstore::Slot& address = of("address");
};

struct PhoneSlots : ValueSlots {
    PhoneSlots() : ValueSlots("ZROSPhoneNumber") { }
    const objectstore::Slot& fullNumber = of("fullNumber");
};

struct URLSlots : ValueSlots {
    URLSlots() : ValueSlots("ZROSURLAddress") { }
    const objectstore::Slot& url = of("url");
};

struct MessagingSlots : ValueSlots {
    MessagingSlots() : ValueSlots("ZROSMessagingAddress") { }
    const objectstore::Slot &address = of("address"), &service = of("service");
};

struct RelatedNameSlots : ValueSlots {
    RelatedNameSlots() : ValueSlots("ZROSRelatedName") { }
    const objectstore::Slot& name = of("name");
};

struct AddressSlots : ValueSlots {
    AddressSlots() : ValueSlots("ZROSPostalAddress") { }
    const objectstore::Slot &street = of("street"), &city = of("city"), &state = of("state"),
                            &zipCode = of("zipCode"), &countryName = of("countryName"),
                            &countryCode = of("countryCode"), &region = of("region"), &sama = of("sama"),
                            &customValuesDictionary = of("customValuesDictionary");
};

struct CustomValueSlots : ValueSlots {
    CustomValueSlots() : ValueSlots("ZROSCustomPropertyValue") { }
    const objectstore::Slot& customProperty = of("customProperty");
};

struct CustomPropertySlots : EntitySlots {
    CustomPropertySlots() : EntitySlots("ZROSCustomProperty") { }
    const objectstore::Slot &recordType = of("recordType"), &propertyName = of("propertyName"),
                            &valueType = of("valueType");
};

/// The one instance of a group of keys; never destroyed.
template <class Slots>
const Slots& slotsOf()
{
    static const Slots* const slots = new Slots;
    return *slots;
}

inline const ContactSlots& contactSlots() { return slotsOf<ContactSlots>(); }
inline const GroupSlots& groupSlots() { return slotsOf<GroupSlots>(); }
inline const DistributionListConfigSlots& distributionListConfigSlots()
{
    return slotsOf<DistributionListConfigSlots>();
}
inline const NoteSlots& noteSlots() { return slotsOf<NoteSlots>(); }
inline const ContactIndexSlots& contactIndexSlots() { return slotsOf<ContactIndexSlots>(); }
inline const EmailSlots& emailSlots() { return slotsOf<EmailSlots>(); }
inline const PhoneSlots& phoneSlots() { return slotsOf<PhoneSlots>(); }
inline const URLSlots& urlSlots() { return slotsOf<URLSlots>(); }
inline const MessagingSlots& messagingSlots() { return slotsOf<MessagingSlots>(); }
inline const RelatedNameSlots& relatedNameSlots() { return slotsOf<RelatedNameSlots>(); }
inline const AddressSlots& addressSlots() { return slotsOf<AddressSlots>(); }
inline const CustomValueSlots& customValueSlots() { return slotsOf<CustomValueSlots>(); }
inline const CustomPropertySlots& customPropertySlots() { return slotsOf<CustomPropertySlots>(); }
