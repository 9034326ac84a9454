// The same people, teams and phones twice: as stored objects, and as plain structs that need no engine.
#pragma once

#include "objectstore/TortureModel.h"

#include <map>
#include <optional>
#include <set>
#include <string>
#include <vector>

namespace test {

using Text = std::optional<std::string>;

struct PlainPhone {
    os::ObjectRef object;
    Text label;
    Text number;
    std::optional<std::size_t> kind;
};

struct PlainPerson {
    os::ObjectRef object;
    Text uniqueId, name, city;
    std::optional<std::int64_t> age;
    std::optional<double> height, born;
    std::optional<bool> isMember;
    Text token, picture;
    std::optional<std::size_t> friendOf, kind;
    std::vector<PlainPhone> phones;
    std::vector<Text> tags;
    os::ObjectRef note, index;
    Text noteText, indexText;
    std::set<std::size_t> teams;
};

struct PlainTeam {
    os::ObjectRef object;
    Text uniqueId, name, rule;
    bool isClub = false;
    std::set<std::size_t> children;
};

/// Every edit is made to both; what is read back must agree.
class PredicateWorld {
public:
    PredicateWorld(Dice& dice, const Store& store) : _dice(dice), context(store.makeContext())
    {
        for (const char* code : {"red", "Blue", "bleu"}) {
            kinds.push_back(expected(context->sharedObject(*tortureModel()->entity("Kind"), {code})));
            kindCodes.emplace_back(code);
        }
    }

    /// Something of everything: names that differ in case, marks or length, quotes, wildcards, other scripts.
    static const std::vector<std::string>& texts()
    {
        static const std::vector<std::string> pool{"", "a", "Ana", "ana", "ANA", "\xc3\x81na", "A\xcc\x81na",
            "Anabel", "banana",
            "stra\xc3\x9f"
            "e",
            "STRASSE", "abc", "abcd", "xabcdx", "a\"b", "a'b", "50%_off",
            "\xe6\x97\xa5\xe6\x9c\xac\xe8\xaa\x9e", "\xe3\x81\x8b\xe3\x82\x99", "\xe3\x81\x8c",
            std::string("nul\0abcd", 8), "\xf0\x9f\x98\x80 abcd \xf0\x9f\x98\x80", "tab\tand\nline", "z\\z"};
        return pool;
    }

    Text anyText() { return _dice.chance(20) ? Text() : Text(_dice.among(texts())); }

    void addPerson()
    {
        PlainPerson person;
        person.object = context->insertObjectOfEntity("Person");
        people.push_back(std::move(person));
        const std::size_t at = people.size() - 1;
        for (int i = 0; i < 12; ++i)
            editPerson(at);
    }

    void addTeam()
    {
        PlainTeam team;
        team.isClub = _dice.chance(30);
        team.object = context->insertObjectOfEntity(team.isClub ? "Club" : "Team");
        set(*team.object, "name", team.name, anyText());
        set(*team.object, "uniqueId", team.uniqueId, anyText());
        if (team.isClub)
            set(*team.object, "rule", team.rule, anyText());
        teams.push_back(std::move(team));
    }

    void edit()
    {
        switch (_dice.below(12)) {
        case 0:
            return addPerson();
        case 1:
            return deletePerson(_dice.below(people.size()));
        case 2:
            return addTeam();
        case 3:
            return editTeam(_dice.below(teams.size()));
        case 4: {
            const std::size_t kind = _dice.below(kinds.size());
            kindCodes[kind] = _dice.among(texts()) + std::to_string(kind);
            return kinds[kind]->setValueForKey("code", *kindCodes[kind]);
        }
        default:
            return editPerson(_dice.below(people.size()));
        }
    }

    void editTeam(std::size_t at)
    {
        auto& team = teams[at];
        const std::size_t other = _dice.below(teams.size());
        if (_dice.chance(30))
            set(*team.object, "name", team.name, anyText());
        else if (team.children.erase(other))
            team.object->removeObject(team.object->slot("children"), *teams[other].object);
        else {
            team.children.insert(other);
            team.object->addObject(team.object->slot("children"), *teams[other].object);
        }
    }

    void editPerson(std::size_t at)
    {
        auto& person = people[at];
        if (!person.object)
            return;
        auto& object = *person.object;
        switch (_dice.below(15)) {
        case 0:
            return set(object, "name", person.name, anyText());
        case 1:
            return set(object, "city", person.city, anyText());
        case 2:
            return set(object, "uniqueId", person.uniqueId, anyText());
        case 3:
            return set(object, "age", person.age, anyWhole());
        case 4:
            return set(object, "height", person.height, anyReal());
        case 5:
            return set(object, "isMember", person.isMember,
                _dice.chance(20) ? std::optional<bool>() : _dice.chance(50));
        case 6:
            person.born = anyReal();
            return object.setValueForKey(
                "born", person.born ? platform::Value(platform::Date{*person.born}) : platform::Value());
        case 7:
            return setBytes(object, "token", person.token);
        case 8:
            return setBytes(object, "picture", person.picture);
        case 9:
            return setReference(object, "friend", person.friendOf, anyLivingPerson());
        case 10:
            return setReference(object, "kind", person.kind,
                _dice.chance(30) ? std::optional<std::size_t>() : _dice.below(kinds.size()));
        case 11:
            return editPhones(person);
        case 12:
            return toggleTeam(at);
        case 13:
            return editPart("Note", person.object, person.note, person.noteText);
        default:
            if (_dice.chance(50))
                return editPart("Index", person.object, person.index, person.indexText);
            return addTag(person);
        }
    }

