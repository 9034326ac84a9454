// How scheduled commands are kept on disk until somebody runs them.
#pragma once

#include "platform/value/Error.h"
#include "platform/value/Value.h"

#include <cstddef>
#include <optional>
#include <string>
#include <vector>

namespace platform {

/// The bytes of one kept command with its arguments.
inline constexpr std::size_t kLargestSpooledAction = std::size_t(256) << 10;

struct SpooledAction {
    std::string domain;
    std::string action;
    std::string command;
    std::vector<std::string> arguments;
    Date fireDate;
};

/// A directory with one file for each pair of domain and action.
///
/// Any process puts and removes; one server at a time takes. Files are replaced, claimed and put back by
/// renaming, so nobody sees half a file and no lock is needed.
///
/// Ownership: a plain value; the directory is made when something is put.
/// Threads:   any.
/// Errors:    a file that is not this user's own, that others may write, or that says nothing readable is
///            never run: the server logs and removes it.
class Spool {
public:
    explicit Spool(std::string directory) : _directory(std::move(directory)) { }

    /// In place of the pair's former one. When it returns, the command survives a power cut.
    Result<void> put(const SpooledAction& action) const;
    std::optional<SpooledAction> find(const std::string& domain, const std::string& action) const;
    Result<void> remove(const std::string& domain, const std::string& action) const;

    /// One that the server has claimed and is about to run.
    struct Taken {
        SpooledAction action;
        std::string path;
    };
    /// For the server: claims everything whose time has come at `now`. What it does not `finish` comes back
    /// with `recover`.
    std::vector<Taken> takeDue(Date now) const;
    void finish(const Taken& taken) const;
    /// For a new server: puts back what its predecessor claimed and, for all we know, did not run; unless it
    /// was scheduled anew since.
    void recover() const;
    /// For the server: when the next one is due; absent when nothing is kept.
    std::optional<Date> nextDate() const;

private:
    std::string pathFor(const std::string& domain, const std::string& action) const;
    std::vector<std::string> filesEndingIn(std::string_view ending) const;
    std::optional<Taken> claim(const std::string& path, Date now) const;

    std::string _directory;
};

/// Among the user's data, since a command may be due after the session.
std::string userSpoolDirectory();

} // namespace platform
