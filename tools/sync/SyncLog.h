// Where the sync tool writes down what it did.
#pragma once

#include "platform/value/Error.h"

#include <string>
#include <string_view>

/// "org.quillon.Roster/RosterSync.log" in the user's cache directory.
std::string syncLogPath();

/// Adds one line with the time before it; a log of more than a quarter of a megabyte begins anew. Lines of
/// several processes do not mix.
platform::Result<void> appendToSyncLog(std::string_view line);
