// How a card is read: its opening, its lines, its closing; and which character set it is in.
#include "interchange/vcard/ZRVCardParser.h"

#include "interchange/vcard/ZRVCardDictionaryValueSetter.h"
#include "interchange/vcard/ZRVCardParser+State.h"
#include "platform/run/Log.h"

#include <fmt/format.h>

#include <fstream>
#include <iterator>
#include <utility>

using namespace vcard;

namespace {

/// A data with more syntax errors ends its card.
constexpr std::int64_t kMostErrors = 10;

TextEncoding preferredEncoding(const VCardReaderContext& context)
{
    const auto name = context.preferred21Encoding();
    if (!name)
        return platform::kQuillonRomanEncoding;
    const TextEncoding encoding = platform::encodingForName(*name);
    return encoding == platform::invalidTextEncoding ? platform::kASCIIEncoding : encoding;
}

TextEncoding defaultEncodingOf(std::string_view data, bool isUTF8, const VCardReaderContext& context)
{
    if (!data.starts_with("BEGIN:VCARD") || !isUTF8)
        return preferredEncoding(context);
    return data.find("VERSION:3.0") == std::string_view::npos ? platform::kASCIIEncoding
                                                              : platform::kUTF8Encoding;
}

std::optional<std::string> contentsOf(const std::string& path)
{
    std::ifstream stream(path, std::ios::binary);
    std::string contents(std::istreambuf_iterator<char>(stream), {});
    if (!stream.is_open() || stream.bad())
        return std::nullopt;
    return contents;
}

} // namespace

// ---- the parser

std::unique_ptr<ZRVCardParser> ZRVCardParser::initWithData(
    std::string_view data, const VCardReaderContext& context)
{
    if (data.empty())
        return nullptr;
    return std::unique_ptr<ZRVCardParser>(new ZRVCardParser(std::make_unique<State>(data, context)));
}

ZRVCardParser::ZRVCardParser(std::unique_ptr<State> state) : _state(std::move(state)) { }
ZRVCardParser::~ZRVCardParser() = default;

bool ZRVCardParser::importToValueSetter(ZRVCardValueSetter& setter)
{
    _state->setter = &setter;
    const bool imported = _state->readCard();
    _state->cleanUpCardState();
    return imported;
}

bool ZRVCardParser::hasImportErrors() const { return _state->hasImportErrors; }
bool ZRVCardParser::atEnd() const { return !_state->lexer || _state->lexer->atEOF(); }
std::size_t ZRVCardParser::cursor() const { return _state->lexer ? _state->lexer->cursor() : 0; }
const std::string& ZRVCardParser::failureReason() const { return _state->failureReason; }

platform::Value ZRVCardParser::dictionaryRepresentationOfVCardAtPath(const std::string& path)
{
    const auto data = contentsOf(path);
    if (!data)
        return {};
    ZRVCardDictionaryValueSetter setter;
    if (const auto parser = initWithData(*data))
        parser->importToValueSetter(setter);
    return std::move(setter).dictionaryRep();
}

// ---- the card

ZRVCardParser::State::State(std::string_view data, const VCardReaderContext& surroundings)
    : lexer(ZRVCardLexer::initWithData(data))
    , context(surroundings)
    , defaultCountryCode(surroundings.defaultCountryCode())
    , defaultEncoding(defaultEncodingOf(data, lexer && lexer->isUTF8(), surroundings))
{
}

bool ZRVCardParser::State::readCard()
{
    failureReason.clear();
    if (!lexer)
        return malformed("BEGIN");
    if (!readOpening())
        return false;
    while (parseItem()) { }
    finishCard();
    return readClosing();
}

bool ZRVCardParser::State::readOpening()
{
    lexer->advanceToString();
    const TokenCode token = lexer->nextTokenPeak(false);
    if (token == kEndOfData)
        return refuse("no card before the end of the data");
    if (token != kBeginToken)
        return malformed("BEGIN");
    if (!lexer->advanceToToken(kColonToken, kSpace))
        return malformed(":");
    if (!lexer->advanceToToken(kVCardToken, kSpace))
        return malformed("VCARD");
    if (!lexer->advanceToEOL())
        return malformed("space after EOL");
    if (!lexer->advancePastEOL())
        return malformed("EOL");
    return true;
}

/// The name END was read already, unless the card ended without it.
bool ZRVCardParser::State::readClosing()
{
    if (!lexer->advanceToToken(kColonToken, kSpace) || !lexer->advanceToToken(kVCardToken, kSpace))
        return refuse("no END:VCARD where the card ends");
    lexer->advancePastEOL();
    return true;
}

bool ZRVCardParser::State::refuse(std::string_view reason)
{
    failureReason = reason;
    return false;
}

