// Whether a record can keep a value: asked before anything has changed.
#pragma once

#include "platform/value/Value.h"

#include <string_view>

class ZRRecord;

namespace border {

/// Whether the value is of the property's type, and of a shape that can be stored: containers hold
/// property-list values, postal addresses texts. Nothing fits every property, and an empty multi-value every
/// multi-value. Of properties that no table knows the record itself decides.
bool isSettable(const ZRRecord& record, std::string_view property, const platform::Value& value);

} // namespace border
