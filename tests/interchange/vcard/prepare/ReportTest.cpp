// What was done to a card is told, within bounds.
#include "interchange/vcard/prepare/Report.h"

#include <gmock/gmock.h>

namespace vcard::prepare {
namespace {

TEST(Report, HoldsAThousandOfEachFindingAndCountsTheRest)
{
    Report report("people.vcf");
    for (std::size_t card = 1; card <= Report::kMaximumEntries + 2; ++card)
        report.add(card, 2 * card, Finding::bookkeeping, "UID");
    // A flood of one finding leaves room for the others.
    report.add(7, 8, Finding::cardCutOff, "FN:a");
    EXPECT_EQ(report.entries().size(), Report::kMaximumEntries + 1);
    EXPECT_EQ(report.count(Action::dropped), Report::kMaximumEntries + 2);
    EXPECT_EQ(report.count(Action::refused), 1U);
    EXPECT_TRUE(
        report.text().ends_with("people.vcf: card 7, line 8: the data end inside the card: FN:a (refused)\n"
                                "people.vcf: 2 more: says nothing about the person (dropped)\n"))
        << report.text().substr(report.text().size() - 300);
}

TEST(Report, ShowsForeignTextAsOnePrintableLine)
{
    Report report("f");
    report.add(0, 1, Finding::textOutside, "a\x1B[1m\xFF\nb" + std::string(100, 'c'));
    const auto text = report.text();
    EXPECT_TRUE(text.starts_with("f: line 1: text outside cards: a [1m\uFFFD bccc")) << text;
    EXPECT_TRUE(text.ends_with("ccc… (dropped)\n")) << text;
    EXPECT_LT(text.size(), 160U);
}

} // namespace
} // namespace vcard::prepare
