// Process-wide objects that threads and exit handlers may use until the very end.
#pragma once

#include <cstddef>
#include <new>
#include <utility>

namespace platform {

/// A T whose destructor is never run: for function-local statics.
///
/// Ownership: holds its T in place for the life of the process.
/// Threads:   as the T.
/// Errors:    none.
template <class T>
class NeverDestroyed {
public:
    template <class... Arguments>
    explicit NeverDestroyed(Arguments&&... arguments)
        : _object(::new (_space) T(std::forward<Arguments>(arguments)...))
    {
    }
    NeverDestroyed(const NeverDestroyed&) = delete;
    NeverDestroyed& operator=(const NeverDestroyed&) = delete;

    T& operator*() const { return *_object; }
    T* operator->() const { return _object; }

private:
    alignas(T) std::byte _space[sizeof(T)];
    T* _object;
};

} // namespace platform
