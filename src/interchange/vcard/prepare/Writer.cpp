// How a raw card becomes canonical text.
#include "interchange/vcard/prepare/Writer.h"

#include "interchange/vcard/prepare/Ascii.h"

#include <algorithm>

namespace vcard::prepare {

namespace {

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
    join(_note, _carried);
    if (!_note.empty()) {
        out.append("NOTE:").append(_note);
        endLine();
    }
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
        _text = decoded(decodedQuotedPrintable(_property.value), _property.charset);
    else if (_property.transfer == Transfer::base64)
        _text = decoded(decodedBase64(_property.value), _property.charset);
    else
        _text = decoded(_property.value, _property.charset);
    return trimmed(_text);
}

std::string CardWriter::decoded(std::string_view bytes, std::string_view charset)
{
    auto text = _charsets.text(bytes, charset);
    std::erase(text, '\0');
    return text;
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
    // Some writers repeat the name within the list.
    if (startsInAnyCase(type, "TYPE="))
        type = trimmed(type.substr(5));
    if (type.empty())
        return;
    if (!isType(type))
        return tell(Finding::typeUnreadable, type);
    _out->append(open ? "," : ";TYPE=").append(type);
    open = true;
}

/// A blank behind a value is no part of it, and keeps a value from ending in what looks like a card's BEGIN.
void CardWriter::endLine()
{
    if (upper(_out->back()) == 'D' && endsInBegin(written(_out->rfind('\n') + 1)))
        *_out += ' ';
    *_out += "\r\n";
}

void CardWriter::tell(Finding finding, std::string_view subject)
{
    _report.add(_number, _line, finding, subject);
}

} // namespace vcard::prepare
