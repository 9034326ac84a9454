// What the properties mean that a card may have several of: telephones, addresses, dates, and their labels.
#include "interchange/vcard/ZRVCardParser+State.h"

#include "core/ZRConstants.h"
#include "interchange/vcard/DateReading.h"
#include "platform/text/Escape.h"

#include <algorithm>
#include <array>
#include <utility>

using namespace vcard;

namespace {

/// A postal address as it is read.
struct Address {
    /// City, state, postal code, country.
    std::array<platform::Value, 4> fields;
    platform::Value street, countryCode;

    bool isEmpty() const
    {
        return street.isAbsent()
            && std::all_of(fields.begin(), fields.end(), [](const auto& field) { return field.isAbsent(); });
    }

    /// Written in the order of the keys, which spares the dictionary its sorting.
    platform::Value asDictionary() &&
    {
        auto& [city, state, code, country] = fields;
        std::vector<std::pair<std::string, platform::Value>> entries;
        entries.reserve(6);
        for (const auto& [key, text] :
            {std::pair{zr::kZRAddressCityKey, &city}, {zr::kZRAddressCountryKey, &country},
                {zr::kZRAddressCountryCodeKey, &countryCode}, {zr::kZRAddressStateKey, &state},
                {zr::kZRAddressStreetKey, &street}, {zr::kZRAddressZIPKey, &code}})
            if (!text->isAbsent())
                entries.emplace_back(key, std::move(*text));
        return platform::Value::dictionary(std::move(entries));
    }
};

/// Adds a line to a street; an empty one adds nothing.
void appendLine(std::string& street, std::optional<std::string_view> line)
{
    if (!line || line->empty())
        return;
    if (!street.empty())
        street += '\n';
    street += *line;
}

} // namespace

// ---- labels

/// Home stands above work, and a telephone that is both is a home one; a fax of nobody is a work one.
std::string_view ZRVCardParser::State::phoneLabel() const
{
    bool home = false, work = false, fax = false;
    std::string_view label;
    for (const auto* cached : line.parameters)
        cached->parameter.forEachType([&](std::string_view type) {
            if (equalInAnyCase(type, "HOME"))
                home = true;
            else if (equalInAnyCase(type, "WORK"))
                work = true;
            else if (equalInAnyCase(type, "FAX"))
                fax = true;
            else if (equalInAnyCase(type, "MAIN"))
                label = zr::kZRPhoneMainLabel;
            else if (equalInAnyCase(type, "CELL"))
                label = zr::kZRPhoneMobileLabel;
            else if (equalInAnyCase(type, "PAGER"))
                label = zr::kZRPhonePagerLabel;
            return !label.empty();
        });
    if (!label.empty())
        return label;
    if (home)
        return fax ? zr::kZRPhoneHomeFAXLabel : zr::kZRPhoneHomeLabel;
    if (fax)
        return zr::kZRPhoneWorkFAXLabel;
    return work ? zr::kZRPhoneWorkLabel : zr::kZROtherLabel;
}

std::string_view ZRVCardParser::State::genericLabel() const
{
    return genericLabelIfAny().value_or(zr::kZRWorkLabel);
}

/// The first of home and work counts.
std::optional<std::string_view> ZRVCardParser::State::genericLabelIfAny() const
{
    std::optional<std::string_view> label;
    for (const auto* cached : line.parameters) {
        cached->parameter.forEachType([&](std::string_view type) {
            if (equalInAnyCase(type, "HOME"))
                label = zr::kZRHomeLabel;
            else if (equalInAnyCase(type, "WORK"))
                label = zr::kZRWorkLabel;
            return label.has_value();
        });
        if (label)
            break;
    }
    return label;
}

// ---- texts

void ZRVCardParser::State::addEntry(Pending kind, std::string_view label, platform::Value value)
{
    entries(kind).emplace_back(label, std::move(value), line.grouping);
}

bool ZRVCardParser::State::parseEntries(Pending kind, std::string_view label)
{
    do
        addEntry(kind, label, valueOf(nextField()));
    while (nextFieldFollows());
    return true;
}

/// Writers give one address under two names. Behind a repeated one nothing of the line is taken.
bool ZRVCardParser::State::addIMValueTo(Pending kind)
{
    const std::string_view label = genericLabel();
    auto& addresses = known[static_cast<std::size_t>(kind)];
    bool repeated = false;
    do {
        const Text value = nextField();
        repeated = repeated || (value && !addresses.emplace(*value).second);
        if (!repeated)
            addEntry(kind, label, valueOf(value));
    } while (nextFieldFollows());
    return true;
}

bool ZRVCardParser::State::parseRelatedName()
{
    addEntry(Pending::relatedNames, zr::kZROtherLabel, valueOf(parseSingleValue()));
    return true;
}

bool ZRVCardParser::State::parseURL()
{
    const std::string_view label = genericLabelIfAny().value_or(zr::kZRHomePageLabel);
    const Text url = nextField(kEndOfLine);
    if (url && !url->empty())
        addEntry(Pending::urls, label, platform::addingPercentEscapesIfNecessary(*url));
    return true;
}

bool ZRVCardParser::State::parseCalendarURI()
{
    addEntry(Pending::calendarURIs, genericLabel(), valueOf(nextField(kEndOfLine)));
    return true;
}

// ---- postal addresses

/// Post office box, extended address and street make one street. It is set, even to nothing, once all three
/// were there; a value that ends before has none.
bool ZRVCardParser::State::parseADR()
{
    Address address;
    readAddress(address.street, address.fields, 3);
    if (address.isEmpty())
        return true;
    address.countryCode = defaultCountryCode;
    addEntry(Pending::addresses, genericLabel(), std::move(address).asDictionary());
    return true;
}

/// The form of an old writer: two lines of street, and neither country code nor group.
bool ZRVCardParser::State::parseADD()
{
    Address address;
    readAddress(address.street, address.fields, 2);
    if (!address.isEmpty())
        entries(Pending::addresses)
            .emplace_back(genericLabel(), std::move(address).asDictionary(), std::nullopt);
    return true;
}

/// Reads a street of `lines` fields, and the fields behind it that are not empty.
void ZRVCardParser::State::readAddress(platform::Value& street, std::span<platform::Value> fields, int lines)
{
    std::string joined;
    for (int read = 1; read <= lines; ++read) {
        appendLine(joined, nextField());
        if (read == lines)
            street = joined;
        if (!nextFieldFollows())
            return;
    }
    for (platform::Value& field : fields) {
        if (const Text text = nextField(); text && !text->empty())
            field = *text;
        if (!nextFieldFollows())
            return;
    }
}

// ---- dates

bool ZRVCardParser::State::parseBirthday()
{
    const Text text = nextField();
    const auto date = text && !text->empty() ? dateFromBirthdayString(*text) : std::nullopt;
    if (date)
        setter->setValue(*date, zr::kZRBirthdayProperty);
    return true;
}

bool ZRVCardParser::State::parseOtherDate()
{
    const Text text = nextField();
    if (!text || text->empty())
        return true;
    const std::string_view date = *text;
    const auto read = dateFromISO8601String(date.substr(date.starts_with('-') ? 1 : 0));
    addEntry(Pending::dates, zr::kZROtherLabel, read ? platform::Value(*read) : platform::Value());
    return true;
}
