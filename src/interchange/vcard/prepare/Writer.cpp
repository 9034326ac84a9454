#include "interchange/vcard/prepare/Writer.h"

#include "interchange/vcard/prepare/Ascii.h"

#include <algorithm>

namespace vcard::prepare {

namespace {

bool isName(std::string_view text)
{
    return !text.empty() && std::all_of(text.begin(), text.end(), isNameCharacter);
}

bool isType(std::string_view text)
{
    return std::all_of(
        text.begin(), text.end(), [](char c) { return isNameCharacter(c) || c == '/' || c == '+'; });
}

/// Bare words of vCard 2.1 that say how the value is packed, not what it is.
bool isTransferWord(std::string_view word)
{
    for (const std::string_view transfer : {"QUOTED-PRINTABLE", "BASE64", "8BIT", "7BIT"})
        if (equalInAnyCase(word, transfer))
            return true;
    return false;
}

bool isDataURI(std::string_view value) { return startsInAnyCase(trimmed(value), "data:"); }

void appendJoined(std::string& text, std::string_view more)
{
    if (!text.empty() && !more.empty())
        text += "\\n";
    text += more;
}

} // namespace

CardWriter::CardWriter(Charsets& charsets, Report& report)
    : _charsets(charsets), _report(report), _first(carryTable().size())
{
}

bool CardWriter::write(const RawCard& card, std::size_t number, std::string& out)
{
    _card = &card;
    _number = number;
    _line = card.line;
    _out = &out;
    _note.clear();
    _carried.clear();
    std::fill(_first.begin(), _first.end(), Span{});
    _charsets.beginCard(card.bytes);
    out = "BEGIN:VCARD\r\nVERSION:3.0\r\n";
    const auto frame = out.size();
    if (card.version == Version::missing || card.version == Version::other)
        tell(card.version == Version::missing ? Finding::versionMissing : Finding::versionUnknown, {});
    for (const auto line : card.nested)
        _report.add(number, line, Finding::nestedCard, {});
    for (const auto& line : card.lines) {
        _line = line.number;
        writeLine(card.text(line));
    }
    _line = card.line;
    if (const auto guess = _charsets.guess())
        tell(Finding::charsetGuessed, platform::nameOfEncoding(guess));
    appendJoined(_note, _carried);
    if (!_note.empty())
        out.append("NOTE:").append(_note).append("\r\n");
    if (out.size() == frame)
        return false;
    out += "END:VCARD\r\n";
    return true;
}

void CardWriter::writeLine(std::string_view line)
{
    if (!_property.parse(line))
        return tell(Finding::lineWithoutColon, line);
    if (!isName(_property.name))
        return carryUnreadable(line);
    const auto* row = rowOf(_property.name);
    if (!row)
        return carryUnknown();
    switch (row->place) {
    case Place::line:
        return writeKept(*row);
    case Place::note:
        return addToNote();
    case Place::day:
        return writeDay(*row);
    case Place::picture:
        return writePicture(*row);
    case Place::label:
        return writeLabel();
    case Place::bookkeeping:
        if (!trimmed(_property.value).empty())
            tell(Finding::bookkeeping, _property.name);
        return;
    case Place::frame:
        return;
    }
}

Escapes CardWriter::escapes() const
{
    if (_card->version != Version::v21)
        return Escapes::rfc;
    return _property.transfer == Transfer::plain ? Escapes::old : Escapes::oldEncoded;
}

/// The decoded value as UTF-8, without blanks at its ends; valid until the next call.
std::string_view CardWriter::value()
{
    if (_property.transfer == Transfer::plain && _property.charset.empty()
        && _charsets.encoding() == platform::kUTF8Encoding)
        return trimmed(_property.value);
    if (_property.transfer == Transfer::quotedPrintable)
        _text = _charsets.text(decodedQuotedPrintable(_property.value), _property.charset);
    else if (_property.transfer == Transfer::base64)
        _text = _charsets.text(decodedBase64(_property.value), _property.charset);
    else
        _text = _charsets.text(_property.value, _property.charset);
    return trimmed(_text);
}

void CardWriter::appendHeader(std::string_view name, bool base64)
{
    if (isName(_property.group))
        _out->append(_property.group).append(".");
    _out->append(name);
    if (base64)
        _out->append(";ENCODING=b");
    appendTypes();
    *_out += ':';
}

/// Bare types and TYPE lists alike become TYPE lists of unquoted words.
void CardWriter::appendTypes()
{
    for (const auto& parameter : _property.parameters) {
        const bool bare = parameter.name.empty();
        if (bare ? isTransferWord(parameter.value) : !equalInAnyCase(parameter.name, "TYPE"))
            continue;
        auto list = unquoted(parameter.value);
        for (bool open = false; !list.empty();) {
            const auto comma = std::min(list.find(','), list.size());
            appendType(unquoted(trimmed(list.substr(0, comma))), open);
            list.remove_prefix(std::min(comma + 1, list.size()));
        }
    }
}

void CardWriter::appendType(std::string_view type, bool& open)
{
    if (type.empty())
        return;
    if (!isType(type))
        return tell(Finding::typeUnreadable, type);
    _out->append(open ? "," : ";TYPE=").append(type);
    open = true;
}

void CardWriter::writeKept(const Row& row)
{
    const auto lineStart = _out->size();
    appendHeader(_property.name);
    const auto valueStart = _out->size();
    appendValue(*_out, value(), row.shape, escapes());
    bool surplus = false;
    if (const auto end = valueStart + (row.fields ? endOfFields(written(valueStart), row.fields) : 0);
        row.fields && end < _out->size()) {
        if (!isEmptyValue(written(end), Shape::fields)) {
            surplus = true;
            carry(_property.name, written(end + 1), Finding::surplusFields);
        }
        _out->resize(end);
    }
    if (isEmptyValue(written(valueStart), row.shape)) {
        _out->resize(lineStart);
        if (!surplus)
            tell(Finding::emptyValue, _property.name);
    } else {
        for (auto fields = row.least ? countFields(written(valueStart)) : 0; fields < row.least; ++fields)
            *_out += ';';
        endLine(row, lineStart, valueStart, Finding::repeated);
    }
    if (row.least && !_property.parameters.empty())
        if (const auto label = _property.parameter("LABEL"); !label.empty())
            carry("LABEL", _charsets.text(decodedCarets(label), {}), Finding::noPlace);
}

/// Ends the line, unless the record has room for one value and has it: a different one goes to the note or
/// is told, and the line is taken back. Answers whether the line stays.
bool CardWriter::endLine(const Row& row, std::size_t lineStart, std::size_t valueStart, Finding ifRepeated)
{
    if (row.count == Count::one) {
        auto& first = _first[static_cast<std::size_t>(&row - carryTable().data())];
        if (first.length != 0) {
            const auto kept = std::string_view(*_out).substr(first.start, first.length);
            if (kept != written(valueStart) && actionOf(ifRepeated) == Action::keptInNote)
                carry(_property.name, written(valueStart), ifRepeated);
            else if (kept != written(valueStart))
                tell(ifRepeated, _property.name);
            _out->resize(lineStart);
            return false;
        }
        first = {valueStart, _out->size() - valueStart};
    }
    *_out += "\r\n";
    return true;
}

void CardWriter::writeDay(const Row& row)
{
    const auto text = value();
    const auto length = lengthOfDay(text);
    if (text.empty())
        return tell(Finding::emptyValue, _property.name);
    if (!length) {
        std::string canonical;
        appendValue(canonical, text, Shape::onePart, escapes());
        return carry(_property.name, canonical, Finding::dateUnreadable);
    }
    const auto lineStart = _out->size();
    appendHeader(_property.name);
    const auto valueStart = _out->size();
    _out->append(text.substr(0, *length));
    if (endLine(row, lineStart, valueStart, Finding::repeated) && *length < text.size())
        tell(Finding::timeOfDay, _property.name);
}

void CardWriter::writePicture(const Row& row)
{
    const auto raw = trimmed(_property.value);
    if (raw.empty())
        return tell(Finding::emptyValue, _property.name);
    if (raw.find(':') != raw.npos && !isDataURI(raw)) {
        std::string canonical;
        appendValue(canonical, value(), Shape::wholeLine, escapes());
        return carry(_property.name, canonical, Finding::pictureByReference);
    }
    const auto lineStart = _out->size();
    appendHeader(_property.name, true);
    const auto valueStart = _out->size();
    bool sound = true;
    if (_property.transfer == Transfer::base64 && !isDataURI(raw))
        appendBase64(*_out, raw, sound);
    if (written(valueStart).empty()) {
        _out->resize(lineStart);
        return tell(Finding::pictureUnreadable, _property.name);
    }
    if (endLine(row, lineStart, valueStart, Finding::binary) && !sound)
        tell(Finding::pictureDamaged, _property.name);
}

void CardWriter::writeLabel()
{
    if (!isName(_property.group))
        return carryUnknown();
    const auto lineStart = _out->size();
    _out->append(_property.group).append(".").append(kLabelName).append(":");
    const auto valueStart = _out->size();
    appendValue(*_out, value(), Shape::onePart, escapes());
    if (written(valueStart).empty()) {
        _out->resize(lineStart);
        return tell(Finding::emptyValue, _property.name);
    }
    *_out += "\r\n";
}

void CardWriter::addToNote()
{
    const auto text = value();
    if (text.empty())
        return tell(Finding::emptyValue, _property.name);
    std::string canonical;
    appendValue(canonical, text, Shape::onePart, escapes());
    appendJoined(_note, canonical);
}

void CardWriter::carryUnknown()
{
    if (trimmed(_property.value).empty())
        return tell(Finding::emptyValue, _property.name);
    if (_property.transfer == Transfer::base64 || isDataURI(_property.value))
        return tell(Finding::binary, _property.name);
    std::string canonical;
    appendValue(canonical, value(), Shape::onePart, escapes());
    carry(_property.name, canonical, Finding::noPlace);
}

void CardWriter::carryUnreadable(std::string_view line)
{
    if (trimmed(line) == ":")
        return tell(Finding::emptyValue, line);
    std::string canonical;
    appendValue(canonical, trimmed(_charsets.text(line, {})), Shape::onePart, Escapes::oldEncoded);
    appendJoined(_carried, canonical);
    tell(Finding::nameUnreadable, line);
}

/// Adds "NAME: value" to the note. `canonical` may be of any shape.
void CardWriter::carry(std::string_view name, std::string_view canonical, Finding finding)
{
    std::string text(name);
    text += ": ";
    appendValue(text, canonical, Shape::onePart, Escapes::rfc);
    appendJoined(_carried, text);
    tell(finding, name);
}

void CardWriter::tell(Finding finding, std::string_view subject)
{
    _report.add(_number, _line, finding, subject);
}

} // namespace vcard::prepare
