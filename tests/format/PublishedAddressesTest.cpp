// Addresses come out as the postal services of their countries publish them, punctuation aside.
#include "AddressWorld.h"

#include "format/AddressDisplay.h"
#include "format/ZRAddressFunctions.h"

#include <gmock/gmock.h>

namespace test {

namespace {

struct Example {
    const char *code, *street, *city, *state, *zip, *country;
    /// All that is written, with " / " between the lines.
    const char* written;
};

constexpr Example kExamples[] = {
    {"ar", "Sarmiento 151", "CIUDAD AUTONOMA DE BUENOS AIRES", "BUENOS AIRES", "C1000ZAA", "ARGENTINA",
        "Sarmiento 151 / C1000ZAA CIUDAD AUTONOMA DE BUENOS AIRES / BUENOS AIRES / ARGENTINA"},
    {"at", "Pazmaniteng 24-9", "Wien", "", "1020", "AUSTRIA", "Pazmaniteng 24-9 / 1020 Wien / AUSTRIA"},
    {"au", "111 Bourke Street", "MELBOURNE", "VIC", "3000", "AUSTRALIA",
        "111 Bourke Street / MELBOURNE VIC 3000 / AUSTRALIA"},
    {"be", "Rue du Diamant 215", "VERVIERS", "", "4800", "BELGIUM",
        "Rue du Diamant 215 / 4800 VERVIERS / BELGIUM"},
    {"bg", "ul. Gourko 6", "SOFIA", "", "1000", "BULGARIA", "ul. Gourko 6 / 1000 SOFIA / BULGARIA"},
    {"br", "Boulevard das Flores 255", "SALVADOR", "BA", "40301-110", "BRAZIL",
        "Boulevard das Flores 255 / SALVADOR BA / 40301-110 / BRAZIL"},
    {"ca", "10-123 1/2 MAIN STREET NW", "MONTREAL", "QC", "H3Z 2Y7", "CANADA",
        "10-123 1/2 MAIN STREET NW / MONTREAL QC H3Z 2Y7 / CANADA"},
    {"ch", "Viktoriastrasse 21", "Bern", "", "3030", "SWITZERLAND",
        "Viktoriastrasse 21 / 3030 Bern / SWITZERLAND"},
    {"cn", "金融大街甲3号", "西城区", "北京市", "100808", "中国",
        "中国 / 100808 / 北京市 西城区 / 金融大街甲3号"},
    {"cz", "Politických vězňů 909/4", "Praha 1", "", "110 00", "CZECH REPUBLIC",
        "Politických vězňů 909/4 / 110 00 Praha 1 / CZECH REPUBLIC"},
    {"de", "Lange Straße 12", "Hamburg", "", "22087", "GERMANY", "Lange Straße 12 / 22087 Hamburg / GERMANY"},
    {"dk", "Kastanievej 15, 2. th.", "SKANDERBORG", "", "8660", "DENMARK",
        "Kastanievej 15, 2. th. / 8660 SKANDERBORG / DENMARK"},
    {"ee", "Tähe 3", "Tartu", "TARTUMAA", "51003", "ESTONIA", "Tähe 3 / 51003 Tartu TARTUMAA / ESTONIA"},
    {"es", "Calle Mayor 5", "El Campello", "Alicante", "03560", "SPAIN",
        "Calle Mayor 5 / 03560 El Campello Alicante / SPAIN"},
    {"fi", "Mäkelänkatu 25 B 13", "HELSINKI", "", "00550", "FINLAND",
        "Mäkelänkatu 25 B 13 / 00550 HELSINKI / FINLAND"},
    {"fr", "25 RUE DE L EGLISE", "MIOS", "", "33380", "FRANCE", "25 RUE DE L EGLISE / 33380 MIOS / FRANCE"},
    {"gb", "49 Featherstone Street", "LONDON", "", "EC1Y 8SY", "UNITED KINGDOM",
        "49 Featherstone Street / LONDON / EC1Y 8SY / UNITED KINGDOM"},
    {"gr", "Aiolou 100", "ATHINA", "", "101 88", "GREECE", "Aiolou 100 / 101 88 ATHINA / GREECE"},
    {"hk", "彌敦道10號", "尖沙咀", "九龍", "", "香港", "香港 / 九龍 / 尖沙咀 / 彌敦道10號"},
    {"hr", "Jurišićeva 13", "ZAGREB", "", "10000", "CROATIA", "Jurišićeva 13 / 10000 ZAGREB / CROATIA"},
    {"hu", "Honvéd utca 13-15", "BUDAPEST", "", "1055", "HUNGARY",
        "BUDAPEST / Honvéd utca 13-15 / 1055 / HUNGARY"},
    {"ie", "24 O'Connell Street", "LIMERICK", "Co. Limerick", "V94 T9PX", "IRELAND",
        "24 O'Connell Street / LIMERICK / Co. Limerick / V94 T9PX / IRELAND"},
    {"il", "16 Jaffa Street", "JERUSALEM", "", "9414219", "ISRAEL",
        "16 Jaffa Street / JERUSALEM 9414219 / ISRAEL"},
    {"in", "Dak Bhawan\nSansad Marg", "NEW DELHI", "DELHI", "110001", "INDIA",
        "Dak Bhawan / Sansad Marg / NEW DELHI 110001 / DELHI / INDIA"},
    {"is", "Suðurgata 10", "REYKJAVÍK", "", "101", "ICELAND", "Suðurgata 10 / 101 REYKJAVÍK / ICELAND"},
    {"it", "Viale Europa 190", "ROMA", "RM", "00144", "ITALY", "Viale Europa 190 / 00144 ROMA RM / ITALY"},
    {"jp", "丸の内2丁目7番2号", "千代田区", "東京都", "100-8994", "日本",
        "日本 / 100-8994 / 東京都 千代田区 / 丸の内2丁目7番2号"},
    {"ke", "P.O. Box 30500", "NAIROBI", "", "00100", "KENYA", "P.O. Box 30500 / NAIROBI / 00100 / KENYA"},
    {"kr", "종로 6", "종로구", "서울특별시", "03187", "대한민국",
        "대한민국 / 서울특별시 종로구 / 종로 6 / 03187"},
    {"lu", "71, route de Longwy", "PETANGE", "", "4750", "LUXEMBOURG",
        "71, route de Longwy / 4750 PETANGE / LUXEMBOURG"},
    {"lv", "Krišjāņa Barona iela 10-5", "Rīga", "", "LV-1011", "LATVIA",
        "Krišjāņa Barona iela 10-5 / Rīga LV-1011 / LATVIA"},
    {"mx", "Super Manzana 3-403\nPuerto Juárez", "CANCÚN", "Q. ROO", "77520", "MEXICO",
        "Super Manzana 3-403 / Puerto Juárez / 77520 CANCÚN Q. ROO / MEXICO"},
    {"nl", "Morra 4", "DRACHTEN", "", "9204 KH", "NETHERLANDS", "Morra 4 / 9204 KH DRACHTEN / NETHERLANDS"},
    {"no", "Biskop Gunnerus' gate 14", "OSLO", "", "0185", "NORWAY",
        "Biskop Gunnerus' gate 14 / 0185 OSLO / NORWAY"},
    {"nz", "7 Waterloo Quay", "Wellington", "", "6011", "NEW ZEALAND",
        "7 Waterloo Quay / Wellington 6011 / NEW ZEALAND"},
    {"pl", "ul. Bosmańska 1", "GDYNIA", "", "81-116", "POLAND", "ul. Bosmańska 1 / 81-116 GDYNIA / POLAND"},
    {"pt", "Rua Garrett 15", "LISBOA", "", "1200-203", "PORTUGAL",
        "Rua Garrett 15 / 1200-203 LISBOA / PORTUGAL"},
    {"ru", "ul. Lesnaya d. 5", "pos. LESNOE", "VORONEJSKAYA obl.", "247112", "RUSSIA",
        "ul. Lesnaya d. 5 / pos. LESNOE / VORONEJSKAYA obl. / 247112 / RUSSIA"},
    {"se", "Mäster Samuelsgatan 70", "STOCKHOLM", "", "111 21", "SWEDEN",
        "Mäster Samuelsgatan 70 / 111 21 STOCKHOLM / SWEDEN"},
    {"sg", "16 Sandilands Road", "SINGAPORE", "", "546080", "REPUBLIC OF SINGAPORE",
        "16 Sandilands Road / SINGAPORE 546080 / REPUBLIC OF SINGAPORE"},
    {"si", "Slomškov trg 10", "MARIBOR", "", "2500", "SLOVENIA", "Slomškov trg 10 / 2500 MARIBOR / SLOVENIA"},
    {"sk", "Partizánska cesta 9", "BANSKÁ BYSTRICA 1", "", "975 99", "SLOVAKIA",
        "Partizánska cesta 9 / 975 99 BANSKÁ BYSTRICA 1 / SLOVAKIA"},
    {"tr", "Cebeci Caddesi 10", "ULUS", "ANKARA", "06101", "TURKEY",
        "Cebeci Caddesi 10 / 06101 ULUS ANKARA / TURKEY"},
    {"tw", "金山南路2段55號", "大安區", "臺北市", "106409", "臺灣",
        "臺灣 / 106409 / 臺北市 大安區 / 金山南路2段55號"},
    {"us", "1960 W CHELSEA AVE STE 2006", "ALLENTOWN", "PA", "18104", "UNITED STATES",
        "1960 W CHELSEA AVE STE 2006 / ALLENTOWN PA 18104 / UNITED STATES"},
    {"za", "497 Sophie de Bruyn Street", "PRETORIA", "", "0002", "SOUTH AFRICA",
        "497 Sophie de Bruyn Street / PRETORIA / 0002 / SOUTH AFRICA"},
};
static_assert(std::size(kExamples) >= 40);

std::string joined(const std::vector<std::string>& lines)
{
    std::string text;
    for (const auto& line : lines)
        text += (text.empty() ? "" : " / ") + line;
    return text;
}

std::string inOneLine(std::string text)
{
    for (auto at = text.find('\n'); at != std::string::npos; at = text.find('\n', at))
        text.replace(at, 1, " / ");
    return text;
}

} // namespace

TEST_F(AddressTest, StandsAsItsPostalServicePublishesIt)
{
    for (const auto& e : kExamples) {
        const Value value = address({{"Street", e.street}, {"City", e.city}, {"State", e.state},
            {"ZIP", e.zip}, {"Country", e.country}, {"CountryCode", e.code}});
        EXPECT_EQ(
            inOneLine(visible(std::string(ZRCreateFormattedAddressFromDictionary(*roster, value).asText()))),
            e.written);
        EXPECT_EQ(joined(displayLinesOfAddress(*roster, value)), e.written);
    }
}

TEST_F(AddressTest, IsShownWithoutGapsAndWithAllThatIsStored)
{
    const struct {
        Value address;
        const char* shown;
    } cases[] = {
        {address({{"City", "Berlin"}, {"CountryCode", "de"}}), "Berlin / Germany"},
        {address({{"Street", " A 1 \n\n  B 2\t"}, {"ZIP", "\u200E10115 "}, {"CountryCode", "de"}}),
            "A 1 / B 2 / 10115 / Germany"},
        // The country's format has no place for a state, and the state is not lost.
        {address({{"City", "Berlin"}, {"State", "Berlin-Mitte"}, {"CountryCode", "DE"}}),
            "Berlin / Berlin-Mitte / Germany"},
        {address({{"City", "Macau"}, {"State", "Taipa"}, {"CountryCode", "mo"}}),
            "Macao SAR China / Macau / Taipa"},
        // At home nobody writes the country, and what is written stands.
        {address({{"City", "Austin"}, {"State", "TX"}, {"CountryCode", "us"}}), "Austin TX"},
        {address({{"City", "Austin"}, {"Country", "Texas!"}, {"CountryCode", "us"}}), "Austin / Texas!"},
        {address({{"City", "Austin"}, {"CountryCode", "xx"}}), "Austin"},
        {address({{"City", "Austin"}}), "Austin"},
        {address({{"CountryCode", "jp"}}), "Japan"},
        {address({}), ""},
        {Value(), ""},
    };
    for (const auto& c : cases)
        EXPECT_EQ(joined(displayLinesOfAddress(*roster, c.address)), c.shown) << c.address.description();
}

} // namespace test
