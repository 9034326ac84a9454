// How a raw card becomes canonical text.
#include "interchange/vcard/prepare/Writer.h"

#include "interchange/vcard/prepare/Ascii.h"

#include <algorithm>
#include <charconv>

namespace vcard::prepare {

namespace {

/// About what stands around the lines of a card.
constexpr std::size_t kFrame = 64;

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

constexpr std::pair<std::string_view, std::string_view> kSameTypes[] = {{"MOBILE", "CELL"},
    {"MAIN-NUMBER", "MAIN"}, {"BUSINESS", "WORK"}, {"PRIVATE", "HOME"}, {"PERSONAL", "HOME"}};

/// The word that the reader knows for a type, or the type.
std::string_view readType(std::string_view type)
{
    for (const auto& [written, read] : kSameTypes)
        if (equalInAnyCase(type, written))
            return read;
    return type;
}

/// What RFC 6350 §5.3 lets PREF be; anything else is no preference.
std::uint8_t rankOf(std::string_view value)
{
    unsigned rank = 0;
    const auto [end, error] = std::from_chars(value.data(), value.data() + value.size(), rank);
    const bool isRank =
        error == std::errc() && end == value.data() + value.size() && rank >= 1 && rank <= 100;
    return isRank ? static_cast<std::uint8_t>(rank) : CardLines::kNoRank;
}

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
    _item = 0;
    _kind = Kind::person;
    _alternatives.clear();
    _charsets.beginCard(raw.bytes);
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
        _lines.begin(nullptr, "NOTE", _note);
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
    _isDecoded = false;
    if (!_property.parse(line))
        return tell(Finding::lineWithoutColon, line);
    if (!isName(_property.name))
        return carryUnreadable(line);
    const auto* row = rowOf(_property.name, _raw->version);
    if (isAlternative())
        return carryText(Finding::alternative);
    return row ? write(*row) : carryText(Finding::noPlace);
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
        return writeDay(row, _property.name);
    case Use::otherDate:
        return writeOtherDate(row);
    case Use::related:
        return writeRelated(row);
    case Use::relation:
        return writeRelation(_property.name, row.word);
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
    if (trimmed(_property.value).empty())
        return;
    if (_wishes.cards && equalInAnyCase(_property.name, "UID"))
        _card->uid = value();
    tell(Finding::bookkeeping, _property.name);
}

/// A property of which another one of the same ALTID was there; RFC 6350 §5.4.
bool CardWriter::isAlternative()
{
    const auto altid = _property.parameter(ParameterName::altid);
    if (altid.empty())
        return false;
    std::string key(_property.name);
    std::transform(key.begin(), key.end(), key.begin(), upper);
    return !_alternatives.insert(key.append("=").append(altid)).second;
}

// ---- values

Escapes CardWriter::escapes() const
{
    if (_raw->version != Version::v21)
        return Escapes::rfc;
    return _property.transfer == Transfer::plain ? Escapes::old : Escapes::oldEncoded;
}

/// The decoded value as UTF-8, without blanks at its ends; the same until the next line.
std::string_view CardWriter::value()
{
    if (_isDecoded)
        return _value;
    _isDecoded = true;
    const bool isPlain = _property.transfer == Transfer::plain;
    if (isPlain && _property.charset.empty() && _charsets.encoding() == platform::kUTF8Encoding)
        return _value = trimmed(_property.value);
    if (_property.transfer == Transfer::quotedPrintable)
        _text = decoded(decodedQuotedPrintable(_property.value), _property.charset);
    else if (_property.transfer == Transfer::base64)
        _text = decoded(decodedBase64(_property.value), _property.charset);
    else
        _text = decoded(_property.value, _property.charset);
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

void CardWriter::beginLine(const Row* row, std::string_view name, bool base64)
{
    _lines.begin(row);
    if (isName(_property.group))
        _lines.begun().group = _property.group;
    _lines.text().append(name);
    if (base64)
        _lines.text().append(";ENCODING=b");
    appendTypes();
    _lines.text() += ':';
    _lines.beginValue();
}

/// Bare types and TYPE lists alike become TYPE lists of unquoted words.
void CardWriter::appendTypes()
{
    for (const auto& parameter : _property.parameters) {
        if (parameter.known == ParameterName::pref)
            prefer(rankOf(unquoted(parameter.value)));
        const bool bare = parameter.known == ParameterName::bare;
        if (bare ? isTransferWord(parameter.value) : parameter.known != ParameterName::type)
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
    if (equalInAnyCase(type, "PREF"))
        prefer(0);
    _lines.text().append(open ? "," : ";TYPE=").append(readType(type));
    open = true;
}

/// The type stands above a rank, since it is what stays in the canonical line.
void CardWriter::prefer(std::uint8_t rank)
{
    auto& line = _lines.begun();
    if (line.entries != Entries::none)
        line.rank = std::min(line.rank, rank);
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
            carry(_property.name, value, ifRepeated);
        else
            tell(ifRepeated, _property.name);
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
        _emptied.insert(_property.group);
    _report.add(_card->number, _line, finding, subject);
}

} // namespace vcard::prepare
