// When does one value stand in a relation to another? The one answer for memory and SQL.
#pragma once

#include "objectstore/StoreObject.h"
#include "objectstore/StorePredicate.h"

#include <string>
#include <string_view>

namespace objectstore {

/// Values that compare with each other: two values of different kinds are neither equal nor ordered.
enum class ComparisonKind : std::uint8_t { none, text, number, date, data, object, container };

ComparisonKind comparisonKind(const platform::Value& value);

/// `left OP right` as StorePredicate states it. With Comparator::in, `right` is an array.
bool compares(const platform::Value& left, Comparator comparator, const platform::Value& right,
    TextOption option = TextOption::exact);

/// Whether both stand for one row of one store, or are one object.
bool isSameObject(const StoreObject& a, const StoreObject& b);

/// The same of two texts; Comparator::in is none of them. `right` is already folded by `option`.
bool comparesText(
    std::string_view left, Comparator comparator, std::string_view foldedRight, TextOption option);

/// The text as `option` sees it.
std::string folded(std::string_view text, TextOption option);

} // namespace objectstore
