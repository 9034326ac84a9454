// How a roster and its plain twin stay alike.
#include "search/TwinRoster.h"

#include "core/CountryCodes.h"
#include "core/ZRGroup.h"
#include "search/ZRSearchElementMatch.h"
#include "search/ZRSmartGroup.h"
#include "store/ZRMutableSet.h"
#include "store/ZROSRecord.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <iterator>
#include <utility>

namespace test {

Ref<ZRSearchElement> elementOf(const Condition& search)
{
    if (search.children.empty()) {
        const auto match = ZRSearchElementMatch::initWithProperty(
            search.property, search.label, search.key, search.value, search.ofPeople, search.comparison);
        match->setDiacriticInsensitiveOption(search.ignoresDiacritics);
        return match;
    }
    std::vector<Ref<ZRSearchElement>> children;
    for (const auto& child : search.children)
        children.push_back(elementOf(child));
    return ZRSearchElement::searchElementForConjunction(search.conjunction, children);
}

std::set<std::string> idsOf(const ZRRecordList& records)
{
    std::set<std::string> ids;
    for (const auto& record : records)
        EXPECT_TRUE(ids.insert(record->uniqueId()).second) << "found twice";
    return ids;
}

// ---- where and when

PlaceAndTime::PlaceAndTime(const char* zone, platform::CalendarTime time)
{
    setenv("TZ", zone, 1);
    _clock.setNow(platform::dateOf(time)->seconds);
}

PlaceAndTime::~PlaceAndTime() { setenv("TZ", "UTC", 1); }

// ---- twins

namespace {

Value typesIn(const std::map<std::string, ZRPropertyType, std::less<>>& types)
{
    std::vector<std::pair<std::string, Value>> entries;
    for (const auto& [name, type] : types)
        entries.emplace_back(name, Value(type));
    return Value::dictionary(std::move(entries));
}

std::vector<std::string> split(std::string_view text, std::string_view separator)
{
    std::vector<std::string> parts;
    for (std::size_t at = 0; at <= text.size();) {
        const auto end = std::min(text.find(separator, at), text.size());
        parts.emplace_back(text.substr(at, end - at));
        at = end + separator.size();
    }
    return parts;
}

Value dictionaryIn(std::string_view text)
{
    std::vector<std::pair<std::string, Value>> entries;
    for (const auto& entry : split(text.substr(1, text.size() - 2), ", ")) {
        const auto colon = entry.find(':');
        entries.emplace_back(entry.substr(0, colon), Value(entry.substr(colon + 1)));
    }
    return Value::dictionary(std::move(entries));
}

Value dateIn(const std::string& text)
{
    constexpr double day = 86400;
    const Date now{platform::Clock::current().now()};
    if (text.starts_with("now"))
        return Value(Date{now.seconds + std::strtod(text.c_str() + 3, nullptr)});
    if (text.starts_with("today")) {
        const auto gmt = platform::TimeZone::gmt();
        const double noon = platform::noonInGMTOfLocalDay(now).seconds;
        const Date wanted{noon + day * std::strtod(text.c_str() + 5, nullptr)};
        return Value(*platform::noonOf(*platform::calendarDayOf(wanted, gmt)));
    }
    int year = 0, month = 0, dayOfMonth = 0;
    std::sscanf(text.c_str(), "%d-%d-%d", &year, &month, &dayOfMonth);
    return Value(*platform::noonOf({year, month, dayOfMonth}));
}

/// What is read back of an entry: empty parts of an address are gone, and its country code is corrected.
Value asRead(const Value& value, std::string_view property)
{
    if (property != zr::kZRAddressProperty)
        return value;
    std::vector<std::pair<std::string, Value>> parts;
    for (const auto& [key, part] : value.asDictionary()->entries())
        if (!part.asText().empty())
            parts.emplace_back(
                key, key == zr::kZRAddressCountryCodeKey ? Value(correctedCountryCode(part.asText())) : part);
    return Value::dictionary(std::move(parts));
}

} // namespace

TwinRoster::TwinRoster(Ref<ZRRoster> roster) : _roster(std::move(roster))
{
    _plain.personTypes = {{"Hobby", 1}, {"Lucky", 2}, {"Ratio", 3}, {"Joined", 4}, {"Tags", 5}, {"Map", 6},
        {"Blob", 7}, {"Aliases", 257}, {"Scores", 258}, {"Weights", 259}, {"Visits", 260}, {"Lists", 261},
        {"Maps", 262}, {"Blobs", 263}};
    _plain.groupTypes = {{"Motto", 1}, {"Rank", 2}, {"Songs", 257}};
    ZRPerson::addPropertiesAndTypes(typesIn(_plain.personTypes), _roster.get());
    ZRGroup::addPropertiesAndTypes(typesIn(_plain.groupTypes), _roster.get());
}

const NaiveRoster& TwinRoster::plain()
{
    if (!std::exchange(_hasChanged, false))
        return _plain;
    for (auto& [id, record] : _plain.records)
        for (const auto property : {zr::kZRCreationDateProperty, zr::kZRModificationDateProperty})
            record.values[std::string(property)] = _records.at(id)->valueForProperty(property);
    return _plain;
}

std::vector<std::string> TwinRoster::idsOfKind(NaiveRecord::Kind kind) const
{
    std::vector<std::string> ids;
    std::ranges::copy_if(_ids, std::back_inserter(ids),
        [&](const std::string& id) { return _plain.records.at(id).kind == kind; });
    return ids;
}

Value TwinRoster::valueOf(std::string_view text, ZRPropertyType type) const
{
    const std::string copy(text);
    switch (zrBaseType(type)) {
    case kZRPropertyTypeInteger:
        return Value(std::strtoll(copy.c_str(), nullptr, 10));
    case kZRPropertyTypeReal:
        return Value(std::strtod(copy.c_str(), nullptr));
    case kZRPropertyTypeDate:
        return dateIn(copy);
    case kZRPropertyTypeArray: {
        std::vector<Value> elements;
        for (const auto& element : split(text, ";"))
            elements.emplace_back(element);
        return Value::array(std::move(elements));
    }
    case kZRPropertyTypeDictionary:
        return dictionaryIn(text);
    case kZRPropertyTypeData:
        return Value::data(text);
    default:
        return Value(text);
    }
}

void TwinRoster::hold(const Ref<ZRRecord>& record, NaiveRecord::Kind kind)
{
    _hasChanged = true;
    const std::string id = record->uniqueId();
    _records[id] = record;
    _ids.push_back(id);
    _plain.records[id] = {.id = id, .kind = kind};
    _plain.records[id].values[std::string(zr::kZRUIDProperty)] = Value(id);
}

std::string TwinRoster::add(NaiveRecord::Kind kind, std::string_view line)
{
    const bool isPerson = kind == NaiveRecord::Kind::person;
    const Ref<ZRRecord> record = isPerson ? Ref<ZRRecord>(ZRPerson::initWithRoster(_roster))
                                          : Ref<ZRRecord>(ZRGroup::initWithRoster(_roster));
    hold(record, kind);
    const std::string id = record->uniqueId();
    std::map<std::string, std::vector<std::pair<std::string, std::string>>> content;
    for (const auto& field : split(line, " | ")) {
        const auto equals = field.find('=');
        const std::string name = field.substr(0, equals);
        const auto bracket = std::min(name.find('['), name.size());
        const std::string label =
            bracket < name.size() ? name.substr(bracket + 1, name.size() - bracket - 2) : std::string();
        content[name.substr(0, bracket)].emplace_back(label, field.substr(equals + 1));
    }
    for (const auto& [property, list] : content)
        fill(id, property, list);
    return id;
}

void TwinRoster::fill(const std::string& id, const std::string& property,
    const std::vector<std::pair<std::string, std::string>>& content)
{
    const auto type = typeOf(_plain, property, _plain.records.at(id).kind);
    ASSERT_NE(type, kZRPropertyTypeUnknown) << property;
    if (!zrIsMultiValueType(type))
        return set(id, property, content.empty() ? Value() : valueOf(content.front().second, type));
    std::vector<Entry> written;
    std::vector<NaiveEntry> read;
    for (const auto& [label, text] : content) {
        const Value value = valueOf(text, type);
        written.push_back({value, label});
        read.push_back({label, asRead(value, property)});
    }
    _hasChanged = true;
    EXPECT_TRUE(_records.at(id)->setValue(written.empty() ? Value() : multiValue(written), property));
    _plain.records.at(id).entries[property] = read;
}

std::string TwinRoster::addSmartGroup(const std::string& name, const Condition& search)
{
    const auto group =
        ZRRecord::initWithUniqueId(ZRSmartGroup::recordClassDescription, std::nullopt, _roster);
    hold(group, NaiveRecord::Kind::smartGroup);
    setSearch(group->uniqueId(), search);
    set(group->uniqueId(), zr::kZRGroupNameProperty, Value(name));
    return group->uniqueId();
}

void TwinRoster::setSearch(const std::string& smartGroup, const Condition& search)
{
    const auto archive = elementOf(search)->archivedData();
    ASSERT_TRUE(archive);
    const auto& group = _records.at(smartGroup);
    EXPECT_TRUE(group->setValue(Value::data(*archive), zr::kZRSearchElementProperty));
    group->clearTemporaryCache();
    _plain.smartGroups[smartGroup] = search;
    _hasChanged = true;
}

void TwinRoster::set(const std::string& id, std::string_view property, const Value& value)
{
    _hasChanged = true;
    EXPECT_TRUE(_records.at(id)->setValue(value, property)) << property;
    auto& record = _plain.records.at(id);
    const bool isNote = property == zr::kZRNoteProperty;
    if (isNote)
        record.hasEmptyNote =
            value.isNothing() && (record.hasEmptyNote || record.values.contains(std::string(property)));
    const bool isUnset = property == zr::kZRPersonFlags && value.asInteger() == 0;
    if (value.isNothing() || isUnset)
        record.values.erase(std::string(property));
    else
        record.values[std::string(property)] = value;
}

// No caller can set this bit: an import does, on the stored card.
void TwinRoster::markAsImported(const std::string& id)
{
    _hasChanged = true;
    auto& record = _plain.records.at(id);
    constexpr std::int64_t mark = 128;
    const auto flags = record.values.find(zr::kZRPersonFlags);
    const std::int64_t stored = flags == record.values.end() ? 0 : flags->second.asInteger();
    _records.at(id)->zrosSetValue(Value(stored | mark), "displayFlags");
    record.isOfLastImport = true;
}

void TwinRoster::changeMembership(const std::string& id, const std::string& group)
{
    _hasChanged = true;
    auto& record = _plain.records.at(id);
    auto members =
        _records.at(group)->zrosMutableSetValueForKey(record.isPerson() ? "contacts" : "childGroups");
    auto& object = *_records.at(id)->zrDatabaseImpl();
    if (record.parents.erase(group) > 0)
        return members.removeObject(object);
    record.parents.insert(group);
    members.addObject(object);
}

void TwinRoster::remove(const std::string& id)
{
    _hasChanged = true;
    EXPECT_TRUE(_roster->removeRecord(_records.at(id)));
    _records.erase(id);
    std::erase(_ids, id);
    _plain.records.erase(id);
    _plain.smartGroups.erase(id);
    for (auto& [other, record] : _plain.records)
        record.parents.erase(id);
}

void TwinRoster::save()
{
    _hasChanged = true;
    ASSERT_TRUE(_roster->save()) << _roster->lastSaveError().text;
    for (auto& [id, record] : _plain.records)
        dropEmptyEntries(record);
}

} // namespace test
