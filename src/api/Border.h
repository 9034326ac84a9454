// What passes between C and the library: handles in, owned handles out, and never an exception.
#pragma once

#include "api/Boxed.h"
#include "api/ZRHandles.h"
#include "core/ZRForkedChild.h"
#include "core/ZRRecord.h"

#include <cxxabi.h>

#include <cstdint>
#include <exception>
#include <optional>
#include <string>
#include <string_view>
#include <type_traits>
#include <vector>

namespace border {

/// Raised by the readers of arguments below: the function answers its failure value.
///
/// Ownership: none.
/// Threads:   any.
/// Errors:    none.
class Refused : public std::exception {
public:
    const char* what() const noexcept override { return "an argument of a plain function is not usable"; }
};

/// Inside a handler: logs the exception, unless it is one with which the library tells a caller's mistake,
/// which a plain function answers without a word.
void tellOfException() noexcept;

/// The frame of every plain function: runs `body` and answers what it answers, or `failure` when it raises,
/// and in a forked child. What unwinds a thread that is cancelled passes through, as the C library demands.
template <class Body, class Result = std::invoke_result_t<Body>>
Result guarded(Body&& body, std::type_identity_t<Result> failure)
{
    if (zrIsForkedChild())
        return failure;
    try {
        return body();
    } catch (const abi::__forced_unwind&) {
        throw;
    } catch (...) {
        tellOfException();
        return failure;
    }
}

/// The same with 0, NULL or false as the failure, or without an answer.
template <class Body, class Result = std::invoke_result_t<Body>>
Result guarded(Body&& body)
{
    if constexpr (std::is_void_v<Result>)
        guarded([&] { return body(), true; }, false);
    else
        return guarded(body, Result{});
}

// ---- what comes in

/// Old callers give a type code itself where a number is asked for: a word that can be no address.
inline bool isBareWord(ZRTypeRef handle) { return reinterpret_cast<std::uintptr_t>(handle) < 4097; }

/// The object behind a handle; null for NULL and other bare words.
const platform::Object* objectBehind(ZRTypeRef handle);

/// The object as a T; raises Refused when it is none.
template <class T>
T& as(ZRTypeRef handle)
{
    if (auto* object = dynamic_cast<T*>(const_cast<platform::Object*>(objectBehind(handle))))
        return *object;
    throw Refused();
}

/// The same with one more owner, for operations that keep it.
template <class T>
platform::Ref<T> shared(ZRTypeRef handle)
{
    return platform::Ref<T>(&as<T>(handle));
}

/// The value behind a handle; absent for NULL. Raises Refused for any other bare word.
platform::Value value(ZRTypeRef handle);

/// The text; raises Refused for NULL and for what is no UTF-8.
std::string_view text(const char* utf8);
/// The same with NULL as absent.
std::optional<std::string_view> optionalText(const char* utf8);

// ---- what goes out: an ownership for the caller

ZRTypeRef owned(const platform::Value& value);
/// NULL for an absent text.
ZRTypeRef ownedText(const std::optional<std::string>& text);
ZRTypeRef owned(const ZRRecordList& records);
ZRTypeRef owned(const std::vector<std::string>& texts);
/// The object as it is, boxes too.
ZRTypeRef handedOver(platform::Ref<const platform::Object> object);

/// A handle that somebody else keeps alive.
inline ZRTypeRef borrowed(const platform::Object* object) { return reinterpret_cast<ZRTypeRef>(object); }

/// Pictures of new people wait for the save from now on: nothing of a card that is never saved is written.
void keepPicturesOf(ZRRoster& roster);

} // namespace border
