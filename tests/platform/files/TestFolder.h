// A folder of its own for a test, and short words for what tests do with files.
#pragma once

#include "platform/files/Files.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

#include <sys/stat.h>

/// Made at the beginning of a test and removed with everything in it at the end.
class TestFolder {
public:
    explicit TestFolder(const std::string& above = std::filesystem::temp_directory_path().string())
        : _path(above + "/folder-XXXXXX")
    {
        if (!mkdtemp(_path.data()))
            ADD_FAILURE() << "no folder in " << above;
    }
    ~TestFolder()
    {
        std::error_code ignored;
        std::filesystem::remove_all(_path, ignored);
    }
    TestFolder(const TestFolder&) = delete;
    TestFolder& operator=(const TestFolder&) = delete;

    const std::string& path() const { return _path; }
    std::string operator/(const std::string& name) const { return _path + "/" + name; }

    std::vector<std::string> names() const
    {
        std::vector<std::string> names;
        for (const auto& entry : std::filesystem::directory_iterator(_path))
            names.push_back(entry.path().filename().string());
        std::ranges::sort(names);
        return names;
    }

private:
    std::string _path;
};

inline void put(const std::string& path, const std::string& bytes)
{
    std::filesystem::create_directories(std::filesystem::path(path).parent_path());
    std::ofstream(path, std::ios::binary) << bytes;
}

/// The bytes, or a word that no test writes.
inline std::string bytesOf(const std::string& path)
{
    const auto bytes = platform::readFile(path);
    return bytes ? *bytes : "(none)";
}

inline mode_t modeOf(const std::string& path)
{
    struct stat info { };
    return lstat(path.c_str(), &info) == 0 ? info.st_mode & 07777 : 0;
}
