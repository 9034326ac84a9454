// What several clients of one store must see and leave behind, worked out with maps alone.
#pragma once

#include <algorithm>
#include <map>
#include <set>
#include <string>
#include <utility>
#include <vector>

namespace test {

/// The texts of a multi-value by identifier.
using PlainEntries = std::map<std::string, std::string>;
using Ids = std::set<std::string>;

struct PlainAuthor {
    std::map<std::string, std::string> texts;
    PlainEntries handles;
    Ids books;

    std::string text(const std::string& key) const
    {
        const auto found = texts.find(key);
        return found == texts.end() ? std::string() : found->second;
    }
};

/// A multi-value that a client has changed: as it was when it began, and as it wants it.
struct PlainUnit {
    PlainEntries base;
    PlainEntries mine;
    /// A row was edited where it stood, instead of all rows being written anew.
    bool isInPlace = false;
    /// Others have saved the same multi-value since: until the save only the outcome is told.
    bool isDisputed = false;

    /// Whether what would come of both is prescribed: not when one changes an entry that the other removes,
    /// or edits single rows that the other writes anew.
    bool isPrescribedWith(const PlainUnit& other) const
    {
        return !isInPlace && !other.isInPlace && !removesWhatIsEditedBy(other)
            && !other.removesWhatIsEditedBy(*this);
    }

    /// Theirs, plus mine less base, less base less mine; an entry edited by both is mine.
    PlainEntries mergedInto(PlainEntries theirs) const
    {
        for (const auto& [identifier, entry] : mine)
            if (!base.contains(identifier) || base.at(identifier) != entry)
                theirs[identifier] = entry;
        std::erase_if(theirs, [&](const auto& entry) { return removes(entry.first); });
        return theirs;
    }

private:
    bool removes(const std::string& id) const { return base.contains(id) && !mine.contains(id); }
    bool removesWhatIsEditedBy(const PlainUnit& other) const
    {
        return std::ranges::any_of(other.mine, [&](const auto& entry) {
            const auto before = other.base.find(entry.first);
            return before != other.base.end() && before->second != entry.second && removes(entry.first);
        });
    }
};

/// What one client has done since its last save.
struct PlainChanges {
    std::map<std::string, PlainAuthor> inserted;
    Ids deleted;
    std::map<std::string, std::map<std::string, std::string>> texts;
    std::map<std::string, PlainUnit> units;
    std::map<std::pair<std::string, std::string>, bool> links;
    Ids insertedBooks;
    Ids deletedBooks;
};

struct PlainState {
    std::map<std::string, PlainAuthor> authors;
    Ids books;

    /// As a client tells its view.
    Ids lines() const
    {
        Ids lines = books;
        for (const auto& [name, author] : authors) {
            Ids handles;
            for (const auto& [identifier, text] : author.handles)
                handles.insert(identifier + "=" + text);
            lines.insert(name + " " + author.text("name") + " " + author.text("city") + " "
                + author.text("index.text") + " {" + joined(handles) + "} {" + joined(author.books) + "}");
        }
        return lines;
    }

private:
    static std::string joined(const Ids& parts)
    {
        std::string text;
        for (const auto& part : parts)
            text += (text.empty() ? "" : ",") + part;
        return text;
    }
};

/// The store, and the unsaved changes of each client.
class PlainLibrary {
public:
    explicit PlainLibrary(std::size_t clients) : changes(clients) { }

    PlainState view(std::size_t client) const { return applied(changes[client], saved); }

    /// Answers how many multi-values others had saved meanwhile.
    int save(std::size_t client)
    {
        int disputes = 0;
        for (const auto& [author, unit] : changes[client].units) {
            disputes += unit.isDisputed;
            for (auto& other : changes)
                if (const auto found = other.units.find(author);
                    &other != &changes[client] && found != other.units.end())
                    found->second.isDisputed = true;
        }
        saved = applied(changes[client], std::move(saved));
        changes[client] = {};
        return disputes;
    }

    PlainState saved;
    std::vector<PlainChanges> changes;

private:
    static PlainState applied(const PlainChanges& changes, PlainState state)
    {
        std::erase_if(state.authors, [&](const auto& one) { return changes.deleted.contains(one.first); });
        std::erase_if(state.books, [&](const auto& book) { return changes.deletedBooks.contains(book); });
        for (const auto& [name, author] : changes.inserted)
            state.authors[name] = author;
        state.books.insert(changes.insertedBooks.begin(), changes.insertedBooks.end());
        for (auto& [name, author] : state.authors)
            apply(changes, name, author, state.books);
        return state;
    }

    static void apply(
        const PlainChanges& changes, const std::string& name, PlainAuthor& author, const Ids& books)
    {
        if (const auto found = changes.texts.find(name); found != changes.texts.end())
            for (const auto& [key, value] : found->second)
                author.texts[key] = value;
        if (const auto found = changes.units.find(name); found != changes.units.end())
            author.handles = found->second.mergedInto(std::move(author.handles));
        for (const auto& [link, isMade] : changes.links)
            if (link.first == name && isMade)
                author.books.insert(link.second);
            else if (link.first == name)
                author.books.erase(link.second);
        std::erase_if(author.books, [&](const auto& book) { return !books.contains(book); });
    }
};

} // namespace test
