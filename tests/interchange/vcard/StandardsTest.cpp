// The examples of the standards: what becomes of each property, in the record, in its note or in the report.
#include "Journey.h"
#include "interchange/vcard/prepare/Preparation.h"
#include "store/RosterWorld.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <sstream>

namespace test {
namespace {

using vcard::prepare::CanonicalCard;
using vcard::prepare::Preparation;

struct Example {
    std::string title, lines, outcome;
};

/// A file of examples: a text for people, "version", and for each example a title, the lines of a card, and
/// what becomes of it.
struct Examples {
    explicit Examples(const std::filesystem::path& file)
    {
        std::ifstream stream(file);
        for (std::string line; std::getline(stream, line);) {
            if (line.starts_with("version "))
                version = line.substr(8);
            else if (line.starts_with("## "))
                all.push_back({line.substr(3), {}, {}});
            else if (!all.empty() && line.starts_with("=> "))
                all.back().outcome += line.substr(3) + "\n";
            else if (!all.empty() && !line.empty())
                all.back().lines += line + "\r\n";
        }
    }

    std::string version;
    std::vector<Example> all;
};

std::string outcomeOf(const PlainCard& card)
{
    std::string text = card.text();
    if (const std::string nothing = "flags: 0, picture: 0 bytes\n"; text.ends_with(nothing))
        text.resize(text.size() - nothing.size());
    return text;
}

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

class Standards : public testing::TestWithParam<const char*> {
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
                text += outcomeOf(PlainCard::of(*person));
                person->setImageData(Value());
            }
        }
        return text + told(preparation.report());
    }

    Ref<ZRRoster> roster;
};

TEST_P(Standards, HavePlacesForTheirExamples)
{
    const Examples examples(std::filesystem::path(STANDARDS) / GetParam());
    EXPECT_GE(examples.all.size(), 30U);
    for (const Example& example : examples.all)
        EXPECT_EQ(
            outcome("BEGIN:VCARD\r\nVERSION:" + examples.version + "\r\n" + example.lines + "END:VCARD\r\n"),
            example.outcome)
            << example.title << "\n"
            << example.lines;
}

INSTANTIATE_TEST_SUITE_P(All, Standards, testing::Values("rfc6350.txt", "rfc2426.txt", "vcard21.txt"),
    [](const auto& file) { return std::string(file.param).substr(0, std::string(file.param).find('.')); });

} // namespace
} // namespace test
