// The hooks of the model table.
#include "store/ZRModelHooks.h"

#include "core/ZRConstants.h"
#include "objectstore/StoreContext.h"
#include "platform/run/Clock.h"
#include "platform/run/Log.h"
#include "platform/text/Compare.h"
#include "platform/text/Dates.h"
#include "platform/value/PropertyList.h"
#include "store/ZRManagedObjectContext.h"
#include "store/ZROSRecord.h"

#include <fmt/format.h>

#include <string>

namespace hooks {

namespace {

using platform::Date;

/// The year and the rest of what a key holds: of a birthday and its like as the day that it is.
YearAndRest partsOf(StoreObject& object, std::string_view key)
{
    const bool isDay = key == "birthday" || key == "date";
    return extractYear(object.primitiveValue(object.slot(key)),
        isDay ? platform::TimeZone::gmt() : platform::TimeZone::local());
}

Value yearOf(StoreObject& object, std::string_view key) { return partsOf(object, key).year; }

Value restOf(StoreObject& object, std::string_view key) { return partsOf(object, key).yearless; }

void setYearAndRest(StoreObject& object, std::string_view key)
{
    const auto parts = partsOf(object, key);
    object.setPrimitiveValue(object.slot(std::string(key) + "Year"), parts.year);
    object.setPrimitiveValue(object.slot(std::string(key) + "Yearless"), parts.yearless);
}

ZROSContact& contact(StoreObject& object) { return static_cast<ZROSContact&>(object); }

void normalize(StoreObject& object, std::string_view key, std::string_view normalizedKey)
{
    const auto& slot = object.slot(key);
    object.setPrimitiveValue(object.slot(normalizedKey),
        object.isAbsent(slot) ? Value() : Value(ZROSRecord::newNormalizedSearchString(object.text(slot))));
}

Value collationKeyOf(StoreObject& object, std::string_view key)
{
    const auto* context = contact(object).managedObjectContext();
    if (!context || !context->writesCollationKeys())
        return {};
    return Value::data(platform::collationKey(object.value(object.slot(key)).asText()));
}

} // namespace

YearAndRest extractYear(const Value& date, platform::TimeZone zone)
{
    const auto time = date.isDate() ? platform::calendarTimeOf(date.asDate(), zone) : std::nullopt;
    if (!time)
        return {};
    const int year = time->day.year;
    const auto thisYear = platform::yearOf(Date{platform::Clock::current().now()});
    const Date start =
        thisYear == year ? platform::startOfYear(year) : *platform::dateOf({.day = {year, 1, 1}}, zone);
    return {Value(year), Value(date.asDate().seconds - start.seconds)};
}

Value creationDateYear(StoreObject& object) { return yearOf(object, "creationDate"); }
Value creationDateYearless(StoreObject& object) { return restOf(object, "creationDate"); }
Value modificationDateYear(StoreObject& object) { return yearOf(object, "modificationDate"); }
Value modificationDateYearless(StoreObject& object) { return restOf(object, "modificationDate"); }
Value birthdayYear(StoreObject& object) { return yearOf(object, "birthday"); }
Value birthdayYearless(StoreObject& object) { return restOf(object, "birthday"); }
Value dateYear(StoreObject& object) { return yearOf(object, "date"); }
Value dateYearless(StoreObject& object) { return restOf(object, "date"); }
Value dateValueYear(StoreObject& object) { return yearOf(object, "dateValue"); }
Value dateValueYearless(StoreObject& object) { return restOf(object, "dateValue"); }

void creationDateDidChange(StoreObject& object) { setYearAndRest(object, "creationDate"); }

void modificationDateDidChange(StoreObject& object)
{
    const auto* context = object.context();
    const auto* undo = context ? context->undoManager() : nullptr;
    if (undo && (undo->isUndoing() || undo->isRedoing()))
        object.setPrimitiveValue(
            object.slot("modificationDate"), Value(Date{platform::Clock::current().now()}));
    setYearAndRest(object, "modificationDate");
}

void birthdayDidChange(StoreObject& object) { setYearAndRest(object, "birthday"); }
void dateDidChange(StoreObject& object) { setYearAndRest(object, "date"); }
void dateValueDidChange(StoreObject& object) { setYearAndRest(object, "dateValue"); }

Value aggregateModificationDate(StoreObject& object)
{
    const Value modified = object.primitiveValue(object.slot("modificationDate"));
    return modified.isAbsent() ? object.primitiveValue(object.slot("creationDate")) : modified;
}

void setAggregateModificationDate(StoreObject& object, const Value& date)
{
    object.setValueForKey("modificationDate", date);
}

void nameDidChange(StoreObject& object)
{
    contact(object).clearSortNames();
    contact(object).clearStringForIndexing();
}

void displayFlagsDidChange(StoreObject& object) { contact(object).clearSortNames(); }
void indexedTextDidChange(StoreObject& object) { contact(object).clearStringForIndexing(); }
void groupNameDidChange(StoreObject& object) { normalize(object, "name", "nameNormalized"); }
void emailAddressDidChange(StoreObject& object) { normalize(object, "address", "addressNormalized"); }

void mailRecentDidChange(StoreObject& object)
{
    normalize(object, "email", "emailNormalized");
    normalize(object, "firstName", "firstNameNormalized");
    normalize(object, "lastName", "lastNameNormalized");
}

Value sortingFirstName(StoreObject& object) { return Value(contact(object)._newSortingFirstName()); }
Value sortingLastName(StoreObject& object) { return Value(contact(object)._newSortingLastName()); }
Value sortingFirstKey(StoreObject& object) { return collationKeyOf(object, "sortingFirstName"); }
Value sortingLastKey(StoreObject& object) { return collationKeyOf(object, "sortingLastName"); }

// In a list of members groups stand before all people.
Value groupSortingName(StoreObject& object)
{
    return Value("\n" + std::string(object.text(object.slot("name"))));
}

Value stringForIndexing(StoreObject& object)
{
    const auto owner = object.related(object.slot("contact"));
    return owner ? Value(contact(*owner)._newStringForIndexing()) : Value();
}

Value meUniqueId(StoreObject& object)
{
    const auto source = static_cast<ZROSInfo&>(object).rosterSource();
    const auto me = source->related(source->slot("me"));
    return me ? me->value(me->slot("uniqueId")) : Value();
}

void setMeUniqueId(StoreObject& object, const Value& uniqueId)
{
    const auto source = static_cast<ZROSInfo&>(object).rosterSource();
    const auto me = uniqueId.isString()
        ? static_cast<ZROSInfo&>(object).contactWithUniqueId(uniqueId.asText())
        : objectstore::ObjectRef();
    source->setRelated(source->slot("me"), me.get());
}

Value modifiedUniqueIds(StoreObject& object)
{
    const Value stored = object.primitiveValue(object.slot("modifiedUniqueIdsData"));
    if (!stored.isData())
        return {};
    const auto ids = platform::decodePropertyList(stored.asBytes());
    return ids ? *ids : Value();
}

void setModifiedUniqueIds(StoreObject& object, const Value& ids)
{
    const auto& slot = object.slot("modifiedUniqueIdsData");
    if (ids.isNothing())
        return object.setValue(slot, Value());
    const auto bytes = platform::encodePropertyList(ids, platform::PropertyListFormat::binary);
    if (!bytes)
        platform::log(fmt::format("Error setting modified UIDs: {}", bytes.error().text));
    object.setValue(slot, bytes ? Value::data(*bytes) : Value());
}

Value lastEmailDates(StoreObject& object)
{
    std::vector<Value> dates;
    for (const auto& row : object.objects(object.slot("lastEmailDates")))
        dates.push_back(row->value(row->slot("date")));
    return dates.empty() ? Value() : Value::array(std::move(dates));
}

void setLastEmailDates(StoreObject& object, const Value& dates)
{
    auto* context = object.context();
    const auto& slot = object.slot("lastEmailDates");
    for (const auto& row : object.objects(slot))
        context->deleteObject(*row);
    for (const auto& date : dates.asArray()) {
        const auto row = context->insertObjectOfEntity(zr::kZRObjectStoreMailRecentLastEmailDateEntityName);
        context->assignObjectToStore(*row, object.store());
        row->setValueForKey("date", date);
        object.addObject(slot, *row);
    }
}

Value valuesOfSource(StoreObject& info, std::string_view key)
{
    const auto source = static_cast<ZROSInfo&>(info).rosterSource();
    return source->value(source->slot(key));
}

} // namespace hooks
