// Whether a date is near today: the date tests of searches in memory.
#pragma once

#include "core/ZRTypes.h"
#include "platform/value/Value.h"

/// The comparison with today that `comparison` names, of a date and an interval in seconds: true below the
/// interval, not at it. "Around" is on both sides of now, "from" in the future only. Without the year the
/// nearest return of the day counts, from noon to noon. Anything that is no date answers false, to the
/// comparisons that say "not" too.
bool isWithinInterval(const platform::Value& date, ZRSearchComparison comparison, double interval);
