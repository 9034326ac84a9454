// Where what was copied waits to be pasted.
#pragma once

#include "platform/value/Value.h"

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace platform {

/// The type under which everybody looks for text.
inline constexpr std::string_view kPlainTextPasteboardType = "text/plain;charset=utf-8";

/// One piece of what was copied, in several forms: a type and a value each.
///
/// Ownership: owns its values.
/// Threads:   any.
/// Errors:    none; of a type that is not there the value is absent.
class Pasteboard {
public:
    virtual ~Pasteboard() = default;

    /// Forgets what is there. Answers the change count, which nobody else has seen yet.
    virtual std::int64_t clearContents() = 0;
    /// Adds a form, or exchanges the one of that type. False when it is refused.
    virtual bool setValue(const Value& value, std::string_view type) = 0;
    virtual Value valueForType(std::string_view type) const = 0;
    /// In the order in which they were added.
    virtual std::vector<std::string> types() const = 0;
    /// Goes up with each `clearContents`: who kept it knows whether something else was copied since.
    virtual std::int64_t changeCount() const = 0;

    /// The one that the user copies to: of this process, unless a host installed that of its desktop.
    static std::shared_ptr<Pasteboard> general();
    /// Replaces it and answers the former; null brings a fresh one of this process.
    static std::shared_ptr<Pasteboard> install(std::shared_ptr<Pasteboard> pasteboard);
};

/// One that lives in this process only.
std::shared_ptr<Pasteboard> makePasteboard();

} // namespace platform
