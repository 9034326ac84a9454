// How people get into the groups that cards speak of.
#include "interchange/import/ImportGroups.h"

#include "core/ZRConstants.h"
#include "core/ZRPerson.h"

#include <algorithm>
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

void ImportGroups::finish(const std::function<void(const Unknown&)>& tell)
{
    std::unordered_map<std::string, Ref<ZRGroup>> groups;
    for (const auto& [card, uid, file, number, line] : _cards)
        groups.emplace(uid.empty() ? "\n" + card.name : uid, groupCalled(card.name));
    for (const auto& [card, uid, file, number, line] : _cards) {
        const auto group = groupCalled(card.name);
        for (const auto& member : card.members) {
            const auto person = _people.find(comparable(member));
            const auto subgroup = groups.find(comparable(member));
            const auto record =
                person == _people.end() ? nullptr : _roster->recordForUniqueId(person->second);
            if (const auto somebody = platform::refCast<ZRPerson>(record))
                group->addMember(*somebody);
            else if (subgroup != groups.end())
                group->addSubgroup(*subgroup->second);
            else
                tell({file, number, line, member});
        }
    }
    _cards.clear();
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
