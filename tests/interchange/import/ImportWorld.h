// Rosters to import into, and cards to import.
#pragma once

#include "core/ZRConstants.h"
#include "core/ZRPerson.h"
#include "interchange/import/ZRvCardController.h"
#include "store/ZRRoster.h"

#include <gmock/gmock.h>

#include <filesystem>
#include <fstream>
#include <set>
#include <string>

namespace test {

/// A folder with a roster of its own in it; what is in the shared one does not matter.
class ImportTest : public testing::Test {
protected:
    void SetUp() override
    {
        ZRRoster::setShouldCreateEmptyDatabase(true);
        std::string name = (std::filesystem::temp_directory_path() / "import-XXXXXX").string();
        ASSERT_NE(::mkdtemp(name.data()), nullptr);
        folder = name;
        roster = ZRRoster::rosterWithDatabaseDirectory(path("roster"), false);
        ASSERT_TRUE(roster) << ZRRoster::openingReport();
    }

    void TearDown() override
    {
        roster = nullptr;
        std::error_code ignored;
        std::filesystem::remove_all(folder, ignored);
    }

    std::string path(const std::string& name) const { return (folder / name).string(); }

    std::string write(const std::string& name, const std::string& text) const
    {
        std::filesystem::create_directories((folder / name).parent_path());
        std::ofstream(folder / name, std::ios::binary) << text;
        return path(name);
    }

    static std::string card(const std::string& family, const std::string& more = "")
    {
        return "BEGIN:VCARD\r\nVERSION:3.0\r\nN:" + family + ";Ana;;;\r\n" + more + "END:VCARD\r\n";
    }

    static std::string cards(int count)
    {
        std::string text;
        for (int i = 0; i < count; ++i)
            text += card("Family" + std::to_string(i), "TEL:+1 555 " + std::to_string(i) + "\r\n");
        return text;
    }

    std::multiset<std::string> families() const
    {
        std::multiset<std::string> names;
        for (const auto& person : roster->people())
            names.emplace(person->valueForProperty(kZRLastNameProperty).asText());
        return names;
    }

    void removePeople() const
    {
        for (const auto& person : roster->people())
            roster->removeRecord(person);
        roster->save();
    }

    std::filesystem::path folder;
    platform::Ref<ZRRoster> roster;
};

} // namespace test