bool ZRVCardParser::State::malformed(std::string_view what)
{
    const std::string message = fmt::format("Malformed {}", what);
    platform::log(message);
    return refuse(message);
}

void ZRVCardParser::State::cleanUpCardState()
{
    setter = nullptr;
    for (auto& kind : card.pending)
        kind.clear();
    for (auto& addresses : known)
        if (!addresses.empty())
            addresses.clear();
    card.extensions.clear();
    card.hasLast = card.hasFirst = false;
    card.organization = card.notes = card.uid = card.imageData = {};
    card.formattedName.clear();
    card.otherNotes.clear();
}

// ---- the line

bool ZRVCardParser::State::parseItem()
{
    beginLine();
    lexer->nextArray(line.names, kGroupSeparator, kHeaderStops, platform::kASCIIEncoding);
    if (line.names.empty() || equalInAnyCase(line.names.back(), "END"))
        return false;
    if (line.names.size() == 2)
        line.grouping = line.names.front();
    line.name = line.names.back();
    switch (parseParameters()) {
    case Header::cardEnds:
        return false;
    case Header::lineLost:
        return nextLine();
    case Header::complete:
        break;
    }
    if (line.base64)
        line.base64Data = lexer->nextBase64Data();
    dispatch();
    return nextLine();
}

void ZRVCardParser::State::beginLine()
{
    for (auto* cached : line.parameters) {
        cached->parameter.reset();
        cached->onLine = false;
    }
    line.parameters.clear();
    line.grouping.reset();
    line.base64Data.reset();
    line.encoding = defaultEncoding;
    line.quotedPrintable = line.base64 = false;
}

bool ZRVCardParser::State::nextLine() { return lexer->advanceToEOL() && lexer->advancePastEOL(); }

ZRVCardParser::State::Header ZRVCardParser::State::parseParameters()
{
    // Without a colon the search for one would eat the lines behind this one.
    if (!lexer->lineHasColon())
        return Header::lineLost;
    for (;;) {
        const TokenCode token = lexer->nextTokenInLine();
        if (token == kColonToken)
            return Header::complete;
        if (lexer->errorCount() > kMostErrors || token == kEndOfData)
            return Header::cardEnds;
        if (token & kEndOfLine)
            return Header::lineLost;
        if (token == kSemicolonToken)
            parseParameter();
    }
}

void ZRVCardParser::State::parseParameter()
{
    auto& cached = cachedParameterForName(
        lexer->nextStringInEncoding(platform::kASCIIEncoding, false, kHeaderStops, true));
    const auto& name = cached.parameter.name();
    if (name && equalInAnyCase(*name, "QUOTED-PRINTABLE"))
        line.quotedPrintable = true;
    if (name && equalInAnyCase(*name, "BASE64"))
        line.base64 = true;
    // One that comes again on the line is the same one with more types: to walk it once is enough.
    if (!std::exchange(cached.onLine, true))
        line.parameters.push_back(&cached);
    if (lexer->nextTokenPeak(true) != kEqualsToken)
        return;
    lexer->advanceToPeakPoint();
    lexer->nextArray(parseArray, kListSeparator, kHeaderStops, platform::kASCIIEncoding);
    if (!name)
        return;
    if (equalInAnyCase(*name, "TYPE"))
        cached.parameter.addTypes(parseArray);
    else
        applyParameter(*name);
}

/// No value counts as the first one that is asked for: "CHARSET=" is UTF-7, "ENCODING=" quoted-printable.
void ZRVCardParser::State::applyParameter(std::string_view name)
{
    const auto isValue = [&](std::string_view value) {
        return !parseArray.empty() && equalInAnyCase(parseArray.front(), value);
    };
    if (equalInAnyCase(name, "CHARSET")) {
        if (parseArray.empty() || isValue("UTF-7"))
            line.encoding = platform::kUTF7Encoding;
        else
            applyCharset();
    } else if (equalInAnyCase(name, "ENCODING")) {
        if (parseArray.empty() || isValue("QUOTED-PRINTABLE"))
            line.quotedPrintable = true;
        else if (isValue("b") || isValue("BASE64"))
            line.base64 = true;
    }
}

/// An unknown set makes every text of the line absent.
void ZRVCardParser::State::applyCharset()
{
    line.encoding = platform::encodingForName(parseArray.front());
    if (line.encoding == platform::invalidTextEncoding)
        platform::log(fmt::format("{} is an invalid encoding", parseArray.front()));
}

CachedParameter& ZRVCardParser::State::cachedParameterForName(Text name)
{
    if (!name)
        return namelessParameter;
    const auto cached = parameters.find(*name);
    if (cached != parameters.end())
        return cached->second;
    std::string text(*name);
    return parameters.emplace(text, CachedParameter{ZRVCardParameter(text)}).first->second;
}
