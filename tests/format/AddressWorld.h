// A roster for addresses, and addresses in one line.
#pragma once

#include "platform/value/AttributedString.h"
#include "store/RosterWorld.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <fstream>

namespace test {

/// An address of its fields; empty ones are left out.
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

/// The order array in one line: key and title.
inline std::string textOfOrder(const Value& order)
{
    std::string text;
    for (const auto& field : order.asArray())
        text += std::string(field["zrProperty"].asText()) + "="
            + std::string(field["zrLocalizedProperty"].asText()) + " ";
    return text;
}

/// A table of formats with one country.
inline std::string ownTable(const std::string& code, const std::string& entries)
{
    return "<plist version=\"1.0\"><dict><key>" + code + "</key><dict>" + entries + "</dict></dict></plist>";
}

/// Puts a table of formats where it stands in for ours. For a process of its own: tables are read once.
class OwnAddressTable {
public:
    explicit OwnAddressTable(const std::string& table)
    {
        const auto library = _home.path() / "data";
        fs::create_directories(library / "Roster");
        std::ofstream(library / "Roster/ZRAddressFormats.plist") << table;
        setenv("XDG_DATA_HOME", library.c_str(), 1);
    }

private:
    Home _home;
};

class AddressTest : public testing::Test {
protected:
    const Ref<ZRRoster> roster = ZRRoster::emptyMemoryBackedRoster();
};

} // namespace test
