// The failures of callers.
#include "core/ZRFailure.h"

#include <fmt/format.h>

ZRInvalidArgument::ZRInvalidArgument(std::string_view condition)
    : _text(fmt::format("Invalid parameter not satisfying '{}'", condition))
{
}

ZRInvalidArgument::~ZRInvalidArgument() = default;

ZRUnimplementedOperation::ZRUnimplementedOperation(std::string_view className, std::string_view operation)
    : _text(fmt::format("{} does not implement {}", className, operation))
{
}

ZRUnimplementedOperation::~ZRUnimplementedOperation() = default;

void zrRefuse(std::string_view condition) { throw ZRInvalidArgument(condition); }
