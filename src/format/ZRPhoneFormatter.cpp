// The list of templates, how it is kept in preferences, and the text of a number by it.
#include "format/ZRPhoneFormatter.h"

#include "core/ZRFailure.h"
#include "format/PhoneCharacters.h"
#include "format/PhoneFormats.h"
#include "format/WhiteSpace.h"
#include "platform/files/ZRUserDefaults.h"
#include "platform/notify/NotificationCenter.h"
#include "platform/run/NeverDestroyed.h"
#include "platform/value/AttributedString.h"
#include "store/ZRRoster.h"

#include <fmt/format.h>

#include <algorithm>

using platform::Lock;
using platform::NeverDestroyed;
using platform::Ref;
using platform::Value;

namespace {

std::string formatsKey(const std::string& name) { return name + "-PhoneFormatter"; }
std::string enabledKey(const std::string& name) { return name + "-Enabled"; }
std::string editedKey(const std::string& name) { return name + "-Edited"; }

/// The preference's value, or `otherwise` where there is none.
bool flagOr(bool otherwise, const std::string& key)
{
    bool exists = false;
    const bool stored = ZRUserDefaults::rosterPreferences()->boolForKey(key, &exists);
    return exists ? stored : otherwise;
}

Value arrayOf(const std::vector<std::string>& texts) { return Value::array({texts.begin(), texts.end()}); }

/// The text of a string or an attributed string; absent for anything else.
std::optional<std::string_view> textOf(const Value& value)
{
    if (const auto* attributed = value.as<platform::AttributedString>())
        return attributed->string();
    return value.isString() ? std::optional(value.asText()) : std::nullopt;
}

/// What the shared roster's country has for a start.
std::vector<std::string> defaultFormats()
{
    const auto roster = ZRRoster::sharedRoster();
    auto lists = phoneFormatsOfCountry(roster ? roster->defaultCountryCode() : std::string());
    return lists.empty() ? std::vector<std::string>() : std::move(lists.front());
}

/// The entry at `index` of a list that a caller named, or the caller's mistake.
auto placeIn(std::vector<std::string>& formats, ZRIndex index, std::size_t limit)
{
    zrRequire(index >= 0 && static_cast<std::size_t>(index) < limit, "index < [_formats count]");
    return formats.begin() + index;
}

} // namespace

ZRPhoneFormatter::ZRPhoneFormatter() : _templates(std::make_shared<PhoneTemplates>()) { }

Ref<ZRPhoneFormatter> ZRPhoneFormatter::sharedPhoneFormatter()
{
    static const NeverDestroyed<Ref<ZRPhoneFormatter>> only([] {
        auto formatter = platform::makeRef<ZRPhoneFormatter>();
        formatter->_setFormats(
            stringsOf(ZRUserDefaults::rosterPreferences()->objectForKey("ZRPhoneFormats")));
        formatter->setFormatAutosaveName(ZRPhoneFormat);
        return formatter;
    }());
    return *only;
}

const Value& ZRPhoneFormatter::phoneFormatsDictionary() { return phoneFormats(); }

const CharacterSet& ZRPhoneFormatter::allowableCharacters()
{
    static const CharacterSet characters(kAllowedInPhoneNumbers);
    return characters;
}

const CharacterSet& ZRPhoneFormatter::nonAllowableCharacters()
{
    static const CharacterSet characters = allowableCharacters().inverted();
    return characters;
}

std::optional<std::string> ZRPhoneFormatter::stringForObjectValue(const Value& value) const
{
    const auto text = textOf(value);
    return text ? std::optional(formatted(*text)) : std::nullopt;
}

std::string ZRPhoneFormatter::formatted(std::string_view typed) const
{
    const auto templates = templatesInUse();
    return templates ? templates->write(PhoneNumberText(typed)) : std::string(typed);
}

bool ZRPhoneFormatter::getObjectValue(
    Value& value, std::string_view typed, std::string* errorDescription) const
{
    value = formatted(typed);
    if (errorDescription)
        errorDescription->clear();
    return true;
}

std::shared_ptr<const PhoneTemplates> ZRPhoneFormatter::templatesInUse() const
{
    Lock lock(_mutex);
    return _ZRPhoneFlags.enabled && !_templates->isEmpty() ? _templates : nullptr;
}

std::vector<std::string> ZRPhoneFormatter::formats() const
{
    Lock lock(_mutex);
    return _formats;
}

bool ZRPhoneFormatter::enabled() const
{
    Lock lock(_mutex);
    return _ZRPhoneFlags.enabled;
}

void ZRPhoneFormatter::setEnabled(bool enabled)
{
    {
        Lock lock(_mutex);
        if (std::exchange(_ZRPhoneFlags.enabled, enabled) == enabled)
            return;
    }
    _updateDefaults();
}

