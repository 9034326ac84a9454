// Cards of other programs, read where they lie: what the public standards say of them, what comes out here,
// and what the reader makes of them alone. Nothing of the files is in the project.
#include "ImportWorld.h"

#include "../vcard/PlainCard.h"
#include "interchange/Corpus.h"

#include "core/PersonFlags.h"

#include <fmt/format.h>

#include <map>
#include <optional>

namespace test {
namespace {

namespace fs = std::filesystem;
using Preparation = ZRvCardController::Preparation;

struct CorpusRow {
    std::string file;
    /// The number of the card in its file.
    std::size_t card = 0;
    std::string field, expected;
    /// Where they differ from what is expected: what the reader makes of it alone, and what comes out, and
    /// why.
    std::optional<std::string> alone, here, since;
};

/// "\n" stands for a line feed and "\\" for a backslash.
std::string unescaped(std::string_view text)
{
    std::string plain;
    for (std::size_t at = 0; at < text.size(); ++at)
        plain += text[at] != '\\' ? text[at] : text[++at] == 'n' ? '\n' : text[at];
    return plain;
}

/// The rows of corpus.txt: a line without a blank in front names a card, one with two a field, and one with
/// four a difference.
std::vector<CorpusRow> corpusRows()
{
    std::vector<CorpusRow> rows;
    CorpusRow row;
    std::istringstream lines(contentsOf(kTestsOfCards / "import/corpus.txt"));
    for (std::string line; std::getline(lines, line);) {
        const auto start = line.find_first_not_of(' '), colon = line.find(':');
        const auto key = line.substr(std::min(start, line.size()), colon - start),
                   value = unescaped(line.substr(std::min(colon + 2, line.size())));
        if (start == 0)
            std::istringstream(line) >> row.file >> row.card;
        else if (start == 2)
            rows.push_back({row.file, row.card, key, value, {}, {}, {}});
        else if (key == "alone")
            rows.back().alone = value;
        else if (key == "here")
            rows.back().here = value;
        else if (key == "since")
            rows.back().since = value;
    }
    return rows;
}

/// What came of a file. Cards that were refused have their place, without anything in it.
struct ReadFile {
    std::vector<PlainCard> cards;
    std::size_t people = 0;
    /// What is told of each card, and the subjects of its findings.
    std::map<std::size_t, std::set<std::string>> told;
};

ReadFile readFile(const fs::path& path, Preparation preparation)
{
    ReadFile file;
    ZRvCardController controller;
    controller.setOutcome(ZRvCardController::Outcome::readOnly);
    controller.setPreparation(preparation);
    controller.cardWasRead = [&](const ZRvCardController::CardRead& card) {
        file.cards.resize(std::max(file.cards.size(), card.number));
        file.people += card.person != nullptr;
        if (card.person)
            file.cards[card.number - 1] = PlainCard::of(*card.person);
    };
    controller.importVCardFiles({path.string()});
    for (const auto& report : controller.result().reports)
        for (const auto& entry : report.entries())
            file.told[entry.card].insert(entry.subject);
    return file;
}

std::string textOf(const PlainCard& card, const std::string& property)
{
    return card.texts.contains(property) ? card.texts.at(property) : "";
}

/// "Home" of the label of homes.
std::string plainLabel(const std::string& label)
{
    return label.starts_with("_$!<") ? label.substr(4, label.size() - 8) : label;
}

/// "a@b.c [Home], d@e.f [Work]"; the parts of an address with ";" between them.
std::string entriesOf(const PlainCard& card, const std::string& property)
{
    std::string text;
    for (const auto& entry : card.entries.at(property)) {
        text += text.empty() ? "" : ", ";
        if (entry.value.contains(""))
            text += entry.value.at("");
        else
            for (const auto* key : {"Street", "City", "State", "ZIP", "Country", "CountryCode"})
                text += (key == std::string("Street") ? "" : ";")
                    + (entry.value.contains(key) ? entry.value.at(key) : "");
        text += fmt::format(" [{}]", plainLabel(entry.label));
    }
    return text;
}

/// A line of the note, or "told" for a name that the report has.
std::string lineWithoutProperty(const ReadFile& file, const CorpusRow& row)
{
    const auto line = fmt::format("\n{}: {}", row.field, row.expected);
    if (("\n" + textOf(file.cards[row.card - 1], "Note")).find(line) != std::string::npos)
        return row.expected;
    const auto told = file.told.find(row.card);
    return told != file.told.end() && told->second.contains(row.field) ? "told" : "";
}

std::string result(const ReadFile& file, const CorpusRow& row)
{
    const auto& field = row.field;
    if (field == "#")
        return std::to_string(file.people);
    if (row.card > file.cards.size())
        return field == "N" ? ";;;;" : "";
    const auto& card = file.cards[row.card - 1];
    if (field == "N")
        return fmt::format("{};{};{};{};{}", textOf(card, "Last"), textOf(card, "First"),
            textOf(card, "Middle"), textOf(card, "Title"), textOf(card, "Suffix"));
    if (field == "Note...")
        return textOf(card, "Note").substr(0, row.expected.size());
    if (field == "picture")
        return card.photo.empty() ? "" : std::to_string(card.photo.size());
    if (field == "company")
        return (card.flags & personFlags::kShowAsMask) == personFlags::kShowAsCompany ? "yes" : "";
    if (card.entries.contains(field))
        return entriesOf(card, field);
    return card.texts.contains(field) ? textOf(card, field) : lineWithoutProperty(file, row);
}

TEST(Corpus, ComesOutAsTheStandardsSayOrAsToldHere)
{
    const auto corpus = corpusFolder();
    if (!fs::exists(corpus / "INDEX.md"))
        GTEST_SKIP() << "no cards of other programs at " << corpus;
    std::map<std::string, std::pair<ReadFile, ReadFile>> files;
    const auto rows = corpusRows();
    EXPECT_GT(rows.size(), 150U);
    for (const auto& row : rows) {
        SCOPED_TRACE(fmt::format("{} card {} {}", row.file, row.card, row.field));
        if (!files.contains(row.file)) {
            const auto path = corpus / row.file;
            files[row.file] = {readFile(path, Preparation::full), readFile(path, Preparation::none)};
        }
        const auto& [prepared, raw] = files[row.file];
        EXPECT_EQ(result(prepared, row), row.here.value_or(row.expected));
        EXPECT_NE(row.here, row.expected) << "a difference that is none";
        EXPECT_EQ(row.here.has_value(), row.since.has_value());
        EXPECT_EQ(result(raw, row), row.alone.value_or(row.expected)) << "by the reader alone";
    }
}

} // namespace
} // namespace test
