// How a host with a loop of its own serves the main queue.
#include "core/ZRMainQueue.h"

#include "platform/run/MainQueue.h"

int ZRMainQueueGetFileDescriptor() { return platform::MainQueue::shared().fileDescriptor(); }

void ZRMainQueueDrain() { platform::MainQueue::shared().drain(); }
