// What damaged data does to the reader: nothing but answers.
#include "CardText.h"

#include <gtest/gtest.h>

#include <random>

using namespace cardtext;
using platform::ByteOrder;

namespace {

/// A card with something of everything; quoted-printable reads bytes, so that in UTF-16 it makes a mess.
std::string fullCard()
{
    return card("N:Lima;Ana;Rosa;Dr.;\nFN:Ana Lima\nORG:Acme;Sales\nitem1.TEL;TYPE=HOME,FAX:+1 555\n"
                "item1.X-ZRLabel:Boat\\, house\nADR;WORK;QUOTED-PRINTABLE:;;2 Elm=0D=0ASt;T=\n=C3=BC;;;\n"
                "URL:http://example.com/a b\nBDAY:1970-05-01\nX-AIM:a;b\nNOTE;CHARSET=UTF-8:one\n  two\n"
                "PHOTO;ENCODING=b:QUJD\n REVG=\nX-UNKNOWN:x\nTEL;A\\:B\nTEL;TYPE=HOME,:2\nTITLE:\\:\n"
                "NICKNAME;QUOTED-PRINTABLE:=4\n1\nPHOTO;BASE64:QUJD\n");
}

/// Reads all cards of the data; each attempt must move on.
int cardsIn(std::string_view data)
{
    const auto parser = ZRVCardParser::initWithData(data);
    int cards = 0;
    for (std::size_t attempts = 0; parser && !parser->atEnd(); ++attempts) {
        Setter setter;
        cards += parser->importToValueSetter(setter);
        if (attempts > data.size()) {
            ADD_FAILURE() << "no progress in " << testing::PrintToString(data);
            break;
        }
    }
    return cards;
}

TEST(Garbage, CutOffAnywhereIsNoCard)
{
    const std::string wide = utf16(
        card("N:Lima;Ana\nTEL;TYPE=HOME:1\nPHOTO;BASE64:QUJD\n REVG\nNOTE:a\\nb\n c\n"), ByteOrder::little);
    for (const auto& data : {fullCard(), wide}) {
        EXPECT_EQ(cardsIn(data), 1);
        const std::size_t closing = data.size() - (data == wide ? 4 : 2);
        for (std::size_t length = 0; length < closing; ++length)
            EXPECT_EQ(cardsIn(std::string_view(data).substr(0, length)), 0) << length;
    }
}

TEST(Garbage, InACardIsSurvived)
{
    const std::string whole = fullCard();
    std::mt19937 random(7);
    for (int round = 0; round < 3000; ++round) {
        std::string damaged = whole;
        const auto pick = [&](std::size_t below) {
            return std::uniform_int_distribution<std::size_t>(0, below - 1)(random);
        };
        for (std::size_t changes = 1 + pick(4); changes > 0; --changes) {
            const std::size_t at = pick(damaged.size());
            switch (pick(3)) {
            case 0:
                damaged[at] = static_cast<char>(pick(256));
                break;
            case 1:
                damaged.erase(at, pick(8));
                break;
            default:
                damaged.insert(at, 1, "\0\r\n ;:=,.\\"[pick(10)]);
            }
        }
        cardsIn(damaged);
        cardsIn(utf16(damaged, ByteOrder::big) + damaged.substr(0, pick(3)));
    }
}

TEST(Garbage, OfAllLengthsAndBytesIsSurvived)
{
    std::mt19937 random(11);
    for (std::size_t length = 0; length < 400; ++length) {
        std::string bytes(length, '\0');
        for (char& byte : bytes)
            byte = static_cast<char>(random());
        cardsIn(bytes);
        cardsIn("BEGIN:VCARD\n" + bytes);
        cardsIn(std::string(length, '\0'));
    }
}

// Each of these once made, or could make, the reader take time that grows with the square of the data: hours,
// where it takes well below a second with sanitizers.
TEST(Garbage, OfAMegabyteIsReadInLinearTime)
{
    const auto repeated = [](std::string_view piece) {
        std::string text = "BEGIN:VCARD\nVERSION:3.0\n";
        while (text.size() < 1'000'000)
            text += piece;
        return text + "\nEND:VCARD\n";
    };
    for (const char* piece :
        {"a:\\\n", "A=\n ", "A=\r\n A=", "NOTE;QUOTED-PRINTABLE:=5C\n", ";TYPE=HOME", ";a=b",
            "TEL;TYPE=HOME,", "X-AIM:a;", "\n\n\n\n", "PHOTO;BASE64:\n", " \n", "item1.X-ZRLabel:a\n",
            "x:y\n", "NOTE:a\n b", "BEGIN:VCARD\n", "END:VCARD\nBEGIN:VCARD\n", "A;b=\n", "A;b:\n\n "})
        cardsIn(repeated(piece));
    std::string parameters = "TEL", addresses = "X-AIM:";
    for (int number = 0; number < 100000; ++number)
        parameters += ";p" + std::to_string(number);
    for (int number = 0; number < 200000; ++number)
        addresses += std::to_string(number) + ";";
    EXPECT_EQ(cardsIn(card(parameters + ":1\nTEL:2\n" + addresses + "\n")), 1);
}

} // namespace
