// What another program does to the roster of a world, through the library.
#include "tool/OtherProcess.h"

#include "core/ZRConstants.h"
#include "core/ZRGroup.h"
#include "core/ZRPerson.h"
#include "platform/files/Preferences.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <stdexcept>

namespace test {

namespace {

using platform::Ref;
using platform::Value;

Ref<ZRRecord> personNamed(ZRRoster& roster, const std::string& name)
{
    const auto found = roster.peopleMatchingText(name);
    if (found.size() != 1)
        throw std::runtime_error("no single " + name);
    return found.front();
}

void addPerson(const Ref<ZRRoster>& roster, const std::string& name)
{
    ZRPerson::initWithRoster(roster)->setValue(Value(name), kZRFirstNameProperty);
}

void change(const Ref<ZRRoster>& roster, char how, const std::string& name)
{
    if (how == '+')
        addPerson(roster, name);
    else if (how == '~')
        personNamed(*roster, name)->setValue(Value("edited"), kZRNicknameProperty);
    else if (how == '-')
        roster->removeRecord(personNamed(*roster, name));
    else if (how == '&')
        ZRGroup::initWithRoster(roster)->setValue(Value(name), kZRGroupNameProperty);
    else
        for (int i = 0; i < std::stoi(name); ++i)
            addPerson(roster, "Many");
}

const Role changes("change the roster", [](const Words& words) {
    const auto roster = openAt(words.at(0));
    for (const auto& word : Words(words.begin() + 1, words.end()))
        change(roster, word.front(), word.substr(1));
    return std::string(roster->save() ? "saved" : "not saved");
});

/// What an earlier one of that name said must not be taken for what this one says. Quotes do not occur in the
/// paths and words of these tests.
Process::Start startIntoFiles(const ToolWorld& world, const std::string& line, const std::string& base)
{
    std::filesystem::remove(base + ".err");
    std::string command = "exec";
    for (const auto& word : world.start(line).words)
        command += " '" + word + "'";
    return {.words = {"/bin/sh", "-c", command + " > '" + base + ".out' 2> '" + base + ".err'"}};
}

} // namespace

Ref<ZRRoster> openAt(const std::string& directory)
{
    platform::Preferences::shared().setArgument("ZRAlternateDataStoreDirectory", Value(directory));
    ZRRoster::setShouldCreateEmptyDatabase(true);
    return ZRRoster::sharedRoster();
}

void changeRoster(const std::string& directory, const Words& words)
{
    Words all{directory};
    all.insert(all.end(), words.begin(), words.end());
    const auto outcome = play("change the roster", all);
    EXPECT_EQ(outcome.answer, "saved") << outcome.log;
}

RunningTool::RunningTool(const ToolWorld& world, const std::string& line, const std::string& name)
    : _base(world.path(name)), _process(startIntoFiles(world, line, _base))
{
}

bool RunningTool::waitForErr(const std::string& text) const
{
    return eventually([&] { return err().find(text) != std::string::npos; });
}

std::vector<Json> RunningTool::waitForLines(std::size_t count) const
{
    eventually([&] { return static_cast<std::size_t>(std::ranges::count(out(), '\n')) >= count; });
    std::vector<Json> lines;
    const std::string text = out();
    for (std::size_t at = 0, end = 0; (end = text.find('\n', at)) != std::string::npos; at = end + 1)
        lines.push_back(Json::parse(text.substr(at, end - at), nullptr, false));
    return lines;
}

} // namespace test
