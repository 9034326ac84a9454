// How a card's values are kept and set again.
#include "interchange/vcard/CardRecording.h"

#include "core/NameParts.h"

#include <algorithm>
#include <utility>

using platform::Value;

namespace {

/// As many settings as a full card has.
constexpr std::size_t kUsualSettings = 16;

} // namespace

void CardRecording::record(Kind kind, Value value, std::string_view property)
{
    if (_settings.empty())
        _settings.reserve(kUsualSettings);
    _settings.push_back({kind, property, std::move(value)});
}

void CardRecording::setValue(Value value, std::string_view property)
{
    record(Kind::value, std::move(value), property);
}

void CardRecording::setImageData(Value data) { record(Kind::picture, std::move(data), {}); }

void CardRecording::setValueInTemporaryCache(Value value, std::string_view property)
{
    record(Kind::temporary, std::move(value), property);
}

Value CardRecording::valueForProperty(std::string_view property) const
{
    const auto newest = std::find_if(_settings.rbegin(), _settings.rend(),
        [&](const Setting& setting) { return setting.kind == Kind::value && setting.property == property; });
    return newest == _settings.rend() ? Value() : newest->value;
}

std::optional<std::string> CardRecording::fullName() const
{
    for (const auto property : {zr::kZRFirstNameProperty, zr::kZRLastNameProperty})
        if (const Value part = valueForProperty(property); nameParts::isPresent(part.asText()))
            return std::string(part.asText());
    return std::nullopt;
}

void CardRecording::playTo(ZRVCardValueSetter& target) const
{
    for (const auto& [kind, property, value] : _settings) {
        if (kind == Kind::value)
            target.setValue(value, property);
        else if (kind == Kind::picture)
            target.setImageData(value);
        else
            target.setValueInTemporaryCache(value, property);
    }
}
