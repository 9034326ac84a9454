// What is written for each place that a property can go to.
#include "interchange/vcard/prepare/Writer.h"

#include "interchange/vcard/prepare/Ascii.h"

namespace vcard::prepare {

namespace {

constexpr std::size_t kShortestUndeclaredPicture = 80;

bool isDataURI(std::string_view value) { return startsInAnyCase(trimmed(value), "data:"); }

} // namespace

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
        _out->resize(valueStart + trimmed(written(valueStart)).size());
    }
    if (isEmptyValue(written(valueStart), row.shape)) {
        _out->resize(lineStart);
        if (!surplus)
            tell(Finding::emptyValue, _property.name);
    } else {
        for (auto fields = row.least ? countFields(written(valueStart)) : 0; fields < row.least; ++fields)
            *_out += ';';
        keepLine(row, lineStart, valueStart, Finding::repeated);
    }
    if (row.least && !_property.parameters.empty())
        if (const auto label = _property.parameter("LABEL"); !label.empty())
            carry("LABEL", decoded(decodedCarets(label), {}), Finding::noPlace);
}

/// Ends the line, unless the record has room for one value and has it: a different one goes to the note or
/// is told, and the line is taken back. Answers whether the line stays.
bool CardWriter::keepLine(const Row& row, std::size_t lineStart, std::size_t valueStart, Finding ifRepeated)
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
    endLine();
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
    if (keepLine(row, lineStart, valueStart, Finding::repeated) && *length < text.size())
        tell(Finding::timeOfDay, _property.name);
}

void CardWriter::writePicture(const Row& row)
{
    const auto raw = trimmed(_property.value);
    if (raw.empty())
        return tell(Finding::emptyValue, _property.name);
    if (raw.find(':') != raw.npos && !isDataURI(raw)) {
        // An address is none of base64's digits, whatever the line declares.
        if (_property.transfer == Transfer::base64)
            _property.transfer = Transfer::plain;
        std::string canonical;
        appendValue(canonical, value(), Shape::wholeLine, escapes());
        return carry(_property.name, canonical, Finding::pictureByReference);
    }
    const auto lineStart = _out->size();
    appendHeader(_property.name, true);
    const auto valueStart = _out->size();
    bool sound = true;
    if (!isDataURI(raw))
        appendBase64(*_out, raw, sound);
    // Some writers leave the parameter out; then only text that cannot be anything else is a picture.
    const bool declared = _property.transfer == Transfer::base64;
    const bool meant = declared || (sound && raw.size() >= kShortestUndeclaredPicture);
    if (written(valueStart).empty() || !meant) {
        _out->resize(lineStart);
        return tell(Finding::pictureUnreadable, _property.name);
    }
    if (keepLine(row, lineStart, valueStart, Finding::binary) && !sound)
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
    endLine();
}

void CardWriter::addToNote()
{
    const auto text = value();
    if (text.empty())
        return tell(Finding::emptyValue, _property.name);
    std::string canonical;
    appendValue(canonical, text, Shape::onePart, escapes());
    join(_note, canonical);
}

void CardWriter::carryUnknown()
{
    const auto text = value();
    if (text.empty())
        return tell(Finding::emptyValue, _property.name);
    if (_property.transfer == Transfer::base64 || isDataURI(text))
        return tell(Finding::binary, _property.name);
    std::string canonical;
    appendValue(canonical, text, Shape::onePart, escapes());
    carry(_property.name, canonical, Finding::noPlace);
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

/// Adds "NAME: value" to the note. `canonical` may be of any shape.
void CardWriter::carry(std::string_view name, std::string_view canonical, Finding finding)
{
    canonical = trimmed(canonical);
    if (canonical.empty())
        return tell(Finding::emptyValue, name);
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

} // namespace vcard::prepare
