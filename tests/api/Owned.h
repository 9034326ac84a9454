// A handle that releases itself: for tests that are about something else than ownership.
#pragma once

#include "api/roster.h"

#include <string>
#include <utility>

namespace test {

/// Owns what a Copy or Create function answered.
///
/// Ownership: one owner of the handle.
/// Threads:   as the handle.
/// Errors:    none.
class Owned {
public:
    Owned(ZRTypeRef handle = nullptr) : _handle(handle) { }
    explicit Owned(const char* text) : _handle(ZRStringCreateWithUTF8(text)) { }
    Owned(Owned&& other) noexcept : _handle(std::exchange(other._handle, nullptr)) { }
    Owned& operator=(Owned&& other) noexcept
    {
        std::swap(_handle, other._handle);
        return *this;
    }
    ~Owned() { ZRRelease(_handle); }

    operator ZRTypeRef() const { return _handle; }
    std::string text() const { return ZRStringGetUTF8(_handle); }

private:
    ZRTypeRef _handle;
};

} // namespace test
