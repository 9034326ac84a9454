// What the properties mean that a card may have several of: telephones, addresses, dates, and their labels.
#include "interchange/vcard/ZRVCardParser+State.h"

#include "core/ZRConstants.h"
#include "interchange/vcard/DateReading.h"
#include "platform/text/Escape.h"

#include <utility>

using namespace vcard;

namespace {

using Dictionary = std::vector<std::pair<std::string, platform::Value>>;

/// Street, city, state, postal code, country and its code.
constexpr std::size_t kAddressKeys = 6;

void addUnlessEmpty(Dictionary& dictionary, std::string_view key, std::optional<std::string> text)
{
    if (text && !text->empty())
        dictionary.emplace_back(key, std::move(*text));
}

/// Adds a line to a street; an empty one adds nothing.
void appendLine(std::string& street, const std::optional<std::string>& line)
{
    if (!line || line->empty())
        return;
    if (!street.empty())
        street += '\n';
    street += *line;
}

platform::Value valueOf(std::optional<std::string> text)
{
    return text ? platform::Value(std::move(*text)) : platform::Value();
}

platform::Value valueOf(std::optional<platform::Date> date)
{
    return date ? platform::Value(*date) : platform::Value();
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
        repeated = repeated || (value && !addresses.insert(*value).second);
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
    Dictionary address;
    address.reserve(kAddressKeys);
    std::string street;
    bool more = true;
    for (int part = 1; part <= 3 && more; ++part) {
        appendLine(street, nextField());
        if (part == 3)
            address.emplace_back(zr::kZRAddressStreetKey, std::move(street));
        more = nextFieldFollows();
    }
    for (const std::string_view key :
        {zr::kZRAddressCityKey, zr::kZRAddressStateKey, zr::kZRAddressZIPKey, zr::kZRAddressCountryKey}) {
        if (!more)
            break;
        addUnlessEmpty(address, key, nextField());
        more = nextFieldFollows();
    }
    if (address.empty())
        return true;
    address.emplace_back(zr::kZRAddressCountryCodeKey, context.defaultCountryCode());
    addEntry(Pending::addresses, genericLabel(), platform::Value::dictionary(std::move(address)));
    return true;
}

/// The form of an old writer: two lines of street, and neither country code nor group.
bool ZRVCardParser::State::parseADD()
{
    Dictionary address;
    address.reserve(kAddressKeys);
    std::string street;
    appendLine(street, nextField());
    bool more = nextFieldFollows();
    if (more) {
        appendLine(street, nextField());
        address.emplace_back(zr::kZRAddressStreetKey, std::move(street));
        more = nextFieldFollows();
    }
    for (const std::string_view key :
        {zr::kZRAddressCityKey, zr::kZRAddressStateKey, zr::kZRAddressZIPKey, zr::kZRAddressCountryKey}) {
        if (!more)
            break;
        addUnlessEmpty(address, key, nextField());
        more = nextFieldFollows();
    }
    if (!address.empty())
        entries(Pending::addresses)
            .emplace_back(genericLabel(), platform::Value::dictionary(std::move(address)), std::nullopt);
    return true;
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
    addEntry(Pending::dates, zr::kZROtherLabel,
        valueOf(dateFromISO8601String(date.substr(date.starts_with('-') ? 1 : 0))));
    return true;
}
