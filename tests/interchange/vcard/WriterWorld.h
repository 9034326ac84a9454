// What tests of the writers share: values, the lines of a card, and an empty roster behind each case.
#pragma once

#include "platform/text/Dates.h"
#include "store/RosterWorld.h"

#include <string>
#include <utility>
#include <vector>

namespace test {

using Lines = std::vector<std::string>;

inline Value day(int year, int month, int dayOfMonth) { return *platform::noonOf({year, month, dayOfMonth}); }

inline Value address(const std::vector<std::pair<std::string, Value>>& fields)
{
    return Value::dictionary(fields);
}

inline std::string joined(const Lines& lines)
{
    std::string text;
    for (const std::string& line : lines)
        text += line + "\r\n";
    return text;
}

inline void removeAllRecords(ZRRoster& roster)
{
    roster.setMe(nullptr);
    for (const auto& records : {roster.people(), roster.groups()})
        for (const auto& record : records)
            roster.removeRecord(record);
    roster.save();
}

} // namespace test
