// What becomes of each line: the canonical card and the report, side by side.
#include "interchange/vcard/prepare/Map.h"

#include "WriterCases.h"

namespace vcard::prepare {
namespace {

TEST(Writer, TurnsLinesIntoWhatTheReaderKnows)
{
    check(std::to_array<Case>({
        {"3.0", "N:b;a\\;c;;;\nFN:a;b,c\nURL:http://x/?a;b,c\n",
            "N:b;a\\;c;;;\nFN:a\\;b,c\nURL:http://x/?a;b,c\n"},
        {"2.1", "N: b;a,c\nORG:Comp,Any\nNOTE:C:\\x\n", "N:b;a\\,c\nORG:Comp\\,Any\nNOTE:C:\\\\x\n"},
        {"2.1", "TEL;HOME;FAX;TYPE=pref;X-SLOT=1;LANGUAGE=de:1\n", "TEL;TYPE=HOME;TYPE=FAX;TYPE=pref:1\n"},
        {"4.0", "TEL;TYPE=\"home,voice\";PREF=1:1\n", "TEL;TYPE=home,voice:1\n"},
        {"3.0", "TEL;TYPE=HOME,TYPE=VOICE;TYPE=\"boat house\":1\n",
            "TEL;TYPE=HOME,VOICE:1\n--a type that is no word: boat house (dropped)\n"},
        {"2.1", "N;CHARSET=ISO-8859-1;ENCODING=QUOTED-PRINTABLE:M=FCller;A=3Bb;c\\;d\n",
            "N:Müller;A\\;b;c\\;d\n"},
        {"2.1", "NOTE;QUOTED-PRINTABLE:a=0D=0Ab\\nc=00\n", "NOTE:a\\nb\\\\nc\n"},
        {"2.1", "NOTE;ENCODING=BASE64:YSxi\n", "NOTE:a\\,b\n"},
        // An address shorter than its street's place would lose the street.
        {"3.0", "ADR:;;Way 1\n", "ADR:;;Way 1;;;;\n"},
        {"3.0", "item1.TEL:1\nitem1.X-LABEL:Boat; house\n", "item1.TEL:1\nitem1.X-ZRLabel:Boat\\; house\n"},
        {"3.0", "a.b.TEL:1\n", "TEL:1\n"},
        // A value that ends like a card's beginning gets a blank, which belongs to no value.
        {"3.0", "NOTE;QUOTED-PRINTABLE:x=42EGIN:VCARD\n", "NOTE:xBEGIN:VCARD \n"},
    }));
}

TEST(Writer, PutsWhatHasNoLineIntoTheNoteOrTellsIt)
{
    check(std::to_array<Case>({
        {"3.0", "NOTE:a\nX-FOO;TYPE=x:b;c\nNOTE:d\n",
            "NOTE:a\\nd\\nX-FOO: b\\;c\n--X-FOO has no place of its own (kept in the note)\n"},
        {"3.0", "ORG:a;b;c;\\;d\n",
            "ORG:a;b\nNOTE:ORG: c\\;\\;d\n"
            "--ORG has more fields than there are places (kept in the note)\n"},
        {"3.0", "ORG:a;b ;c\n",
            "ORG:a;b\nNOTE:ORG: c\n"
            "--ORG has more fields than there are places (kept in the note)\n"},
        {"3.0", "ORG:;;c\n", "NOTE:ORG: c\n--ORG has more fields than there are places (kept in the note)\n"},
        {"3.0", "TITLE:a\nTITLE:b\nTITLE:a\n",
            "TITLE:a\nNOTE:TITLE: b\n--TITLE stands in the card more than once (kept in the note)\n"},
        {"4.0", "ADR;LABEL=\"x^ny\":;;Way 1;;;;\n",
            "ADR:;;Way 1;;;;\nNOTE:LABEL: x\\ny\n--LABEL has no place of its own (kept in the note)\n"},
        {"3.0", "N:a\nUID:1\nKEY;ENCODING=b:QUJD\nLOGO:data:x,y\nSOUND:\n",
            "N:a\n--UID says nothing about the person (dropped)\n--KEY has no place (dropped)\n"
            "--LOGO has no place (dropped)\n--SOUND is empty (dropped)\n"},
        {"3.0", "FN:a\nN:;;;;\nTEL;TYPE=HOME: \nNICKNAME:\n",
            "FN:a\n--N is empty (dropped)\n--TEL is empty (dropped)\n--NICKNAME is empty (dropped)\n"},
        {"3.0", "FN:a\nno colon\nsee here: b\n",
            "FN:a\nNOTE:see here: b\n--a line without a colon: no colon (dropped)\n"
            "--a line that begins with no property name: see here: b (kept in the note)\n"},
        // A property of that name would end the card for the reader.
        {"3.0", "FN:a\na.END:VEVENT\n", "FN:a\n--END says nothing about the person (dropped)\n"},
        {"3.0", "UID:1\n",
            "--UID says nothing about the person (dropped)\n--nothing in the card can be kept: UID:1 "
            "(refused)\n"},
    }));
}

TEST(Writer, KeepsOnePictureAsOneLineOfBase64)
{
    check(std::to_array<Case>({
        {"2.1", "PHOTO;TYPE=JPEG;ENCODING=BASE64:\n QUJD\n REVG\n\nFN:a\n",
            "PHOTO;ENCODING=b;TYPE=JPEG:QUJDREVG\nFN:a\n"},
        {"3.0", "PHOTO;ENCODING=b:QUJD\n  RA==\nFN:a\n", "PHOTO;ENCODING=b:QUJDRA==\nFN:a\n"},
        {"2.1", "PHOTO;GIF;BASE64:QUJD\nREVG\nFN:a\n", "PHOTO;ENCODING=b;TYPE=GIF:QUJDREVG\nFN:a\n"},
        {"3.0", "PHOTO;ENCODING=b:QUJD\nPHOTO;ENCODING=b:REVG\n",
            "PHOTO;ENCODING=b:QUJD\n--PHOTO has no place (dropped)\n"},
        {"3.0", "PHOTO;ENCODING=b:QUJD...\n",
            "PHOTO;ENCODING=b:QUJD\n--PHOTO has characters that are not base64 (repaired)\n"},
        {"3.0", "PHOTO;VALUE=uri:http://x/a;b\n",
            "NOTE:PHOTO: http://x/a\\;b\n"
            "--PHOTO is not in the card, only its address (kept in the note)\n"},
        {"3.0", "FN:a\nPHOTO:none\n", "FN:a\n--PHOTO holds no picture that can be read (dropped)\n"},
        {"4.0", "FN:a\nPHOTO:data:image/png;base64,QUJD\nPHOTO;BASE64:.\n",
            "FN:a\nPHOTO;ENCODING=b;TYPE=PNG:QUJD\n--PHOTO holds no picture that can be read (dropped)\n"},
    }));
}

TEST(Writer, KeepsDaysThatTheReaderUnderstands)
{
    check(std::to_array<Case>({
        {"3.0", "BDAY;VALUE=date:1970-05-01\n", "BDAY:1970-05-01\n"},
        {"3.0", "BDAY:19700501\n", "BDAY:1970-05-01\n"},
        {"3.0", "BDAY:19700501T000000Z\n",
            "BDAY:1970-05-01\n--BDAY has a time of day, kept as a day (repaired)\n"},
        {"4.0", "BDAY:--0501\n", "NOTE:BDAY: --0501\n--BDAY is no whole date (kept in the note)\n"},
        {"3.0", "BDAY:1970-02-30\n", "NOTE:BDAY: 1970-02-30\n--BDAY is no calendar day (kept in the note)\n"},
        {"3.0", "BDAY:1970-05-012\n",
            "NOTE:BDAY: 1970-05-012\n--BDAY is no calendar day (kept in the note)\n"},
        {"3.0", "BDAY:0000-05-01\nX-ZRDATE:2000-01-01\n",
            "X-ZRDATE:2000-01-01\nNOTE:BDAY: 0000-05-01\n--BDAY is no calendar day (kept in the note)\n"},
    }));
}

TEST(Writer, TellsWhatTheCardItselfLacked)
{
    EXPECT_EQ(
        prepared(
            "BEGIN:VCARD\nFN:a\nBEGIN:VCARD\nVERSION:9\nFN:\xFC\nAGENT:BEGIN:VCARD\nEND:VCARD\nEND:VCARD\nx")
            .report,
        "f: card 1, line 1: END:VCARD is missing: FN:a (repaired)\n"
        "f: card 1, line 1: VERSION is missing, read as 3.0 (repaired)\n"
        "f: card 2, line 3: VERSION is unknown, read as 3.0 (repaired)\n"
        "f: card 2, line 6: a card inside the card (dropped)\n"
        "f: card 2, line 3: the character set is not named, read as: windows-1252 (repaired)\n"
        "f: line 9: text outside cards: x (dropped)\n");
}

TEST(Map, FindsTheRowOfAVersionInAnyCaseAndNoOther)
{
    for (const auto& row : mapTable())
        for (const auto& [bit, version] :
            {std::pair{kVersion21, Version::v21}, {kVersion30, Version::v30}, {kVersion40, Version::v40}})
            EXPECT_EQ(rowOf(row.name, version) == &row, (row.versions & bit) != 0) << row.name;
    EXPECT_EQ(rowOf("x-zrlabel", Version::v30), rowOf(kLabelName, Version::missing));
    for (const auto* name : {"", "X", "XX", "NOTES", "X-PHONETIC-MIDDLE-NAMES"})
        EXPECT_EQ(rowOf(name, Version::v30), nullptr) << name;
}

} // namespace
} // namespace vcard::prepare
