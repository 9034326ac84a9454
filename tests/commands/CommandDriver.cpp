// How the driver makes things up, walks, and compares.
#include "commands/CommandDriver.h"

#include "core/ZRMutableMultiValue.h"
#include "core/ZRPerson.h"
#include "search/ZRSmartGroup.h"
#include "store/ListWorld.h"
#include "store/ZRManagedObjectContext.h"

#include <fmt/format.h>

#include <algorithm>
#include <set>

namespace test {

namespace {

constexpr int kChecksBetweenOpenings = 60;

std::string textOf(const Snapshot& snapshot)
{
    std::string text;
    for (const auto& [id, lines] : snapshot)
        text += fmt::format("{}\n{}\n\f", id, lines);
    return text;
}

/// The snapshot of a process that opens the store which is open here.
const Role opens("open and tell everything", [](const Words&) { return textOf(snapshotOf(openShared())); });

Snapshot snapshotFrom(const std::string& text)
{
    Snapshot snapshot;
    for (std::size_t at = 0, end = 0; (end = text.find("\n\f", at)) != std::string::npos; at = end + 2) {
        const std::size_t line = text.find('\n', at);
        snapshot[text.substr(at, line - at)] = text.substr(line + 1, end - line - 1);
    }
    return snapshot;
}

/// What is wrong with the sorted lists that commands have edited in place.
std::string faultOfLists(const Ref<ZRRoster>& roster)
{
    const auto cache = roster->dbCache();
    std::string fault = faultOf(cache->allPeople()->records(), roster->people(), *cache);
    // Looking at the members of a smart group changes it.
    for (const auto& record : roster->groups())
        if (const auto group = platform::refCast<ZRGroup>(record);
            fault.empty() && !dynamic_cast<const ZRSmartGroup*>(group.get()))
            fault = faultOf(cache->membersOfGroup(group)->records(), group->membersAndSubgroups(), *cache);
    const auto groupsOf = [](ZRDBCache& lists) {
        const ZRRecordList groups = lists.allGroups();
        std::set<const ZRRecord*> handles;
        for (const auto& group : groups)
            handles.insert(group.get());
        return handles;
    };
    const bool hasAllGroups = groupsOf(*cache) == groupsOf(*ZRDBCache::initWithRoster(roster));
    return !fault.empty() || hasAllGroups ? fault : "other groups than there are";
}

/// Without what only the shared roster has.
Snapshot withoutLastImport(Snapshot snapshot)
{
    snapshot.erase("last import");
    return snapshot;
}

} // namespace

CommandDriver::CommandDriver(Ref<ZRRoster> roster, std::uint32_t seed)
    : _roster(std::move(roster)), _manager(std::make_shared<UndoManager>()), _random(seed)
{
    _roster->managedObjectContext()->setUndoManager(_manager.get());
}

CommandDriver::~CommandDriver() { _roster->managedObjectContext()->setUndoManager(nullptr); }

// ---- walking

std::string CommandDriver::run(const Kinds& kinds, int commands)
{
    _states = {snapshotOf(_roster)};
    _place = 0;
    for (int done = 0; done < commands;) {
        const auto& [name, perform] = kinds[number(kinds.size())];
        if (!perform(*this)) {
            if (std::string wrong = difference(name + " that did nothing", false); !wrong.empty())
                return wrong;
            continue;
        }
        ++done;
        if (std::string wrong = step(name); !wrong.empty())
            return wrong;
        if (std::string wrong = maybe(25) ? walk() : std::string(); !wrong.empty())
            return wrong;
    }
    for (const std::size_t end : {std::size_t(0), _states.size() - 1})
        if (std::string wrong = goTo(end) + difference("the end of the way", true); !wrong.empty())
            return wrong;
    return {};
}

std::string CommandDriver::step(const std::string& what)
{
    _log += " " + what;
    _states.resize(++_place);
    _states.push_back(snapshotOf(_roster));
    return difference(what, false);
}

std::string CommandDriver::walk()
{
    const std::size_t down = _place - std::min(_place, 1 + number(6));
    std::string wrong = goTo(down);
    return wrong.empty() ? goTo(down + number(_states.size() - down)) : wrong;
}

std::string CommandDriver::goTo(std::size_t place)
{
    while (_place != place) {
        const bool goesDown = place < _place;
        if (!(goesDown ? _manager->canUndo() : _manager->canRedo()))
            return fmt::format("nothing to go on with at {} after{}", _place, _log);
        if (goesDown)
            _manager->undo();
        else
            _manager->redo();
        _place += goesDown ? std::size_t(-1) : 1;
        _log += goesDown ? " -" : " +";
        if (std::string wrong =
                difference(goesDown ? "undo" : "redo", ++_checks % kChecksBetweenOpenings == 0);
            !wrong.empty())
            return wrong;
    }
    return {};
}

std::string CommandDriver::difference(const std::string& what, bool reopens) const
{
    const Snapshot& expected = _states[_place];
    const auto told = [&](std::string_view where, const std::string& wrong) {
        return wrong.empty() ? std::string() : fmt::format("{} in {}:\n{}after{}", what, where, wrong, _log);
    };
    std::string wrong = told("the roster", differenceOf(expected, snapshotOf(_roster)));
    if (wrong.empty())
        wrong = told("the store",
            differenceOf(withoutLastImport(expected), snapshotOf(_roster->parallelUniverseRoster())));
    if (wrong.empty())
        wrong = told("the lists", faultOfLists(_roster));
    if (wrong.empty() && reopens)
        wrong = told(
            "a new process", differenceOf(expected, snapshotFrom(play("open and tell everything").answer)));
    return wrong;
}

// ---- making things up

std::size_t CommandDriver::number(std::size_t bound) { return _random() % bound; }

std::string CommandDriver::word()
{
    static constexpr const char* words[] = {"Ana", "Bo", "Cy", "Dà", "Eva Maria", "Ük", "O'Neil", "李", ""};
    return words[number(std::size(words))] + std::to_string(number(50));
}

ZRRecordList CommandDriver::some(ZRRecordList records, std::size_t atMost)
{
    std::ranges::shuffle(records, _random);
    records.resize(std::min(records.size(), 1 + number(atMost)));
    return records;
}

ZRRecordList CommandDriver::somePeople(std::size_t atMost) { return some(_roster->people(), atMost); }
ZRRecordList CommandDriver::someGroups(std::size_t atMost) { return some(_roster->groups(), atMost); }

Ref<ZRPerson> CommandDriver::somebody()
{
    const ZRRecordList one = somePeople(1);
    return one.empty() ? nullptr : platform::refCast<ZRPerson>(one.front());
}

Ref<ZRGroup> CommandDriver::someGroup()
{
    for (const auto& group : someGroups(20))
        if (&group->recordClass() == &ZRGroup::recordClassDescription)
            return platform::refCast<ZRGroup>(group);
    return nullptr;
}

std::vector<std::pair<std::string_view, Value>> CommandDriver::someProperties()
{
    const auto entries = [&](std::size_t atMost) {
        std::vector<Entry> made;
        for (std::size_t i = 0, count = 1 + number(atMost); i < count; ++i)
            made.push_back({Value(word() + "@x.example"), maybe(50) ? kZRWorkLabel : kZRHomeLabel});
        const auto primary = static_cast<ZRIndex>(number(made.size()));
        return multiValue(made, primary);
    };
    std::vector<std::pair<std::string_view, Value>> all = {
        {kZRFirstNameProperty, Value(word())},
        {kZRLastNameProperty, Value(word())},
        {kZROrganizationProperty, Value(word())},
        {kZRNoteProperty, Value("line\n" + word())},
        {kZRBirthdayProperty, Value(platform::Date{43200.0 + 86400.0 * static_cast<double>(number(9000))})},
        {kZREmailProperty, entries(4)},
        {kZRPhoneProperty, entries(3)},
        {kZRURLsProperty, entries(2)},
        {kZRAIMInstantProperty, entries(2)},
        {kZRRelatedNamesProperty, entries(2)},
        {kZRAddressProperty,
            multiValue(
                {{Value::dictionary({{"Street", Value(word())}, {"City", Value(word())}}), kZRHomeLabel},
                    {Value::dictionary({{"Country", Value(word())}}), kZRWorkLabel}})},
        {"driverText", Value(word())},
        {"driverTexts", entries(2)},
    };
    std::erase_if(
        all, [&](const auto& property) { return property.first != kZRLastNameProperty && maybe(40); });
    return all;
}

Ref<ZRPerson> CommandDriver::newPerson()
{
    auto made = person(_roster, someProperties());
    if (maybe(50))
        made->setImageData(Value::data("picture " + word()));
    return made;
}

void CommandDriver::chooseEntries()
{
    for (const auto& record : _roster->groups())
        for (const auto& member : static_cast<const ZRGroup&>(*record).members())
            for (const auto property : {kZREmailProperty, kZRPhoneProperty, kZRAddressProperty}) {
                const Value value = member->valueForProperty(property);
                const auto* entries = value.as<ZRMultiValue>();
                if (entries && maybe(50))
                    static_cast<ZRGroup&>(*record).setDistributionIdentifier(
                        entries->identifierAtIndex(entries->count() - 1), property,
                        static_cast<ZRPerson&>(*member));
            }
}

} // namespace test
