// Structured log lines that tools can count.
#pragma once

#include "core/ZRExport.h"

#include <cstdint>
#include <optional>
#include <string>

/// One event worth counting, such as a store that could not be opened: fill it in, then `log` it.
///
/// Ownership: a plain value.
/// Threads:   like any plain value.
/// Errors:    none.
struct ZR_EXPORT ZRMessageTracer {
    std::string baseDomain = "org.quillon.Roster";
    /// What happened, below the base domain.
    std::string subdomain = {};
    /// What tells kinds of the event apart, such as an error's domain and code.
    std::string signature = {};
    /// The record that it concerns.
    std::string uid = {};
    std::string message = {};
    bool success = true;
    std::int64_t itemCount = 0;

    /// Base and subdomain with a dot between them; only one where the other is empty.
    std::string domain() const;
    /// The line that `log` writes: "key=value" pairs with blanks between them. Texts stand in quotes with
    /// JSON's escapes; empty ones and a count of zero are left out.
    std::string line() const;
    void log() const;
};
