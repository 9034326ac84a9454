// The main thread and its run loop: one queue of blocks, timers and watched descriptors for the process.
#pragma once

#include "platform/run/Executor.h"

#include <memory>

namespace platform {

/// The process's main queue. Its thread is whoever drains it.
///
/// A host with a loop of its own asks for the descriptor and so adopts the queue; it polls the descriptor and
/// calls `drain` when it is readable. Until a host does, a thread of the library serves the queue, so that
/// nothing waits for ever. It is no work queue: blocks are short, and nobody waits on it with the global lock
/// held.
///
/// Ownership: one for the process, never destroyed. The exit waits for the block that its thread is in; what
///            still waits is dropped.
/// Threads:   any thread may give work; work runs on one thread at a time, in the order given.
/// Errors:    an exception that leaves a block is logged. In a forked child, and after exit has begun, every
///            operation does nothing.
class MainQueue final : public Executor {
public:
    /// A block that runs once, later, or a descriptor under watch. Destroying it, or `cancel`, prevents
    /// further runs; it does not wait for one under way on another thread.
    class [[nodiscard]] Token {
    public:
        Token() = default;
        Token(Token&&) noexcept = default;
        Token& operator=(Token&& other) noexcept;
        ~Token() { cancel(); }

        void cancel() noexcept;
        /// Lets it run without being held.
        void detach() noexcept { _source.reset(); }
        /// Neither run, nor cancelled, nor detached.
        bool isPending() const;

    private:
        friend class MainQueue;
        struct Source;
        explicit Token(std::shared_ptr<Source> source) : _source(std::move(source)) { }
        std::shared_ptr<Source> _source;
    };

    static MainQueue& shared();

    /// Whether this thread serves the queue now: inside a block, or as the thread that adopted it.
    bool isMainThread() const;

    /// Whether a host with a loop of its own serves it.
    bool isAdopted() const;

    /// Queues `block`.
    void async(Block block) override;
    /// Runs `block` at once on the main thread, else queues it and waits until it has run. What it throws
    /// reaches the caller. Answers false when it was not run, because the queue is at its end.
    bool sync(Block block);
    /// Runs `block` once the monotonic clock has moved by `seconds`.
    Token after(double seconds, Block block);
    /// Runs `block` whenever `descriptor` is readable; the block reads it empty. The caller owns the
    /// descriptor and cancels the token before closing it.
    Token watch(int descriptor, Block block);

    /// Readable when work waits. Asking adopts the queue: the calling thread is the main thread from now on.
    /// Returns once the library's own thread has finished the block it is in. Minus one in a forked child.
    int fileDescriptor();
    /// Runs what waits now; what that adds waits for the next call. Called by the adopting thread, also from
    /// inside a block; a thread that drains without having asked for the descriptor adopts the queue. When
    /// another thread is draining, it does nothing.
    void drain();
    /// As a run loop's turn: waits for work for at most `seconds` of real time, then drains. For the main
    /// thread, which else would wait for itself.
    void runOnce(double seconds);

    /// Gives an adopted queue back to the library's thread: for a host whose loop ends.
    void abandon();

private:
    template <class T>
    friend class NeverDestroyed;
    MainQueue();
    ~MainQueue() = default;

    struct State;
    std::shared_ptr<State> _state;
};

} // namespace platform
