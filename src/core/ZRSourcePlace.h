// Where in the source a lock was asked for: for the log lines of the locks only.
#pragma once

/// A file and a line of the caller, as a default argument. (clang 14 has no std::source_location with the C++
/// library that we build with.)
struct ZRSourcePlace {
    const char* file;
    long line;

    static constexpr ZRSourcePlace current(const char* file = __builtin_FILE(), long line = __builtin_LINE())
    {
        return {file, line};
    }
};
