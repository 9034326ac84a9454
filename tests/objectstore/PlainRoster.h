// What several clients of one store must see and leave behind, worked out with maps alone.
#pragma once

#include <map>
#include <set>
#include <string>
#include <utility>
#include <vector>

namespace test {

/// The entries of a multi-value by identifier.
using PlainEntries = std::map<std::string, std::pair<std::string, std::string>>;

struct PlainRecord {
    std::map<std::string, std::string> attributes;
    PlainEntries phones;
    std::set<std::string> teams;
};

/// A multi-value that a client has changed: as it was when it began, and as it wants it.
struct PlainUnit {
    PlainEntries base;
    PlainEntries mine;
    /// A row was edited where it stood, instead of all rows being written anew.
    bool isInPlace = false;
    /// Others have saved the same multi-value since: until the save only the outcome is told.
    bool isDisputed = false;

    std::set<std::string> removed() const
    {
        return identifiers([&](auto& id) { return !mine.contains(id); });
    }
    std::set<std::string> edited() const
    {
        return identifiers([&](auto& id) { return mine.contains(id) && mine.at(id) != base.at(id); });
    }

    /// Theirs, plus mine less base, less base less mine; an entry edited by both is mine.
    PlainEntries mergedInto(PlainEntries theirs) const
    {
        for (const auto& [identifier, entry] : mine)
            if (!base.contains(identifier) || base.at(identifier) != entry)
                theirs[identifier] = entry;
        for (const auto& identifier : removed())
            theirs.erase(identifier);
        return theirs;
    }

private:
    template <class Test>
    std::set<std::string> identifiers(Test test) const
    {
        std::set<std::string> found;
        for (const auto& [identifier, entry] : base)
            if (test(identifier))
                found.insert(identifier);
        return found;
    }
};

/// What one client has done since its last save.
struct PlainChanges {
    std::map<std::string, PlainRecord> inserted;
    std::set<std::string> deleted;
    std::map<std::string, std::map<std::string, std::string>> attributes;
    std::map<std::string, PlainUnit> units;
    std::map<std::pair<std::string, std::string>, bool> links;
    std::set<std::string> insertedTeams;
    std::set<std::string> deletedTeams;
};

struct PlainState {
    std::map<std::string, PlainRecord> people;
    std::set<std::string> teams;
};

/// The store, and the unsaved changes of each client.
class PlainRoster {
public:
    explicit PlainRoster(std::size_t clients) : changes(clients) { }

    PlainState view(std::size_t client) const { return applied(changes[client], saved); }

    void save(std::size_t client)
    {
        for (const auto& [person, unit] : changes[client].units)
            for (auto& other : changes)
                if (const auto found = other.units.find(person);
                    &other != &changes[client] && found != other.units.end())
                    found->second.isDisputed = true;
        saved = applied(changes[client], std::move(saved));
        changes[client] = {};
    }

    PlainState saved;
    std::vector<PlainChanges> changes;

private:
    static PlainState applied(const PlainChanges& changes, PlainState state)
    {
        for (const auto& person : changes.deleted)
            state.people.erase(person);
        for (const auto& team : changes.deletedTeams)
            state.teams.erase(team);
        for (const auto& [name, record] : changes.inserted)
            state.people[name] = record;
        state.teams.insert(changes.insertedTeams.begin(), changes.insertedTeams.end());
        for (auto& [name, record] : state.people)
            apply(changes, name, record, state.teams);
        return state;
    }

    static void apply(const PlainChanges& changes, const std::string& name, PlainRecord& record,
        const std::set<std::string>& teams)
    {
        if (const auto found = changes.attributes.find(name); found != changes.attributes.end())
            for (const auto& [key, value] : found->second)
                record.attributes[key] = value;
        if (const auto found = changes.units.find(name); found != changes.units.end())
            record.phones = found->second.mergedInto(std::move(record.phones));
        for (const auto& [link, isMade] : changes.links)
            if (link.first == name && isMade)
                record.teams.insert(link.second);
            else if (link.first == name)
                record.teams.erase(link.second);
        std::erase_if(record.teams, [&](const auto& team) { return !teams.contains(team); });
    }
};

} // namespace test
