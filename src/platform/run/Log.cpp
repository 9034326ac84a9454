// Who gets the log lines.
#include "platform/run/Log.h"

#include "platform/run/Executor.h"
#include "platform/run/Mutex.h"
#include "platform/run/NeverDestroyed.h"

#include <atomic>
#include <cstdlib>
#include <exception>

#include <unistd.h>

namespace platform {

namespace {

bool environmentAsks()
{
    const char* value = std::getenv("ZRLogToStandardError");
    const std::string_view text = value ? value : "";
    return !text.empty() && text != "0" && text != "NO";
}

struct Output {
    Mutex mutex{LockRank::leaf};
    std::shared_ptr<const LogSink> sink ZR_GUARDED_BY(mutex);
    std::atomic<bool> toStandardError = environmentAsks();
};

Output& output()
{
    static const NeverDestroyed<Output> only;
    return *only;
}

// One write a line, so that the lines of several threads do not mix.
void writeToStandardError(std::string_view text)
{
    std::string line(text);
    line += '\n';
    [[maybe_unused]] const auto ignored = write(STDERR_FILENO, line.data(), line.size());
}

} // namespace

void log(std::string_view text) noexcept
try {
    std::shared_ptr<const LogSink> sink;
    {
        Lock lock(output().mutex);
        sink = output().sink;
    }
    if (sink)
        (*sink)(text);
    else if (output().toStandardError)
        writeToStandardError(text);
} catch (...) {
    // There is nobody left to tell.
}

LogSink setLogSink(LogSink sink)
{
    auto next = sink ? std::make_shared<const LogSink>(std::move(sink)) : nullptr;
    {
        Lock lock(output().mutex);
        output().sink.swap(next);
    }
    return next ? *next : LogSink();
}

void setLogToStandardError(bool wanted) noexcept { output().toStandardError = wanted; }

void runLogged(const Block& block) noexcept
{
    try {
        block();
    } catch (const std::exception& exception) {
        log(std::string("Uncaught exception in a block: ") + exception.what());
    } catch (...) {
        log("Uncaught exception in a block");
    }
}

struct LogCapture::Lines {
    Mutex mutex{LockRank::leaf};
    std::vector<std::string> lines ZR_GUARDED_BY(mutex);
};

LogCapture::LogCapture() : _lines(std::make_shared<Lines>())
{
    _before = setLogSink([lines = _lines](std::string_view line) {
        Lock lock(lines->mutex);
        lines->lines.emplace_back(line);
    });
}

LogCapture::~LogCapture() { setLogSink(std::move(_before)); }

std::vector<std::string> LogCapture::lines() const
{
    Lock lock(_lines->mutex);
    return _lines->lines;
}

bool LogCapture::contains(std::string_view text) const
{
    for (const auto& line : lines())
        if (line.find(text) != std::string::npos)
            return true;
    return false;
}

} // namespace platform
