// How a test of several processes waits: for a condition, with a bound that only a broken build reaches.
#pragma once

#include "platform/run/Mutex.h"

#include <chrono>
#include <filesystem>
#include <string>
#include <thread>
#include <vector>

#include <unistd.h>

namespace test {

/// Whether `condition` came true within a minute.
template <class Condition>
bool eventually(Condition condition)
{
    const auto end = std::chrono::steady_clock::now() + std::chrono::minutes(1);
    while (!condition()) {
        if (std::chrono::steady_clock::now() > end)
            return false;
        std::this_thread::sleep_for(std::chrono::milliseconds(1));
    }
    return true;
}

/// What callbacks on another thread heard, in order.
class Heard {
public:
    void add(std::string text)
    {
        platform::Lock lock(_mutex);
        _texts.push_back(std::move(text));
    }
    std::vector<std::string> texts() const
    {
        platform::Lock lock(_mutex);
        return _texts;
    }
    std::size_t count() const { return texts().size(); }
    bool waitFor(std::size_t wanted) const
    {
        return eventually([&] { return count() >= wanted; });
    }

private:
    mutable platform::Mutex _mutex;
    std::vector<std::string> _texts ZR_GUARDED_BY(_mutex);
};

/// The words that run a role of this program.
inline std::vector<std::string> roleWords(const std::string& role, std::vector<std::string> words = {})
{
    words.insert(words.begin(), {std::filesystem::read_symlink("/proc/self/exe").string(), "--play=" + role});
    return words;
}

/// A path of this test process's own that nothing lies at.
inline std::string freshPath(const std::string& name)
{
    static int number = 0;
    return std::filesystem::temp_directory_path()
        / (name + "-" + std::to_string(getpid()) + "-" + std::to_string(++number));
}

} // namespace test
