// Cards are split where they begin and end, however that is written.
#include "interchange/vcard/prepare/Cards.h"

#include <gmock/gmock.h>

namespace vcard::prepare {
namespace {

/// Each card as its ending, its first line's number and its lines; text outside as "outside".
std::string split(const std::string& bytes)
{
    constexpr const char* endings[] = {
        "closed", "begunAgain", "nestedOpen", "cutOff", "neverBegun", "tooLarge"};
    std::string all;
    CardReader reader(bytes);
    RawCard card;
    for (auto found = reader.next(card); found != CardReader::Found::nothing; found = reader.next(card)) {
        all += found == CardReader::Found::card ? endings[static_cast<std::size_t>(card.ending)] : "outside";
        all += " " + std::to_string(card.line);
        for (const auto line : card.nested)
            all += " nested " + std::to_string(line);
        for (const auto& line : card.lines)
            all += " [" + std::to_string(line.number) + " " + std::string(card.text(line)) + "]";
        all += "\n";
    }
    return all;
}

TEST(Cards, AreSplitWhenTheirLinesHaveBeenJoined)
{
    const struct {
        const char* bytes;
        const char* cards;
    } cases[] = {
        {"", ""},
        {"\n\nBEGIN:VCARD\n\nN:a\nEND:VCARD\n\nbegin:vcard \nN:b\n c\nX:d\nend : VCARD",
            "closed 3 [5 N:a]\nclosed 8 [9 N:bc] [11 X:d]\n"},
        // The version counts wherever it stands.
        {"BEGIN:VCARD\nN:a\n b\nVERSION:2.1\nEND:VCARD\n", "closed 1 [2 N:a b] [4 VERSION:2.1]\n"},
        // A mark in a folded value is text.
        {"BEGIN:VCARD\nNOTE:a\n END:VCARD\nEND:VCARD\n", "closed 1 [2 NOTE:aEND:VCARD]\n"},
        {"BEGIN:VCARD\nN:a\nBEGIN:VCARD\nN:b\nEND:VCARD\n", "begunAgain 1 [2 N:a]\nclosed 3 [4 N:b]\n"},
        {"BEGIN:VCARD\nN:a\n", "cutOff 1 [2 N:a]\n"},
        {"BEGIN:VCARD\nEND:VCARD\nhello\n\nworld\nBEGIN:VCARD\nN:a\nEND:VCARD\nx",
            "closed 1\noutside 3 [3 hello]\nclosed 6 [7 N:a]\noutside 9 [9 x]\n"},
        // An END needs properties in front of it to have been a card's.
        {"N:a\nX:b\nEND:VCARD\nEND:VCARD\nBEGIN:VCARD\nN:c\nEND:VCARD",
            "neverBegun 1 [1 N:a]\noutside 4 [4 END:VCARD]\nclosed 5 [6 N:c]\n"},
        // Nested cards, on the line of AGENT and behind it, one in another.
        {"BEGIN:VCARD\nN:a\nAGENT:BEGIN:VCARD\nN:x\nAGENT;X=1:\nBEGIN:VCARD\nN:y\nEND:VCARD\nEND:VCARD\nX:"
         "b\nEND:VCARD",
            "closed 1 nested 3 [2 N:a] [10 X:b]\n"},
        {"BEGIN:VCARD\na.agent:\nbegin:vcard\nN:x\nEND:VCARD\nN:a\nEND:VCARD", "closed 1 nested 2 [6 N:a]\n"},
        // A nested card that is never closed takes the END of the card around it, but no other card.
        {"BEGIN:VCARD\nN:a\nAGENT:BEGIN:VCARD\nN:x\nEND:VCARD\n", "nestedOpen 1 nested 3 [2 N:a]\n"},
        {"BEGIN:VCARD\nN:a\nAGENT:BEGIN:VCARD\nN:x\nEND:VCARD\nBEGIN:VCARD\nN:b\nEND:VCARD",
            "begunAgain 1 nested 3 [2 N:a]\nclosed 6 [7 N:b]\n"},
    };
    for (const auto& [bytes, cards] : cases)
        EXPECT_EQ(split(bytes), cards) << bytes;
}

TEST(Cards, BeyondTheirBoundsAreGivenUpAndTheNextIsRead)
{
    const std::string good = "BEGIN:VCARD\nN:b\nEND:VCARD\n";
    std::string lines, folded = "NOTE:";
    for (std::size_t i = 0; i <= kMaximumCardLines; ++i)
        lines += "X:1\n";
    while (folded.size() <= kMaximumCardBytes)
        folded += std::string(1U << 20, 'a') + "\n ";
    for (const auto& large : {lines, folded + "\n"}) {
        const auto cards = split("BEGIN:VCARD\n" + large + "END:VCARD\n" + good);
        EXPECT_TRUE(cards.starts_with("tooLarge 1")) << cards.substr(0, 80);
        EXPECT_TRUE(cards.ends_with(" N:b]\n") && cards.find("\nclosed ") != cards.npos)
            << large.substr(0, 20);
    }
}

} // namespace
} // namespace vcard::prepare
