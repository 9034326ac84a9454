// The base of the formatters of fields in which found text is marked.
#pragma once

#include "format/ZRFormatter.h"

/// A formatter whose text a view may mark where it holds what was searched for.
///
/// It marks nothing itself: colours are the view's, which finds the places in the formatted text.
///
/// Ownership: holds nothing of its own.
/// Threads:   as the derived class says.
/// Errors:    by the answer.
class ZR_EXPORT ZRSearchHighlightFormatter : public ZRFormatter { };
