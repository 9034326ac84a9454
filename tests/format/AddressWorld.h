// A roster for addresses, and addresses in one line.
#pragma once

#include "platform/value/AttributedString.h"
#include "store/RosterWorld.h"

#include <gtest/gtest.h>

namespace test {

/// An address of its fields; empty ones are left out, and so is a field called "".
inline Value address(std::initializer_list<std::pair<std::string_view, std::string_view>> fields)
{
    std::vector<std::pair<std::string, Value>> entries;
    for (const auto& [key, value] : fields)
        if (!value.empty())
            entries.emplace_back(std::string(key), Value(value));
    return Value::dictionary(std::move(entries));
}

/// The text as people see it: without the marks between the fields.
inline std::string visible(std::string text)
{
    constexpr std::string_view mark = "\u200E";
    for (auto at = text.find(mark); at != std::string::npos; at = text.find(mark, at))
        text.erase(at, mark.size());
    return text;
}

class AddressTest : public testing::Test {
protected:
    const Ref<ZRRoster> roster = ZRRoster::emptyMemoryBackedRoster();
};

} // namespace test
