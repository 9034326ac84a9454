// Short ways to run a block somewhere else, and to wait for it with a limit.
#pragma once

#include "platform/run/MainQueue.h"
#include "platform/run/OperationQueue.h"

#include <cstdint>

/// A moment of the monotonic clock, in nanoseconds. Made by `zr_dispatch_interval_to_time`.
enum class ZRDispatchTime : std::int64_t {};

/// Runs `block` at once on the main thread, else queues it there.
void zr_dispatch_main(platform::Block block);
/// Runs `block` at once on the main thread, else there, and waits for it. What it throws reaches the caller.
void zr_dispatch_main_sync(platform::Block block);
/// Runs `block` on the concurrent queue.
void zr_dispatch_concurrent(platform::Block block);

/// Runs `block` on `queue` and waits for it until `timeout`. Answers whether it finished in time. A block
/// that did not is not cancelled: it must not refer to what the caller is about to destroy.
bool zr_dispatch_sync_timeout(platform::Executor& queue, ZRDispatchTime timeout, platform::Block block);

/// The moment `seconds` from now.
ZRDispatchTime zr_dispatch_interval_to_time(double seconds);

/// Waits for at most `timeout` seconds until `queue` is empty; the main thread serves the main queue
/// meanwhile. Answers false when the time has passed, be the queue empty or not; else true.
bool zr_dispatch_wait_for_operation_queue(platform::OperationQueue& queue, double timeout);
