// The table of encodings, and strict conversion by it.
#include "platform/text/Encoding.h"

#include "platform/run/NeverDestroyed.h"
#include "platform/text/SingleByte.h"
#include "platform/text/Utf.h"

#include <unicode/ucnv.h>

#include <algorithm>
#include <array>
#include <memory>
#include <mutex>
#include <unordered_map>

namespace platform {

namespace {

using Kind = EncodingInfo::Kind;

// Where the wider numbering has no number of old for a set, it too takes the code page.
constexpr WiderEncoding kWiderCodePages = 0x10000;

constexpr EncodingInfo byNumbers(std::string_view name, std::string_view aliases, TextEncoding encoding,
    WiderEncoding wider, const char* converter, Kind kind, bool asciiCompatible)
{
    return {name, aliases, encoding, wider, converter, kind, asciiCompatible};
}

constexpr EncodingInfo byCodePage(std::string_view name, std::string_view aliases, std::uint32_t codePage,
    const char* converter, Kind kind, bool asciiCompatible = true)
{
    return {name, aliases, kCodePageEncodings + codePage, kWiderCodePages + codePage, converter, kind,
        asciiCompatible};
}

constexpr EncodingInfo kEncodings[] = {
    byNumbers("US-ASCII", "ASCII ANSI_X3.4-1968 ISO646-US ISO_646.IRV:1991 ISO-IR-6 CP367 IBM367 US CSASCII",
        kASCIIEncoding, kWiderCodePages + 20127, "US-ASCII", Kind::ascii, true),
    byNumbers("UTF-8", "UTF8 CSUTF8 UNICODE-1-1-UTF-8", kUTF8Encoding, kWiderUTF8, "UTF-8", Kind::utf8, true),
    byNumbers("ISO-8859-1",
        "LATIN1 LATIN-1 L1 ISO_8859-1 ISO8859-1 ISO_8859-1:1987 ISO-IR-100 CP819 IBM819 CSISOLATIN1",
        kLatin1Encoding, kWiderCodePages + 28591, "ISO-8859-1", Kind::latin1, true),
    byNumbers("UTF-16", "UTF16 CSUTF16 UNICODE ISO-10646-UCS-2 UCS-2", kUTF16Encoding, kWiderUTF16, "UTF-16",
        Kind::utf16, false),
    byNumbers("QUILLONROMAN", "QUILLON-ROMAN X-QUILLONROMAN WINDOWS-10000 CP10000", kQuillonRomanEncoding,
        kWiderCodePages + 10000, "windows-10000", Kind::singleByte, true),
    byNumbers("UTF-7", "UTF7 CSUTF7 UNICODE-1-1-UTF-7", kUTF7Encoding, kWiderCodePages + 65000, "UTF-7",
        Kind::multiByte, false),
    byNumbers("UTF-16LE", "UTF16LE CSUTF16LE", kUTF16LittleEndianEncoding, kWiderUTF16LittleEndian,
        "UTF-16LE", Kind::utf16, false),
    byNumbers("UTF-16BE", "UTF16BE CSUTF16BE", kUTF16BigEndianEncoding, kWiderUTF16BigEndian, "UTF-16BE",
        Kind::utf16, false),
    byCodePage("windows-1250", "CP1250 X-CP1250", 1250, "windows-1250", Kind::singleByte),
    byCodePage("windows-1251", "CP1251 X-CP1251", 1251, "windows-1251", Kind::singleByte),
    byCodePage("windows-1252", "CP1252 X-CP1252", 1252, "windows-1252", Kind::singleByte),
    byCodePage("windows-1253", "CP1253 X-CP1253", 1253, "windows-1253", Kind::singleByte),
    byCodePage("windows-1254", "CP1254 X-CP1254", 1254, "windows-1254", Kind::singleByte),
    byCodePage("windows-1255", "CP1255 X-CP1255", 1255, "windows-1255", Kind::singleByte),
    byCodePage("windows-1256", "CP1256 X-CP1256", 1256, "windows-1256", Kind::singleByte),
    byCodePage("windows-1257", "CP1257 X-CP1257", 1257, "windows-1257", Kind::singleByte),
    byCodePage("windows-1258", "CP1258 X-CP1258", 1258, "windows-1258", Kind::singleByte),
    byCodePage("ISO-8859-2", "LATIN2 L2 ISO_8859-2 ISO8859-2 ISO-IR-101 CSISOLATIN2", 28592, "ISO-8859-2",
        Kind::singleByte),
    byCodePage("ISO-8859-5", "CYRILLIC ISO_8859-5 ISO8859-5 ISO-IR-144 CSISOLATINCYRILLIC", 28595,
        "ISO-8859-5", Kind::singleByte),
    byCodePage("ISO-8859-7", "GREEK GREEK8 ISO_8859-7 ISO8859-7 ISO-IR-126 ELOT_928 ECMA-118 CSISOLATINGREEK",
        28597, "ISO-8859-7", Kind::singleByte),
    byCodePage("ISO-8859-8", "HEBREW ISO_8859-8 ISO8859-8 ISO-IR-138 ISO-8859-8-I CSISOLATINHEBREW", 28598,
        "ISO-8859-8", Kind::singleByte),
    byCodePage("ISO-8859-9", "LATIN5 L5 ISO_8859-9 ISO8859-9 ISO-IR-148 CSISOLATIN5", 28599, "ISO-8859-9",
        Kind::singleByte),
    byCodePage("ISO-8859-15", "LATIN-9 LATIN9 ISO_8859-15 ISO8859-15 CSISO885915", 28605, "ISO-8859-15",
        Kind::singleByte),
    byCodePage("KOI8-R", "KOI8 CSKOI8R", 20866, "KOI8-R", Kind::singleByte),
    byCodePage("KOI8-U", "CSKOI8U", 21866, "KOI8-U", Kind::singleByte),
    byCodePage("Shift_JIS", "SHIFT-JIS SJIS X-SJIS MS_KANJI CSSHIFTJIS CP932 WINDOWS-31J", 932, "Shift_JIS",
        Kind::multiByte),
    byCodePage("ISO-2022-JP", "CSISO2022JP", 50220, "ISO-2022-JP", Kind::multiByte, false),
    byCodePage("EUC-JP", "EUCJP X-EUC-JP CSEUCPKDFMTJAPANESE", 51932, "EUC-JP", Kind::multiByte),
    byCodePage(
        "GB18030", "GBK GB2312 CP936 GB_2312-80 X-GBK CSGB2312 CSGB18030", 54936, "GB18030", Kind::multiByte),
    byCodePage("Big5", "BIG-5 CP950 X-BIG5 CSBIG5", 950, "Big5", Kind::multiByte),
    byCodePage("EUC-KR", "EUCKR CSEUCKR", 51949, "EUC-KR", Kind::multiByte),
    byCodePage("windows-949", "KS_C_5601-1987 KSC5601 KS_C_5601-1989 CP949 UHC CSKSC56011987", 949,
        "windows-949", Kind::multiByte),
};
constexpr std::size_t kEncodingCount = std::size(kEncodings);

constexpr bool numbersAreUnique()
{
    for (const auto& one : kEncodings)
        for (const auto& other : kEncodings)
            if (&one != &other && (one.encoding == other.encoding || one.wider == other.wider))
                return false;
    return true;
}
static_assert(numbersAreUnique());

std::string capitals(std::string_view text)
{
    std::string result(text);
    for (char& byte : result)
        if (byte >= 'a' && byte <= 'z')
            byte = static_cast<char>(byte - 32);
    return result;
}

using NameTable = std::unordered_map<std::string, TextEncoding>;

NameTable makeNames()
{
    NameTable names;
    for (const EncodingInfo& info : kEncodings) {
        names.emplace(capitals(info.name), info.encoding);
        for (std::string_view rest = info.aliases; !rest.empty();) {
            const std::size_t end = std::min(rest.find(' '), rest.size());
            names.emplace(capitals(rest.substr(0, end)), info.encoding);
            rest.remove_prefix(std::min(end + 1, rest.size()));
        }
    }
    return names;
}

std::size_t indexOf(const EncodingInfo& info) { return static_cast<std::size_t>(&info - kEncodings); }

const SingleByteSet& singleByteSet(const EncodingInfo& info)
{
    static std::array<std::once_flag, kEncodingCount> made;
    static const NeverDestroyed<std::array<std::unique_ptr<const SingleByteSet>, kEncodingCount>> sets;
    const std::size_t index = indexOf(info);
    std::call_once(made[index], [&] { (*sets)[index] = std::make_unique<SingleByteSet>(info.converter); });
    return *(*sets)[index];
}

struct CloseConverter {
    void operator()(UConverter* converter) const { ucnv_close(converter); }
};

// This thread's converter, which stops at the first fault; null when ICU lacks it.
UConverter* converterOf(const EncodingInfo& info)
{
    thread_local std::array<std::unique_ptr<UConverter, CloseConverter>, kEncodingCount> converters;
    auto& converter = converters[indexOf(info)];
    if (!converter) {
        UErrorCode status = U_ZERO_ERROR;
        converter.reset(ucnv_open(info.converter, &status));
        ucnv_setToUCallBack(converter.get(), UCNV_TO_U_CALLBACK_STOP, nullptr, nullptr, nullptr, &status);
        ucnv_setFromUCallBack(converter.get(), UCNV_FROM_U_CALLBACK_STOP, nullptr, nullptr, nullptr, &status);
        if (U_FAILURE(status))
            converter.reset();
    }
    return converter.get();
}

// ICU's converters of this set turn round three control characters, which elsewhere are ASCII in it.
bool turnsControls(const EncodingInfo& info) { return std::string_view(info.converter) == "Shift_JIS"; }

void replaceControls(std::string& bytes, std::string_view from, std::string_view to)
{
    for (char& byte : bytes)
        if (const std::size_t at = from.find(byte); at != std::string_view::npos)
            byte = to[at];
}

std::optional<std::string> decodeByConverter(std::string bytes, const EncodingInfo& info)
{
    if (turnsControls(info))
        replaceControls(bytes, "\x1A\x1C\x7F", "\x7F\x1A\x1C");
    UConverter* converter = converterOf(info);
    if (!converter || bytes.size() > INT32_MAX / 2)
        return std::nullopt;
    const auto size = static_cast<int32_t>(bytes.size());
    std::u16string units(bytes.size() * 2, u'\0');
    UErrorCode status = U_ZERO_ERROR;
    const int32_t length = ucnv_toUChars(
        converter, units.data(), static_cast<int32_t>(units.size()), bytes.data(), size, &status);
    if (U_FAILURE(status))
        return std::nullopt;
    units.resize(static_cast<std::size_t>(length));
    return fromUTF16Strictly(units);
}

std::optional<std::string> encodeByConverter(std::string_view text, const EncodingInfo& info)
{
    UConverter* converter = converterOf(info);
    if (!converter || text.size() > INT32_MAX / 16)
        return std::nullopt;
    const std::u16string units = toUTF16(text);
    const auto length = static_cast<int32_t>(units.size());
    std::string bytes(
        static_cast<std::size_t>(UCNV_GET_MAX_BYTES_FOR_STRING(length, ucnv_getMaxCharSize(converter))),
        '\0');
    UErrorCode status = U_ZERO_ERROR;
    const int32_t size = ucnv_fromUChars(
        converter, bytes.data(), static_cast<int32_t>(bytes.size()), units.data(), length, &status);
    if (U_FAILURE(status))
        return std::nullopt;
    bytes.resize(static_cast<std::size_t>(size));
    if (turnsControls(info))
        replaceControls(bytes, "\x7F\x1A\x1C", "\x1A\x1C\x7F");
    return bytes;
}

std::string decodeLatin1(std::string_view bytes)
{
    std::string text;
    text.reserve(bytes.size() + bytes.size() / 4);
    for (const char byte : bytes)
        appendUTF8(text, static_cast<unsigned char>(byte));
    return text;
}

std::optional<std::string> encodeLatin1(std::string_view text)
{
    std::string bytes;
    bytes.reserve(text.size());
    for (std::size_t at = 0; at < text.size();) {
        const char32_t character = nextCharacter(text, at);
        if (character > 0xFF)
            return std::nullopt;
        bytes.push_back(static_cast<char>(character));
    }
    return bytes;
}

std::optional<std::string> decodeUTF16(std::string_view bytes, TextEncoding encoding)
{
    if (encoding == kUTF16LittleEndianEncoding)
        return fromUTF16Bytes(bytes, ByteOrder::little);
    if (encoding == kUTF16Encoding && bytes.starts_with("\xFF\xFE"))
        return fromUTF16Bytes(bytes.substr(2), ByteOrder::little);
    if (encoding == kUTF16Encoding && bytes.starts_with("\xFE\xFF"))
        bytes.remove_prefix(2);
    return fromUTF16Bytes(bytes, ByteOrder::big);
}

std::string encodeUTF16(std::string_view text, TextEncoding encoding)
{
    if (encoding == kUTF16LittleEndianEncoding)
        return toUTF16Bytes(text, ByteOrder::little);
    const std::string_view mark = encoding == kUTF16Encoding ? "\xFE\xFF" : "";
    return std::string(mark) + toUTF16Bytes(text, ByteOrder::big);
}

std::optional<std::string> copyIf(bool condition, std::string_view text)
{
    return condition ? std::optional<std::string>(text) : std::nullopt;
}

} // namespace

std::span<const EncodingInfo> allEncodings() { return kEncodings; }

const EncodingInfo* encodingInfo(TextEncoding encoding)
{
    const auto found = std::find_if(std::begin(kEncodings), std::end(kEncodings),
        [&](const EncodingInfo& info) { return info.encoding == encoding; });
    return found == std::end(kEncodings) ? nullptr : found;
}

TextEncoding encodingForName(std::string_view name)
{
    static const NeverDestroyed<const NameTable> names(makeNames());
    const auto found = names->find(capitals(name));
    return found == names->end() ? invalidTextEncoding : found->second;
}

std::string_view nameOfEncoding(TextEncoding encoding)
{
    const EncodingInfo* info = encodingInfo(encoding);
    return info ? info->name : std::string_view();
}

TextEncoding encodingFromWider(WiderEncoding wider)
{
    const auto found = std::find_if(std::begin(kEncodings), std::end(kEncodings),
        [&](const EncodingInfo& info) { return info.wider == wider; });
    return found == std::end(kEncodings) ? invalidTextEncoding : found->encoding;
}

WiderEncoding widerFromEncoding(TextEncoding encoding)
{
    const EncodingInfo* info = encodingInfo(encoding);
    return info ? info->wider : invalidTextEncoding;
}

std::optional<std::string> decode(std::string_view bytes, TextEncoding encoding)
{
    const EncodingInfo* info = encodingInfo(encoding);
    if (!info)
        return std::nullopt;
    if (info->asciiCompatible && isASCII(bytes))
        return std::string(bytes);
    switch (info->kind) {
    case Kind::ascii:
        return std::nullopt;
    case Kind::utf8:
        return copyIf(isValidUTF8(bytes), bytes);
    case Kind::latin1:
        return decodeLatin1(bytes);
    case Kind::utf16:
        return decodeUTF16(bytes, encoding);
    case Kind::singleByte:
        return singleByteSet(*info).decode(bytes);
    case Kind::multiByte:
        break;
    }
    return decodeByConverter(std::string(bytes), *info);
}

std::optional<std::string> encode(std::string_view text, TextEncoding encoding)
{
    const EncodingInfo* info = encodingInfo(encoding);
    if (!info)
        return std::nullopt;
    if (info->asciiCompatible && isASCII(text))
        return std::string(text);
    if (info->kind == Kind::ascii || !isValidUTF8(text))
        return std::nullopt;
    switch (info->kind) {
    case Kind::utf8:
        return std::string(text);
    case Kind::latin1:
        return encodeLatin1(text);
    case Kind::utf16:
        return encodeUTF16(text, encoding);
    case Kind::singleByte:
        return singleByteSet(*info).encode(text);
    default:
        return encodeByConverter(text, *info);
    }
}

} // namespace platform
