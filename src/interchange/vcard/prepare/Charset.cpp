// How the character set of a card is found, and its bytes made UTF-8.
#include "interchange/vcard/prepare/Charset.h"

#include "interchange/vcard/prepare/Ascii.h"
#include "interchange/vcard/prepare/Property.h"
#include "platform/text/Utf.h"

#include <algorithm>

namespace vcard::prepare {

namespace {

using platform::invalidTextEncoding;

/// The sets that CHARSET parameters name, in order. "=" is rarer than any letter of the word.
std::vector<TextEncoding> namedCharsets(std::string_view bytes)
{
    constexpr std::string_view word = "CHARSET";
    std::vector<TextEncoding> named;
    for (auto at = bytes.find('='); at != bytes.npos; at = bytes.find('=', at + 1)) {
        if (at < word.size() || !equalInAnyCase(bytes.substr(at - word.size(), word.size()), word))
            continue;
        const auto rest = bytes.substr(at + 1, 40);
        const auto name = unquoted(trimmed(rest.substr(0, rest.find_first_of(";:,\r\n"))));
        const auto encoding = platform::encodingForName(name);
        if (encoding != invalidTextEncoding && encoding != platform::kUTF8Encoding
            && encoding != platform::kASCIIEncoding
            && std::find(named.begin(), named.end(), encoding) == named.end())
            named.push_back(encoding);
    }
    return named;
}

bool isASCIICompatible(TextEncoding encoding)
{
    const auto* info = platform::encodingInfo(encoding);
    return info && info->asciiCompatible;
}

bool fits(std::string_view bytes, TextEncoding encoding)
{
    return encoding != 0 && platform::decode(bytes, encoding).has_value();
}

} // namespace

void Charsets::beginCard(std::string_view card)
{
    _card = card;
    _namedInCard.reset();
    _guess = 0;
    _encoding = platform::isValidUTF8(card) ? platform::kUTF8Encoding : firstFitting(card);
}

TextEncoding Charsets::firstFitting(std::string_view bytes)
{
    if (!_namedInCard)
        _namedInCard = namedCharsets(_card);
    for (const auto encoding : *_namedInCard)
        if (fits(bytes, encoding))
            return encoding;
    if (!_namedInFile)
        _namedInFile = namedCharsets(_file);
    for (const auto encoding : *_namedInFile)
        if (fits(bytes, encoding))
            return encoding;
    _guess = platform::kLatin1Encoding;
    for (const auto encoding : {platform::kWindows1252Encoding, _preferred})
        if (fits(bytes, encoding))
            _guess = encoding;
    return _guess;
}

std::string Charsets::text(std::string_view bytes, std::string_view lineCharset)
{
    const auto named = lineCharset.empty() ? invalidTextEncoding : platform::encodingForName(lineCharset);
    if (platform::isASCII(bytes) && (named == invalidTextEncoding || isASCIICompatible(named)))
        return std::string(bytes);
    if (named != invalidTextEncoding)
        if (auto text = platform::decode(bytes, named))
            return *std::move(text);
    if (auto text = platform::decode(bytes, _encoding))
        return *std::move(text);
    return platform::decode(bytes, firstFitting(bytes)).value_or(platform::repairedUTF8(bytes));
}

} // namespace vcard::prepare
