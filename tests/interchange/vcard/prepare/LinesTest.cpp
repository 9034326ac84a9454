// Lines are joined as each version folds them.
#include "interchange/vcard/prepare/Lines.h"

#include <gmock/gmock.h>

#include <vector>

namespace vcard::prepare {
namespace {

using testing::ElementsAre;
using namespace std::string_literals;

constexpr std::size_t kNoLimit = 1U << 20;

/// No byte stands behind the last one: a look beyond it is found out.
std::vector<std::string> logicalLines(const std::string& bytes, Folding folding, std::size_t limit = kNoLimit)
{
    const std::vector<char> mapped(bytes.begin(), bytes.end());
    std::vector<std::string> logical;
    for (PhysicalLines lines({mapped.data(), mapped.size()}); !lines.atEnd();)
        readLogicalLine(lines, folding, limit, logical.emplace_back());
    return logical;
}

TEST(PhysicalLines, EndAtEveryKindOfLineEndAndAreCounted)
{
    for (const std::string end : {"\n", "\r", "\r\n"}) {
        const auto bytes = "a" + end + end + "b" + end + "c";
        std::vector<std::string> found;
        std::size_t number = 0;
        for (PhysicalLines lines(bytes); !lines.atEnd(); lines.advance()) {
            found.emplace_back(lines.line());
            EXPECT_EQ(lines.number(), ++number);
        }
        EXPECT_THAT(found, ElementsAre("a", "", "b", "c")) << testing::PrintToString(bytes);
        // Over several of the stretches that are looked at.
        const std::string far(NextByte::kStretch - 1, 'a');
        std::string many;
        for (int i = 0; i < 4; ++i)
            many += far + end + "b\r" + end;
        std::size_t lines = 0, length = 0;
        for (PhysicalLines each(many); !each.atEnd(); each.advance(), ++lines)
            length += each.line().size();
        EXPECT_EQ(length, 4 * (far.size() + 1)) << testing::PrintToString(end);
        EXPECT_EQ(lines, end == "\n" ? 8U : 12U) << testing::PrintToString(end);
    }
    // A CR that ends the data has no partner to look for.
    PhysicalLines last("a\r");
    last.advance();
    EXPECT_TRUE(last.atEnd());
}

TEST(LogicalLines, GoOnByTheRulesOfTheirVersionAndTransfer)
{
    const struct {
        std::string bytes;
        Folding folding;
        std::vector<std::string> lines;
    } cases[] = {
        {"N:a\r\n b\r\n\tc\r\nX:d", Folding::dropBlank, {"N:abc", "X:d"}},
        {"N:a\n  b", Folding::dropBlank, {"N:a b"}},
        {"N:a\n b\n\tc", Folding::keepBlank, {"N:a b\tc"}},
        // An empty line ends a line.
        {"N:a\n\nX:b", Folding::dropBlank, {"N:a", "", "X:b"}},
        // A soft break, by parameter and by bare word, with a header that is itself folded.
        {"N;ENCODING=QUOTED-PRINTABLE:a=\nb=\n c\nX:d", Folding::keepBlank,
            {"N;ENCODING=QUOTED-PRINTABLE:ab c", "X:d"}},
        {"N;quoted-printable:a=\nb", Folding::dropBlank, {"N;quoted-printable:ab"}},
        {"N;X=1\n ;QUOTED-PRINTABLE:a=\nb", Folding::dropBlank, {"N;X=1;QUOTED-PRINTABLE:ab"}},
        // Not declared: the "=" is text.
        {"NOTE:a=\nTEL:1", Folding::keepBlank, {"NOTE:a=", "TEL:1"}},
        {"NOTE;X=QUOTED-PRINTABLE:a=\nTEL:1", Folding::keepBlank, {"NOTE;X=QUOTED-PRINTABLE:a=", "TEL:1"}},
        // A soft break left open does not swallow the end of the card.
        {"N;QUOTED-PRINTABLE:a=\nend:vcard", Folding::keepBlank, {"N;QUOTED-PRINTABLE:a=", "end:vcard"}},
        // base64: indented, bare, ended by an empty line or by a property.
        {"PHOTO;BASE64:\n QUJD\n REVG\n\nX:d", Folding::keepBlank, {"PHOTO;BASE64: QUJD REVG", "", "X:d"}},
        {"PHOTO;ENCODING=b:QUJD\nREVG\nRw==\nX:d", Folding::dropBlank,
            {"PHOTO;ENCODING=b:QUJDREVGRw==", "X:d"}},
        {"NOTE:QUJD\nREVG", Folding::dropBlank, {"NOTE:QUJD", "REVG"}},
        {"PHOTO;TYPE=B:QUJD\nREVG", Folding::dropBlank, {"PHOTO;TYPE=B:QUJD", "REVG"}},
    };
    for (const auto& [bytes, folding, lines] : cases)
        EXPECT_EQ(logicalLines(bytes, folding), lines) << testing::PrintToString(bytes);
}

TEST(LogicalLines, AreReadToTheirEndBeyondTheLimit)
{
    const auto lines = logicalLines("N:" + std::string(90, 'a') + "\n b\n c\nX:d", Folding::dropBlank, 50);
    EXPECT_THAT(lines, ElementsAre("N:" + std::string(90, 'a'), "X:d"));
}

TEST(WideBytes, AreSeenByTheirMarkOrTheirZeros)
{
    const struct {
        std::string bytes, text;
    } cases[] = {
        {"\xFF\xFE"s + "B\0\xFC\0"s, "Bü"},
        {"\xFE\xFF"s + "\0B\0\xFC"s, "Bü"},
        {"B\0E\0\xFC\0"s, "BEü"},
        {"\0B\0E\0\xFC"s, "BEü"},
        {"\xFF\xFE\0\0B\0\0\0\x00\xF6\x01\0"s, "B\U0001F600"},
        {"\0\0\0B\0\0\0E"s, "BE"},
        {"B\0\0\0E\0\0\0"s, "BE"},
        // A pair, a lone half, and half a unit at the end.
        {"\xFF\xFE\x3D\xD8\x00\xDE"s, "\U0001F600"},
        {"\xFF\xFE\x3D\xD8 \0"s, "\uFFFD "},
        {"\xFF\xFE" + "B\0E"s, "B"},
    };
    for (const auto& [bytes, text] : cases)
        EXPECT_EQ(textOfWideBytes(bytes), text) << testing::PrintToString(bytes);
    for (const auto& plain : {""s, "B"s, "BEGIN:VCARD"s, "\xEF\xBB\xBF" + "BEGIN"s})
        EXPECT_EQ(textOfWideBytes(plain), std::nullopt) << testing::PrintToString(plain);
}

TEST(Marks, AreKnownInAnyCaseAndWithBlanks)
{
    for (const auto* begin : {"BEGIN:VCARD", "begin:vCard", " Begin : VCARD\t"})
        EXPECT_EQ(markOf(begin), Mark::begin) << begin;
    EXPECT_EQ(markOf("end:vcard "), Mark::end);
    for (const auto* none :
        {"", "BEGIN", "BEGIN:VCARDS", "BEGIN:VCALENDAR", "AGENT:BEGIN:VCARD", "ENDE:VCARD"})
        EXPECT_EQ(markOf(none), Mark::none) << none;
}

} // namespace
} // namespace vcard::prepare
