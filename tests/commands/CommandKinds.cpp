// One random command of each kind, and a roster for them to work on.
#include "commands/CommandDriver.h"

#include "commands/ZRAddToGroupCommand.h"
#include "commands/ZRAddURLFromBrowserCommand.h"
#include "commands/ZRChangePropertiesCommand.h"
#include "commands/ZRChangePropertyCommand.h"
#include "commands/ZRDeleteGroupsCommand.h"
#include "commands/ZRDeleteRecordsCommand.h"
#include "commands/ZREditSmartGroupCommand.h"
#include "commands/ZRImportCommand.h"
#include "commands/ZRMeCommand.h"
#include "commands/ZRNewGroupCommand.h"
#include "commands/ZRNewSmartGroupCommand.h"
#include "commands/ZRPasteGroupsCommand.h"
#include "commands/ZRPastePeopleCommand.h"
#include "commands/ZRRemoveFromGroupCommand.h"
#include "commands/ZRRenameGroupCommand.h"
#include "commands/ZRSetImageCommand.h"
#include "commands/ZRShowAsCommand.h"
#include "platform/files/Pasteboard.h"
#include "search/ZRSearchElement.h"
#include "search/ZRSmartGroup.h"
#include "store/ZRDBCache.h"

#include <algorithm>

namespace test {

namespace {

using Driver = CommandDriver;

template <class Command, class... Arguments>
bool perform(Driver& driver, Arguments&&... arguments)
{
    return platform::makeRef<Command>(std::forward<Arguments>(arguments)..., driver.roster())
        ->performWithActionName("ACTION");
}

ZRRecordList joined(ZRRecordList a, const ZRRecordList& b)
{
    a.insert(a.end(), b.begin(), b.end());
    return a;
}

Ref<ZRSearchElement> search(Driver& driver)
{
    return ZRPerson::searchElementForProperty(
        kZRFirstNameProperty, {}, {}, Value(driver.word()), kZRContainsSubStringCaseInsensitive);
}

Ref<ZRSmartGroup> someSmartGroup(Driver& driver)
{
    for (const auto& group : driver.someGroups(50))
        if (auto smart = platform::refCast<ZRSmartGroup>(group))
            return smart;
    return nullptr;
}

/// The records that came with a subscription.
ZRRecordList subscribed(Driver& driver, const ZRRecordClass& recordClass)
{
    return locked(*driver.roster(), ZRAccess::read,
        [&]() ZR_NTS { return driver.roster()->nts_AllRecordsForClass(recordClass); });
}

// ---- cards

bool newPerson(Driver& driver)
{
    const auto cache = driver.roster()->dbCache();
    const auto group = driver.maybe(50) ? driver.someGroup() : nullptr;
    const auto card = driver.newPerson();
    cache->startEditingNewPerson(card, group);
    cache->endEditing(card);
    return true;
}

bool changeProperty(Driver& driver)
{
    const auto card = driver.somebody();
    const auto properties = driver.someProperties();
    if (!card)
        return false;
    const auto& [property, value] = properties[driver.number(properties.size())];
    const auto command = platform::makeRef<ZRChangePropertyCommand>(
        card, std::string(property) + ".part", card->valueForProperty(property), driver.roster());
    card->setValue(value, property);
    command->setNewValue(value);
    return command->performWithActionName("EDIT");
}

bool changeProperties(Driver& driver)
{
    const auto card = driver.somebody();
    if (!card)
        return false;
    const auto properties = driver.someProperties();
    std::vector<std::pair<std::string, Value>> former;
    for (const auto& [property, value] : properties) {
        const Value present = card->valueForProperty(property);
        former.emplace_back(property, present.isAbsent() ? Value(platform::NullMarker()) : present);
    }
    const auto command = platform::makeRef<ZRChangePropertiesCommand>(
        card, Value::dictionary(std::move(former)), driver.someGroup(), driver.roster());
    for (const auto& [property, value] : properties)
        card->setValue(driver.maybe(80) ? value : Value(), property);
    return command->performWithActionName("EDIT");
}

bool deleteRecords(Driver& driver)
{
    ZRRecordList records = driver.maybe(80) ? driver.somePeople(2) : ZRRecordList();
    if (driver.maybe(40))
        records =
            driver.maybe(50) ? joined(records, driver.someGroups(2)) : joined(driver.someGroups(2), records);
    return perform<ZRDeleteRecordsCommand>(driver, driver.someGroup(), records);
}

bool setImage(Driver& driver)
{
    const Value data = driver.maybe(70) ? Value::data("image " + driver.word()) : Value();
    const Value large = driver.maybe(50) ? Value::data("large " + driver.word()) : Value();
    return perform<ZRSetImageCommand>(driver, driver.somebody(), data, large);
}

// ---- groups

bool addToGroup(Driver& driver)
{
    ZRRecordList records = driver.somePeople(4);
    if (driver.maybe(40))
        records = joined(records, driver.someGroups(2));
    if (driver.maybe(20))
        records = joined(records, subscribed(driver, ZRSubscribedPerson::recordClassDescription));
    Ref<ZRGroup> group = driver.someGroup();
    const ZRRecordList others = subscribed(driver, ZRSubscribedGroup::recordClassDescription);
    if (driver.maybe(20) && !others.empty())
        group = platform::refCast<ZRGroup>(others.front());
    return perform<ZRAddToGroupCommand>(driver, group, records);
}

bool newGroup(Driver& driver)
{
    return perform<ZRNewGroupCommand>(
        driver, joined(driver.somePeople(4), driver.someGroups(2)), driver.someGroup());
}

bool newSmartGroup(Driver& driver)
{
    return perform<ZRNewSmartGroupCommand>(driver, driver.word(), search(driver), driver.maybe(50));
}

// ---- pasting and importing

bool pastePeople(Driver& driver)
{
    const std::shared_ptr<platform::Pasteboard> board = platform::makePasteboard();
    ZRRecord::writeRecords(driver.somePeople(3), *board);
    return platform::makeRef<ZRPastePeopleCommand>(
        driver.maybe(70) ? driver.someGroup() : nullptr, driver.roster(), board)
        ->performWithActionName("PASTE");
}

bool pasteGroups(Driver& driver)
{
    const std::shared_ptr<platform::Pasteboard> board = platform::makePasteboard();
    ZRRecord::writeRecords(driver.someGroups(2), *board);
    return platform::makeRef<ZRPasteGroupsCommand>(driver.roster(), board)->performWithActionName("PASTE");
}

/// Cards that came, cards that were updated, and cards that were merged into others and are gone.
bool import(Driver& driver)
{
    ZRImportCommand::Work work;
    work.selectedGroup = driver.someGroup();
    for (std::size_t i = 0, count = driver.number(4); i < count; ++i)
        work.addedPeople.push_back(driver.newPerson());
    work.updatedPeople = driver.somePeople(3);
    std::erase_if(work.updatedPeople,
        [&](const auto& one) { return std::ranges::find(work.addedPeople, one) != work.addedPeople.end(); });
    for (const auto& card : work.updatedPeople) {
        work.updatedPeopleProperties.push_back(allPropertiesIncludingImage(*card));
        for (const auto& [property, value] : driver.someProperties())
            card->setValue(value, property);
        if (work.selectedGroup && joinGroup(*work.selectedGroup, card))
            work.addedToGroup.push_back(card);
    }
    ZRRecordList dropped = driver.somePeople(2);
    std::erase_if(dropped, [&](const auto& one) {
        return std::ranges::find(work.addedPeople, one) != work.addedPeople.end()
            || std::ranges::find(work.updatedPeople, one) != work.updatedPeople.end();
    });
    work.deletePeopleCommand = platform::makeRef<ZRDeleteRecordsCommand>(nullptr, dropped, driver.roster());
    work.nestedCommandsAreDone = driver.maybe(50);
    if (work.nestedCommandsAreDone) {
        work.deletePeopleCommand->keepRecords();
        for (const auto& card : dropped)
            driver.roster()->removeRecord(card);
    } else if (const auto group = driver.someGroup()) {
        work.mergedIntoGroupsCommands.push_back(
            platform::makeRef<ZRAddToGroupCommand>(group, work.updatedPeople, driver.roster()));
    }
    return perform<ZRImportCommand>(driver, std::move(work));
}

} // namespace

CommandDriver::Kinds allCommandKinds()
{
    return {{"new person", newPerson}, {"change property", changeProperty},
        {"change properties", changeProperties}, {"delete records", deleteRecords}, {"set image", setImage},
        {"show as",
            [](Driver& d) {
                return perform<ZRShowAsCommand>(d, d.somePeople(5), d.someGroup(), d.maybe(60) ? 1 : 0);
            }},
        {"me",
            [](Driver& d) {
                const Ref<ZRRecord> person = d.maybe(90) ? d.somebody() : nullptr;
                return perform<ZRMeCommand>(d, d.someGroup(), person);
            }},
        {"add url",
            [](Driver& d) {
                return perform<ZRAddURLFromBrowserCommand>(
                    d, d.somePeople(3), "http://" + d.word() + ".example");
            }},
        {"add to group", addToGroup},
        {"remove from group",
            [](Driver& d) {
                const auto group = d.someGroup();
                return perform<ZRRemoveFromGroupCommand>(
                    d, group, group ? group->membersAndSubgroups() : ZRRecordList());
            }},
        {"new group", newGroup},
        {"delete groups", [](Driver& d) { return perform<ZRDeleteGroupsCommand>(d, d.someGroups(2)); }},
        {"rename group",
            [](Driver& d) { return perform<ZRRenameGroupCommand>(d, d.someGroup(), Value(d.word())); }},
        {"new smart group", newSmartGroup},
        {"edit smart group",
            [](Driver& d) {
                return perform<ZREditSmartGroupCommand>(
                    d, someSmartGroup(d), d.word(), d.maybe(90) ? search(d) : nullptr, d.maybe(50));
            }},
        {"paste people", pastePeople}, {"paste groups", pasteGroups}, {"import", import}};
}

void declareProperties(const Ref<ZRRoster>& roster)
{
    ZRPerson::addPropertiesAndTypes(
        Value::dictionary({{"driverText", Value(1)}, {"driverTexts", Value(257)}}), roster.get());
}

void populate(CommandDriver& driver)
{
    const auto& roster = driver.roster();
    declareProperties(roster);
    for (int i = 0; i < 8; ++i)
        driver.newPerson();
    for (int i = 0; i < 4; ++i)
        perform<ZRNewGroupCommand>(driver, driver.somePeople(5), nullptr);
    const auto top = driver.someGroup();
    for (const auto& group : driver.someGroups(3))
        top->addSubgroup(static_cast<ZRGroup&>(*group));
    newSmartGroup(driver);
    const Value location = multiValue({{Value("http://shared.example/book"), kZRSubscribeLabel}});
    for (const auto* recordClass :
        {&ZRSubscribedPerson::recordClassDescription, &ZRSubscribedGroup::recordClassDescription})
        ZRRecord::initWithUniqueId(*recordClass, {}, roster)->setValue(location, kZRRemoteLocationProperty);
    roster->setMe(driver.somebody());
    driver.chooseEntries();
    roster->save();
}

} // namespace test
