// How a record is found by what people call it.
#include "Lookup.h"

#include "CardJson.h"

#include "core/ZRGroup.h"
#include "core/ZRPerson.h"
#include "platform/text/Fold.h"
#include "search/ZRSmartGroup.h"

#include <fmt/format.h>

#include <algorithm>

using platform::Ref;

namespace {

/// A text this long names a record by its whole id.
constexpr std::size_t kShortestId = 38;
/// And by the start of its id, as lists print it.
constexpr std::size_t kShortestIdPrefix = 8;

/// ":\n  ID  name" for some of the candidates.
template <class Records>
std::string candidates(const Records& found)
{
    constexpr std::size_t named = 5;
    std::string text = ":";
    for (std::size_t i = 0; i < found.size() && i < named; ++i)
        text += fmt::format("\n  {}  {}", found[i]->uniqueId(), displayName(*found[i]));
    return text + (found.size() > named ? "\n  …" : "");
}

bool isOfKind(const ZRRecord& record, GroupKind kind)
{
    const bool isSmart = dynamic_cast<const ZRSmartGroup*>(&record);
    return dynamic_cast<const ZRGroup*>(&record)
        && (kind == GroupKind::any || isSmart == (kind == GroupKind::smart));
}

std::string_view nameOf(GroupKind kind) { return kind == GroupKind::smart ? "smart group" : "group"; }

/// Of those found by id or by folded name, the ones whose name is just that text, if there are any.
std::vector<Ref<ZRGroup>> groupsCalled(ZRRoster& roster, const std::string& text, GroupKind kind)
{
    const std::string folded = platform::foldCaseAndDiacritics(text);
    std::vector<Ref<ZRGroup>> found, exact;
    for (const auto& group : groupsByName(roster, kind)) {
        const std::string name = group->name();
        if (name == text)
            exact.push_back(group);
        else if (platform::foldCaseAndDiacritics(name) == folded
            || (text.size() >= kShortestIdPrefix && group->uniqueId().starts_with(text)))
            found.push_back(group);
    }
    return exact.empty() ? found : exact;
}

} // namespace

std::string joined(const std::vector<std::string>& words)
{
    std::string text;
    for (const auto& word : words)
        text += (text.empty() ? "" : " ") + word;
    return text;
}

Ref<ZRRecord> recordNamed(ZRRoster& roster, const std::string& text)
{
    if (auto record = text.size() >= kShortestId ? roster.recordForUniqueId(text) : nullptr)
        return record;
    const auto found = roster.peopleMatchingText(text);
    if (found.empty())
        throw Failure(exitStatus::refused, fmt::format("no card has '{}'", text));
    if (found.size() > 1)
        throw Failure(exitStatus::refused,
            fmt::format("{} cards have '{}'; say which by its id{}", found.size(), text, candidates(found)));
    return found.front();
}

Ref<ZRPerson> personNamed(ZRRoster& roster, const std::string& text)
{
    auto person = platform::refCast<ZRPerson>(recordNamed(roster, text));
    if (!person)
        throw Failure(exitStatus::refused, fmt::format("'{}' is no person", text));
    return person;
}

Ref<ZRPerson> personCalled(ZRRoster& roster, const std::string& text)
{
    if (text.size() >= kShortestId && roster.recordForUniqueId(text))
        return personNamed(roster, text);
    const std::string folded = platform::foldCaseAndDiacritics(text), id = platform::foldCase(text);
    const auto found = roster.peopleMatchingText(text);
    ZRRecordList called;
    for (const auto& record : found)
        if (platform::foldCaseAndDiacritics(displayName(*record)) == folded
            || (text.size() >= kShortestIdPrefix && platform::foldCase(record->uniqueId()).starts_with(id)))
            called.push_back(record);
    if (called.empty())
        throw Failure(exitStatus::refused,
            fmt::format("no card is called '{}'{}", text,
                found.empty() ? "" : "; it is in the cards" + candidates(found)));
    if (called.size() > 1)
        throw Failure(exitStatus::refused,
            fmt::format(
                "{} cards are called '{}'; say which by its id{}", called.size(), text, candidates(called)));
    return platform::refCast<ZRPerson>(called.front());
}

std::vector<Ref<ZRPerson>> peopleCalled(ZRRoster& roster, const std::vector<std::string>& texts)
{
    std::vector<Ref<ZRPerson>> people;
    for (const auto& text : texts) {
        auto person = personCalled(roster, text);
        requireWritable(*person);
        if (std::ranges::find(people, person) == people.end())
            people.push_back(std::move(person));
    }
    return people;
}

void requireWritable(ZRPerson& person)
{
    if (person.isReadOnly())
        throw Failure(exitStatus::refused,
            fmt::format(
                "'{}' cannot be changed here: it belongs to somebody else, or the roster is read-only",
                displayName(person)));
}

std::vector<Ref<ZRGroup>> groupsByName(ZRRoster& roster, GroupKind kind)
{
    std::vector<Ref<ZRGroup>> groups;
    for (const auto& record : roster.groups())
        if (isOfKind(*record, kind))
            groups.push_back(platform::refCast<ZRGroup>(record));
    std::ranges::stable_sort(
        groups, [](const auto& a, const auto& b) { return ZRCompareGroupName(*a, *b) < 0; });
    return groups;
}

Ref<ZRGroup> groupIfNamed(ZRRoster& roster, const std::string& text, GroupKind kind)
{
    if (const auto record = text.size() >= kShortestId ? roster.recordForUniqueId(text) : nullptr)
        return isOfKind(*record, kind) ? platform::refCast<ZRGroup>(record) : nullptr;
    const auto found = groupsCalled(roster, text, kind);
    if (found.size() > 1)
        throw Failure(exitStatus::refused,
            fmt::format("{} {}s are called '{}'; say which by its id{}", found.size(), nameOf(kind), text,
                candidates(found)));
    return found.empty() ? nullptr : found.front();
}

Ref<ZRGroup> groupNamed(ZRRoster& roster, const std::string& text, GroupKind kind)
{
    auto group = groupIfNamed(roster, text, kind);
    if (!group)
        throw Failure(exitStatus::refused, fmt::format("there is no {} '{}'", nameOf(kind), text));
    return group;
}
