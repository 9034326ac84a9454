// How a caller's mistake is told: one exception with a name and a text.
#pragma once

#include "core/ZRExport.h"

#include <exception>
#include <string>
#include <string_view>

/// Raised when an operation was called with an argument that it does not accept. Nothing has changed then.
///
/// It never stands for what came from outside: that is answered with an Error or an absent value.
///
/// Ownership: owns its text.
/// Threads:   like any plain value.
/// Errors:    none.
class ZR_EXPORT ZRInvalidArgument : public std::exception {
public:
    /// "Invalid parameter not satisfying '<condition>'".
    explicit ZRInvalidArgument(std::string_view condition);
    ~ZRInvalidArgument() override;

    static constexpr std::string_view name = "ZRInvalidArgument";
    const std::string& text() const noexcept { return _text; }
    const char* what() const noexcept override { return _text.c_str(); }

private:
    std::string _text;
};

/// Raised by an operation that a class has by its base but does not implement: the caller's mistake.
///
/// Ownership: owns its text.
/// Threads:   like any plain value.
/// Errors:    none.
class ZR_EXPORT ZRUnimplementedOperation : public std::exception {
public:
    /// "<class> does not implement <operation>".
    ZRUnimplementedOperation(std::string_view className, std::string_view operation);
    ~ZRUnimplementedOperation() override;

    const char* what() const noexcept override { return _text.c_str(); }

private:
    std::string _text;
};

/// Raises ZRInvalidArgument for `condition`.
[[noreturn]] ZR_EXPORT void zrRefuse(std::string_view condition);

/// Raises ZRInvalidArgument unless `holds`. The condition's text is part of the contract, so it is spelled as
/// callers know it and not as our code happens to test it.
inline void zrRequire(bool holds, std::string_view condition)
{
    if (!holds)
        zrRefuse(condition);
}
