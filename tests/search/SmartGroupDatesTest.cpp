// Smart groups whose members change with the date: windows around today, midnight, and clocks that are set.
#include "search/SmartGroupWorld.h"

#include "platform/notify/DistributedNotificationCenter.h"
#include "platform/run/Clock.h"
#include "platform/run/MainQueue.h"
#include "platform/text/Dates.h"

#include <fmt/format.h>

namespace test {

namespace {

using platform::CalendarTime;
using platform::Date;

constexpr double oneDay = 86400;

Date momentIn(const std::string& zone, const CalendarTime& time)
{
    return *platform::dateOf(time, *platform::TimeZone::named(zone));
}

Ref<ZRSearchElement> birthday(ZRSearchComparison comparison, double days)
{
    return where(kZRBirthdayProperty, comparison, Value(days * oneDay));
}

/// A world whose clock stands, in a zone of the test's choice, and whose first thread serves the main queue.
class DateGroups : public SmartGroupWorld {
protected:
    DateGroups() : _before(platform::DistributedNotificationCenter::install(notices))
    {
        platform::MainQueue::shared().fileDescriptor();
    }
    ~DateGroups() override
    {
        platform::DistributedNotificationCenter::install(_before);
        setenv("TZ", "UTC", 1);
    }

    void beAt(const std::string& zone, const CalendarTime& time)
    {
        setenv("TZ", zone.c_str(), 1);
        clock.setNow(momentIn(zone, time).seconds);
    }
    Ref<ZRPerson> born(const std::string& firstName, const platform::CalendarDay& day) const
    {
        const Date noon = *platform::noonOf(day);
        return person(roster, {{kZRFirstNameProperty, Value(firstName)}, {kZRBirthdayProperty, Value(noon)}});
    }
    /// A group of those whose birthday is within a week, with Ana's of 20 May in the roster.
    Ref<ZRSmartGroup> soon() const
    {
        born("Ana", {1985, 5, 20});
        return group("soon", birthday(kZRWithinIntervalAroundTodayYearless, 7.5));
    }
    /// What is stored, without asking for it.
    static bool isMarked(const ZRSmartGroup& group)
    {
        return (group.valueForProperty(kZRSmartGroupFlagsProperty).asInteger() & 1) != 0;
    }
    /// Lets the clock run, and whatever is due by then.
    void wait(double seconds)
    {
        clock.advance(seconds);
        platform::MainQueue::shared().drain();
    }
    /// As a clock that was set tells everybody.
    void tellThatClockWasSet()
    {
        notices->post({"org.quillon.MenuBarClock.ClockNotification", std::nullopt, {}});
        platform::MainQueue::shared().drain();
    }
    static std::string fireTime()
    {
        const Value date = ZRRoster::_midnightFireDate();
        return date.isDate() ? platform::iso8601(date.asDate()) : "never";
    }

