// How the template of an address is found and taken apart.
#include "format/AddressFormat.h"

#include "core/ZRConstants.h"
#include "store/ZRRoster.h"

#include <algorithm>

namespace {

constexpr std::string_view kBlanks = " \t\r";

/// The words of `line`, parted by blanks.
AddressLine keysOfLine(std::string_view line)
{
    AddressLine keys;
    while (true) {
        line.remove_prefix(std::min(line.find_first_not_of(kBlanks), line.size()));
        if (line.empty())
            return keys;
        const auto key = line.substr(0, line.find_first_of(kBlanks));
        keys.push_back(key);
        line.remove_prefix(key.size());
    }
}

} // namespace

std::string countryOfAddress(ZRRoster& roster, const platform::Value& address)
{
    std::string code(address[zr::kZRAddressCountryCodeKey].asText());
    std::ranges::transform(
        code, code.begin(), [](char c) { return c >= 'A' && c <= 'Z' ? char(c + 32) : c; });
    return ZRRoster::isKnownCountry(code) ? code : roster.defaultCountryCode();
}

const platform::Value& addressFormatOfCountry(std::string_view code)
{
    return ZRRoster::addressFormats()[code];
}

std::vector<AddressLine> addressLinesOfTemplate(std::string_view text)
{
    std::vector<AddressLine> lines;
    while (!text.empty()) {
        const auto line = text.substr(0, text.find('\n'));
        text.remove_prefix(std::min(line.size() + 1, text.size()));
        if (auto keys = keysOfLine(line); !keys.empty())
            lines.push_back(std::move(keys));
    }
    return lines;
}
