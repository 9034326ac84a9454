// Where a test of the tool lives.
#include "tool/ToolWorld.h"

#include <cstdlib>
#include <fstream>
#include <iterator>
#include <stdexcept>

namespace test {

namespace fs = std::filesystem;

ToolWorld::ToolWorld()
{
    std::string folder = (fs::temp_directory_path() / "tool-XXXXXX").string();
    if (!::mkdtemp(folder.data()))
        throw std::runtime_error("no folder for the test");
    _folder = folder;
}

ToolWorld::~ToolWorld()
{
    std::error_code ignored;
    fs::remove_all(_folder, ignored);
}

std::string ToolWorld::write(std::string_view name, std::string_view text) const
{
    std::ofstream(_folder / name, std::ios::binary) << text;
    return path(name);
}

Process::Start ToolWorld::start(const std::vector<std::string>& words) const
{
    Process::Start start{{ROSTER_TOOL, "--roster", roster()}};
    start.words.insert(start.words.end(), words.begin(), words.end());
    return start;
}

Ended ToolWorld::tool(const std::vector<std::string>& words, const std::string& input) const
{
    auto begun = start(words);
    begun.input = input;
    return run(begun);
}

Json ToolWorld::json(const std::vector<std::string>& words) const
{
    std::vector<std::string> all{"--json"};
    all.insert(all.end(), words.begin(), words.end());
    return Json::parse(tool(all).out, nullptr, false);
}

std::string ToolWorld::picture(const Json& card) const
{
    return contentsOf(roster() + "/Images/" + card.at("id").get<std::string>().substr(0, 36));
}

void ToolWorld::removeRoster() const { fs::remove_all(roster()); }

std::string sharedFolder(std::string_view name)
{
    const char* const given = std::getenv("ROSTER_CORPUS");
    const fs::path folder =
        given && name == "corpus" ? fs::path(given) : fs::path(SOURCE_FOLDER) / ".." / "shared" / name;
    return fs::is_directory(folder) ? folder.string() : std::string();
}

std::string simpleCard(std::string_view family, std::string_view phone)
{
    return "BEGIN:VCARD\r\nVERSION:3.0\r\nN:" + std::string(family)
        + ";Ana;;;\r\nTEL;TYPE=HOME:" + std::string(phone) + "\r\nEND:VCARD\r\n";
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

std::string contentsOf(const std::string& path)
{
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
}

} // namespace test
