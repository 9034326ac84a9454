// How a host with a loop of its own serves the main queue.
#pragma once

#include "core/ZRExport.h"

// Notices, timers and what other processes tell arrive on the main queue, one thread at a time. Until a host
// adopts it, a thread of the library serves it. A host with a loop adopts it: it asks for the descriptor
// once, polls it for reading beside its own, and drains the queue whenever it is readable.

#ifdef __cplusplus
extern "C" {
#endif

/// The descriptor to poll for reading: it is readable when work waits. It stays the library's: do not close
/// it. Asking adopts the queue for the calling thread; ask before the first roster is opened, so that nothing
/// is told before somebody listens. -1 in a forked child.
ZR_EXPORT int ZRMainQueueGetFileDescriptor(void);

/// Runs what waits now, on the adopting thread. What that adds waits for the next call: the descriptor stays
/// readable.
ZR_EXPORT void ZRMainQueueDrain(void);

#ifdef __cplusplus
}
#endif
