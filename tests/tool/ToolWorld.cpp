// Where a test of the tool lives.
#include "tool/ToolWorld.h"

#include <algorithm>
#include <cstdlib>
#include <sstream>

namespace test {

namespace fs = std::filesystem;

Words wordsOf(std::string_view line)
{
    constexpr char none = ' ';
    Words words;
    for (std::size_t at = 0; (at = line.find_first_not_of(' ', at)) != line.npos;) {
        std::string& word = words.emplace_back();
        char quote = none;
        for (; at < line.size() && (line[at] != ' ' || quote != none); ++at)
            if (line[at] == quote)
                quote = none;
            else if (quote == none && (line[at] == '\'' || line[at] == '"'))
                quote = line[at];
            else
                word += line[at];
    }
    return words;
}

std::string ToolWorld::write(const std::string& name, const std::string& text) const
{
    put(path(name), text);
    return path(name);
}

Process::Start ToolWorld::start(const std::string& line) const
{
    return {wordsOf(std::string(ROSTER_TOOL) + " --roster " + roster() + " " + line)};
}

Ended ToolWorld::tool(const std::string& line, const std::string& input) const
{
    auto begun = start(line);
    begun.input = input;
    return run(begun);
}

Json ToolWorld::json(const std::string& line) const
{
    return Json::parse(tool("--json " + line).out, nullptr, false);
}

std::string ToolWorld::idOf(const std::string& name) const
{
    return json("show '" + name + "'").at("id").get<std::string>();
}

std::string ToolWorld::picture(const Json& card) const
{
    return bytesOf(roster() + "/Images/" + card.at("id").get<std::string>().substr(0, 36), "");
}

void ToolWorld::removeRoster() const { fs::remove_all(roster()); }

Ended ToolTest::done(const std::string& line) const
{
    auto ended = world.tool(line);
    EXPECT_EQ(ended.status, 0) << line << "\n" << ended.out << ended.err;
    return ended;
}

void ToolTest::expectRefusals(const std::vector<Refusal>& all) const
{
    for (const auto& [line, status, told] : all) {
        const auto ended = world.tool(line);
        SCOPED_TRACE(line + "\n" + ended.out + ended.err);
        EXPECT_EQ(ended.status, status);
        EXPECT_EQ(ended.out, "");
        EXPECT_THAT(ended.err, testing::HasSubstr(told));
        EXPECT_EQ(std::ranges::count(ended.err, '\n'), 1);
    }
}

std::string ToolTest::namesIn(const Json& records)
{
    std::string text;
    for (const auto& record : records)
        text += (text.empty() ? "" : ", ") + record.at("name").get<std::string>();
    return text;
}

std::string sharedFolder(std::string_view name)
{
    const char* const given = std::getenv("ROSTER_CORPUS");
    const fs::path folder =
        given && name == "corpus" ? fs::path(given) : fs::path(SOURCE_FOLDER) / ".." / "shared" / name;
    return fs::is_directory(folder) ? folder.string() : std::string();
}

std::string cardOf(std::string_view lines)
{
    return "BEGIN:VCARD\nVERSION:3.0\n" + std::string(lines) + "\nEND:VCARD\n";
}

std::string simpleCard(std::string_view family, std::string_view phone)
{
    return cardOf("N:" + std::string(family) + ";Ana;;;\nTEL;TYPE=HOME:" + std::string(phone));
}

std::string entryText(const Json& entry)
{
    const auto label = entry.at("label").get<std::string>();
    const auto& value = entry.at("value");
    return (label.starts_with("_$!") ? label.substr(3, label.size() - 6) : label) + "="
        + (value.is_string() ? value.get<std::string>() : value.dump())
        + (entry.contains("primary") ? "*" : "");
}

std::string entriesIn(const Json& card, const std::string& property)
{
    std::string text;
    for (const auto& entry : card.at("properties").value(property, Json::array()))
        text += (text.empty() ? "" : " ") + entryText(entry);
    return text;
}

Json withoutIds(Json card)
{
    card.erase("id");
    auto& properties = card.at("properties");
    properties.erase("Creation");
    properties.erase("Modification");
    for (auto& property : properties)
        if (property.is_array())
            for (auto& entry : property)
                entry.erase("id");
    return card;
}

Json withoutChange(Json cards)
{
    for (auto& card : cards)
        card.at("properties").erase("Modification");
    return cards;
}

std::vector<LineCase> lineCasesIn(const std::string& name)
{
    std::vector<LineCase> cases;
    for (const auto& each : casesIn(fs::path(SOURCE_FOLDER) / "tests/tool" / name)) {
        auto& added =
            cases.emplace_back(LineCase{each.place, each.input.substr(0, each.input.find('\n')), {}});
        std::istringstream lines(each.expected);
        for (std::string line; std::getline(lines, line);)
            added.wanted.push_back(line);
    }
    return cases;
}

} // namespace test
