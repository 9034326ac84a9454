// What fuzz targets share: the end of the program where a promise is broken, and a home of its own.
#pragma once

#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <string>

namespace fuzz {

inline void require(bool holds, const char* what, const std::string& detail = {})
{
    if (holds)
        return;
    std::fprintf(stderr, "%s: %s\n", what, detail.c_str());
    std::abort();
}

/// A folder where the process finds its preferences, pictures and rosters; it goes with its contents.
class Home {
public:
    Home()
    {
        std::string name = (std::filesystem::temp_directory_path() / "fuzz-XXXXXX").string();
        require(mkdtemp(name.data()) != nullptr, "no home");
        path = name;
        for (const char* variable :
            {"HOME", "XDG_DATA_HOME", "XDG_CONFIG_HOME", "XDG_CACHE_HOME", "XDG_RUNTIME_DIR", "TMPDIR"})
            setenv(variable, name.c_str(), 1);
    }
    ~Home()
    {
        std::error_code ignored;
        std::filesystem::remove_all(path, ignored);
    }
    Home(const Home&) = delete;
    Home& operator=(const Home&) = delete;

    std::filesystem::path path;
};

} // namespace fuzz
