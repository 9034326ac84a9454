// What a vCard 4.0 says about itself: its frame, its writer, its id, its last change.
#include "interchange/vcard/Books40.h"

#include "core/ZRFrameworkBundle.h"
#include "interchange/vcard/Line40.h"
#include "platform/text/Dates.h"

#include <fmt/format.h>

#include <algorithm>
#include <cctype>

namespace vcard {

namespace {

constexpr std::string_view kShapeOfUUID = "xxxxxxxx-xxxx-xxxx-xxxx-xxxxxxxxxxxx";

bool beginsWithUUID(std::string_view text)
{
    if (text.size() < kShapeOfUUID.size())
        return false;
    return std::ranges::equal(kShapeOfUUID, text.substr(0, kShapeOfUUID.size()), [](char shape, char c) {
        return shape == '-' ? c == '-' : std::isxdigit(static_cast<unsigned char>(c)) != 0;
    });
}

} // namespace

std::string urnOfRecord(std::string_view uniqueId)
{
    if (!beginsWithUUID(uniqueId))
        return {};
    std::string urn = "urn:uuid:" + std::string(uniqueId.substr(0, kShapeOfUUID.size()));
    std::ranges::transform(
        urn, urn.begin(), [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
    return urn;
}

void appendBooks40(std::string& to, std::string_view uniqueId, const platform::Value& lastChange)
{
    Line40(to, "PRODID").text(fmt::format("-//Roster//Roster {}//EN", ZRFrameworkBundle().version()));
    if (const std::string urn = urnOfRecord(uniqueId); !urn.empty())
        Line40(to, "UID").uri(urn);
    else
        Line40(to, "UID").with("VALUE", "text").text(uniqueId);
    if (!lastChange.isDate())
        return;
    std::string moment = platform::iso8601(lastChange.asDate());
    std::erase_if(moment, [](char c) { return c == '-' || c == ':'; });
    if (!moment.empty())
        Line40(to, "REV").text(moment);
}

} // namespace vcard
