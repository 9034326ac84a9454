// What of a card does not come back from a vCard: the list that stands in docs/vcard.md.
#include "Losses.h"

#include "core/ZRConstants.h"
#include "interchange/vcard/VCardText.h"
#include "interchange/vcard/prepare/Countries.h"
#include "interchange/vcard/prepare/Names.h"
#include "interchange/vcard/prepare/Values.h"
#include "platform/text/Escape.h"

#include <algorithm>
#include <array>

namespace test {

namespace {

constexpr std::array kMessaging = {kZRAIMInstantProperty, kZRJabberInstantProperty, kZRMSNInstantProperty,
    kZRYahooInstantProperty, kZRICQInstantProperty};
constexpr std::array kEntries = {kZREmailProperty, kZRPhoneProperty, kZRAddressProperty, kZRURLsProperty,
    kZRCalendarURIsProperty, kZROtherDatesProperty, kZRRelatedNamesProperty};
constexpr std::array kAddressParts = {kZRAddressStreetKey, kZRAddressCityKey, kZRAddressStateKey,
    kZRAddressZIPKey, kZRAddressCountryKey, kZRAddressCountryCodeKey};

/// The name that a card without a name is shown by stands in FN; it takes the way of any text.
constexpr std::string_view kShownName = "FN";
/// There where the card says that it is one of a company.
constexpr std::string_view kShownAsCompany = "X-ZRShowAs";

template <class List>
bool holds(const List& list, std::string_view name)
{
    return std::ranges::find(list, name) != list.end();
}

bool isMessaging(std::string_view property) { return holds(kMessaging, property); }

/// The text with the escapes of a canonical card.
std::string canonical(std::string_view text)
{
    std::string escaped;
    vcard::prepare::appendValue(escaped, text, vcard::prepare::Shape::onePart, vcard::prepare::Escapes::none);
    return escaped;
}

/// Empty where there is none.
std::string textOf(const PlainCard& card, std::string_view property)
{
    const auto text = card.texts.find(std::string(property));
    return text == card.texts.end() ? std::string() : text->second;
}

template <class Change>
void forEachText(PlainCard& card, Change&& change)
{
    for (auto& [property, text] : card.texts)
        change(text);
    for (auto& [property, entries] : card.entries)
        for (PlainEntry& entry : entries) {
            change(entry.label);
            for (auto& [key, text] : entry.value)
                change(text);
        }
}

template <class Change>
void forEachEntry(PlainCard& card, Change&& change)
{
    for (auto& [property, entries] : card.entries)
        for (PlainEntry& entry : entries)
            change(property, entry);
}

void trimFront(std::string& text, const char* blanks)
{
    text.erase(0, std::min(text.find_first_not_of(blanks), text.size()));
}
void trimBack(std::string& text, const char* blanks) { text.erase(text.find_last_not_of(blanks) + 1); }
void trim(std::string& text, const char* blanks = " ") { trimFront(text, blanks), trimBack(text, blanks); }

void replaceAll(std::string& text, std::string_view from, std::string_view to)
{
    for (std::size_t at = 0; (at = text.find(from, at)) != text.npos; at += to.size())
        text.replace(at, from.size(), to);
}

template <class List>
void withEscapedLinks(PlainCard& card, const List& properties)
{
    for (const auto property : properties)
        for (PlainEntry& entry : card.entries[std::string(property)])
            entry.value[""] = platform::addingPercentEscapesIfNecessary(entry.value[""]);
}

// ---- the losses, in the order of their effects

void withoutHeldBack(PlainCard& card, const Road& road)
{
    if (!road.withNote)
        card.texts.erase(kZRNoteProperty);
    if (!road.withPhoto)
        card.photo.clear();
}

void withoutLines(PlainCard& card, const Road&)
{
    std::erase_if(card.texts, [](const auto& text) {
        return !holds(kTextsOfCards, text.first) && text.first != kZRBirthdayProperty
            && text.first != kShownName && text.first != kShownAsCompany;
    });
    std::erase_if(card.entries,
        [](const auto& values) { return !holds(kEntries, values.first) && !isMessaging(values.first); });
}

void withoutFurtherAddressParts(PlainCard& card, const Road&)
{
    for (PlainEntry& entry : card.entries[kZRAddressProperty])
        std::erase_if(entry.value, [](const auto& part) { return !holds(kAddressParts, part.first); });
}

/// The preparation keeps what it has no place for in the note.
void withoutGroups(PlainCard& card, const Road& road)
{
    std::string names;
    for (const auto& group : card.groups)
        names += (names.empty() ? "" : ",") + group;
    card.groups.clear();
    if (names.empty() || !road.isPrepared)
        return;
    std::string& note = card.texts[kZRNoteProperty];
    trim(note, " \t");
    if (road.version == Version::v40)
        replaceAll(note, "\r\n", "\n"), replaceAll(note, "\r", "\n");
    note += (note.empty() ? "" : "\n") + ("CATEGORIES: " + names);
}

void without21(PlainCard& card, const Road& road)
{
    if (road.version != Version::v21)
        return;
    card.entries.erase(kZRCalendarURIsProperty);
    card.photo.clear();
    card.flags = 0;
    for (PlainEntry& entry : card.entries[kZRAddressProperty])
        entry.value.erase(kZRAddressCountryCodeKey);
}

/// Of an address nothing is left but the address.
void withoutEmptyTexts(PlainCard& card, const Road&)
{
    std::erase_if(card.texts, [](const auto& text) { return text.second.empty(); });
    for (auto& [property, entries] : card.entries)
        if (property != kZRAddressProperty)
            std::erase_if(entries, [](const PlainEntry& entry) { return entry.value.at("").empty(); });
    for (PlainEntry& entry : card.entries[kZRAddressProperty])
        std::erase_if(entry.value, [](const auto& part) { return part.second.empty(); });
}

/// The preparation drops a line of nothing but blanks, tabs and separators.
template <class List>
void withoutBlankLine(PlainCard& card, const List& parts)
{
    const auto isBlank = [&](const char* part) {
        return textOf(card, part).find_first_not_of(" \t") == std::string::npos;
    };
    if (std::ranges::all_of(parts, isBlank))
        for (const auto* part : parts)
            card.texts.erase(part);
}

/// It takes tabs too, at the ends of whole lines.
void withoutOuterTabs(PlainCard& card, const Road& road)
{
    withoutBlankLine(card,
        std::array{kZRLastNameProperty, kZRFirstNameProperty, kZRMiddleNameProperty, kZRTitleProperty,
            kZRSuffixProperty});
    withoutBlankLine(card, std::array{kZROrganizationProperty, kZRDepartmentProperty});
    constexpr std::array notFirst = {kZRFirstNameProperty, kZRMiddleNameProperty, kZRTitleProperty,
        kZRSuffixProperty, kZRDepartmentProperty};
    constexpr std::array notLast = {kZRLastNameProperty, kZRFirstNameProperty, kZRMiddleNameProperty,
        kZRTitleProperty, kZROrganizationProperty};
    // 4.0 has no empty department behind an organization.
    const bool isOrganizationLast =
        road.version == Version::v40 && !card.texts.contains(kZRDepartmentProperty);
    for (auto& [property, text] : card.texts) {
        if (!holds(notFirst, property))
            trimFront(text, " \t");
        if (!holds(notLast, property) || (isOrganizationLast && property == kZROrganizationProperty))
            trimBack(text, " \t");
    }
    forEachEntry(card, [](const std::string&, PlainEntry& entry) {
        trim(entry.label, " \t");
        for (auto& [key, text] : entry.value)
            if (key.empty())
                trim(text, " \t");
            else if (key == kZRAddressCountryKey)
                trimBack(text, " \t");
    });
}

/// Blanks stand at the ends of what is one field: of the two lines of a street too.
/// What is blanks alone is as empty as an empty text, save for the maiden name, which is there and empty.
void withoutOuterBlanks(PlainCard& card, const Road& road)
{
    const bool hadMaidenName = card.texts.contains(kZRMaidenNameProperty);
    if (road.isPrepared)
        withoutOuterTabs(card, road);
    forEachText(card, [](std::string& text) { trim(text); });
    for (PlainEntry& entry : card.entries[kZRAddressProperty])
        if (const auto street = entry.value.find(kZRAddressStreetKey);
            street != entry.value.end() && road.version != Version::v40)
            if (const std::size_t end = street->second.find('\r'); end != std::string::npos) {
                std::string first = street->second.substr(0, end), second = street->second.substr(end + 1);
                trim(first), trim(second);
                street->second = first + "\r" + second;
            }
    withoutEmptyTexts(card, road);
    if (hadMaidenName && !road.isPrepared)
        card.texts.try_emplace(kZRMaidenNameProperty);
}

/// An address of nothing but its country's code. The first CR of a street parts two fields.
void withoutEmptyAddresses(PlainCard& card, const Road& road)
{
    const auto isBlank = [&](const auto& part) {
        std::string text = part.second;
        if (const std::size_t end = text.find('\r');
            end != std::string::npos && part.first == kZRAddressStreetKey && road.version != Version::v40)
            text.erase(end, 1);
        return part.first == kZRAddressCountryCodeKey || text.find_first_not_of(" \t") == std::string::npos;
    };
    if (road.isPrepared)
        std::erase_if(card.entries[kZRAddressProperty],
            [&](const PlainEntry& entry) { return std::ranges::all_of(entry.value, isBlank); });
}

/// 4.0 has a street whole, in one field.
void splitStreets(PlainCard& card, const Road& road)
{
    if (road.version == Version::v40)
        return;
    for (PlainEntry& entry : card.entries[kZRAddressProperty])
        if (const auto street = entry.value.find(kZRAddressStreetKey); street != entry.value.end())
            if (const std::size_t end = street->second.find('\r'); end != std::string::npos) {
                const std::string first = street->second.substr(0, end),
                                  second = street->second.substr(end + 1);
                street->second = first + (first.empty() || second.empty() ? "" : "\n") + second;
                if (street->second.empty())
                    entry.value.erase(street);
            }
}

constexpr std::array kLinks = {kZRURLsProperty, kZRCalendarURIsProperty};

/// In 4.0 links are URIs, of which nothing is left to change.
void withLineFeeds(PlainCard& card, const Road& road)
{
    const bool is40 = road.version == Version::v40;
    if (is40)
        withEscapedLinks(card, kLinks);
    forEachText(card, [&](std::string& text) {
        replaceAll(text, "\r\n", is40 ? "\n" : "\n\n");
        replaceAll(text, "\r", "\n");
    });
}

/// The text without its escapes: the reader takes every backslash for one, the preparation only those that a
/// vCard knows.
std::string unescaped(const std::string& escaped, bool isPrepared)
{
    constexpr std::string_view known = "\\nN,;:";
    std::string text;
    for (std::size_t at = 0; at < escaped.size(); ++at) {
        const char code = at + 1 < escaped.size() ? escaped[at + 1] : '\0';
        if (escaped[at] != '\\' || code == '\0' || (isPrepared && known.find(code) == known.npos)) {
            text += escaped[at];
            continue;
        }
        text += code == 'n' || (isPrepared && code == 'N') ? '\n' : code;
        ++at;
    }
    return text;
}

/// A backslash is not escaped, so it escapes what follows it, be that an escape itself.
void withoutBackslashes(PlainCard& card, const Road& road)
{
    if (road.version == Version::v40)
        return;
    forEachText(card, [&](std::string& text) { text = unescaped(zrVCardKoshify(text), road.isPrepared); });
}

/// The primary entry is preferred, and the preparation puts that first. 2.1 has no word for it in these
/// lines.
void withFirstAsPrimary(PlainCard& card, const Road& road)
{
    constexpr std::array notPreferred21 = {kZREmailProperty, kZRPhoneProperty, kZRAddressProperty};
    for (auto& [property, entries] : card.entries) {
        const auto primary = std::ranges::find_if(entries, &PlainEntry::isPrimary);
        const bool isSeen = road.isPrepared && primary != entries.end()
            && (road.version != Version::v21 || !holds(notPreferred21, property));
        if (isSeen)
            std::rotate(entries.begin(), primary, primary + 1);
        for (PlainEntry& entry : entries)
            entry.isPrimary = &entry == &entries.front();
    }
}

void withoutEqualMessaging(PlainCard& card, const Road&)
{
    for (auto& [property, entries] : card.entries) {
        if (!isMessaging(property))
            continue;
        std::set<std::string> known;
        std::erase_if(
            entries, [&](const PlainEntry& entry) { return !known.insert(entry.value.at("")).second; });
    }
}

void withEscapedURLs(PlainCard& card, const Road&) { withEscapedLinks(card, std::array{kZRURLsProperty}); }

/// An address of 2.1 has only the name of its country.
void withCountryCodes(PlainCard& card, const Road& road)
{
    vcard::prepare::Countries countries;
    for (PlainEntry& entry : card.entries[kZRAddressProperty]) {
        const auto country = entry.value.find(kZRAddressCountryKey);
        std::string code;
        if (road.version == Version::v21 && road.isPrepared && country != entry.value.end())
            code = countries.codeOf(canonical(country->second));
        entry.value.try_emplace(kZRAddressCountryCodeKey, code.empty() ? road.countryCode : code);
    }
}

/// The label that an entry gets from a line that says nothing of one.
std::string_view labelOfNone(std::string_view property)
{
    if (property == kZRURLsProperty)
        return kZRHomePageLabel;
    if (property == kZRPhoneProperty || property == kZROtherDatesProperty
        || property == kZRRelatedNamesProperty)
        return kZROtherLabel;
    return kZRWorkLabel;
}

void withoutEmptyLabels(PlainCard& card, const Road& road)
{
    forEachEntry(card, [&](const std::string& property, PlainEntry& entry) {
        if (entry.label.empty())
            entry.label = property == kZRAddressProperty && road.version == Version::v30
                ? kZRHomeLabel
                : labelOfNone(property);
    });
}

void withoutHomeAndWorkOfDates(PlainCard& card, const Road& road)
{
    if (road.version == Version::v40)
        return;
    for (const auto property : {kZROtherDatesProperty, kZRRelatedNamesProperty})
        if (const auto at = card.entries.find(std::string(property)); at != card.entries.end())
            for (PlainEntry& entry : at->second)
                if (entry.label == kZRHomeLabel || entry.label == kZRWorkLabel)
                    entry.label = kZROtherLabel;
}

void withoutOwnLabels21(PlainCard& card, const Road& road)
{
    constexpr std::array phoneLabels = {kZRPhoneMobileLabel, kZRPhoneMainLabel, kZRPhoneHomeFAXLabel,
        kZRPhoneWorkFAXLabel, kZRPhonePagerLabel};
    if (road.version == Version::v21)
        forEachEntry(card, [&](const std::string& property, PlainEntry& entry) {
            const bool hasType = entry.label == kZRHomeLabel || entry.label == kZRWorkLabel
                || (property == kZRPhoneProperty && holds(phoneLabels, entry.label));
            if (!hasType)
                entry.label = labelOfNone(property);
        });
}

void withoutOwnOrder(PlainCard& card, const Road&)
{
    if (card.flags & 32)
        card.flags &= ~std::int64_t(56);
}

void withoutOtherFlags(PlainCard& card, const Road&)
{
    const std::int64_t company = (card.flags & 7) == 1 ? 1 : 0;
    card.flags = company | (card.flags & 16);
}

void asCompany(PlainCard& card, const Road&)
{
    const auto has = [&](std::string_view property) { return card.texts.contains(std::string(property)); };
    if (has(kZROrganizationProperty) && !has(kZRFirstNameProperty) && !has(kZRLastNameProperty))
        card.flags = (card.flags & ~std::int64_t(7)) | 1;
}

void addShownName(PlainCard& card)
{
    // A name of blanks is one: it is shown, and goes with them.
    if (!textOf(card, kZRFirstNameProperty).empty() || !textOf(card, kZRLastNameProperty).empty())
        return;
    const bool isCompany = (card.flags & 7) == 1;
    for (const auto property : {isCompany ? kZROrganizationProperty : kZRNicknameProperty,
             isCompany ? kZRNicknameProperty : kZROrganizationProperty})
        if (const auto text = card.texts.find(std::string(property)); text != card.texts.end()) {
            card.texts.emplace(kShownName, text->second);
            return;
        }
    for (const auto property : {kZREmailProperty, kZRAIMInstantProperty})
        if (const auto values = card.entries.find(std::string(property)); values != card.entries.end()) {
            card.texts.emplace(kShownName, values->second.front().value.at(""));
            return;
        }
}

/// Canonical fields become texts.
template <class List>
void addFields(PlainCard& card, std::string_view fields, const List& properties)
{
    for (const auto property : properties) {
        const auto end = vcard::prepare::firstFields(fields, 1).end;
        if (const auto text = unescaped(std::string(fields.substr(0, end)), true); !text.empty())
            card.texts.emplace(property, text);
        fields.remove_prefix(std::min(end + 1, fields.size()));
    }
}

/// The preparation drops a line of nothing but separators. FN then gives the name, unless it is that of an
/// organization.
void withShownName(PlainCard& card, const Road& road)
{
    constexpr std::array ofName = {kZRLastNameProperty, kZRFirstNameProperty, kZRMiddleNameProperty,
        kZRTitleProperty, kZRSuffixProperty};
    const auto name = card.texts.extract(std::string(kShownName));
    const bool isCompany = !card.texts.extract(std::string(kShownAsCompany)).empty();
    const auto hasText = [&](std::string_view property) { return !textOf(card, property).empty(); };
    if (!road.isPrepared || !name || std::ranges::any_of(ofName, hasText))
        return;
    const std::string shown = canonical(name.mapped());
    const bool hasOrganization = hasText(kZROrganizationProperty) || hasText(kZRDepartmentProperty);
    const auto organization = canonical(textOf(card, kZROrganizationProperty)) + ";"
        + canonical(textOf(card, kZRDepartmentProperty));
    const auto fields = vcard::prepare::nameFromText(shown);
    const bool isOneWord = shown.find_first_of(" ,\t\\") == shown.npos
        || vcard::prepare::isEmptyValue(fields, vcard::prepare::Shape::fields);
    if (isCompany && road.version == Version::v40 && !hasOrganization)
        card.texts.emplace(kZROrganizationProperty, name.mapped());
    else if (!hasOrganization && (isCompany || isOneWord))
        card.texts.emplace(kZRLastNameProperty, name.mapped());
    else if (!isCompany && !(hasOrganization && vcard::prepare::isSaidBy(shown, organization)))
        addFields(card, fields, ofName);
}

constexpr Loss kLosses[] = {
    {"notes and photos that are held back", withoutHeldBack},
    {"custom properties, the home page of old, subscriptions", withoutLines},
    {"further parts of addresses", withoutFurtherAddressParts},
    {"groups", withoutGroups},
    {"2.1: calendars, photo, flags, country codes", without21},
    {"empty texts", withoutEmptyTexts},
    {"outer blanks", withoutOuterBlanks},
    {"addresses without parts", withoutEmptyAddresses},
    {"a CR in a street", splitStreets},
    {"a CR elsewhere", withLineFeeds},
    {"backslashes", withoutBackslashes},
    {"the primary entry", withFirstAsPrimary},
    {"equal messaging values", withoutEqualMessaging},
    {"URLs that are none", withEscapedURLs},
    {"a country code gained", withCountryCodes},
    {"empty labels", withoutEmptyLabels},
    {"home and work of dates and related names", withoutHomeAndWorkOfDates},
    {"2.1: labels without a type", withoutOwnLabels21},
    {"the user's own order of names", withoutOwnOrder},
    {"other flags", withoutOtherFlags},
    {"a card without a name", withShownName},
    {"an organization without a person's name", asCompany},
};

void withoutEmptyLists(PlainCard& card)
{
    std::erase_if(card.entries, [](const auto& values) { return values.second.empty(); });
}

} // namespace

std::span<const Loss> allLosses() { return kLosses; }

PlainCard expected(PlainCard card, const Road& road, std::set<std::string_view>& met)
{
    addShownName(card);
    if (road.version != Version::v21 && (card.flags & 7) == 1)
        card.texts.emplace(kShownAsCompany, "COMPANY");
    for (const Loss& loss : kLosses) {
        PlainCard before = card;
        loss.apply(card, road);
        withoutEmptyLists(card);
        withoutEmptyLists(before);
        if (loss.apply == withShownName)
            before.texts.erase(std::string(kShownName)), before.texts.erase(std::string(kShownAsCompany));
        if (card != before)
            met.insert(loss.name);
    }
    return card;
}

} // namespace test