    void deletePerson(std::size_t at)
    {
        auto& person = people[at];
        if (!person.object)
            return;
        for (auto& other : people)
            if (other.object && other.friendOf == at)
                setReference(*other.object, "friend", other.friendOf, std::nullopt);
        context->deleteObject(*person.object);
        person = PlainPerson();
    }

    std::optional<std::int64_t> anyWhole()
    {
        static const std::vector<std::int64_t> pool{
            0, 1, 2, -1, 7, 8, 128, 129, 1000000007, INT64_MAX, INT64_MIN, (std::int64_t(1) << 53) + 1};
        return _dice.chance(20) ? std::optional<std::int64_t>() : _dice.among(pool);
    }

    std::optional<double> anyReal()
    {
        static const std::vector<double> pool{0, 1, 1.5, -2.25, 0.1, 86400, 1e300, 9007199254740992.0};
        return _dice.chance(20) ? std::optional<double>() : _dice.among(pool);
    }

    /// The team and every one below it.
    std::set<std::size_t> below(std::size_t team) const
    {
        std::set<std::size_t> found;
        std::vector<std::size_t> waiting{team};
        while (!waiting.empty()) {
            const std::size_t next = waiting.back();
            waiting.pop_back();
            if (found.insert(next).second)
                waiting.insert(waiting.end(), teams[next].children.begin(), teams[next].children.end());
        }
        return found;
    }

    Text codeOf(std::optional<std::size_t> kind) const { return kind ? kindCodes[*kind] : Text(); }

    std::vector<PlainPerson> people;
    std::vector<PlainTeam> teams;
    std::vector<os::ObjectRef> kinds;
    std::vector<Text> kindCodes;

private:
    template <class T>
    void set(os::StoreObject& object, std::string_view key, std::optional<T>& plain, std::optional<T> value)
    {
        object.setValueForKey(key, value ? platform::Value(*value) : platform::Value());
        plain = std::move(value);
    }

    void setBytes(os::StoreObject& object, std::string_view key, Text& plain)
    {
        plain = anyText();
        object.setValueForKey(key, plain ? platform::Value::data(*plain) : platform::Value());
    }

    std::optional<std::size_t> anyLivingPerson()
    {
        const std::size_t at = _dice.below(people.size());
        return people[at].object ? std::optional(at) : std::nullopt;
    }

    void setReference(os::StoreObject& object, std::string_view key, std::optional<std::size_t>& plain,
        std::optional<std::size_t> target)
    {
        plain = target;
        const auto& pool = key == "kind" ? kinds : std::vector<os::ObjectRef>();
        object.setRelated(object.slot(key),
            !target             ? nullptr
                : key == "kind" ? pool[*target].get()
                                : people[*target].object.get());
    }

    void editPhones(PlainPerson& person)
    {
        if (!person.phones.empty() && _dice.chance(30)) {
            context->deleteObject(*person.phones.back().object);
            person.phones.pop_back();
            return;
        }
        PlainPhone phone;
        phone.object = context->insertObjectOfEntity("Phone");
        phone.object->setValueForKey("uniqueId", "p" + std::to_string(++_phoneCount));
        phone.object->setRelated(phone.object->slot("owner"), person.object.get());
        set(*phone.object, "label", phone.label, anyText());
        set(*phone.object, "number", phone.number, anyText());
        if (_dice.chance(50))
            setReference(*phone.object, "kind", phone.kind, _dice.below(kinds.size()));
        person.phones.push_back(std::move(phone));
    }

    void toggleTeam(std::size_t at)
    {
        if (teams.empty())
            return;
        auto& person = people[at];
        const std::size_t team = _dice.below(teams.size());
        const auto& slot = person.object->slot("teams");
        if (person.teams.erase(team)) {
            person.object->removeObject(slot, *teams[team].object);
        } else {
            person.teams.insert(team);
            person.object->addObject(slot, *teams[team].object);
        }
    }

    void editPart(std::string_view entity, const os::ObjectRef& person, os::ObjectRef& part, Text& plain)
    {
        if (part && _dice.chance(20)) {
            context->deleteObject(*part);
            part = nullptr;
            plain.reset();
            return;
        }
        if (!part) {
            part = context->insertObjectOfEntity(entity);
            part->setRelated(part->slot("person"), person.get());
        }
        set(*part, "text", plain, anyText());
    }

    void addTag(PlainPerson& person)
    {
        const auto tag = context->insertObjectOfEntity("Tag");
        tag->setRelated(tag->slot("record"), person.object.get());
        set(*tag, "word", person.tags.emplace_back(), anyText());
    }

    Dice& _dice;
    int _phoneCount = 0;

public:
    const platform::Ref<os::StoreContext> context;
};

} // namespace test
