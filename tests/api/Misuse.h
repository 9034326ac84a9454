// Which calls of a plain function are wrong: made of its right call, and of what each argument does not take.
#pragma once

#include "api/roster.h"

#include <cstring>
#include <functional>
#include <map>
#include <string>
#include <tuple>
#include <type_traits>
#include <vector>

namespace test {

/// A handle of each kind, all of the shared roster.
///
/// Ownership: owns its handles.
/// Threads:   one.
/// Errors:    none.
class Samples {
public:
    Samples();
    ~Samples();
    Samples(const Samples&) = delete;
    Samples& operator=(const Samples&) = delete;

    ZRTypeRef of(ZRTypeID kind) const { return _handles.at(kind); }
    const std::map<ZRTypeID, ZRTypeRef>& all() const { return _handles; }
    /// Two lists of two handles: all there, and with a NULL in it.
    const ZRTypeRef* list() const { return _list; }
    const ZRTypeRef* listWithHole() const { return _listWithHole; }

private:
    std::map<ZRTypeID, ZRTypeRef> _handles;
    ZRTypeRef _list[2];
    ZRTypeRef _listWithHole[2];
};

/// What an argument is given: one right value, and wrong ones, each of which alone makes the call fail.
template <class T>
struct Given {
    std::function<T(const Samples&)> right;
    std::function<std::vector<T>(const Samples&)> wrong;
};

template <class T>
Given<T> given(T right, std::vector<T> wrong = {})
{
    return {[=](const Samples&) { return right; }, [=](const Samples&) { return wrong; }};
}

enum class Null { refused, taken };

/// A handle of one of these kinds, the first of them in the right call. Wrong are all others, and words that
/// are no addresses.
Given<ZRTypeRef> handle(std::vector<ZRTypeID> kinds, Null null = Null::refused);
/// A handle of any kind.
Given<ZRTypeRef> anyHandle(ZRTypeID right, Null null = Null::refused);
/// UTF-8; wrong are bytes that are none, and those named.
Given<const char*> text(const char* right, Null null = Null::refused, std::vector<const char*> wrong = {});

/// One function, and how to call it.
struct Row {
    std::string name;
    /// Makes each wrong call, and tells of those that did not fail.
    std::function<std::string(const Samples&)> misuse;
    /// Whether the right call fails.
    std::function<bool(const Samples&)> fails;
    /// The right call answers what a failure does.
    bool isQuiet = false;

    Row quiet() &&
    {
        isQuiet = true;
        return std::move(*this);
    }
};

template <class T>
bool isSame(T a, T b)
{
    if constexpr (std::is_same_v<T, const char*>)
        return std::strcmp(a, b) == 0;
    else
        return a == b;
}

/// Whether the call answers `failure`; what it answers is given back.
template <class R, class... A>
bool failed(const std::string& name, R (*function)(A...), R failure, const std::tuple<A...>& arguments)
{
    const R answer = std::apply(function, arguments);
    if constexpr (std::is_same_v<R, ZRTypeRef>) {
        if (name.find("Get") == std::string::npos)
            ZRRelease(answer);
    } else if constexpr (std::is_same_v<R, ZRObserver*>) {
        ZRObserverDestroy(answer);
    }
    return isSame(answer, failure);
}

template <class R, class... A>
Row row(std::string name, R (*function)(A...), std::type_identity_t<R> failure,
    std::type_identity_t<Given<A>>... arguments)
{
    const auto rightCall = [=](const Samples& samples) {
        return std::tuple<A...>(arguments.right(samples)...);
    };
    const auto misuse = [=](const Samples& samples) {
        std::string taken;
        [&]<std::size_t... I>(std::index_sequence<I...>)
        {
            [[maybe_unused]] const auto tryEach = [&]<std::size_t Place>(const auto& argument) {
                std::size_t number = 0;
                for (const auto& wrong : argument.wrong(samples)) {
                    auto call = rightCall(samples);
                    std::get<Place>(call) = wrong;
                    if (!failed(name, function, failure, call))
                        taken += " argument " + std::to_string(Place) + " wrong " + std::to_string(number);
                    ++number;
                }
            };
            (tryEach.template operator()<I>(arguments), ...);
        }
        (std::index_sequence_for<A...>{});
        return taken;
    };
    const auto fails = [=](const Samples& samples) {
        return failed(name, function, failure, rightCall(samples));
    };
    return {name, misuse, fails};
}

/// All plain functions.
const std::vector<Row>& allRows();

} // namespace test
