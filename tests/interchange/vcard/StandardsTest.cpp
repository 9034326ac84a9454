// The examples of the standards: what becomes of each property, in the record, in its note or in the report.
#include "Journey.h"
#include "interchange/Corpus.h"
#include "interchange/vcard/prepare/Preparation.h"
#include "store/RosterWorld.h"

#include <gtest/gtest.h>

#include <utility>

namespace test {
namespace {

using vcard::prepare::CanonicalCard;
using vcard::prepare::Preparation;

/// What is told, without the place.
std::string told(const vcard::prepare::Report& report)
{
    std::string text;
    for (const auto& entry : report.entries()) {
        const std::string line = report.text(entry);
        text += "told: " + line.substr(line.find(": ", line.find(", line ")) + 2) + "\n";
    }
    return text;
}

class Standards : public testing::TestWithParam<std::pair<std::string, std::string>> {
protected:
    static void SetUpTestSuite() { openShared(); }
    void SetUp() override
    {
        roster = ZRRoster::emptyMemoryBackedRoster();
        ASSERT_TRUE(roster);
        roster->setDefaultCountryCode("us");
    }

    std::string outcome(const std::string& card) const
    {
        Preparation preparation(card, {"f", 0, {.cards = true}});
        std::string text;
        for (CanonicalCard canonical; preparation.next(canonical);) {
            if (canonical.group) {
                text += "group: " + canonical.group->name + "\n";
                for (const auto& member : canonical.group->members)
                    text += "member: " + member + "\n";
            }
            for (const auto& person : readAll(canonical.text, roster)) {
                text += PlainCard::of(*person).text();
                person->setImageData(Value());
            }
        }
        return text + told(preparation.report());
    }

    Ref<ZRRoster> roster;
};

TEST_P(Standards, HavePlacesForTheirExamples)
{
    const auto& [file, version] = GetParam();
    const auto examples = casesIn(kTestsOfCards / "vcard/standards" / file);
    EXPECT_GE(examples.size(), 30U);
    for (const auto& example : examples)
        EXPECT_EQ(outcome("BEGIN:VCARD\r\nVERSION:" + version + "\r\n" + example.input + "END:VCARD\r\n"),
            example.expected)
            << example.message();
}

INSTANTIATE_TEST_SUITE_P(All, Standards,
    testing::Values(
        std::pair("rfc6350.txt", "4.0"), std::pair("rfc2426.txt", "3.0"), std::pair("vcard21.txt", "2.1")),
    [](const auto& standard) { return standard.param.first.substr(0, standard.param.first.find('.')); });

} // namespace
} // namespace test
