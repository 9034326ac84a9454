// What did each process save, and as which commit? A file a process, which outlives its writer.
#pragma once

#include "platform/files/FileDescriptor.h"
#include "processes/PlainCards.h"

#include <cstdint>
#include <fcntl.h>
#include <filesystem>
#include <fstream>
#include <optional>
#include <stdexcept>
#include <unistd.h>

namespace test {

/// Writes what a save is about to write, and what became of it; on the disk when `saved` returns.
class SaveLog {
public:
    explicit SaveLog(const std::string& path)
        : _file(::open(path.c_str(), O_WRONLY | O_CREAT | O_APPEND | O_CLOEXEC, 0600))
    {
    }

    void begin(const Json& edits) { write({{"edits", edits}}); }
    void saved(std::int64_t commit)
    {
        write({{"commit", commit}});
        if (::fdatasync(_file.get()) != 0)
            throw std::runtime_error("the log of saves cannot be synced");
    }

private:
    void write(const Json& line) const
    {
        const std::string text = line.dump() + "\n";
        if (::write(_file.get(), text.data(), text.size()) != static_cast<ssize_t>(text.size()))
            throw std::runtime_error("the log of saves cannot be written");
    }

    platform::FileDescriptor _file;
};

/// One save of a log; of the last one of a killed process it may be unknown whether it was committed.
struct LoggedSave {
    Json edits;
    std::optional<std::int64_t> commit;
};

/// What is left of a log. A line that its writer could not end is no line.
inline std::vector<LoggedSave> readSaveLog(const std::filesystem::path& path)
{
    std::vector<LoggedSave> saves;
    std::ifstream file(path);
    for (std::string text; std::getline(file, text) && !file.eof();) {
        const Json line = Json::parse(text);
        if (line.contains("edits"))
            saves.push_back({line.at("edits"), {}});
        else
            saves.back().commit = line.at("commit").get<std::int64_t>();
    }
    return saves;
}

/// Saves of many logs by their commits. Throws when two have the same.
class Replay {
public:
    void add(const LoggedSave& save, std::int64_t commit)
    {
        if (!_saves.emplace(commit, save.edits).second)
            throw std::runtime_error("two saves are commit " + std::to_string(commit));
    }
    std::size_t count() const { return _saves.size(); }
    Lines lines() const
    {
        PlainCards cards;
        for (const auto& [commit, edits] : _saves)
            for (const auto& edit : edits)
                cards.apply(edit);
        return cards.lines();
    }

    /// Where `found` differs from it, and what was saved of the records that do; empty when nothing does.
    std::string differencesTo(const Lines& found) const
    {
        const Lines expected = lines();
        std::string text = differences(expected, found);
        for (const auto& [id, line] : text.empty() ? Lines() : expected)
            if (!found.contains(id) || found.at(id) != line)
                text += "saved of " + id + "\n" + historyOf(id);
        return text;
    }

private:
    std::string historyOf(const std::string& id) const
    {
        std::string text;
        for (const auto& [commit, edits] : _saves)
            for (const auto& edit : edits)
                if (std::ranges::find(edit, Json(id)) != edit.end())
                    text += std::to_string(commit) + " " + edit.dump() + "\n";
        return text;
    }

    std::map<std::int64_t, Json> _saves;
};

} // namespace test
