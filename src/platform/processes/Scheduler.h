// How a command is run later, when whoever asked for it has long ended.
#pragma once

#include "platform/value/Error.h"
#include "platform/value/Value.h"

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace platform {

/// Runs commands at a time given. Each is known by a domain and an action, and there is one of a pair at
/// most: scheduling it again replaces it.
///
/// Ownership: an installed one is shared.
/// Threads:   any.
/// Errors:    what cannot be kept is refused with the reason; what cannot be started in its time is logged by
///            whoever starts it.
class Scheduler {
public:
    virtual ~Scheduler() = default;

    /// Runs the program `command`, an absolute path, with `arguments` once `fireDate` has come, at the
    /// earliest opportunity if it has; also when this process has ended by then. No shell is asked.
    virtual Result<void> schedule(const std::string& command, const std::vector<std::string>& arguments,
        Date fireDate, const std::string& domain, const std::string& action) = 0;
    /// When the pending command is to run; absent when none is pending. A date in the past is one whose turn
    /// is just coming.
    virtual std::optional<Date> nextFireDate(const std::string& domain, const std::string& action) = 0;
    /// Forgets the pending command, if any. One under way goes on.
    virtual Result<void> remove(const std::string& domain, const std::string& action) = 0;

    /// The one in use: the user's spool, served by the helper, unless another was installed.
    static std::shared_ptr<Scheduler> shared();
    /// Replaces it and answers the former; null brings the user's spool back.
    static std::shared_ptr<Scheduler> install(std::shared_ptr<Scheduler> scheduler);
};

/// A scheduler over the spool in `directory`. `wake` is called without waiting whenever its server should
/// look at the spool: when something was put there, and when something is found whose time is past.
std::shared_ptr<Scheduler> makeSpoolScheduler(std::string directory, std::function<void()> wake);

} // namespace platform
