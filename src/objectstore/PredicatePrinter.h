// How a predicate looks as text.
#pragma once

#include "objectstore/StorePredicate.h"

#include <string>

namespace objectstore {

/// The predicate as people write it, such as
///
///     0 != SUBQUERY(phoneNumbers, $rmo, ($rmo.fullNumber CONTAINS "x") AND ($rmo.label == "y")).@count
///
/// For logs, tests and `--explain`; nothing reads it back. Texts are quoted with \" and \\ and control
/// characters as \u00XX, dates are seconds since 1970, an absent value is null.
std::string printed(const StorePredicate& predicate);

} // namespace objectstore
