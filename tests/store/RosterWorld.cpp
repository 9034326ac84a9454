// How the tests set a roster up, and act as other processes.
#include "store/RosterWorld.h"

#include "platform/files/Files.h"
#include "platform/text/Dates.h"
#include "platform/value/PropertyList.h"

#include <fmt/ranges.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <set>
#include <stdexcept>
#include <unistd.h>

namespace test {

Home::Home()
{
    std::string name = (fs::temp_directory_path() / "home-XXXXXX").string();
    if (!mkdtemp(name.data()))
        throw std::runtime_error("no home");
    _path = name;
    // Another user who plays here must be able to walk in.
    for (auto folder = _path; folder != fs::path("/tmp") && folder != folder.root_path();
         folder = folder.parent_path()) {
        std::error_code notOurs;
        fs::permissions(
            folder, fs::perms::group_exec | fs::perms::others_exec, fs::perm_options::add, notOurs);
    }
}

Home::~Home()
{
    std::error_code ignored;
    fs::remove_all(_path, ignored);
}

Stage Home::stage(std::map<std::string, std::string> environment, uid_t user) const
{
    for (const auto& [variable, folder] : {std::pair{"HOME", "home"}, {"XDG_DATA_HOME", "data"},
             {"XDG_CONFIG_HOME", "config"}, {"XDG_CACHE_HOME", "cache"}, {"XDG_RUNTIME_DIR", "run"},
             {"TMPDIR", "tmp"}, {"XDG_DATA_DIRS", "system"}}) {
        fs::create_directories(_path / folder);
        fs::permissions(_path / folder, fs::perms::owner_all);
        environment.try_emplace(variable, _path / folder);
    }
    if (user != 0)
        belongTo(user);
    return {std::move(environment), user};
}

void Home::belongTo(uid_t user) const
{
    std::ignore = lchown(_path.c_str(), user, user);
    for (const auto& file : fs::recursive_directory_iterator(_path))
        std::ignore = lchown(file.path().c_str(), user, user);
}

void Home::setPreferences(const Value& preferences) const
{
    const auto bytes = platform::encodePropertyList(preferences, platform::PropertyListFormat::xml);
    fs::create_directories(_path / "config");
    const auto file = _path / "config" / (std::string(program_invocation_short_name) + ".plist");
    EXPECT_TRUE(platform::writeFileAtomically(file.string(), *bytes));
}

Ref<ZRRoster> openShared()
{
    ZRRoster::setShouldCreateEmptyDatabase(true);
    auto roster = ZRRoster::sharedRoster();
    if (!roster)
        throw std::runtime_error("no roster: " + ZRRoster::openingReport());
    return roster;
}

Value multiValue(const std::vector<Entry>& entries, ZRIndex primary)
{
    const auto made = platform::makeRef<ZRMutableMultiValue>();
    for (const auto& [value, label] : entries)
        made->addValue(value, label);
    if (!entries.empty())
        made->setPrimaryIdentifier(made->identifierAtIndex(primary));
    return Value(made);
}

Ref<ZRPerson> person(
    const Ref<ZRRoster>& roster, const std::vector<std::pair<std::string_view, Value>>& properties)
{
    auto made = ZRPerson::initWithRoster(roster);
    for (const auto& [property, value] : properties)
        EXPECT_TRUE(made->setValue(value, property)) << property;
    return made;
}

namespace {

std::string linesOf(const ZRMultiValue& values)
{
    std::string text;
    for (ZRIndex i = 0; i < values.count(); ++i)
        text += fmt::format("\n    {}{} {}: {}",
            values.primaryIdentifier() == values.identifierAtIndex(i) ? "*" : " ",
            values.identifierAtIndex(i), values.labelAtIndex(i), test::textOf(values.valueAtIndex(i)));
    return text;
}

std::string dayOf(const Value& date)
{
    const auto day = platform::calendarDayOf(date.asDate());
    return "day " + (day ? platform::iso8601(*day) : std::string("outside the calendar"));
}

/// The same value, with its dates told by their days.
Value withDays(const Value& value)
{
    if (value.isDate())
        return Value(dayOf(value));
    const auto* entries = value.as<ZRMultiValue>();
    if (!entries)
        return value;
    const auto days = entries->mutableCopy();
    for (ZRIndex i = 0; i < days->count(); ++i)
        days->replaceValueAtIndex(i, withDays(days->valueAtIndex(i)));
    return Value(days);
}

} // namespace

std::string textOf(const Value& value)
{
    switch (value.kind()) {
    case Value::Kind::absent:
        return "absent";
    case Value::Kind::null:
        return "null";
    case Value::Kind::boolean:
        return value.asBoolean() ? "true" : "false";
    case Value::Kind::integer:
        return fmt::format("whole {}", value.asInteger());
    case Value::Kind::real:
        return fmt::format("real {:a}", value.asReal());
    case Value::Kind::date:
        return fmt::format("date {:.6f}", value.asDate().seconds);
    case Value::Kind::string:
        return fmt::format("\"{}\"", value.asText());
    case Value::Kind::data:
        return "data " + testing::PrintToString(value.asBytes());
    case Value::Kind::array: {
        std::string text;
        for (const auto& element : value.asArray())
            text += textOf(element) + ", ";
        return "[" + text + "]";
    }
    case Value::Kind::dictionary: {
        std::set<std::string> entries;
        for (const auto& [key, entry] : value.asDictionary()->entries())
            entries.insert(key + " = " + textOf(entry) + "; ");
        return fmt::format("{{{}}}", fmt::join(entries, ""));
    }
    case Value::Kind::object:
        break;
    }
    const auto* values = value.as<ZRMultiValue>();
    return values ? linesOf(*values) : value.description();
}

std::string textOf(const ZRRecord& record, const std::vector<std::string_view>& days)
{
    std::string text;
    for (const auto& property : ZRRecord::propertiesWithRoster(record.recordClass(), record.roster().get())) {
        const Value value = record.valueForProperty(property);
        const bool isDay = std::ranges::find(days, property) != days.end();
        text += property + ": " + textOf(isDay ? withDays(value) : value) + "\n";
    }
    return text;
}

} // namespace test
