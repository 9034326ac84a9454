// How the processes of a crowd are started, and the parts that they play.
#include "processes/Crowd.h"

#include "objectstore/ObjectAccess.h"
#include "objectstore/StoreFacts.h"
#include "store/ZRManagedObjectContext.h"
#include "store/ZROSRecord.h"
#include "support/Waiting.h"

#include <fstream>
#include <stdexcept>

namespace test {

namespace {

/// The first save of a crowd. Words: the log, cards, groups.
const Role prepares("prepare", [](const Words& words) {
    RosterEditor(openShared(), words.at(0), 1).prepare(std::stoi(words.at(1)), std::stoi(words.at(2)));
    return std::string("{}");
});

/// Edits, then waits until everybody has, and tells what it has in memory. Words: the log, the seed, saves
/// (0: until the flag "stop"), the folder of the flags, its own flag.
const Role edits("edit", [](const Words& words) {
    const auto isRaised = [&](const char* flag) { return fs::exists(words.at(3) + "/" + flag); };
    const auto roster = openShared();
    RosterEditor editor(roster, words.at(0), static_cast<unsigned>(std::stoul(words.at(1))));
    const int saves = std::stoi(words.at(2));
    for (int i = 0; saves > 0 ? i < saves : !isRaised("stop"); ++i)
        editor.editAndSave();
    std::ofstream(words.at(3) + "/" + words.at(4));
    waitUntil("all have saved", [&] { return isRaised("all saved"); });
    // Those who were killed told nobody of their last save: then a fetch must find it.
    if (saves == 0)
        roster->people();
    waitUntilDrained(*roster);
    const Json held = editor.heldLines();
    return Json{{"held", held}, {"fetched", fetchedLines(*roster)}}.dump();
});

/// Looks at the roster as a new process finds it.
const Role looks("look", [](const Words&) {
    const auto roster = openShared();
    Json numbers = Json::object();
    for (const auto& card : roster->people()) {
        const std::string name(card->valueForProperty(zr::kZRLastNameProperty).asText());
        if (name.starts_with(kNumberCard))
            numbers[card->uniqueId()] = {
                {"saves", std::stoi(std::string(card->valueForProperty(zr::kZRJobTitleProperty).asText()))},
                {"commit", objectstore::ObjectAccess::row(*card->zrDatabaseImpl())->version()}};
    }
    return Json{{"fetched", fetchedLines(*roster)}, {"numbers", numbers}, {"commit", lastCommit(*roster)},
        {"problems", roster->check().problems}}
        .dump();
});

} // namespace

void waitUntil(const std::string& what, const std::function<bool()>& isSo)
{
    if (!eventually(isSo, std::chrono::minutes(5)))
        throw std::runtime_error("waited in vain until " + what);
}

std::int64_t lastCommit(ZRRoster& roster)
{
    auto* const coordinator = roster.storeCoordinator();
    const auto facts = objectstore::factsOf(*coordinator, *coordinator->firstStore());
    if (!facts)
        throw std::runtime_error(facts.error().text);
    return facts->commitNumber;
}

void waitUntilDrained(ZRRoster& roster)
{
    waitUntil("every commit was seen",
        [&] { return roster.managedObjectContext()->lastSeenCommit() == lastCommit(roster); });
}

Crowd::Crowd(int cards, int groups)
{
    ask("prepare", {logOf(_editors++), std::to_string(cards), std::to_string(groups)});
}

Process::Start Crowd::start(const std::string& role, const Words& words) const
{
    return {.words = roleWords(role, words),
        .environment = _home.stage({{"ZRLogToStandardError", "1"}}).environment};
}

Crowd::Editor Crowd::startEditor(int saves)
{
    const int number = _editors++;
    return {number,
        std::make_unique<Process>(start("edit",
            {logOf(number), std::to_string(1000 + number), std::to_string(saves), _home.path().string(),
                "saved " + std::to_string(number)}))};
}

std::vector<Json> Crowd::end(const std::vector<Editor>& editors) const
{
    for (const auto& [number, process] : editors)
        awaitFlag("saved " + std::to_string(number), *process);
    raise("all saved");
    std::vector<Json> told;
    for (const auto& editor : editors)
        told.push_back(toldBy(*editor.process));
    return told;
}

void Crowd::raise(const std::string& flag) const { std::ofstream(path(flag)); }

void Crowd::awaitFlag(const std::string& flag, Process& process) const
{
    waitUntil(flag, [&] { return fs::exists(path(flag)) || process.hasEnded(); });
}

Json Crowd::ask(const std::string& role, const Words& words) const
{
    Process process(start(role, words));
    return toldBy(process);
}

Json toldBy(Process& process)
{
    const Ended ended = process.wait();
    if (ended.status != 0)
        throw std::runtime_error("status " + std::to_string(ended.status) + ": " + ended.err);
    return Json::parse(ended.out);
}

std::string disagreements(const Replay& saves, const Json& file, const std::vector<Json>& told)
{
    const Lines lines = file.at("fetched");
    std::string text = saves.differencesTo(lines);
    for (const auto& memory : told)
        text += differences(memory.at("held"), linesOf(memory.at("held"), lines))
            + differences(memory.at("fetched"), lines);
    for (const std::string problem : file.at("problems"))
        text += problem + "\n";
    return text;
}

} // namespace test
