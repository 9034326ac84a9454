// Where the library's log lines go: nowhere, unless somebody asked for them.
#pragma once

#include "platform/value/Export.h"

#include <functional>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace platform {

/// Gets one line at a time, without its newline, on the thread that logs. It must not log itself.
using LogSink = std::function<void(std::string_view line)>;

/// Hands `text` to the sink. Without one, writes it to standard error if that was asked for: by the
/// environment variable ZRLogToStandardError (anything but empty, "0" or "NO") or by `setLogToStandardError`.
/// Any thread; never fails.
void log(std::string_view text) noexcept;

/// Replaces the sink of the process; an empty one brings the default back. Answers the former.
LogSink setLogSink(LogSink sink);
void setLogToStandardError(bool wanted) noexcept;

/// Keeps the lines that are logged while it lives, for tests that look at them.
///
/// Ownership: owns the lines; puts the former sink back at its end.
/// Threads:   any thread may log; `lines` answers a copy.
/// Errors:    none.
class PLATFORM_EXPORT LogCapture {
public:
    LogCapture();
    ~LogCapture();
    LogCapture(const LogCapture&) = delete;
    LogCapture& operator=(const LogCapture&) = delete;

    std::vector<std::string> lines() const;
    /// Whether a line has `text` in it.
    bool contains(std::string_view text) const;

private:
    struct Lines;
    std::shared_ptr<Lines> _lines;
    LogSink _before;
};

} // namespace platform
