// What can be given a block to run: the main queue, an operation queue, the concurrent queue.
#pragma once

#include <functional>

namespace platform {

/// A piece of work without arguments.
using Block = std::function<void()>;

/// Takes blocks and runs each once, later.
///
/// Ownership: a block is destroyed soon after it ran, on the thread that ran it.
/// Threads:   any thread may give.
/// Errors:    an exception that leaves a block is logged; it ends nothing else.
class Executor {
public:
    virtual void async(Block block) = 0;

protected:
    Executor() = default;
    ~Executor() = default;
    Executor(const Executor&) = default;
    Executor& operator=(const Executor&) = default;
};

/// Runs `block` and logs what it throws.
void runLogged(const Block& block) noexcept;

} // namespace platform
