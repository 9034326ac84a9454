// In which character set a value of a vCard 2.1 is written.
#include "interchange/vcard/VCardCharsets.h"

#include "core/ZRConstants.h"
#include "interchange/vcard/VCardText.h"
#include "platform/files/ZRUserDefaults.h"
#include "platform/text/Encoding.h"
#include "platform/text/Utf.h"

#include <algorithm>
#include <initializer_list>

namespace {

/// Names that a reader finds in the table of encodings.
constexpr std::string_view kLatin1 = "LATIN1";
constexpr std::string_view kQuillonRoman = "QUILLONROMAN";
constexpr std::string_view kUTF8 = "UTF-8";

/// A NUL reads as ";".
std::ptrdiff_t countStops(std::string_view bytes)
{
    using namespace std::string_view_literals;
    return std::ranges::count_if(
        bytes, [](char byte) { return "\0\\;\r\n"sv.find(byte) != std::string_view::npos; });
}

/// The text in that set, unless readers would not get it back from there.
std::optional<std::string> encodedIn(std::string_view charset, std::string_view text)
{
    const TextEncoding encoding = platform::encodingForName(charset);
    // UTF-7 is read in a form that nobody writes.
    if (encoding == platform::kUTF7Encoding)
        return std::nullopt;
    auto bytes = platform::encode(text, encoding);
    if (bytes && countStops(*bytes) != countStops(text))
        return std::nullopt;
    return bytes;
}

struct Encoded {
    std::string_view charset;
    std::string bytes;
};

Encoded firstThatHolds(std::string_view text, std::initializer_list<std::string_view> charsets)
{
    for (const std::string_view charset : charsets)
        if (!charset.empty())
            if (auto bytes = encodedIn(charset, text))
                return {charset, std::move(*bytes)};
    return {kUTF8, std::string(text)};
}

} // namespace

void encodedLineForValue(std::string& to, std::string_view value, std::string_view preferred)
{
    if (platform::isASCII(value)) {
        to.append(":").append(value).append("\r\n");
        return;
    }
    const Encoded encoded = firstThatHolds(value, {preferred, kLatin1, kQuillonRoman});
    to.append(";CHARSET=").append(encoded.charset).append(":").append(encoded.bytes).append("\r\n");
}

std::string encodedDataForValue(
    std::string_view value, std::optional<std::string>& charsetName, std::string_view preferred)
{
    charsetName.reset();
    if (platform::isASCII(value))
        return std::string(value);
    Encoded encoded = firstThatHolds(value, {kLatin1, preferred, kQuillonRoman});
    charsetName = encoded.charset;
    return std::move(encoded.bytes);
}

std::string zrPreferred21Charset()
{
    return std::string(ZRUserDefaults::rosterPreferences()->objectForKey(zr::kZR21vCardEncoding).asText());
}
