// Says which retired class was asked for.
#include "core/ZRDeprecatedObject.h"

#include "platform/run/Log.h"

#include <fmt/format.h>

platform::Ref<ZRDeprecatedObject> ZRDeprecatedObject::alloc(std::string_view className)
{
    platform::log(fmt::format("Warning: {} is no longer supported.", className));
    return platform::makeRef<ZRDeprecatedObject>(className);
}

std::string ZRDeprecatedObject::description() const
{
    return fmt::format("<{}: no longer supported>", _className);
}
