// `roster show` and `roster me`: one card, found by its id or by text in it.
#include "CardJson.h"
#include "Command.h"

#include "core/ZRPerson.h"

#include <fmt/format.h>

namespace {

std::string joined(const std::vector<std::string>& words)
{
    std::string text;
    for (const auto& word : words)
        text += (text.empty() ? "" : " ") + word;
    return text;
}

/// The one record that `text` means: its id, the start of its id, or text found in one card only.
platform::Ref<ZRRecord> recordNamed(ZRRoster& roster, const std::string& text)
{
    if (auto record = text.size() > 37 ? roster.recordForUniqueId(text) : nullptr)
        return record;
    const auto found = roster.peopleMatchingText(text);
    if (found.empty())
        throw Failure(exitStatus::refused, fmt::format("no card has '{}'", text));
    if (found.size() == 1)
        return found.front();
    std::string candidates;
    constexpr std::size_t named = 5;
    for (std::size_t i = 0; i < found.size() && i < named; ++i)
        candidates += fmt::format("\n  {}  {}", found[i]->uniqueId(), displayName(*found[i]));
    throw Failure(exitStatus::refused,
        fmt::format("{} cards have '{}'; say which by its id:{}{}", found.size(), text, candidates,
            found.size() > named ? "\n  …" : ""));
}

void printCard(const Options& options, ZRRecord& record)
{
    if (options.json)
        printJson(cardJson(record));
    else
        print(cardText(record));
}

} // namespace

int runShow(const Options& options)
{
    const auto roster = openRoster(options);
    printCard(options, *recordNamed(*roster, joined(options.words)));
    return exitStatus::done;
}

int runMe(const Options& options)
{
    const auto roster = openRoster(options);
    if (!options.words.empty()) {
        const auto person = recordNamed(*roster, joined(options.words));
        if (!dynamic_cast<ZRPerson*>(person.get()))
            throw Failure(exitStatus::refused, "only a person can be Me");
        roster->setMe(person);
        if (!roster->save())
            throw Failure(exitStatus::noStore, "not saved: " + roster->lastSaveError().text);
    }
    const auto me = roster->me();
    if (!me)
        throw Failure(exitStatus::refused, "no card is Me; choose one with: roster me ID");
    printCard(options, *me);
    return exitStatus::done;
}
