// How people get into the groups that cards speak of.
#include "interchange/import/ImportGroups.h"

#include "core/ZRConstants.h"
#include "core/ZRPerson.h"

#include <algorithm>
#include <unordered_set>
#include <utility>

namespace interchange {

using platform::Ref;

namespace {

/// UIDs are compared without the scheme, which many writers leave out, and in any case of letters.
std::string comparable(std::string_view uid)
{
    constexpr std::string_view scheme = "urn:uuid:";
    std::string form(uid);
    std::ranges::transform(
        form, form.begin(), [](char c) { return c >= 'A' && c <= 'Z' ? char(c + 32) : c; });
    return form.starts_with(scheme) ? form.substr(scheme.size()) : form;
}

} // namespace

void ImportGroups::addCard(vcard::prepare::GroupCard card, std::string_view uid, std::size_t file,
    std::size_t number, std::size_t line)
{
    _cards.push_back({std::move(card), comparable(uid), file, number, line});
}

void ImportGroups::addPerson(
    ZRPerson& person, std::string_view uid, const std::vector<std::string>& categories)
{
    if (!uid.empty())
        _people[comparable(uid)] = person.uniqueId();
    for (const auto& category : categories)
        groupCalled(category)->addMember(person);
}

void ImportGroups::finish(const Tell& tell)
{
    Groups groups;
    for (const auto& card : _cards)
        groups.emplace(card.uid.empty() ? "\n" + card.card.name : card.uid, groupCalled(card.card.name));
    for (const auto& card : _cards)
        fill(card, groups, tell);
    _cards.clear();
}

/// One fetch for all who are in the group.
void ImportGroups::fill(const Card& card, const Groups& groups, const Tell& tell)
{
    const auto group = groupCalled(card.card.name);
    std::vector<std::string> ids;
    for (const auto& member : card.card.members)
        if (const auto person = _people.find(comparable(member)); person != _people.end())
            ids.push_back(person->second);
    const auto people = _roster->recordsForUniqueIds(ids);
    group->addMembers(people);
    std::unordered_set<std::string> there;
    for (const auto& person : people)
        there.insert(person->uniqueId());
    for (const auto& member : card.card.members) {
        const auto uid = comparable(member);
        const auto person = _people.find(uid);
        if (person != _people.end() && there.contains(person->second))
            continue;
        if (const auto subgroup = groups.find(uid); subgroup != groups.end())
            group->addSubgroup(*subgroup->second);
        else
            tell({card.file, card.number, card.line, member});
    }
}

Ref<ZRGroup> ImportGroups::groupCalled(const std::string& name)
{
    if (!std::exchange(_areGroupsKnown, true))
        for (const auto& record : _roster->groups())
            if (const auto group = platform::refCast<ZRGroup>(record))
                _groups.emplace(group->name(), group);
    auto& group = _groups[name];
    if (!group) {
        group = ZRGroup::initWithRoster(_roster);
        group->setValue(platform::Value(name), zr::kZRGroupNameProperty);
    }
    return group;
}

} // namespace interchange
