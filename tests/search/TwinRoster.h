// A roster with a plain twin, a language for cards, and a place and time to search in.
#pragma once

#include "platform/run/Clock.h"
#include "platform/text/Dates.h"
#include "search/NaiveRoster.h"
#include "search/ZRSearchElement.h"
#include "store/RosterWorld.h"

#include <optional>
#include <set>

namespace test {

Ref<ZRSearchElement> elementOf(const Condition& search);
std::set<std::string> idsOf(const ZRRecordList& records);

/// Where and when somebody searches, for a scope; behind it the zone is UTC.
///
/// Ownership: installs the clock and the zone of the process.
/// Threads:   one at a time.
/// Errors:    none.
class PlaceAndTime {
public:
    /// The time as clocks there show it.
    PlaceAndTime(const char* zone, platform::CalendarTime time);
    ~PlaceAndTime();
    PlaceAndTime(const PlaceAndTime&) = delete;
    PlaceAndTime& operator=(const PlaceAndTime&) = delete;

private:
    platform::ManualClock _clock;
    const platform::ClockScope _scope{_clock};
};

/// A roster and its plain twin, changed together.
///
/// Ownership: shares ownership of the roster and of every record in it.
/// Threads:   one.
/// Errors:    what the roster refuses fails the test.
class TwinRoster {
public:
    /// Declares properties of every type.
    explicit TwinRoster(Ref<ZRRoster> roster);

    const Ref<ZRRoster>& roster() const { return _roster; }
    /// Creation and modification dates are those that the records have now.
    const NaiveRoster& plain();
    const Ref<ZRRecord>& record(const std::string& id) const { return _records.at(id); }
    bool isPerson(const std::string& id) const { return _plain.records.at(id).isPerson(); }
    /// In the order that they were added in: ids are random, and a seed must bring a failure back.
    std::vector<std::string> idsOfKind(NaiveRecord::Kind kind) const;

    /// A card as one line: "First=Ana | Birthday=1980-02-29 | Email[home]=ana@example.org |
    /// Address[work]={City:Porto, ZIP:4000}". A date is a day, "today-3", or "now+3600" in seconds.
    std::string add(NaiveRecord::Kind kind, std::string_view line);
    std::string addSmartGroup(const std::string& name, const Condition& search);
    void setSearch(const std::string& smartGroup, const Condition& search);
    /// Gives a property other content in the same language: labels with texts, for a single value without
    /// label.
    void fill(const std::string& id, const std::string& property,
        const std::vector<std::pair<std::string, std::string>>& content);
    void markAsImported(const std::string& id);
    /// Puts it into the group, or takes it out.
    void changeMembership(const std::string& id, const std::string& group);
    void remove(const std::string& id);
    void save();

private:
    Value valueOf(std::string_view text, ZRPropertyType type) const;
    void hold(const Ref<ZRRecord>& record, NaiveRecord::Kind kind);
    void set(const std::string& id, std::string_view property, const Value& value);

    const Ref<ZRRoster> _roster;
    NaiveRoster _plain;
    bool _hasChanged = true;
    std::map<std::string, Ref<ZRRecord>> _records;
    std::vector<std::string> _ids;
};

} // namespace test
