// Cards of every kind, from a seed.
#include "RandomCards.h"

#include "core/ZRConstants.h"

#include <fmt/format.h>

#include <array>

namespace test {

namespace {

constexpr std::array kEntries = {kZREmailProperty, kZRPhoneProperty, kZRAddressProperty, kZRURLsProperty,
    kZRCalendarURIsProperty, kZROtherDatesProperty, kZRRelatedNamesProperty, kZRAIMInstantProperty,
    kZRJabberInstantProperty, kZRMSNInstantProperty, kZRYahooInstantProperty, kZRICQInstantProperty};
constexpr std::array kAddressParts = {
    kZRAddressStreetKey, kZRAddressCityKey, kZRAddressStateKey, kZRAddressZIPKey, kZRAddressCountryKey};
constexpr std::array kLabels = {kZRHomeLabel, kZRWorkLabel, kZRHomeLabel, kZRWorkLabel, kZROtherLabel,
    kZRHomePageLabel, kZRPhoneMobileLabel, kZRPhoneHomeFAXLabel, kZRPhoneWorkFAXLabel, kZRPhonePagerLabel,
    kZRPhoneMainLabel, "Summer house; north, or: so"};
constexpr std::array<std::string_view, 12> kWords = {"Ana", "Müller-Lüdenscheidt", "Ωμέγα", "Ольга",
    "عبد الله", "山田花子", "👩‍💻", "a;b", "x,y", "http://x.example/?a=1;b", "7:30",
    "N:Lima;END:VCARD"};
/// What a format may trip over. Behind a backslash stands a letter.
constexpr std::array<std::string_view, 11> kOddities = {
    "\n", "\r", "\r\n", "\\a", "\\n", "\\N7", " ", "  ", "\t", "=3D", "\xE2\x80\xA8"};
constexpr std::array<std::string_view, 3> kCountryCodes = {"de", "gb", "jp"};

} // namespace

std::string RandomCards::word()
{
    return once(4) ? std::string(kOddities[number(kOddities.size())])
                   : std::string(kWords[number(kWords.size())]);
}

std::string RandomCards::text()
{
    std::string text;
    if (once(25))
        return text;
    for (std::uint32_t words = 1 + number(3); words > 0; --words)
        text += word();
    return text;
}

std::string RandomCards::label()
{
    if (once(6))
        return word();
    return std::string(kLabels[number(kLabels.size())]);
}

std::string RandomCards::day()
{
    return fmt::format("{:04}-{:02}-{:02}", 1600 + number(500), 1 + number(12), 1 + number(28));
}

PlainEntry RandomCards::entry(std::string_view property)
{
    PlainEntry entry;
    entry.label = label();
    if (property != kZRAddressProperty) {
        entry.value[""] = property == kZROtherDatesProperty ? day() : text();
        return entry;
    }
    const bool isBare = once(8);
    for (const auto part : kAddressParts)
        if (!isBare && !once(3))
            entry.value[std::string(part)] = text();
    if (!once(3))
        entry.value[kZRAddressCountryCodeKey] = kCountryCodes[number(kCountryCodes.size())];
    if (once(6))
        entry.value["Region"] = "North";
    return entry;
}

std::vector<PlainEntry> RandomCards::entries(std::string_view property)
{
    std::vector<PlainEntry> entries;
    for (std::uint32_t count = 1 + number(3); count > 0; --count)
        entries.push_back(entry(property));
    if (once(3))
        entries.push_back(entries.front());
    entries[number(static_cast<std::uint32_t>(entries.size()))].isPrimary = true;
    return entries;
}

PlainCard RandomCards::next()
{
    PlainCard card;
    const bool isRich = once(3);
    for (const auto* property : kTextsOfCards)
        if (once(isRich ? 2 : 5))
            card.texts[property] = text();
    if (once(isRich ? 2 : 5))
        card.texts[kZRHomePageProperty] = text();
    if (once(3))
        card.texts[kZRBirthdayProperty] = day();
    for (const auto property : kEntries)
        if (once(isRich ? 2 : 5))
            card.entries[std::string(property)] = entries(property);
    if (once(3))
        card.flags = number(64);
    if (once(6))
        for (std::uint32_t bytes = 1 + number(200); bytes > 0; --bytes)
            card.photo += static_cast<char>(number(256));
    return card;
}

} // namespace test
