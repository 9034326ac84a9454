// How an object describes itself when its class does not, and how a holder without ownership becomes an
// owner.
#include "platform/value/Object.h"

#include <cxxabi.h>
#include <fmt/format.h>

#include <cstdlib>
#include <memory>
#include <typeinfo>

namespace platform {

std::string Object::description() const
{
    int status = 0;
    const std::unique_ptr<char, decltype(&std::free)> name(
        abi::__cxa_demangle(typeid(*this).name(), nullptr, nullptr, &status), &std::free);
    return fmt::format("<{} {}>", name ? name.get() : "Object", static_cast<const void*>(this));
}

bool Object::retainIfOwned() const noexcept
{
    auto owners = _owners.load(std::memory_order_relaxed);
    while (owners != 0)
        if (_owners.compare_exchange_weak(owners, owners + 1, std::memory_order_acquire))
            return true;
    return false;
}

} // namespace platform
