// How a value stands in a record dictionary, and comes out of it again.
#pragma once

#include "core/ZRPropertyType.h"
#include "platform/value/Value.h"

class ZRMultiValue;

/// A multi-value as a dictionary of "values", "labels", "identifiers" and, where there is one, "primary".
platform::Value multiValueDictionary(const ZRMultiValue& values);

/// The value that `setValue` takes, of a property of `type`. A multi-value keeps its identifiers and its
/// primary entry unless new identifiers are asked for: then the first entry is the primary one.
platform::Value valueFromDictionary(const platform::Value& value, ZRPropertyType type, bool generateIds);
