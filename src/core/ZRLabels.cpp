// One table of the labels of each property, and the look-up of names.
#include "core/ZRLabels.h"

#include "core/ZRConstants.h"
#include "core/ZRFrameworkBundle.h"
#include "platform/files/Resources.h"
#include "platform/files/ZRUserDefaults.h"
#include "platform/run/NeverDestroyed.h"

#include <algorithm>
#include <map>
#include <span>

using platform::Value;

namespace {

using Labels = std::span<const std::string_view>;

constexpr std::string_view kPhoneLabels[] = {zr::kZRPhoneWorkLabel, zr::kZRPhoneHomeLabel,
    zr::kZRPhoneHandsetLabel, zr::kZRPhoneMobileLabel, zr::kZRPhoneMainLabel, zr::kZRPhoneHomeFAXLabel,
    zr::kZRPhoneWorkFAXLabel, zr::kZRPhonePagerLabel, zr::kZROtherLabel};
constexpr std::string_view kAIMLabels[] = {
    zr::kZRAIMWorkLabel, zr::kZRAIMHomeLabel, zr::kZRAIMSkyLockerLabel, zr::kZROtherLabel};
constexpr std::string_view kInstantLabels[] = {zr::kZRWorkLabel, zr::kZRHomeLabel, zr::kZROtherLabel};
constexpr std::string_view kEmailLabels[] = {
    zr::kZREmailWorkLabel, zr::kZREmailHomeLabel, zr::kZREmailSkyLockerLabel, zr::kZROtherLabel};
constexpr std::string_view kAddressLabels[] = {
    zr::kZRAddressHomeLabel, zr::kZRAddressWorkLabel, zr::kZROtherLabel};
constexpr std::string_view kDateLabels[] = {zr::kZRAnniversaryLabel};
constexpr std::string_view kRelatedLabels[] = {zr::kZRFatherLabel, zr::kZRMotherLabel, zr::kZRParentLabel,
    zr::kZRBrotherLabel, zr::kZRSisterLabel, zr::kZRChildLabel, zr::kZRFriendLabel, zr::kZRSpouseLabel,
    zr::kZRPartnerLabel, zr::kZRAssistantLabel, zr::kZRManagerLabel, zr::kZROtherLabel};
constexpr std::string_view kURLLabels[] = {
    zr::kZRHomePageLabel, zr::kZRHomeLabel, zr::kZRWorkLabel, zr::kZROtherLabel};

constexpr std::string_view kInitialPhone[] = {zr::kZRPhoneWorkLabel, zr::kZRPhoneMobileLabel};
constexpr std::string_view kInitialWork[] = {zr::kZRWorkLabel};
constexpr std::string_view kInitialRelated[] = {zr::kZRFriendLabel, zr::kZRAssistantLabel};
constexpr std::string_view kInitialURL[] = {zr::kZRHomePageLabel};

/// A list of labels: where the user's is kept, and ours.
struct LabelList {
    std::string_view preference;
    Labels standard;
};

struct PropertyLabels {
    std::string_view property;
    LabelList builtIn;
    LabelList initial;
};

constexpr PropertyLabels kLabels[] = {
    {zr::kZRPhoneProperty, {zr::ZRBuiltInLabelsPhone, kPhoneLabels},
        {zr::ZRInitialLabelsPhone, kInitialPhone}},
    {zr::kZREmailProperty, {zr::ZRBuiltInLabelsEmail, kEmailLabels},
        {zr::ZRInitialLabelsEmail, kInitialWork}},
    {zr::kZRAddressProperty, {zr::ZRBuiltInLabelsAddress, kAddressLabels},
        {zr::ZRInitialLabelsAddress, kInitialWork}},
    {zr::kZRAIMInstantProperty, {zr::ZRBuiltInLabelsAIMInstant, kAIMLabels},
        {zr::ZRInitialLabelsAIMInstant, kInitialWork}},
    {zr::kZRJabberInstantProperty, {zr::ZRBuiltInLabelsJabberInstant, kInstantLabels},
        {zr::ZRInitialLabelsJabberInstant, kInitialWork}},
    {zr::kZRMSNInstantProperty, {zr::ZRBuiltInLabelsMSNInstant, kInstantLabels},
        {zr::ZRInitialLabelsMSNInstant, kInitialWork}},
    {zr::kZRYahooInstantProperty, {zr::ZRBuiltInLabelsYahooInstant, kInstantLabels},
        {zr::ZRInitialLabelsYahooInstant, kInitialWork}},
    {zr::kZRICQInstantProperty, {zr::ZRBuiltInLabelsICQInstant, kInstantLabels},
        {zr::ZRInitialLabelsICQInstant, kInitialWork}},
    {zr::kZROtherDatesProperty, {zr::ZRBuiltInLabelsDates, kDateLabels},
        {zr::ZRInitialLabelsDates, kDateLabels}},
    {zr::kZRRelatedNamesProperty, {zr::ZRBuildInLabelsRelatedRecords, kRelatedLabels},
        {zr::ZRInitialLabelsRelatedRecords, kInitialRelated}},
    {zr::kZRURLsProperty, {zr::ZRBuiltInLabelsURLs, kURLLabels}, {zr::ZRInitialLabelsURLs, kInitialURL}},
};

std::vector<std::string> chosenLabels(const LabelList& list)
{
    std::vector<std::string> labels;
    const Value chosen = ZRUserDefaults::rosterPreferences()->objectForKey(list.preference);
    for (const Value& label : chosen.asArray())
        if (label.isString())
            labels.emplace_back(label.asText());
    if (labels.empty())
        labels.assign(list.standard.begin(), list.standard.end());
    return labels;
}

std::vector<std::string> labelsOf(std::string_view property, LabelList PropertyLabels::*list)
{
    const auto* found = std::ranges::find(kLabels, property, &PropertyLabels::property);
    return found == std::end(kLabels) ? std::vector<std::string>() : chosenLabels(found->*list);
}

/// Stands for "not in this table". No table has it as a text.
constexpr std::string_view kUnlocalized = "__ZRUnlocalizedString";

} // namespace

std::vector<std::string> builtInLabelsForProperty(std::string_view property)
{
    return labelsOf(property, &PropertyLabels::builtIn);
}

std::vector<std::string> initialFieldsForProperty(std::string_view property)
{
    return labelsOf(property, &PropertyLabels::initial);
}

std::string ZRLocalizedPropertyOrLabel(std::string_view key)
{
    for (const std::string_view table : {"ZRLabelsAndProperties", "ZRAddressLabels"}) {
        std::string text = ZRFrameworkBundle().localizedString(key, table, kUnlocalized);
        if (text != kUnlocalized)
            return text;
    }
    return std::string(key);
}

std::string ZREnglishLocalizedPropertyOrLabel(std::string_view key)
{
    using Table = std::map<std::string, std::string, std::less<>>;
    static const platform::NeverDestroyed<const Table> english(platform::parseStringTable(
        platform::resource("strings/en/ZRLabelsAndProperties", "strings").value_or(std::string())));
    const auto found = english->find(key);
    return found == english->end() ? std::string(key) : found->second;
}
