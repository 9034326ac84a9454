// Where things are kept: the user's directories by purpose.
#pragma once

#include "platform/value/Error.h"

#include <functional>
#include <memory>
#include <string>
#include <vector>

namespace platform {

/// The directories of this user, as absolute paths without a slash at the end. None is made by asking, except
/// the run-time one.
///
/// Ownership: an installed one is shared.
/// Threads:   any.
/// Errors:    only the run-time directory can be refused.
class Directories {
public:
    virtual ~Directories() = default;

    virtual std::string home() const = 0;
    /// What belongs to the user and must last.
    virtual std::string dataHome() const = 0;
    /// Where the system's own data lies, the most important first.
    virtual std::vector<std::string> dataDirectories() const = 0;
    virtual std::string configHome() const = 0;
    virtual std::string cacheHome() const = 0;
    virtual std::string temporary() const = 0;
    /// For sockets and what ends with the session: made if missing, the user's own, mode octal 700.
    /// Refused when somebody else owns it or may look into it.
    virtual Result<std::string> runtime() const = 0;

    /// The library directories of all domains: the user's data, then the system's.
    std::vector<std::string> libraries() const;

    /// The one in use: the system's, by the XDG base directory rules, unless another was installed.
    static std::shared_ptr<const Directories> current();
    /// Replaces it and answers the former; null brings the system's back.
    static std::shared_ptr<const Directories> install(std::shared_ptr<const Directories> directories);
};

/// Answers the value of an environment variable, or null.
using Environment = std::function<const char*(const char* name)>;

/// The directories that `environment` names by the XDG base directory rules. Where it names no run-time
/// directory that is the user's own, that is "roster-UID" in `sharedTemporary`.
std::shared_ptr<const Directories> makeXDGDirectories(
    Environment environment, std::string sharedTemporary = "/tmp");

} // namespace platform