    platform::ManualClock clock;
    const platform::ClockScope clockScope{clock};
    const std::shared_ptr<platform::DistributedNotificationCenter> notices =
        platform::makeLocalDistributedNotificationCenter();

private:
    const std::shared_ptr<platform::DistributedNotificationCenter> _before;
};

TEST_F(DateGroups, KnowWhoseBirthdayComes)
{
    constexpr auto around = kZRWithinIntervalAroundTodayYearless, from = kZRWithinIntervalFromTodayYearless;
    const struct {
        const char* zone;
        CalendarTime now;
        platform::CalendarDay born;
        ZRSearchComparison comparison;
        double days;
        bool isMember;
    } rows[] = {
        // Over New Year, both ways.
        {"Europe/Berlin", {{2023, 12, 29}, 12}, {1980, 1, 2}, from, 7, true},
        {"Europe/Berlin", {{2023, 12, 29}, 12}, {1980, 12, 27}, from, 7, false},
        {"Europe/Berlin", {{2023, 12, 29}, 12}, {1980, 12, 27}, around, 7, true},
        {"Europe/Berlin", {{2024, 1, 2}, 12}, {1980, 12, 30}, around, 7, true},
        {"Europe/Berlin", {{2024, 1, 2}, 12}, {1980, 12, 20}, around, 7, false},
        {"America/New_York", {{2023, 12, 31}, 23, 59, 59}, {1980, 1, 1}, from, 2, true},
        // 29 February, in years with and without one. What counts is the time since the year began, so that
        // the
        // days behind it are one off where one year has it and the other has not.
        {"Europe/Berlin", {{2024, 2, 29}, 12}, {1988, 2, 29}, from, 1, true},
        {"Europe/Berlin", {{2023, 2, 27}, 12}, {1988, 2, 29}, from, 4, true},
        {"Europe/Berlin", {{2023, 3, 2}, 12}, {1988, 2, 29}, around, 4, true},
        {"Europe/Berlin", {{2023, 2, 20}, 12}, {1988, 2, 29}, from, 4, false},
        // Days of 23 and of 25 hours.
        {"Europe/Berlin", {{2024, 3, 30}, 23, 30}, {1984, 3, 31}, from, 1.5, true},
        {"Europe/Berlin", {{2024, 3, 31}, 3, 30}, {1984, 3, 31}, from, 1, true},
        {"America/New_York", {{2024, 11, 3}, 1, 30}, {1984, 11, 3}, from, 1, true},
        {"America/New_York", {{2024, 11, 3}, 23, 30}, {1984, 11, 5}, from, 1.5, false},
        // The day counts, not the hour, and it is the local one.
        {"America/New_York", {{2024, 5, 10}, 23, 59, 59}, {1984, 5, 10}, from, 1, true},
        {"America/New_York", {{2024, 5, 11}, 0, 0, 1}, {1984, 5, 10}, from, 1, false},
        {"Pacific/Apia", {{2024, 5, 10}, 0, 0, 1}, {1984, 5, 10}, from, 1, true},
        {"Pacific/Apia", {{2024, 5, 9}, 23, 59, 59}, {1984, 5, 11}, from, 1, false},
        // A day that was skipped.
        {"Pacific/Apia", {{2011, 12, 29}, 23}, {1985, 12, 31}, from, 3, true},
        // Half a year to both sides is every birthday.
        {"Europe/Berlin", {{2024, 5, 10}, 12}, {1985, 11, 11}, around, 200, true},
    };
    for (const auto& row : rows) {
        beAt(row.zone, row.now);
        const auto card = born("Ana", row.born);
        const auto group = SmartGroupWorld::group("birthdays", birthday(row.comparison, row.days));
        ASSERT_TRUE(roster->save());
        const std::string what = fmt::format("{} at {}: {} of {} within {} days", row.zone,
            platform::iso8601(Date{clock.now()}, *platform::TimeZone::named(row.zone)),
            row.comparison == from ? "from" : "around", platform::iso8601(row.born), row.days);
        EXPECT_EQ(group->members().size(), row.isMember ? 1u : 0u) << what;
        ASSERT_TRUE(roster->removeRecord(card));
    }
}

TEST_F(DateGroups, AreModifiedAfterMidnightWithoutATouchOfACard)
{
    beAt("Europe/Berlin", {{2024, 5, 1}, 12});
    const auto group = soon();
    const auto away = SmartGroupWorld::group("far", birthday(kZRWithinIntervalAroundTodayYearless, 1));
    const auto undated = groupOf({"Ana"});
    ASSERT_TRUE(roster->save());
    EXPECT_FALSE(group->isModified());

    beAt("Europe/Berlin", {{2024, 5, 12}, 23, 59});
    roster->_setupMidnightTimer();
    wait(60);
    EXPECT_FALSE(isMarked(*group)) << "not before five seconds past";
    wait(6);
    EXPECT_TRUE(isMarked(*group));
    EXPECT_FALSE(isMarked(*away)) << "nobody is in its window";
    EXPECT_FALSE(isMarked(*undated));
    EXPECT_TRUE(group->valueForProperty(kZRSmartGroupModifiedUIDsProperty).isNothing());
}

// The first question of a process looks after all groups; later ones only read the bit.
TEST_F(DateGroups, AreLookedAfterOnceAProcess)
{
    beAt("UTC", {{2024, 5, 1}, 12});
    const auto group = soon();
    const auto other = groupOf({"Ana"});
    ASSERT_TRUE(roster->save());
    beAt("UTC", {{2024, 5, 15}, 12});
    EXPECT_TRUE(roster->nts_shouldUpdateDateRelatedSmartGroups());
    EXPECT_FALSE(other->isModified());
    EXPECT_FALSE(roster->nts_shouldUpdateDateRelatedSmartGroups());
    EXPECT_TRUE(isMarked(*group));
    EXPECT_EQ(fireTime(), "2024-05-16T00:00:05Z");

    group->setIsModified(false);
    EXPECT_FALSE(group->isModified());
    roster->updateDateRelatedSmartGroups();
    EXPECT_TRUE(group->isModified());
}

// A group that was changed since the window's far edge passed has been seen with that card in it.
TEST_F(DateGroups, AreLeftAloneWhenTheyWereChangedSince)
{
    beAt("UTC", {{2024, 5, 10}, 12});
    const auto group = soon();
    ASSERT_TRUE(roster->save());
    beAt("UTC", {{2024, 5, 17}, 12});
    roster->updateDateRelatedSmartGroups();
    EXPECT_FALSE(isMarked(*group)) << "made seven days ago";
    beAt("UTC", {{2024, 5, 18}, 12});
    roster->updateDateRelatedSmartGroups();
    EXPECT_TRUE(isMarked(*group)) << "made eight days ago";
}

// What the store cannot be asked for costs a walk over all cards: only who wants to be told pays it.
TEST_F(DateGroups, ThatTheStoreCannotAnswerAreLookedAfterWhenTracked)
{
    beAt("UTC", {{2024, 5, 1}, 12});
    const auto storable = soon();
    const auto search =
        all({storable->searchElement(), where(kZRPersonFlags, kZRBitsInBitFieldMatch, Value(0))});
    const auto tracked = SmartGroupWorld::group("tracked", search),
               untracked = SmartGroupWorld::group("untracked", search);
    tracked->setTracksModification(true);
    ASSERT_TRUE(roster->save());
    beAt("UTC", {{2024, 5, 15}, 12});
    roster->updateDateRelatedSmartGroups();
    EXPECT_TRUE(isMarked(*tracked));
    EXPECT_FALSE(isMarked(*untracked));
    EXPECT_TRUE(isMarked(*storable));
}

TEST_F(DateGroups, WaitUntilFiveSecondsPastMidnight)
{
    const struct {
        const char* zone;
        CalendarTime now;
        const char* fire;
    } rows[] = {
        {"UTC", {{2024, 5, 10}, 0}, "2024-05-11T00:00:05Z"},
        {"Europe/Berlin", {{2024, 5, 10}, 17}, "2024-05-10T22:00:05Z"},
        {"Europe/Berlin", {{2023, 12, 31}, 23, 59, 59}, "2023-12-31T23:00:05Z"},
        // 23 hours and 25.
        {"Europe/Berlin", {{2024, 3, 31}, 1}, "2024-03-31T22:00:05Z"},
        {"Europe/Berlin", {{2024, 10, 27}, 1}, "2024-10-27T23:00:05Z"},
        {"America/New_York", {{2024, 3, 10}, 12}, "2024-03-11T04:00:05Z"},
        {"America/New_York", {{2024, 11, 3}, 0, 30}, "2024-11-04T05:00:05Z"},
        // Midnight is skipped; it comes twice; a whole day is skipped.
        {"Asia/Beirut", {{2022, 3, 26}, 12}, "2022-03-26T22:00:05Z"},
        {"America/Santiago", {{2022, 4, 2}, 12}, "2022-04-03T04:00:05Z"},
        {"Pacific/Apia", {{2011, 12, 29}, 12}, "2011-12-30T10:00:05Z"},
    };
    for (const auto& [zone, now, fire] : rows) {
        beAt(zone, now);
        roster->_setupMidnightTimer();
        EXPECT_EQ(fireTime(), fire) << zone;
    }
}

TEST_F(DateGroups, WaitAnewWhenTheClockIsSet)
{
    beAt("UTC", {{2024, 5, 1}, 12});
    const auto group = soon();
    ASSERT_TRUE(roster->save());
    roster->updateDateRelatedSmartGroups();
    EXPECT_EQ(fireTime(), "2024-05-02T00:00:05Z");

    beAt("America/New_York", {{2024, 5, 14}, 23});
    EXPECT_EQ(fireTime(), "2024-05-02T00:00:05Z") << "nobody has told";
    tellThatClockWasSet();
    EXPECT_EQ(fireTime(), "2024-05-15T04:00:05Z");
    EXPECT_FALSE(isMarked(*group));
    wait(3606);
    EXPECT_TRUE(isMarked(*group));

    group->setIsModified(false);
    wait(2 * oneDay);
    EXPECT_FALSE(isMarked(*group)) << "it fires once, and the timer that it took the place of never";
    tellThatClockWasSet();
    EXPECT_EQ(fireTime(), "2024-05-18T04:00:05Z");
}

// The timer belongs to the process; a roster that goes takes it along, and the next one sets its own.
TEST_F(DateGroups, DoNotKeepTheirRosterOpenForTheTimer)
{
    beAt("UTC", {{2024, 5, 1}, 12});
    {
        const auto brief = ZRRoster::emptyMemoryBackedRoster();
        brief->updateDateRelatedSmartGroups();
        EXPECT_EQ(fireTime(), "2024-05-02T00:00:05Z");
        roster->updateDateRelatedSmartGroups();
    }
    EXPECT_EQ(fireTime(), "never");
    wait(oneDay);
    tellThatClockWasSet();
    EXPECT_EQ(fireTime(), "never");
    roster->updateDateRelatedSmartGroups();
    EXPECT_EQ(fireTime(), "2024-05-03T00:00:05Z");
}

} // namespace

} // namespace test
