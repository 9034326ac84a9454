// What went wrong, told to a caller as a plain value: everything from outside is answered with it.
#pragma once

#include <string>
#include <utility>
#include <variant>

namespace platform {

/// Why an operation has no answer: a domain, a code within it, and a text that names the place and the
/// reason.
///
/// It is not an exception and never stands for a caller's mistake: those raise the invalid-argument failure.
///
/// Ownership: a plain copyable struct.
/// Threads:   like any plain value.
/// Errors:    none.
struct Error {
    /// Who numbers the codes, such as "PropertyList" or the name of an engine.
    std::string domain;
    long code = 0;
    /// One line without a full stop: where, then what, such as "line 7: <date> holds no date".
    std::string text;

    friend bool operator==(const Error&, const Error&) = default;
};

/// Either a T or the Error that stands in its place.
///
/// It is not a Value and holds no third state: what may be absent is a `Result<Ref<X>>` or a `Result<Value>`.
/// Functions return it by value and are used so:
///
///     auto list = decodePropertyList(bytes);
///     if (!list)
///         return list.error();
///     use(list->value);
///
/// Ownership: owns what it holds.
/// Threads:   like any plain value.
/// Errors:    asking for the T of a failure, or for the error of a success, throws std::bad_variant_access.
template <class T>
class [[nodiscard]] Result {
public:
    Result(T value) : _held(std::in_place_index<0>, std::move(value)) { }
    Result(Error error) : _held(std::in_place_index<1>, std::move(error)) { }

    explicit operator bool() const noexcept { return _held.index() == 0; }

    const T& operator*() const& { return std::get<0>(_held); }
    T& operator*() & { return std::get<0>(_held); }
    T&& operator*() && { return std::get<0>(std::move(_held)); }
    const T* operator->() const { return &std::get<0>(_held); }
    T* operator->() { return &std::get<0>(_held); }

    const Error& error() const { return std::get<1>(_held); }

private:
    std::variant<T, Error> _held;
};

/// The Result of what has nothing to hand back: empty is done, else why not.
///
///     if (auto failed = write(bytes); !failed)
///         return failed.error();
template <>
class [[nodiscard]] Result<void> {
public:
    Result() = default;
    Result(Error error) : _held(std::move(error)) { }

    explicit operator bool() const noexcept { return _held.index() == 0; }
    const Error& error() const { return std::get<1>(_held); }

private:
    std::variant<std::monostate, Error> _held;
};

} // namespace platform
