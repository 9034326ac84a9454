// A folder of its own for a test, and short words for what tests do with files.
#pragma once

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <stdexcept>
#include <string>
#include <vector>

#include <sys/stat.h>
#include <unistd.h>

namespace test {

/// Made at the beginning of a test and removed with everything in it at the end. Throws when it cannot be.
class TemporaryFolder {
public:
    explicit TemporaryFolder(const std::string& above = std::filesystem::temp_directory_path().string())
        : _path(above + "/folder-XXXXXX")
    {
        if (!mkdtemp(_path.data()))
            throw std::runtime_error("no folder in " + above);
    }
    ~TemporaryFolder()
    {
        std::error_code ignored;
        std::filesystem::remove_all(_path, ignored);
    }
    TemporaryFolder(const TemporaryFolder&) = delete;
    TemporaryFolder& operator=(const TemporaryFolder&) = delete;

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

/// The bytes; without a file a word that no test writes.
inline std::string bytesOf(const std::string& path, const std::string& missing = "(none)")
{
    std::ifstream file(path, std::ios::binary);
    return file ? std::string{std::istreambuf_iterator<char>(file), {}} : missing;
}

/// A path of this test process's own that nothing lies at.
inline std::string freshPath(const std::string& name)
{
    static int number = 0;
    return std::filesystem::temp_directory_path()
        / (name + "-" + std::to_string(getpid()) + "-" + std::to_string(++number));
}

inline mode_t modeOf(const std::string& path)
{
    struct stat info { };
    return lstat(path.c_str(), &info) == 0 ? info.st_mode & 07777 : 0;
}

} // namespace test
