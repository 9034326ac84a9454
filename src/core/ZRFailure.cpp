// The invalid-argument failure.
#include "core/ZRFailure.h"

#include <fmt/format.h>

ZRInvalidArgument::ZRInvalidArgument(std::string_view condition)
    : _text(fmt::format("Invalid parameter not satisfying '{}'", condition))
{
}

ZRInvalidArgument::~ZRInvalidArgument() = default;

void zrRefuse(std::string_view condition) { throw ZRInvalidArgument(condition); }
