// How a token's end and a running callback wait for each other.
#include "platform/notify/Subscription.h"

#include "platform/run/Executor.h"

#include <algorithm>
#include <utility>

namespace platform {

bool CallGate::enter()
{
    Lock lock(_mutex);
    if (_closed)
        return false;
    _inside.push_back(std::this_thread::get_id());
    return true;
}

void CallGate::leave()
{
    Lock lock(_mutex);
    _inside.erase(std::find(_inside.begin(), _inside.end(), std::this_thread::get_id()));
    _left.notifyAll();
}

void CallGate::close()
{
    Lock lock(_mutex);
    _closed = true;
    const auto isOther = [me = std::this_thread::get_id()](std::thread::id thread) { return thread != me; };
    while (std::ranges::any_of(_inside, isOther))
        _left.wait(_mutex);
}

bool CallGate::isClosed() const
{
    Lock lock(_mutex);
    return _closed;
}

Subscription& Subscription::operator=(Subscription&& other) noexcept
{
    if (this != &other) {
        cancel();
        _gate = std::move(other._gate);
        _forget = std::move(other._forget);
    }
    return *this;
}

void Subscription::cancel()
{
    const auto gate = std::exchange(_gate, nullptr);
    if (!gate)
        return;
    gate->close();
    if (const auto forget = std::exchange(_forget, nullptr))
        forget();
}

void callThrough(CallGate& gate, const std::function<void()>& call)
{
    if (!gate.enter())
        return;
    runLogged(call);
    gate.leave();
}

} // namespace platform
