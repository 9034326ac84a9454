// The road of one card: lines, cards, characters, properties, canonical text.
#include "interchange/vcard/prepare/Preparation.h"

#include "interchange/vcard/prepare/Ascii.h"
#include "interchange/vcard/prepare/Lines.h"
#include "platform/text/Utf.h"

#include <algorithm>
#include <utility>

namespace vcard::prepare {

namespace {

constexpr std::size_t kLongestExcerpt = 200;

/// Its first line that is neither BEGIN nor VERSION, printable.
void setFirstLine(std::string& out, const RawCard& raw)
{
    const auto line = std::find_if(raw.lines.begin(), raw.lines.end(),
        [&](const auto& each) { return !startsInAnyCase(raw.text(each), "VERSION"); });
    out = line == raw.lines.end() ? "BEGIN:VCARD" : raw.text(*line).substr(0, kLongestExcerpt);
    if (!platform::isValidUTF8(out))
        out = platform::repairedUTF8(out);
}

} // namespace

Preparation::Preparation(std::string_view bytes, Options options)
    : _size(bytes.size())
    , _converted(textOfWideBytes(bytes))
    , _bytes(_converted ? std::string_view(*_converted) : withoutMark(bytes))
    , _report(std::move(options.file))
    , _charsets(_bytes, options.preferredEncoding)
    , _reader(_bytes)
    , _writer(_charsets, _report, options.groups)
{
}

bool Preparation::next(CanonicalCard& card)
{
    auto found = _reader.next(_raw);
    for (; found == CardReader::Found::textOutside; found = _reader.next(_raw))
        _report.add(0, _raw.line, Finding::textOutside, _raw.bytes);
    if (found == CardReader::Found::nothing)
        return false;
    card.number = ++_number;
    card.line = _raw.line;
    setFirstLine(card.firstLine, _raw);
    card.refusal = refusalOf(_raw, card.firstLine);
    if (!card.refusal && !_writer.write(_raw, card))
        card.refusal = Finding::cardEmpty;
    if (card.refusal) {
        card.text.clear();
        _report.add(_number, _raw.line, *card.refusal, card.firstLine);
    }
    return true;
}

std::optional<Finding> Preparation::refusalOf(const RawCard& raw, std::string_view firstLine)
{
    switch (raw.ending) {
    case Ending::cutOff:
        return Finding::cardCutOff;
    case Ending::neverBegun:
        return Finding::cardWithoutBegin;
    case Ending::tooLarge:
        return Finding::cardTooLarge;
    case Ending::begunAgain:
    case Ending::nestedOpen:
        _report.add(_number, raw.line, Finding::endMissing, firstLine);
        break;
    case Ending::closed:
        break;
    }
    return std::nullopt;
}

std::size_t Preparation::bytesRead() const
{
    if (_bytes.empty())
        return _size;
    const double part = static_cast<double>(_reader.offset()) / static_cast<double>(_bytes.size());
    return static_cast<std::size_t>(part * static_cast<double>(_size));
}

} // namespace vcard::prepare
