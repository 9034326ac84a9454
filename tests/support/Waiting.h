// How a test of several threads or processes waits: for a condition, with a bound that only a broken build
// reaches.
#pragma once

#include <chrono>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

namespace test {

/// Whether `condition` came true in time.
template <class Condition>
bool eventually(Condition condition, std::chrono::minutes bound = std::chrono::minutes(1))
{
    const auto end = std::chrono::steady_clock::now() + bound;
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
        const std::lock_guard lock(_mutex);
        _texts.push_back(std::move(text));
    }
    std::vector<std::string> texts() const
    {
        const std::lock_guard lock(_mutex);
        return _texts;
    }
    std::size_t count() const { return texts().size(); }
    bool waitFor(std::size_t wanted) const
    {
        return eventually([&] { return count() >= wanted; });
    }

private:
    mutable std::mutex _mutex;
    std::vector<std::string> _texts;
};

} // namespace test