bool ZRPhoneFormatter::edited() const
{
    Lock lock(_mutex);
    return _ZRPhoneFlags.edited;
}

void ZRPhoneFormatter::setEdited(bool edited)
{
    {
        Lock lock(_mutex);
        if (std::exchange(_ZRPhoneFlags.edited, edited) == edited)
            return;
    }
    _updateDefaults();
}

std::string ZRPhoneFormatter::formatAutosaveName() const
{
    Lock lock(_mutex);
    return _autosaveName;
}

void ZRPhoneFormatter::setFormatAutosaveName(std::string_view name)
{
    {
        Lock lock(_mutex);
        if (name == _autosaveName)
            return;
        _autosaveName = name;
    }
    _changes = platform::NotificationCenter::shared().subscribe(kZRPhoneFormatChangedNotification, nullptr,
        [this](const platform::Notification& notice) { _updateFormats(notice.object.get()); });
    _updateFormats(nullptr);
    if (formats().empty())
        return takeDefaultFormats();
    const bool wasEdited = flagOr(edited(), editedKey(std::string(name)));
    Lock lock(_mutex);
    _ZRPhoneFlags.edited = wasEdited;
}

void ZRPhoneFormatter::takeDefaultFormats()
{
    _setFormats(defaultFormats());
    {
        Lock lock(_mutex);
        _ZRPhoneFlags.edited = false;
    }
    _updateDefaults();
}

void ZRPhoneFormatter::_setFormats(std::vector<std::string> formats)
{
    auto templates = std::make_shared<const PhoneTemplates>(formats);
    Lock lock(_mutex);
    _formats = std::move(formats);
    _templates = std::move(templates);
}

void ZRPhoneFormatter::_updateFormats(const platform::Object* changed)
{
    const std::string name = formatAutosaveName();
    if (changed == this || name.empty())
        return;
    auto stored = stringsOf(ZRUserDefaults::rosterPreferences()->objectForKey(formatsKey(name)));
    const bool isEnabled = flagOr(enabled(), enabledKey(name));
    {
        Lock lock(_mutex);
        _ZRPhoneFlags.enabled = isEnabled;
    }
    _setFormats(std::move(stored));
}

void ZRPhoneFormatter::_updateDefaults()
{
    const std::string name = formatAutosaveName();
    if (name.empty())
        return;
    const auto preferences = ZRUserDefaults::rosterPreferences();
    preferences->setObject(arrayOf(formats()), formatsKey(name));
    preferences->setBool(enabled(), enabledKey(name));
    preferences->setBool(edited(), editedKey(name));
    preferences->synchronize();
    platform::NotificationCenter::shared().post(
        {kZRPhoneFormatChangedNotification, Ref<const platform::Object>(this), {}});
}

template <class Edit>
void ZRPhoneFormatter::edit(Edit&& edit)
{
    auto list = formats();
    edit(list);
    _setFormats(std::move(list));
    _updateDefaults();
}

void ZRPhoneFormatter::addFormat(std::string_view format)
{
    edit([&](auto& list) { list.emplace_back(trimmedWhiteSpace(format)); });
}

void ZRPhoneFormatter::insertFormat_atIndex(std::string_view format, ZRIndex index)
{
    edit([&](auto& list) { list.emplace(placeIn(list, index, list.size() + 1), format); });
}

void ZRPhoneFormatter::removeFormatAtIndex(ZRIndex index)
{
    edit([&](auto& list) { list.erase(placeIn(list, index, list.size())); });
}

void ZRPhoneFormatter::removeAllFormats()
{
    edit([](auto& list) { list.clear(); });
}

void ZRPhoneFormatter::replaceFormatAtIndex(ZRIndex index, std::optional<std::string_view> format)
{
    if (format)
        edit([&](auto& list) { *placeIn(list, index, list.size()) = trimmedWhiteSpace(*format); });
}

void ZRPhoneFormatter::moveFormatAtIndex(ZRIndex from, ZRIndex to)
{
    if (from == to)
        return;
    edit([&](auto& list) {
        const auto source = placeIn(list, from, list.size());
        const std::string moved = std::move(*source);
        list.erase(source);
        const ZRIndex target = from < to ? to - 1 : to;
        list.insert(list.begin() + std::clamp<ZRIndex>(target, 0, std::ssize(list)), moved);
    });
}

std::string ZRPhoneFormatter::description() const
{
    const auto word = [](bool flag) { return flag ? "YES" : "NO"; };
    const std::string name = formatAutosaveName();
    return fmt::format("ZRPhoneFormatter-{} enabled {} edited {} {}", name.empty() ? "(null)" : name,
        word(enabled()), word(edited()), arrayOf(formats()).description());
}
