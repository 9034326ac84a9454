// What newer versions and other programs write becomes what the reader knows, row by row of the table.
#include "WriterCases.h"

namespace vcard::prepare {
namespace {

TEST(Map, PutsPreferredEntriesFirst)
{
    check(std::to_array<Case>({
        {"4.0", "TEL;PREF=50:1\nEMAIL:a@b.c\nTEL:2\nTEL;PREF=1:3\n", "TEL:3\nEMAIL:a@b.c\nTEL:1\nTEL:2\n"},
        {"2.1", "EMAIL;INTERNET:a@b.c\nEMAIL;PREF:d@e.f\n",
            "EMAIL;TYPE=PREF:d@e.f\nEMAIL;TYPE=INTERNET:a@b.c\n"},
        // The type stays in the line, so that it stands above a rank, which does not.
        {"4.0", "TEL;PREF=1:1\nTEL;TYPE=\"home,pref\":2\n", "TEL;TYPE=home,pref:2\nTEL:1\n"},
        {"3.0", "ADD;TYPE=HOME:a;b;c;;;\nADR;TYPE=pref:;;d;;;;\n",
            "ADR;TYPE=pref:;;d;;;;\nADD;TYPE=HOME:a;b;c;;;\n"},
        {"4.0", "X-JABBER:a\nIMPP;PREF=2:xmpp:b\nIMPP;PREF=x:xmpp:c\n",
            "X-JABBER:b\nX-JABBER:a\nX-JABBER:c\n"},
        {"4.0", "LANG;PREF=2:fr\nLANG;PREF=1:en\nTITLE;PREF=1:b\n",
            "TITLE:b\nNOTE:LANG: fr\\nLANG: en\n--LANG has no place of its own (kept in the note)\n"
            "--LANG has no place of its own (kept in the note)\n"},
    }));
}

TEST(Map, ReadsAddressesOfTelephonesMailAndMessages)
{
    check(std::to_array<Case>({
        {"4.0", "TEL;VALUE=uri;TYPE=\"voice,home\":tel:+44-555;ext=5%305\n",
            "TEL;TYPE=voice,home:+44-555 ext. 505\n"},
        {"4.0", "TEL;VALUE=uri:tel:7042;phone-context=x.com\n",
            "TEL:7042\nNOTE:TEL: phone-context=x.com\n--TEL has no place of its own (kept in the note)\n"},
        {"3.0", "TEL;VALUE=URI:+1 234\nTEL;TYPE=mobile,voice:TEL:tel:5\n",
            "TEL:+1 234\nTEL;TYPE=CELL,voice:5\n"},
        {"4.0", "TEL:tel:\nEMAIL:mailto:a%40b@c.d\n", "EMAIL:a@b@c.d\n--TEL is empty (dropped)\n"},
        {"4.0", "IMPP;TYPE=home:aim:a b\nIMPP:XMPP:a%20b@c.d\nIMPP:ymsgr:y\nIMPP:msnim:m\nIMPP:icq:1\n",
            "X-AIM;TYPE=home:a b\nX-JABBER:a b@c.d\nX-YAHOO:y\nX-MSN:m\nX-ICQ:1\n"},
        {"4.0", "IMPP;TYPE=work:skype:a%20b\nX-FOO.TEL:1\nIMPP:foo:x;y\nIMPP:ana\nIMPP:sip:\n",
            "item1.URL;TYPE=work:skype:a%20b\nitem1.X-ZRLabel:Skype\nX-FOO.TEL:1\nitem2.URL:foo:x;y\n"
            "item2.X-ZRLabel:foo\nNOTE:IMPP: ana\n--IMPP has no place of its own (kept in the note)\n"
            "--IMPP is empty (dropped)\n"},
        {"3.0", "ITEM7.X-SKYPE:skype:ana\nX-GTALK:a@b.c\nitem7.TEL:1\nX-SIP: \n",
            "item8.URL:skype:ana\nitem8.X-ZRLabel:Skype\nitem9.X-JABBER:a@b.c\nitem9.X-ZRLabel:Google Talk\n"
            "item7.TEL:1\n--X-SIP is empty (dropped)\n"},
        // Who has given a label keeps it.
        {"3.0", "a.X-SKYPE:ana\na.X-LABEL:Boat\n", "a.URL:skype:ana\na.X-ZRLabel:Boat\n"},
    }));
}

TEST(Map, ReadsRelationsAndDates)
{
    check(std::to_array<Case>({
        {"4.0", "RELATED;TYPE=friend;VALUE=text:Bo Ek\nRELATED;TYPE=co-worker:Jo\nRELATED:Al\n",
            "item1.X-ZRRELATEDNAMES:Bo Ek\nitem1.X-ZRLabel:_$!<Friend>!$_\nitem2.X-ZRRELATEDNAMES:Jo\n"
            "item2.X-ZRLabel:co-worker\nX-ZRRELATEDNAMES:Al\n"},
        {"4.0", "RELATED;TYPE=friend:urn:uuid:f81d4fae\n",
            "NOTE:RELATED: urn:uuid:f81d4fae\n--RELATED has no place of its own (kept in the note)\n"},
        {"3.0", "X-SPOUSE;TYPE=x:Jo\nX-EVOLUTION-MANAGER:Bo\nX-MS-ASSISTANT:\n",
            "item1.X-ZRRELATEDNAMES:Jo\nitem1.X-ZRLabel:_$!<Spouse>!$_\nitem2.X-ZRRELATEDNAMES:Bo\n"
            "item2.X-ZRLabel:_$!<Manager>!$_\n--X-MS-ASSISTANT is empty (dropped)\n"},
        {"4.0", "ANNIVERSARY:20090808T1430-0500\nBDAY:19960415\n",
            "item1.X-ZRDATE:2009-08-08\nitem1.X-ZRLabel:_$!<Anniversary>!$_\nBDAY:1996-04-15\n"
            "--ANNIVERSARY has a time of day, kept as a day (repaired)\n"},
        {"4.0", "BDAY:--0203\nANNIVERSARY:1996-04\nX-ANNIVERSARY:soon\n",
            "NOTE:BDAY: --0203\\nANNIVERSARY: 1996-04\\nX-ANNIVERSARY: soon\n"
            "--BDAY is no whole date (kept in the note)\n--ANNIVERSARY is no whole date (kept in the note)\n"
            "--X-ANNIVERSARY is no calendar day (kept in the note)\n"},
        // What is preferred stays so on its way to another name; a text may look like an address.
        {"4.0", "X-ZRDATE:2001-01-01\nANNIVERSARY;PREF=1:20020202\n",
            "item1.X-ZRDATE:2002-02-02\nitem1.X-ZRLabel:_$!<Anniversary>!$_\nX-ZRDATE:2001-01-01\n"},
        {"4.0", "RELATED;TYPE=friend:a\nRELATED;PREF=1;VALUE=text:Bo:Ek\n",
            "X-ZRRELATEDNAMES:Bo:Ek\nitem1.X-ZRRELATEDNAMES:a\nitem1.X-ZRLabel:_$!<Friend>!$_\n"},
        {"4.0", "BDAY;VALUE=text:circa 1800\n",
            "NOTE:BDAY: circa 1800\n--BDAY is no calendar day (kept in the note)\n"},
    }));
}

TEST(Map, MakesNamesWhole)
{
    const std::string taken = "--FN is the name, as N is missing or empty (repaired)\n";
    const struct {
        const char *text, *name;
    } names[] = {{"Frank Dawson", "Dawson;Frank;;;"},
        {"Mr. John Q. Public\\, Esq.", "Public;John;Q.;Mr.;Esq."},
        {"Dr. Prof. Rene van der Harten PhD", "van der Harten;Rene;;Dr. Prof.;PhD"},
        {"Lima, Ana Maria", "Lima;Ana;Maria;;"}, {"Doe, John, M.D.", "Doe;John;;;M.D."},
        {"Yo Yo Ma", "Ma;Yo;Yo;;"}, {"Dr. Lima", "Lima;;;Dr.;"}, {"a\\nb", "b;a;;;"}};
    for (const auto& [text, name] : names)
        EXPECT_EQ(outcome("3.0", "FN:" + std::string(text) + "\n"),
            "FN:" + std::string(text) + "\nN:" + name + "\n" + taken);
    check(std::to_array<Case>({
        {"3.0", "FN:Ana\n", "FN:Ana\n"},
        {"3.0", "N:;;;;\nFN:Ana\nORG:Acme\n",
            "FN:Ana\nN:Ana;;;;\nORG:Acme\n--N is empty (dropped)\n--FN is the name, as N is missing or empty "
            "(repaired)\n"},
        {"3.0", "FN:Acme\\, Inc.\nORG:Acme, Inc.;Boats\n", "FN:Acme\\, Inc.\nORG:Acme, Inc.;Boats\n"},
        {"3.0", "FN:Dr. ana (Lima)\nN:Lima;Ana;;Dr;\n", "FN:Dr. ana (Lima)\nN:Lima;Ana;;Dr;\n"},
        {"3.0", "FN:Big, Al\nN:Lima;Alan\n",
            "FN:Big, Al\nNICKNAME:Big\\, Al\nN:Lima;Alan\n--FN differs from the name, kept as the nickname "
            "(repaired)\n"},
        {"3.0", "FN:Big Al\nN:Lima;Alan\nNICKNAME:Lala\n",
            "N:Lima;Alan\nNICKNAME:Lala\nNOTE:FN: Big Al\n--FN stands in the card more than once (kept in "
            "the "
            "note)\n"},
        {"4.0", "N:Stevenson,X;John;Philip,Paul;Dr.,Prof.;Jr.,M.D.\n",
            "N:Stevenson X;John;Philip Paul;Dr. Prof.;Jr.\\, M.D.\n"},
        {"3.0", "N:Public\\, Jr., x;J\nNICKNAME:Jim,Jimmie\nNICKNAME:Bob\n",
            "N:Public\\, Jr.\\, x;J\nNICKNAME:Jim\\, Jimmie\\, Bob\n"},
        {"3.0", "N:;;Rita;;\nFN:a@b.c\nEMAIL:a@b.c\n", "N:;;Rita;;\nFN:a@b.c\nEMAIL:a@b.c\n"},
        {"2.1", "N:Lima,x;A\nNICKNAME:Jim,Jo\n", "N:Lima\\,x;A\nNICKNAME:Jim\\,Jo\n"},
        // Values that are empty leave no blanks at the ends.
        {"3.0", "N:,b;a\xC3\x93,,\nNICKNAME:,c,\n", "N:b;a\xC3\x93\nNICKNAME:\\, c\\,\n"},
    }));
}

TEST(Map, ReadsWhatKindOfCardItIs)
{
    check(std::to_array<Case>({
        {"4.0", "KIND:org\nFN:ABC Marketing\n", "FN:ABC Marketing\nORG:ABC Marketing\nX-ZRShowAs:COMPANY\n"},
        {"4.0", "KIND:org\nFN:ABC Boats\nORG:ABC\\, Inc.;Sales\n",
            "FN:ABC Boats\nNICKNAME:ABC Boats\nORG:ABC\\, Inc.;Sales\nX-ZRShowAs:COMPANY\n"
            "--FN differs from the name, kept as the nickname (repaired)\n"},
        {"4.0", "KIND:org\nN:Lima;;;;\nFN:Lima\n", "N:Lima;;;;\nFN:Lima\nX-ZRShowAs:COMPANY\n"},
        {"4.0", "KIND:individual\nFN:a\n", "FN:a\n--KIND says nothing about the person (dropped)\n"},
        {"4.0", "KIND:group\nFN:The Does\nMEMBER:urn:uuid:1\n",
            "FN:The Does\nN:The Does;;;;\nNOTE:KIND: group\\nMEMBER: urn:uuid:1\n"
            "--KIND has no place of its own (kept in the note)\n--MEMBER has no place of its own (kept in "
            "the "
            "note)\n--FN is the name, as N is missing or empty (repaired)\n"},
    }));
}

TEST(Map, KeepsOneOfSeveralWaysToSayIt)
{
    check(std::to_array<Case>({
        {"4.0", "N;ALTID=1:a;b\nN;ALTID=1:c;d\nTEL;ALTID=1:1\nTEL;ALTID=1:2\nTEL;ALTID=2:3\n",
            "N:a;b\nTEL:1\nTEL:3\nNOTE:N: c\\;d\\nTEL: 2\n--N says in another way what another line says "
            "(kept in "
            "the note)\n--TEL says in another way what another line says (kept in the note)\n"},
        {"4.0", "PHOTO;ALTID=1:data:image/png;base64,QUJD\nPHOTO;ALTID=1:data:image/gif;base64,QUJD\n",
            "PHOTO;ENCODING=b;TYPE=PNG:QUJD\n--PHOTO has no place (dropped)\n"},
    }));
}

TEST(Map, PutsWhereAndWhatIntoTheNote)
{
    check(std::to_array<Case>({
        {"2.1", "FN:a\nGEO:37.24,-17.87\nGEO:x,y\n",
            "FN:a\nNOTE:GEO: -17.87\\;37.24\\nGEO: x\\,y\n--GEO has no place of its own (kept in the note)\n"
            "--GEO has no place of its own (kept in the note)\n"},
        {"3.0", "GEO:37.38;-122.08\nTZ:-05:00\n",
            "NOTE:GEO: 37.38\\;-122.08\\nTZ: -05:00\n--GEO has no place of its own (kept in the note)\n"
            "--TZ has no place of its own (kept in the note)\n"},
        {"4.0", "ADR;GEO=\"geo:1,2\";LABEL=\"^'a^'^nb^^\":;;c;;;;\nN;SORT-AS=\"x\":y\n",
            "ADR:;;c;;;;\nN:y\nNOTE:GEO: geo:1,2\\nLABEL: \"a\"\\nb^\n--GEO has no place of its own (kept in "
            "the "
            "note)\n--LABEL has no place of its own (kept in the note)\n--SORT-AS says nothing about the "
            "person "
            "(dropped)\n"},
    }));
}

TEST(Map, GivesAddressesTheCodeOfTheirCountry)
{
    check(std::to_array<Case>({
        {"3.0", "ADR:;;a;;;;U.S.A.\nb.ADR:;;a;;;;Österreich\nitem3.ADR:;;a;;;;Land\n",
            "item4.ADR:;;a;;;;U.S.A.\nitem4.X-ZRADR:us\nb.ADR:;;a;;;;Österreich\nb.X-ZRADR:at\n"
            "item3.ADR:;;a;;;;Land\n"},
        {"3.0", "a.ADR:;;a;;;;Germany\na.X-ZRADR:ch\n", "a.ADR:;;a;;;;Germany\na.X-ZRADR:ch\n"},
        {"3.0", "FN:a\nX-ZRADR:ch\n", "FN:a\n--X-ZRADR has no place (dropped)\n"},
    }));
}

TEST(Map, KeepsLabelsOfEntriesAlone)
{
    check(std::to_array<Case>({
        {"3.0", "a.ADD:b;c;;;;\na.X-LABEL:Boat\nb.TEL:\nb.X-LABEL:x\n",
            "a.ADD:b;c;;;;\nNOTE:X-LABEL: Boat\n--TEL is empty (dropped)\n"
            "--X-LABEL has no place of its own (kept in the note)\n--X-ZRLabel is empty (dropped)\n"},
        {"3.0", "a.X-LABEL:Boat\na.TEL:1\na.X-LABEL:Ship\nb.X-ZRLabel:House\nb.NOTE:n\n",
            "a.X-ZRLabel:Boat\na.TEL:1\nNOTE:n\\nX-LABEL: Ship\\nX-LABEL: House\n--X-LABEL has no place of "
            "its own "
            "(kept in the note)\n--X-LABEL has no place of its own (kept in the note)\n"},
    }));
}

TEST(Map, MakesGroupsWhereTheyAreAskedFor)
{
    const auto bytes = card("4.0", "MEMBER:urn:uuid:1\nFN:The Does\nKIND:group\nMEMBER:mailto:a@b.c\nTEL:1\n")
        + card("4.0", "UID:urn:uuid:1\nFN:a\nCATEGORIES:b\\,c,d\nCATEGORIES:d, ,e\n")
        + card("4.0", "KIND:group\nTEL:1\n");
    Preparation preparation(bytes, {"f", 0, {.cards = true, .categories = true}});
    CanonicalCard card;
    ASSERT_TRUE(preparation.next(card));
    ASSERT_TRUE(card.group && !card.refusal);
    EXPECT_EQ(card.group->name, "The Does");
    EXPECT_THAT(card.group->members, testing::ElementsAre("urn:uuid:1", "mailto:a@b.c"));
    EXPECT_EQ(card.text, "");
    ASSERT_TRUE(preparation.next(card));
    EXPECT_FALSE(card.group);
    EXPECT_EQ(card.uid, "urn:uuid:1");
    EXPECT_THAT(card.categories, testing::ElementsAre("b,c", "d", "d", "e"));
    EXPECT_EQ(card.text.find("NOTE"), card.text.npos);
    ASSERT_TRUE(preparation.next(card));
    EXPECT_EQ(card.refusal, Finding::cardEmpty);
    EXPECT_EQ(preparation.report().text(),
        "f: card 1, line 1: TEL has no place (dropped)\n"
        "f: card 2, line 11: UID says nothing about the person (dropped)\n"
        "f: card 3, line 16: TEL has no place (dropped)\n"
        "f: card 3, line 16: nothing in the card can be kept: KIND:group (refused)\n");
}

} // namespace
} // namespace vcard::prepare
