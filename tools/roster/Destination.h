// Where an export goes: standard output, or a file that is there whole or not at all.
#pragma once

#include <string>
#include <string_view>

/// Bytes on their way to a file or to standard output.
///
/// A file is written under another name in its folder, private to its user, and takes its place at `finish`.
/// Until then a former file stays as it is, and nothing is left when the export fails or a signal ends it.
/// What is there and is no plain file, such as a pipe, is written as it is; a link is followed.
///
/// Ownership: owns the open file. Threads: one; one file a process.
/// Errors:    what cannot be written raises a Failure with status 1 that names the file.
class Destination {
public:
    /// An empty path and "-" are standard output.
    explicit Destination(const std::string& path);
    ~Destination();
    Destination(const Destination&) = delete;
    Destination& operator=(const Destination&) = delete;

    void write(std::string_view bytes);
    void finish();
    bool isFile() const { return _descriptor >= 0; }

private:
    void flush();
    [[noreturn]] void fail(int code) const;

    std::string _path;
    /// The name until `finish`; empty where there is none.
    std::string _temporary;
    int _descriptor = -1;
    std::string _waiting;
};
