// How a host with a loop of its own serves the main queue.
#pragma once

#include "core/ZRExport.h"

// Notifications, timers and what other processes tell arrive on the main queue, one thread at a time. Until a
// host adopts it, a thread of the library serves it.
//
// Threads:   one thread adopts the queue and drains it.
// Errors:    none. In a forked child the descriptor is -1 and draining does nothing.

/// The descriptor to poll for reading: it is readable when work waits. Asking adopts the queue for the
/// calling thread; ask before the first roster is opened, so that nothing is told before somebody listens.
extern "C" ZR_EXPORT int ZRMainQueueGetFileDescriptor();

/// Runs what waits now. What that adds waits for the next call: the descriptor stays readable.
extern "C" ZR_EXPORT void ZRMainQueueDrain();
