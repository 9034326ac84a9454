// What does a roster hold after a row of edits? Worked out on plain maps, without the roster.
#pragma once

#include <nlohmann/json.hpp>

#include <algorithm>
#include <map>
#include <set>
#include <string>
#include <vector>

namespace test {

using Json = nlohmann::json;
/// By unique id, what a record holds; nothing for one that is gone.
using Lines = std::map<std::string, std::string>;

/// Of `all`, those records that `some` names.
inline Lines linesOf(const Lines& some, const Lines& all)
{
    Lines lines;
    for (const auto& [id, line] : some)
        lines[id] = all.contains(id) ? all.at(id) : std::string();
    return lines;
}

/// Where two differ, for people; empty when they do not.
inline std::string differences(const Lines& expected, const Lines& found)
{
    std::string text;
    const auto tell = [&](const char* what, const Lines& some, const Lines& others) {
        for (const auto& [id, line] : some)
            if (!others.contains(id) || others.at(id) != line)
                text += std::string(what) + id + " " + line + "\n";
    };
    tell("expected ", expected, found);
    tell("found ", found, expected);
    return text;
}

struct PlainEntry {
    std::string id, label, value;
};

/// A card or a group, as far as the random edits know them.
struct PlainRecord {
    std::map<std::string, std::string> texts;
    std::vector<PlainEntry> entries;
    std::string primary;
    std::set<std::string> members;

    bool isEmpty() const { return texts.empty() && entries.empty() && members.empty(); }
    std::string line() const
    {
        std::string line;
        for (const auto& [property, text] : texts)
            line += property + "=" + text + " ";
        for (const auto& entry : entries)
            line += "\n  " + entry.id + (entry.id == primary ? "*" : " ") + entry.label + ": " + entry.value;
        for (const auto& member : members)
            line += "\n  has " + member;
        return line;
    }
};

/// The records by unique id, changed edit by edit: what was deleted before stays deleted, texts are set one
/// by one, entries are added, changed and removed by their identifiers.
///
/// An edit is one of
///   {"add": id}, {"remove": id}, {"set": id, "property": p, "value": v},
///   {"entries": id, "removed": [id…], "changed": [[id, label, value]…], "added": […], "primary": id or
///   null},
///   {"join": group, "card": id}, {"leave": group, "card": id}.
class PlainCards {
public:
    void apply(const Json& edit)
    {
        if (edit.contains("add"))
            _records[edit.at("add")];
        else if (edit.contains("remove"))
            remove(edit.at("remove"));
        else if (edit.contains("set"))
            with(edit.at("set"), [&](PlainRecord& record) {
                record.texts[edit.at("property")] = edit.at("value").get<std::string>();
            });
        else if (edit.contains("entries"))
            with(edit.at("entries"), [&](PlainRecord& card) { changeEntries(card, edit); });
        else if (edit.contains("join"))
            with(edit.at("join"), [&](PlainRecord& group) {
                if (_records.contains(edit.at("card")))
                    group.members.insert(edit.at("card").get<std::string>());
            });
        else
            with(edit.at("leave"),
                [&](PlainRecord& group) { group.members.erase(edit.at("card").get<std::string>()); });
    }

    Lines lines() const
    {
        Lines lines;
        for (const auto& [id, record] : _records)
            lines[id] = record.line();
        return lines;
    }

private:
    template <class Change>
    void with(const std::string& id, Change change)
    {
        if (const auto known = _records.find(id); known != _records.end())
            change(known->second);
    }

    void remove(const std::string& id)
    {
        _records.erase(id);
        for (auto& [other, record] : _records)
            record.members.erase(id);
    }

    static void changeEntries(PlainRecord& card, const Json& edit)
    {
        const auto isHere = [&](const std::string& id) {
            return std::ranges::find(card.entries, id, &PlainEntry::id) != card.entries.end();
        };
        for (const std::string id : edit.at("removed"))
            std::erase_if(card.entries, [&](const PlainEntry& entry) { return entry.id == id; });
        for (const auto& changed : edit.at("changed"))
            for (auto& entry : card.entries)
                if (entry.id == changed.at(0))
                    entry = {changed.at(0), changed.at(1), changed.at(2)};
        for (const auto& added : edit.at("added"))
            card.entries.push_back({added.at(0), added.at(1), added.at(2)});
        if (edit.at("primary").is_string() && isHere(edit.at("primary")))
            card.primary = edit.at("primary");
        else if (!isHere(card.primary))
            card.primary = card.entries.empty() ? std::string() : card.entries.front().id;
    }

    std::map<std::string, PlainRecord> _records;
};

} // namespace test
