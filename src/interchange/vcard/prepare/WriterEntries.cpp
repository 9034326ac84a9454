// What is written of entries that other versions put differently: telephones, messaging, dates, relations.
#include "interchange/vcard/prepare/Writer.h"

#include "interchange/vcard/prepare/Ascii.h"
#include "interchange/vcard/prepare/Days.h"
#include "interchange/vcard/prepare/Services.h"
#include "platform/text/Escape.h"
#include "platform/text/Utf.h"

#include <algorithm>

namespace vcard::prepare {

namespace {

/// The bytes that an address stands for, or the address where these are no text.
std::string decodedPercents(std::string_view text)
{
    if (text.find('%') == text.npos)
        return std::string(text);
    auto decoded = platform::removingPercentEscapes(text);
    return decoded && platform::isValidUTF8(*decoded) ? *std::move(decoded) : std::string(text);
}

/// The types of RFC 6350 §6.6.6 that the record has a label for; others become their own label.
constexpr std::pair<std::string_view, std::string_view> kRelations[] = {{"spouse", "_$!<Spouse>!$_"},
    {"child", "_$!<Child>!$_"}, {"parent", "_$!<Parent>!$_"}, {"friend", "_$!<Friend>!$_"},
    {"partner", "_$!<Partner>!$_"}, {"mother", "_$!<Mother>!$_"}, {"father", "_$!<Father>!$_"},
    {"brother", "_$!<Brother>!$_"}, {"sister", "_$!<Sister>!$_"}, {"assistant", "_$!<Assistant>!$_"},
    {"manager", "_$!<Manager>!$_"}};

std::string_view labelOfRelation(std::string_view type)
{
    for (const auto& [known, label] : kRelations)
        if (equalInAnyCase(type, known))
            return label;
    return type;
}

} // namespace

/// A line with `text` as its value; one that is empty is told.
void CardWriter::writeText(const Row& row, std::string_view text, Escapes escapes)
{
    beginLine(row);
    appendValue(_lines.text(), trimmed(text), row.shape, escapes);
    if (isEmptyValue(_lines.begunValue(), row.shape)) {
        _lines.giveUp();
        return tell(Finding::emptyValue, name());
    }
    keepLine(row, Finding::repeated);
}

/// RFC 3966: behind the number come parameters, of which the extension belongs to the number.
void CardWriter::writeTelephone(const Row& row)
{
    constexpr std::string_view scheme = "tel:", extension = "ext=";
    if (!startsInAnyCase(value(), scheme))
        return writeText(row, value(), escapes());
    std::string number = plainText(canonicalValue());
    while (startsInAnyCase(number, scheme)) {
        std::string_view rest = std::string_view(number).substr(scheme.size());
        std::string plain(rest.substr(0, rest.find(';')));
        for (auto at = rest.find(';'); at != rest.npos; at = rest.find(';')) {
            rest.remove_prefix(at + 1);
            const auto parameter = rest.substr(0, rest.find(';'));
            if (startsInAnyCase(parameter, extension))
                plain.append(" ext. ").append(parameter.substr(extension.size()));
            else
                carry(name(), parameter, Finding::noPlace);
        }
        number = trimmed(decodedPercents(plain));
    }
    writeText(row, number, Escapes::none);
}

void CardWriter::writeEmail(const Row& row)
{
    constexpr std::string_view scheme = "mailto:";
    if (!startsInAnyCase(value(), scheme))
        return writeText(row, value(), escapes());
    std::string address = plainText(canonicalValue());
    while (startsInAnyCase(address, scheme))
        address = trimmed(decodedPercents(std::string_view(address).substr(scheme.size())));
    writeText(row, address, Escapes::none);
}

void CardWriter::writeMessaging()
{
    const auto whole = plainText(canonicalValue());
    const auto scheme = schemeOf(whole);
    if (scheme.empty())
        return carryText(Finding::noPlace);
    writeAddressOf(scheme, std::string_view(whole).substr(scheme.size() + 1), whole);
}

void CardWriter::writeService(const Row& row)
{
    const auto address = plainText(canonicalValue());
    if (address.empty())
        return tell(Finding::emptyValue, name());
    const bool hasScheme = equalInAnyCase(schemeOf(address), row.word);
    const auto whole = hasScheme ? address : std::string(row.word).append(":").append(address);
    writeAddressOf(row.word, std::string_view(whole).substr(row.word.size() + 1), whole);
}

/// A messaging address where the record knows the service, else a URL.
void CardWriter::writeAddressOf(std::string_view scheme, std::string_view address, std::string_view whole)
{
    const auto* service = serviceOf(scheme);
    const auto property = service ? service->property : std::string_view();
    const auto label = service ? service->label : scheme;
    const auto& row = *rowOf(property.empty() ? "URL" : property, _raw->version);
    beginLine(row, row.name);
    const auto text = property.empty() ? std::string(whole) : decodedPercents(address);
    appendValue(_lines.text(), trimmed(text), row.shape, Escapes::none);
    if (trimmed(address).empty() || _lines.begunValue().empty()) {
        _lines.giveUp();
        return tell(Finding::emptyValue, name());
    }
    const auto kept = _lines.keep();
    if (!label.empty())
        _ownLabels.emplace_back(kept, label);
}

// ---- relations

void CardWriter::writeRelated(const Row&)
{
    const auto text = value();
    const bool isText = equalInAnyCase(_header->property.parameter(ParameterName::value), "text");
    if (!isText && !schemeOf(text).empty() && text.find(' ') == text.npos)
        return carryText(Finding::noPlace);
    std::string_view type = _header->property.parameter(ParameterName::type);
    type = trimmed(type.substr(0, type.find(',')));
    writeRelation(name(), labelOfRelation(type));
}

void CardWriter::writeRelation(std::string_view name, std::string_view label)
{
    const auto text = value();
    if (text.empty())
        return tell(Finding::emptyValue, name);
    const auto& row = *rowOf(kRelatedName, _raw->version);
    beginLineWithoutTypes(&row, kRelatedName);
    appendValue(_lines.text(), text, Shape::onePart, escapes());
    const auto kept = _lines.keep();
    if (!label.empty())
        _ownLabels.emplace_back(kept, decoded(label, {}));
}

// ---- dates

void CardWriter::writeDay(const Row& row)
{
    const auto text = value();
    if (text.empty())
        return tell(Finding::emptyValue, name());
    const auto length = lengthOfDay(text);
    if (!length)
        return carry(name(), canonicalValue(),
            isPartOfDate(text) ? Finding::dateWithoutYear : Finding::dateUnreadable);
    if (isRepeated(row, text.substr(0, *length)))
        return carry(name(), canonicalValue(), Finding::repeated);
    if (row.use == Use::otherDate)
        beginLineWithoutTypes(&row, kOtherDateName);
    else
        beginLine(row);
    appendDay(_lines.text(), text.substr(0, *length));
    const auto kept = keepLine(row, Finding::repeated);
    if (kept == CardLines::kNone)
        return;
    if (*length < text.size())
        tell(Finding::timeOfDay, name());
    if (!row.word.empty())
        _ownLabels.emplace_back(kept, row.word);
}

/// Whether the record has room for one such line, and has another one.
bool CardWriter::isRepeated(const Row& row, std::string_view value) const
{
    const auto first = firstOf(row);
    return first != CardLines::kNone && _lines.valueOf(_lines[first]) != value;
}

} // namespace vcard::prepare
