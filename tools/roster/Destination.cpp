// How an export is written: gathered into large pieces, and renamed at the end.
#include "Destination.h"

#include "Command.h"

#include <array>
#include <cerrno>
#include <climits>
#include <csignal>
#include <cstdlib>
#include <cstring>
#include <filesystem>

#include <fcntl.h>
#include <unistd.h>

namespace fs = std::filesystem;

namespace {

constexpr std::size_t kPieceSize = 1U << 18;

/// The file that goes when a signal ends the tool: all that a handler may look at.
std::array<char, PATH_MAX> unfinished{};

extern "C" void removeUnfinished(int signal)
{
    ::unlink(unfinished.data());
    std::signal(signal, SIG_DFL);
    ::raise(signal);
}

void setUnfinished(const std::string& path)
{
    constexpr std::array ends{SIGHUP, SIGINT, SIGTERM};
    if (path.size() >= unfinished.size())
        return;
    for (const int signal : ends)
        std::signal(signal, SIG_DFL);
    std::strcpy(unfinished.data(), path.c_str());
    for (const int signal : path.empty() ? std::array<int, 3>{} : ends)
        if (signal != 0)
            std::signal(signal, removeUnfinished);
}

/// What the path means behind all links; itself where nothing is there.
std::string resolved(const std::string& path)
{
    std::error_code none;
    const fs::path real = fs::canonical(path, none);
    return none ? path : real.string();
}

} // namespace

Destination::Destination(const std::string& path) : _path(path == "-" ? "" : resolved(path))
{
    if (_path.empty())
        return;
    std::error_code none;
    if (fs::exists(_path, none) && !fs::is_regular_file(_path, none)) {
        _descriptor = ::open(_path.c_str(), O_WRONLY | O_CLOEXEC);
    } else {
        std::string name = _path + ".XXXXXX";
        _descriptor = ::mkostemp(name.data(), O_CLOEXEC);
        if (_descriptor >= 0)
            _temporary = std::move(name);
    }
    if (_descriptor < 0)
        fail(errno);
    setUnfinished(_temporary);
}

Destination::~Destination()
{
    if (_descriptor >= 0)
        ::close(_descriptor);
    if (!_temporary.empty())
        ::unlink(_temporary.c_str());
}

void Destination::write(std::string_view bytes)
{
    _waiting += bytes;
    if (_waiting.size() >= kPieceSize)
        flush();
}

void Destination::finish()
{
    flush();
    if (_temporary.empty())
        return;
    if (::fsync(_descriptor) != 0 || ::rename(_temporary.c_str(), _path.c_str()) != 0)
        fail(errno);
    setUnfinished({});
    _temporary.clear();
}

void Destination::flush()
{
    if (_descriptor < 0)
        printBytes(_waiting);
    else if (const int code = writeAll(_descriptor, _waiting); code != 0)
        fail(code);
    _waiting.clear();
}

void Destination::fail(int code) const
{
    throw Failure(exitStatus::refused, "cannot write " + _path + ": " + std::strerror(code));
}
