// The tables of built-in properties, one a record class.
#include "core/BuiltInProperties.h"

#include "core/ZRConstants.h"
#include "core/ZRLog.h"

#include <algorithm>
#include <array>

namespace {

constexpr ZRPropertyType kString = kZRPropertyTypeString;
constexpr ZRPropertyType kInteger = kZRPropertyTypeInteger;
constexpr ZRPropertyType kDate = kZRPropertyTypeDate;
constexpr ZRPropertyType kArray = kZRPropertyTypeArray;
constexpr ZRPropertyType kDictionary = kZRPropertyTypeDictionary;
constexpr ZRPropertyType kData = kZRPropertyTypeData;
constexpr ZRPropertyType kMultiString = kZRPropertyTypeMulti | kZRPropertyTypeString;
constexpr ZRPropertyType kMultiDate = kZRPropertyTypeMulti | kZRPropertyTypeDate;
constexpr ZRPropertyType kMultiDictionary = kZRPropertyTypeMulti | kZRPropertyTypeDictionary;

constexpr BuiltInProperty kPerson[] = {
    {zr::kZRFirstNameProperty, kString},
    {zr::kZRMiddleNameProperty, kString},
    {zr::kZRLastNameProperty, kString},
    {zr::kZRFirstNamePhoneticProperty, kString},
    {zr::kZRMiddleNamePhoneticProperty, kString},
    {zr::kZRLastNamePhoneticProperty, kString},
    {zr::kZRBirthdayProperty, kDate},
    {zr::kZROrganizationProperty, kString},
    {zr::kZRJobTitleProperty, kString},
    {zr::kZRTitleProperty, kString},
    {zr::kZRSuffixProperty, kString},
    {zr::kZRNicknameProperty, kString},
    {zr::kZRMaidenNameProperty, kString},
    {zr::kZRHomePageProperty, kString},
    {zr::kZREmailProperty, kMultiString},
    {zr::kZRAddressProperty, kMultiDictionary},
    {zr::kZRPhoneProperty, kMultiString},
    {zr::kZRAIMInstantProperty, kMultiString},
    {zr::kZRICQInstantProperty, kMultiString},
    {zr::kZRYahooInstantProperty, kMultiString},
    {zr::kZRMSNInstantProperty, kMultiString},
    {zr::kZRJabberInstantProperty, kMultiString},
    {zr::kZRNoteProperty, kString},
    {zr::kZRModificationDateProperty, kDate},
    {zr::kZRCreationDateProperty, kDate},
    {zr::kZRPersonFlags, kInteger},
    {zr::kZROtherDatesProperty, kMultiDate},
    {zr::kZRRelatedNamesProperty, kMultiString},
    {zr::kZRDepartmentProperty, kString},
    {zr::kZRRemoteLocationProperty, kMultiString},
    {zr::kZRURLsProperty, kMultiString},
    {zr::kZRCalendarURIsProperty, kMultiString},
    {zr::kZRUIDProperty, kString},
};

constexpr BuiltInProperty kGroup[] = {
    {zr::kZRGroupNameProperty, kString},
    {zr::kZRModificationDateProperty, kDate},
    {zr::kZRCreationDateProperty, kDate},
    {zr::kZRRemoteLocationProperty, kMultiString},
    {zr::kZRReadSharingACLProperty, kMultiString},
    {zr::kZRReadWriteSharingACLProperty, kMultiString},
    {zr::kZRUIDProperty, kString},
};

constexpr BuiltInProperty kSmartGroupAlone[] = {
    {zr::kZRSearchElementProperty, kData},
    {zr::kZRSmartGroupFlagsProperty, kInteger},
    {zr::kZRSmartGroupModifiedUIDsProperty, kArray},
};

/// A class that has all of another's and some more.
template <std::size_t BaseCount, std::size_t OwnCount>
constexpr auto joined(const BuiltInProperty (&base)[BaseCount], const BuiltInProperty (&own)[OwnCount])
{
    std::array<BuiltInProperty, BaseCount + OwnCount> all{};
    std::copy(base, base + BaseCount, all.begin());
    std::copy(own, own + OwnCount, all.begin() + BaseCount);
    return all;
}

constexpr auto kSmartGroup = joined(kGroup, kSmartGroupAlone);

constexpr BuiltInProperty kInfo[] = {
    {"Me", kString},
    {"Synced", kInteger},
    {"Shared", kInteger},
    {"SyncAnchor", kString},
    {"Version", kInteger},
    {"CreatedVersion", kString},
    {"LastSavedVersion", kString},
    {"SerialNumber", kString},
    {"LastSkyLockerAccount", kString},
    {zr::kZRRemoteLocationProperty, kMultiString},
    {zr::kZRReadSharingACLProperty, kMultiString},
    {zr::kZRReadWriteSharingACLProperty, kMultiString},
};

constexpr BuiltInProperty kMailRecent[] = {
    {zr::kZRFirstNameProperty, kString},
    {zr::kZRLastNameProperty, kString},
    {zr::kZREmailProperty, kString}, // one address, although people have many
    {zr::kZRPersonUIDProperty, kString},
    {zr::kZRMailLastDatesProperty, kArray},
};

constexpr BuiltInProperty kLog[] = {{"DeletedUID", kString}};

constexpr BuiltInProperty kSubscription[] = {
    {"displayName", kString},
    {"isAll", kInteger},
    {zr::kZRRemoteLocationProperty, kMultiString},
    {zr::kZRReadWriteSharingACLProperty, kMultiString},
    {zr::kZRReadSharingACLProperty, kMultiString},
};

constexpr BuiltInProperty kGroupContents[] = {
    {"GroupUID", kString},
    {"MemberUID", kString},
    {"distribution", kDictionary},
};

constexpr BuiltInProperty kDataType[] = {{"Table", kString}, {"Property", kString}, {"Type", kInteger}};

struct ClassTable {
    std::string_view recordClass;
    std::span<const BuiltInProperty> properties;
};

constexpr ClassTable kClasses[] = {
    {zr::kZRPersonRecordType, kPerson},
    {zr::kZRGroupRecordType, kGroup},
    {zr::kZRSmartGroupRecordType, kSmartGroup},
    {zr::kZRSubscribedPersonRecordType, kPerson},
    {zr::kZRSubscribedGroupRecordType, kGroup},
    {"ZRInfo", kInfo},
    {zr::kZRMailRecentRecordType, kMailRecent},
    {"ZRLog", kLog},
    {"ZRSubscription", kSubscription},
    {"ZRGroupContents", kGroupContents},
    {"ZRDataType", kDataType},
};

constexpr bool namesEachPropertyOnce(std::span<const BuiltInProperty> table)
{
    for (std::size_t i = 0; i < table.size(); ++i)
        for (std::size_t j = 0; j < i; ++j)
            if (table[i].name == table[j].name)
                return false;
    return true;
}
static_assert(std::size(kPerson) == 33);
static_assert(std::ranges::all_of(
    kClasses, [](const ClassTable& table) { return namesEachPropertyOnce(table.properties); }));

const ClassTable* tableOf(std::string_view recordClass)
{
    const auto* found = std::ranges::find(kClasses, recordClass, &ClassTable::recordClass);
    return found == std::end(kClasses) ? nullptr : found;
}

} // namespace

std::span<const BuiltInProperty> builtInProperties(std::string_view recordClass)
{
    if (const ClassTable* table = tableOf(recordClass))
        return table->properties;
    ZRDebugLog("{} should implement +[{} builtInProperties]", recordClass, recordClass);
    return {};
}

ZRPropertyType builtInTypeOfProperty(std::string_view recordClass, std::string_view property)
{
    const ClassTable* table = tableOf(recordClass);
    if (!table)
        return kZRPropertyTypeUnknown;
    const auto found = std::ranges::find(table->properties, property, &BuiltInProperty::name);
    return found == table->properties.end() ? ZRPropertyType{kZRPropertyTypeUnknown} : found->type;
}

ZRPropertyTypes builtInPropertyTypes(std::string_view recordClass)
{
    ZRPropertyTypes types;
    for (const BuiltInProperty& property : builtInProperties(recordClass))
        types.emplace(property.name, property.type);
    return types;
}
