// Drives every operation of the vCard lexer in an order that the input chooses: the first bytes are the
// program, the rest is the data.
#include "interchange/vcard/ZRVCardLexer.h"

#include <cstddef>
#include <cstdint>
#include <cstdlib>

using namespace vcard;

namespace {

constexpr std::size_t kProgram = 16;

/// Any encoding, known or not.
TextEncoding encodingOf(std::uint8_t number)
{
    constexpr TextEncoding encodings[] = {0, 1, 4, 5, 10, 30, platform::kUTF7Encoding, 0xFFFFFFFF};
    return encodings[number % 8];
}

void step(ZRVCardLexer& lexer, std::uint8_t code)
{
    bool last = false;
    const TokenMask stops = (code & 1 ? kFieldStops : kHeaderStops) | (code & 2 ? kListSeparator : 0u);
    switch (code >> 4) {
    case 0:
        lexer.nextTokenPeak(code & 1);
        break;
    case 1:
        lexer.nextTokenInLine();
        break;
    case 2:
        lexer.advanceToToken(kColonToken, code & 1 ? 0u : kSpace);
        break;
    case 3:
        lexer.advanceToEOL();
        break;
    case 4:
        lexer.advancePastEOL();
        break;
    case 5:
        lexer.advanceToString();
        break;
    case 6:
        lexer.nextEscapedCharacter();
        break;
    case 7:
        lexer.nextQuotedPrintableData();
        break;
    case 8:
        lexer.nextBase64Line(last);
        break;
    case 9:
        lexer.nextBase64Data();
        break;
    case 10:
        lexer.nextArraySeperatedByToken(kGroupSeparator, stops, encodingOf(code));
        break;
    case 11:
        lexer.lineHasColon();
        break;
    case 12:
        lexer.advanceToPeakPoint();
        break;
    default:
        lexer.nextStringInEncoding(encodingOf(code), code & 4, stops, code & 8);
    }
    lexer.tokenAtCursor();
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size)
{
    if (size < kProgram)
        return 0;
    const auto lexer = ZRVCardLexer::initWithData(
        std::string_view(reinterpret_cast<const char*>(bytes) + kProgram, size - kProgram));
    if (!lexer)
        return 0;
    for (std::size_t round = 0; round < 4 * size && !lexer->atEOF(); ++round)
        step(*lexer, bytes[round % kProgram]);
    if (lexer->cursor() > size - kProgram + 1)
        std::abort();
    return 0;
}
