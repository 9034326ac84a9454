// Which properties and labels an editor of cards may offer, for one record class.
#include "store/ZRRecordConstraint.h"

#include "core/ZRConstants.h"
#include "core/ZRLabels.h"
#include "core/ZRRecord.h"
#include "platform/files/ZRUserDefaults.h"
#include "store/ZROSRecord.h"
#include "store/ZRRoster.h"

#include <utility>

using platform::Ref;

namespace {

/// The preference that shows each property in a new card.
constexpr std::pair<std::string_view, std::string_view> visibility[] = {
    {zr::ZRAddressesVisible, zr::kZRAddressProperty},
    {zr::ZRBirthDayVisible, zr::kZRBirthdayProperty},
    {zr::ZRDatesVisible, zr::kZROtherDatesProperty},
    {zr::ZREmailsVisible, zr::kZREmailProperty},
    {zr::ZRPhonesVisible, zr::kZRPhoneProperty},
    {zr::ZRMaidenameVisible, zr::kZRMaidenNameProperty},
    {zr::ZRURLsVisible, zr::kZRURLsProperty},
    {"note", zr::kZRNoteProperty},
    {zr::ZRRelatedRecordsVisible, zr::kZRRelatedNamesProperty},
    {zr::ZRAIMInstantVisible, zr::kZRAIMInstantProperty},
    {zr::ZRJabberInstantVisible, zr::kZRJabberInstantProperty},
    {zr::ZRICQInstantVisible, zr::kZRICQInstantProperty},
    {zr::ZRYahooInstantVisible, zr::kZRYahooInstantProperty},
    {zr::ZRMSNInstantVisible, zr::kZRMSNInstantProperty},
};

} // namespace

Ref<ZRRecordConstraint> ZRRecordConstraint::initWithRecordClass(const ZRRecordClass& recordClass)
{
    return platform::makeRef<ZRRecordConstraint>(recordClass);
}

ZRRecordConstraint::ZRRecordConstraint(const ZRRecordClass& recordClass)
    : _constraintClass(recordClass), _validProperties(ZRRecord::properties(recordClass))
{
}

std::vector<std::string> ZRRecordConstraint::initialProperties() const
{
    const auto preferences = ZRUserDefaults::rosterPreferences();
    std::vector<std::string> shown;
    for (const auto& [preference, property] : visibility)
        if (preferences->boolForKey(preference))
            shown.emplace_back(property);
    return shown;
}

std::vector<std::string> ZRRecordConstraint::initialLabelsForProperty(std::string_view property) const
{
    return initialFieldsForProperty(property);
}

std::vector<std::string> ZRRecordConstraint::availableLabelsForProperty(
    std::string_view property, ZROSRecord& contact, const ZRLabelsDelegate& delegate) const
{
    auto labels = builtInLabelsForProperty(property);
    for (auto& label : contact.roster()->activeLabelsForProperty(property, contact, delegate))
        labels.push_back(std::move(label));
    return labels;
}

std::vector<std::string> ZRRecordConstraint::availablePropertiesForContact(ZROSRecord& contact) const
{
    std::vector<std::string> available;
    for (const auto& property : _validProperties) {
        const auto* place = contact.keyForProperty(property);
        const bool isMultiValue = place
            ? place->isMultiValue
            : zrIsMultiValueType(contact.roster()->typeOfProperty(property, _constraintClass.name));
        if (isMultiValue || !place || contact.value(*place->key).isNothing())
            available.push_back(property);
    }
    return available;
}
