// How the values of an address become lines without gaps.
#include "format/AddressDisplay.h"

#include "format/AddressFormat.h"
#include "format/WhiteSpace.h"

#include "core/ZRConstants.h"
#include "platform/files/Resources.h"
#include "platform/text/Locale.h"
#include "store/ZRRoster.h"

#include <algorithm>

using platform::Value;

namespace {

constexpr std::string_view kMark = "\u200E";
constexpr std::string_view kKeys[] = {zr::kZRAddressStreetKey, zr::kZRAddressCityKey, zr::kZRAddressStateKey,
    zr::kZRAddressZIPKey, zr::kZRAddressCountryKey};

std::string withoutMarks(std::string_view value)
{
    std::string text(value);
    for (auto at = text.find(kMark); at != std::string::npos; at = text.find(kMark, at))
        text.erase(at, kMark.size());
    return text;
}

/// What stands for the country: its name, or that of the code where it is abroad.
std::string countryText(ZRRoster& roster, const Value& address)
{
    if (const auto name = address[zr::kZRAddressCountryKey].asText(); !trimmedWhiteSpace(name).empty())
        return withoutMarks(name);
    const auto code = countryOfAddress(roster, address);
    if (code == roster.defaultCountryCode())
        return {};
    const auto languages = platform::userLanguages();
    return platform::nameOfCountry(code, languages.empty() ? "en" : languages.front());
}

/// Appends the lines of `text` that say something.
void appendLines(std::vector<std::string>& lines, std::string_view text)
{
    while (!text.empty()) {
        const auto line = text.substr(0, text.find('\n'));
        text.remove_prefix(std::min(line.size() + 1, text.size()));
        if (const auto words = trimmedWhiteSpace(line); !words.empty())
            lines.emplace_back(words);
    }
}

class Display {
public:
    Display(ZRRoster& roster, const Value& address)
        : _address(address), _country(countryText(roster, address))
    {
    }

    std::vector<std::string> lines(const std::vector<AddressLine>& format) const
    {
        std::vector<std::string> lines;
        const AddressLine country = {zr::kZRAddressCountryKey};
        for (const auto& line : format) {
            if (line == country && &line == &format.back())
                appendRest(lines, format);
            appendLines(lines, textOfLine(line));
        }
        if (format.empty() || format.back() != country)
            appendRest(lines, format);
        return lines;
    }

private:
    std::string valueOf(std::string_view key) const
    {
        return key == zr::kZRAddressCountryKey ? _country : withoutMarks(_address[key].asText());
    }

    std::string textOfLine(const AddressLine& keys) const
    {
        std::string text;
        for (const auto key : keys)
            if (const auto value = valueOf(key); !trimmedWhiteSpace(value).empty())
                text.append(text.empty() ? "" : " ").append(trimmedWhiteSpace(value));
        return text;
    }

    /// What is stored although the format has no place for it.
    void appendRest(std::vector<std::string>& lines, const std::vector<AddressLine>& format) const
    {
        for (const auto key : kKeys)
            if (std::ranges::none_of(format,
                    [&](const AddressLine& line) { return std::ranges::find(line, key) != line.end(); }))
                appendLines(lines, valueOf(key));
    }

    const Value& _address;
    const std::string _country;
};

} // namespace

std::vector<std::string> displayLinesOfAddress(ZRRoster& roster, const Value& address)
{
    const Value& format = addressFormatOfCountry(countryOfAddress(roster, address));
    return Display(roster, address).lines(addressLinesOfTemplate(format["FORMAT"].asText()));
}
