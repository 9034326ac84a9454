// What is written of a property that stands for itself: a text, a picture, a line of the note.
#include "interchange/vcard/prepare/Writer.h"

#include "interchange/vcard/prepare/Ascii.h"
#include "interchange/vcard/prepare/Names.h"

#include <algorithm>

namespace vcard::prepare {

namespace {

constexpr std::size_t kShortestUndeclaredPicture = 80;
/// The country is the last one of the fields of an address.
constexpr std::size_t kFieldOfCountry = 7;

bool isDataURI(std::string_view value) { return startsInAnyCase(value, "data:"); }

bool isNumber(std::string_view text)
{
    return !text.empty() && std::all_of(text.begin(), text.end(), [](char c) {
        return (c >= '0' && c <= '9') || c == '.' || c == '-' || c == '+';
    });
}

/// A picture within its address (RFC 2397): what is in front of the comma, and the digits behind it.
struct DataURI {
    std::string_view header, digits;

    /// Some writers escape the comma like that of a text.
    explicit DataURI(std::string_view uri)
    {
        const auto comma = std::min(uri.find(','), uri.size());
        header = uri.substr(0, comma > 0 && uri[comma - 1] == '\\' ? comma - 1 : comma);
        digits = uri.substr(std::min(comma + 1, uri.size()));
    }

    bool isBase64() const
    {
        constexpr std::string_view mark = ";base64";
        return header.size() > mark.size()
            && equalInAnyCase(header.substr(header.size() - mark.size()), mark);
    }

    /// "PNG" of "data:image/png;base64", or empty.
    std::string_view type() const
    {
        const auto slash = header.find('/');
        const auto type =
            slash == header.npos ? "" : header.substr(slash + 1, header.find(';', slash) - slash - 1);
        return isName(type) ? type : "";
    }
};

} // namespace

void CardWriter::writeKept(const Row& row)
{
    beginLine(row);
    appendValue(_lines.text(), value(), row.shape, escapes());
    if (row.use == Use::names)
        joinNameValues(_lines.text(), _lines.begun().value);
    const auto fields = row.fields == 0 ? FirstFields() : firstFields(_lines.begunValue(), row.fields);
    const bool hasSurplus = row.fields != 0 && cutSurplus(fields.end);
    if (isEmptyValue(_lines.begunValue(), row.shape)) {
        _lines.giveUp();
        if (!hasSurplus)
            tell(Finding::emptyValue, name());
    } else {
        _lines.text().append(fields.count < row.least ? row.least - fields.count : 0, ';');
        const auto kept = keepLine(row, Finding::repeated);
        if (row.entries == Entries::addresses && fields.count == kFieldOfCountry)
            _addresses.emplace_back(kept, fields.last);
    }
    carryParameters(row);
}

/// What stands in fields that the reader has no place for goes to the note. Answers whether anything does.
bool CardWriter::cutSurplus(std::size_t end)
{
    if (end == _lines.begunValue().size())
        return false;
    const bool hasSurplus = !isEmptyValue(_lines.begunValue().substr(end), Shape::fields);
    if (hasSurplus)
        carry(name(), _lines.begunValue().substr(end + 1), Finding::surplusFields);
    _lines.cutValue(end);
    _lines.cutValue(trimmed(_lines.begunValue()).size());
    return hasSurplus;
}

/// Parameters that say something of their own.
void CardWriter::carryParameters(const Row& row)
{
    for (const auto& [name, written, known] : _header->property.parameters) {
        const bool isOfAddress =
            known == ParameterName::label || known == ParameterName::geo || known == ParameterName::tz;
        if (isOfAddress && row.entries == Entries::addresses) {
            std::string canonical;
            appendValue(
                canonical, decoded(decodedCarets(unquoted(written)), {}), Shape::onePart, Escapes::rfc);
            carry(name, canonical, Finding::noPlace);
        } else if (known == ParameterName::sortAs) {
            tell(Finding::bookkeeping, name);
        }
    }
}

void CardWriter::writePicture(const Row& row)
{
    auto raw = trimmed(_written);
    if (raw.empty())
        return tell(Finding::emptyValue, name());
    const bool isData = isDataURI(raw);
    if (!isData && raw.find(':') != raw.npos)
        return carryPictureReference();
    const DataURI uri(isData ? raw : "");
    beginLine(row, name(), ";ENCODING=b");
    if (isData && !uri.type().empty() && _header->property.parameter(ParameterName::type).empty()) {
        _lines.cutValue(0);
        _lines.text().pop_back();
        _lines.text() += ";TYPE=";
        std::transform(uri.type().begin(), uri.type().end(), std::back_inserter(_lines.text()),
            [](char c) { return upper(c); });
        _lines.text() += ':';
        _lines.beginValue();
    }
    bool sound = true;
    if (!isData || uri.isBase64())
        appendBase64(_lines.text(), isData ? uri.digits : raw, sound);
    // Some writers leave the parameter out; then only text that cannot be anything else is a picture.
    const bool declared = isData || _transfer == Transfer::base64;
    const bool meant = declared || (sound && raw.size() >= kShortestUndeclaredPicture);
    if (_lines.begunValue().empty() || !meant) {
        _lines.giveUp();
        return tell(Finding::pictureUnreadable, name());
    }
    if (keepLine(row, Finding::binary) != CardLines::kNone && !sound)
        tell(Finding::pictureDamaged, name());
}

/// An address is none of base64's digits, whatever the line declares.
void CardWriter::carryPictureReference()
{
    _transfer = _transfer == Transfer::base64 ? Transfer::plain : _transfer;
    _isDecoded = false;
    carry(name(), canonicalValue(Shape::wholeLine), Finding::pictureByReference);
}

void CardWriter::addToNote()
{
    const auto text = value();
    if (text.empty())
        return tell(Finding::emptyValue, name());
    join(_note, canonicalValue());
}

/// vCard 2.1 gives longitude and latitude with a comma between them, its successors "latitude;longitude".
void CardWriter::writePosition()
{
    const auto text = value();
    const auto separator = text.find_first_of(",;");
    const auto first = trimmed(text.substr(0, separator));
    const auto second = separator == text.npos ? "" : trimmed(text.substr(separator + 1));
    if (!isNumber(first) || !isNumber(second))
        return carryText(Finding::noPlace);
    carry(name(), std::string(second).append(";").append(first), Finding::noPlace);
}

void CardWriter::carryText(Finding finding)
{
    if (trimmed(_written).empty())
        return tell(Finding::emptyValue, name());
    // Bytes say nothing of the character set of the card.
    if (_transfer == Transfer::base64 || isDataURI(value()))
        return tell(Finding::binary, name());
    carry(name(), canonicalValue(), finding);
}

void CardWriter::carryUnreadable(std::string_view line)
{
    if (trimmed(line) == ":")
        return tell(Finding::emptyValue, line);
    std::string canonical;
    appendValue(canonical, trimmed(decoded(line, {})), Shape::onePart, Escapes::oldEncoded);
    join(_carried, canonical);
    tell(Finding::nameUnreadable, line);
}

} // namespace vcard::prepare
