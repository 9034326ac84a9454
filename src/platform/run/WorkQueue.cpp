// How the count of a work queue reaches its delegate.
#include "platform/run/WorkQueue.h"

struct ZRWorkQueue::Listener {
    platform::RecursiveMutex mutex;
    ZRWorkQueue* queue ZR_GUARDED_BY(mutex) = nullptr;
    ZRWorkQueueDelegate* delegate ZR_GUARDED_BY(mutex) = nullptr;

    void tell(std::size_t count)
    {
        platform::Lock lock(mutex);
        if (queue)
            queue->operationCountDidChange(count);
    }
};

ZRWorkQueue::ZRWorkQueue(std::size_t width) : OperationQueue(width), _listener(std::make_shared<Listener>())
{
    {
        platform::Lock lock(_listener->mutex);
        _listener->queue = this;
    }
    setCountObserver([listener = _listener](std::size_t count) { listener->tell(count); });
}

ZRWorkQueue::~ZRWorkQueue()
{
    platform::Lock lock(_listener->mutex);
    _listener->queue = nullptr;
}

void ZRWorkQueue::setDelegate(ZRWorkQueueDelegate* delegate)
{
    platform::Lock lock(_listener->mutex);
    _listener->delegate = delegate;
}

ZRWorkQueueDelegate* ZRWorkQueue::delegate() const
{
    platform::Lock lock(_listener->mutex);
    return _listener->delegate;
}

void ZRWorkQueue::operationCountDidChange(std::size_t count)
{
    platform::Lock lock(_listener->mutex);
    if (_listener->delegate)
        _listener->delegate->zrWorkQueue(*this, count);
}
