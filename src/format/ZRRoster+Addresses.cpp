// An address as one text, in the order that its country uses.
#include "format/AddressFormat.h"
#include "format/ZRAddressFunctions.h"

#include "core/ZRConstants.h"
#include "platform/value/AttributedString.h"
#include "store/ZRRoster.h"

using platform::AttributedString;
using platform::Ref;
using platform::Value;

namespace {

constexpr std::string_view kNameKey = "Name";
/// A left-to-right mark and a blank: without the mark, right-to-left values would change places.
constexpr std::string_view kSeparator = "\u200E ";

/// What the country calls the field; the key where it has no word of its own.
std::string_view titleOfField(const Value& format, std::string_view key)
{
    const Value& title = format[key];
    return title.isString() ? title.asText() : key;
}

/// Writes the lines of one template.
class Writer {
public:
    Writer(const Value& format, const Value& address) : _format(format), _address(address) { }

    void write(const std::vector<AddressLine>& lines)
    {
        for (std::size_t i = 0; i < lines.size(); ++i)
            if (writeLine(lines[i]) && i + 1 < lines.size())
                text->append("\n");
    }

    const Ref<AttributedString> text = platform::makeRef<AttributedString>();
    std::vector<Value> order;

private:
    /// False when the next line takes this one's place: its company is empty.
    bool writeLine(const AddressLine& keys)
    {
        bool keepsLine = true;
        for (const auto& key : keys) {
            if (&key != &keys.front())
                text->append(kSeparator);
            const auto value = _address[key].asText();
            if (value.empty() && key == zr::kZROrganizationProperty)
                keepsLine = false;
            noteField(key);
            text->append(value, key, titleOfField(_format, key));
        }
        return keepsLine;
    }

    void noteField(std::string_view key)
    {
        if (const Value& title = _format[key]; title.isString())
            order.push_back(Value::dictionary({{"zrProperty", Value(key)}, {"zrLocalizedProperty", title}}));
    }

    const Value& _format;
    const Value& _address;
};

/// Puts the value, where the address has it, on a line above the others.
void putOnTop(AttributedString& text, const Value& format, const Value& address, std::string_view key)
{
    const Value& value = address[key];
    if (!value.isNothing())
        text.prepend(std::string(value.asText()) + "\n", key, titleOfField(format, key));
}

} // namespace

Ref<AttributedString> ZRRoster::formattedAddressFromDictionary(const Value& address)
{
    return _formattedAddressFromDictionary(address, false, false);
}

Ref<AttributedString> ZRRoster::_formattedAddressFromDictionary(
    const Value& address, bool includeName, bool includeCompany, Value* order)
{
    const Value& format = addressFormatOfCountry(countryOfAddress(*this, address));
    const bool isLabel = includeName && format["LABEL_FORMAT"].isString();
    Writer writer(format, address);
    writer.write(addressLinesOfTemplate(format[isLabel ? "LABEL_FORMAT" : "FORMAT"].asText()));
    if (order)
        *order = Value::array(std::move(writer.order));
    if (includeCompany && !isLabel)
        putOnTop(*writer.text, format, address, zr::kZROrganizationProperty);
    if (includeName && !isLabel)
        putOnTop(*writer.text, format, address, kNameKey);
    return writer.text;
}

Value ZRCreateFormattedAddressFromDictionary(ZRRoster& roster, const Value& address) noexcept
{
    try {
        return Value(roster.formattedAddressFromDictionary(address)->string());
    } catch (...) {
        return {};
    }
}

Value ZRCopyDefaultCountryCode(ZRRoster& roster) noexcept
{
    try {
        return Value(roster.defaultCountryCode());
    } catch (...) {
        return {};
    }
}
