// What the user leaves out of vCards: notes, photos, and private fields of Me.
#include "core/ZRPerson.h"
#include "platform/files/ZRUserDefaults.h"
#include "store/ZRRoster.h"

#include <fmt/format.h>

#include <algorithm>

using platform::Value;

namespace {

constexpr std::string_view kPhotosKey = "ZRIncludePhotosInVCard";
constexpr std::string_view kNotesKey = "ZRIncludeNotesInVCard";
constexpr std::string_view kPrivacyKey = "ZRPrivateVCardFieldsEnabled";
constexpr std::string_view kPrivateFieldsKey = "ZRPrivateVCardFields";

bool isOn(std::string_view key) { return ZRUserDefaults::rosterPreferences()->boolForKey(key); }
void set(std::string_view key, bool value) { ZRUserDefaults::rosterPreferences()->setBool(value, key); }

} // namespace

bool ZRPerson::includeNotesInVCards() { return isOn(kNotesKey); }
bool ZRPerson::includePhotosInVCards() { return isOn(kPhotosKey); }
void ZRPerson::setIncludeNotesInVCards(bool include) { set(kNotesKey, include); }
void ZRPerson::setIncludePhotosInVCards(bool include) { set(kPhotosKey, include); }
bool ZRPerson::privateVCardEnabled() { return isOn(kPrivacyKey); }
void ZRPerson::setPrivateVCardEnabled(bool enabled) { set(kPrivacyKey, enabled); }

bool ZRPerson::vcardFieldisPrivate(std::string_view field)
{
    return ZRUserDefaults::rosterPreferences()->objectForKey(kPrivateFieldsKey)[field].asBoolean();
}

void ZRPerson::setVCardField(std::string_view field, bool isPrivate)
{
    const auto preferences = ZRUserDefaults::rosterPreferences();
    const Value stored = preferences->objectForKey(kPrivateFieldsKey);
    auto fields =
        stored.isDictionary() ? stored.asDictionary()->entries() : std::vector<platform::Dictionary::Entry>();
    std::erase_if(fields, [&](const auto& entry) { return entry.first == field; });
    if (isPrivate)
        fields.emplace_back(field, true);
    preferences->setObject(Value::dictionary(std::move(fields)), kPrivateFieldsKey);
}

bool ZRPerson::_showField(std::string_view property) const
{
    const bool isMe = privateVCardEnabled()
        && locked(*nts_Roster(), ZRAccess::read, [&]() ZR_NTS { return nts_Roster()->nts_IsMe(*this); });
    return !isMe || !vcardFieldisPrivate(property);
}

bool ZRPerson::_showField(std::string_view property, std::string_view identifier) const
{
    return _showField(fmt::format("{}.{}", property, identifier));
}
