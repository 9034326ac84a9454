// How a raw card becomes canonical text.
#include "interchange/vcard/prepare/Writer.h"

#include "interchange/vcard/prepare/Ascii.h"

#include <algorithm>

namespace vcard::prepare {

namespace {

/// About what stands around the lines of a card.
constexpr std::size_t kFrame = 64;

} // namespace

CardWriter::CardWriter(Charsets& charsets, Report& report, GroupWishes wishes)
    : _charsets(charsets), _report(report), _wishes(wishes), _first(mapTable().size())
{
}

bool CardWriter::write(const RawCard& raw, CanonicalCard& card)
{
    begin(raw, card);
    for (const auto& line : raw.lines) {
        _line = line.number;
        writeLine(raw.text(line));
    }
    _line = raw.line;
    if (const auto guess = _charsets.guess())
        tell(Finding::charsetGuessed, platform::nameOfEncoding(guess));
    if (_isGroup)
        finishGroup();
    else
        finish();
    return _isGroup ? !card.group->name.empty() : !card.text.empty();
}

void CardWriter::begin(const RawCard& raw, CanonicalCard& card)
{
    _raw = &raw;
    _card = &card;
    _line = raw.line;
    _lines.clear();
    _note.clear();
    _carried.clear();
    _moreOfList.clear();
    std::fill(_first.begin(), _first.end(), CardLines::kNone);
    _labels.clear();
    _codes.clear();
    _addresses.clear();
    _emptied.clear();
    _ownLabels.clear();
    _group = {};
    _item = 0;
    _kind = Kind::person;
    _alternatives.clear();
    _charsets.beginCard(raw.bytes);
    _headers.beginCard(raw.version);
    card.text.clear();
    card.group.reset();
    card.uid.clear();
    card.categories.clear();
    _isGroup = _wishes.cards && isGroup(raw);
    if (_isGroup)
        card.group.emplace();
    if (raw.version == Version::missing || raw.version == Version::other)
        tell(raw.version == Version::missing ? Finding::versionMissing : Finding::versionUnknown, {});
    for (const auto line : raw.nested)
        _report.add(card.number, line, Finding::nestedCard, {});
}

void CardWriter::finish()
{
    finishNames();
    finishItems();
    join(_note, _carried);
    if (!_note.empty()) {
        _lines.begin(nullptr, {}, "NOTE", _note);
        _lines.keep();
    }
    if (_lines.empty())
        return;
    auto& text = _card->text;
    text.reserve(_lines.size() + kFrame);
    text = "BEGIN:VCARD\r\nVERSION:3.0\r\n";
    _lines.appendTo(text);
    text += "END:VCARD\r\n";
}

void CardWriter::writeLine(std::string_view line)
{
    const auto* header = _headers.of(line);
    if (!header)
        return tell(Finding::lineWithoutColon, line);
    _header = header;
    _group = _header->property.group;
    _transfer = _header->property.transfer;
    _written = line.substr(header->text.size());
    _isDecoded = false;
    if (!_header->isNamed)
        return carryUnreadable(line);
    if (!_header->altid.empty() && isAlternative())
        return carryText(Finding::alternative);
    return _header->row ? write(*_header->row) : carryText(Finding::noPlace);
}

void CardWriter::write(const Row& row)
{
    switch (row.use) {
    case Use::line:
    case Use::names:
    case Use::formattedName:
        return writeKept(row);
    case Use::list:
        return writeList(row);
    case Use::telephone:
        return writeTelephone(row);
    case Use::email:
        return writeEmail(row);
    case Use::messaging:
        return writeMessaging();
    case Use::service:
        return writeService(row);
    case Use::day:
    case Use::otherDate:
        return writeDay(row);
    case Use::related:
        return writeRelated(row);
    case Use::relation:
        return writeRelation(name(), row.word);
    case Use::picture:
        return writePicture(row);
    case Use::label:
        return writeLabel();
    case Use::countryCode:
        return writeCountryCode(row);
    case Use::note:
        return addToNote();
    case Use::carried:
        return carryText(Finding::noPlace);
    case Use::position:
        return writePosition();
    case Use::categories:
        return writeCategories();
    case Use::kind:
        return writeKind();
    case Use::member:
        return writeMember();
    case Use::bookkeeping:
        return writeBookkeeping();
    case Use::frame:
        return;
    }
}

void CardWriter::writeBookkeeping()
{
    if (trimmed(_written).empty())
        return;
    if (_wishes.cards && equalInAnyCase(name(), "UID"))
        _card->uid = value();
    tell(Finding::bookkeeping, name());
}

/// A property of which another one of the same ALTID was there; RFC 6350 §5.4.
bool CardWriter::isAlternative()
{
    std::string key(name());
    std::transform(key.begin(), key.end(), key.begin(), upper);
    return !_alternatives.insert(key.append("=").append(_header->altid)).second;
}

// ---- values

Escapes CardWriter::escapes() const
{
    if (_raw->version != Version::v21)
        return Escapes::rfc;
    return _transfer == Transfer::plain ? Escapes::old : Escapes::oldEncoded;
}

std::string_view CardWriter::decodedValue()
{
    _isDecoded = true;
    const bool isPlain = _transfer == Transfer::plain;
    if (isPlain && _header->property.charset.empty() && _charsets.encoding() == platform::kUTF8Encoding)
        return _value = trimmed(_written);
    if (_transfer == Transfer::quotedPrintable)
        _text = decoded(decodedQuotedPrintable(_written), _header->property.charset);
    else if (_transfer == Transfer::base64)
        _text = decoded(decodedBase64(_written), _header->property.charset);
    else
        _text = decoded(_written, _header->property.charset);
    return _value = trimmed(_text);
}

std::string CardWriter::decoded(std::string_view bytes, std::string_view charset)
{
    auto text = _charsets.text(bytes, charset);
    std::erase(text, '\0');
    return text;
}

std::string CardWriter::canonicalValue(Shape shape)
{
    std::string canonical;
    appendValue(canonical, value(), shape, escapes());
    return canonical;
}

// ---- lines

/// Begins a line with the name and the types that were written.
void CardWriter::beginLine(const Row& row)
{
    _lines.begin(&row, groupOfLine());
    _lines.text().append(_header->canonical);
    _lines.beginValue();
    takeTypes();
}

/// Begins a line with the types that were written.
void CardWriter::beginLine(const Row& row, std::string_view name, std::string_view encoding)
{
    _lines.begin(&row, groupOfLine());
    _lines.text().append(name).append(encoding).append(_header->types).append(":");
    _lines.beginValue();
    takeTypes();
}

/// Begins a line of which the types are forgotten; what is left says how preferred the entry is.
void CardWriter::beginLineWithoutTypes(const Row* row, std::string_view name)
{
    _lines.begin(row, groupOfLine());
    _lines.text().append(name).append(":");
    _lines.beginValue();
    _lines.prefer(_header->rankOfParameter);
}

void CardWriter::takeTypes()
{
    _lines.prefer(_header->rank);
    for (const auto type : _header->unreadableTypes)
        tell(Finding::typeUnreadable, type);
}

/// Keeps the line, unless the record has room for one value and has it: a different one goes to the note or
/// is told, and the line is taken back. Answers the line, if it stays.
CardWriter::Index CardWriter::keepLine(const Row& row, Finding ifRepeated)
{
    if (row.count == Count::many)
        return _lines.keep();
    auto& first = _first[indexOf(row)];
    if (first == CardLines::kNone)
        return first = _lines.keep();
    const auto value = _lines.begunValue();
    if (_lines.valueOf(_lines[first]) != value) {
        if (actionOf(ifRepeated) == Action::keptInNote)
            carry(name(), value, ifRepeated);
        else
            tell(ifRepeated, name());
    }
    _lines.giveUp();
    return CardLines::kNone;
}

/// Adds "NAME: value" to the note. `canonical` may be of any shape.
void CardWriter::carry(std::string_view name, std::string_view canonical, Finding finding)
{
    canonical = trimmed(canonical);
    if (canonical.empty())
        return tell(Finding::emptyValue, name);
    if (_isGroup)
        return tell(Finding::binary, name);
    std::string text(name);
    text += ": ";
    appendValue(text, canonical, Shape::onePart, Escapes::rfc);
    join(_carried, text);
    tell(finding, name);
}

/// A line of a text behind the lines that it has.
void CardWriter::join(std::string& text, std::string_view more)
{
    if (!text.empty() && !more.empty())
        text += "\\n";
    text += more;
}

void CardWriter::tell(Finding finding, std::string_view subject)
{
    if (finding == Finding::emptyValue)
        _emptied.insert(_group);
    _report.add(_card->number, _line, finding, subject);
}

} // namespace vcard::prepare
