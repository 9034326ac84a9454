// What everything with an identity is: an object that lives as long as somebody owns it.
#pragma once

#include "platform/value/Export.h"

#include <atomic>
#include <concepts>
#include <cstddef>
#include <cstdint>
#include <string>
#include <type_traits>
#include <utility>

namespace platform {

/// Base of everything that is shared by reference.
///
/// It is not a base for plain values: those are copied, or held in a `Value`.
///
/// Ownership: counted inside the object. It is born with one owner, which `makeRef` hands to a `Ref`.
/// Threads:   the count is atomic; what a derived class guards is its own affair.
/// Errors:    none.
class PLATFORM_EXPORT Object {
public:
    Object(const Object&) = delete;
    Object& operator=(const Object&) = delete;

    /// Equal in content. The default is identity.
    virtual bool isEqual(const Object& other) const { return this == &other; }
    /// Equal objects have equal hashes.
    virtual std::size_t hash() const { return std::hash<const void*>{}(this); }
    /// Text for people who debug; never parsed.
    virtual std::string description() const;

    void retain() const noexcept { _owners.fetch_add(1, std::memory_order_relaxed); }

    /// For holders that do not own, such as caches: becomes an owner unless the last one has already gone.
    bool retainIfOwned() const noexcept;

    void release() const noexcept
    {
        if (_owners.fetch_sub(1, std::memory_order_acq_rel) == 1)
            const_cast<Object*>(this)->lastOwnerGone();
    }

protected:
    Object() = default;
    virtual ~Object() = default;

    /// Called once, on whatever thread released last. A class whose end must wait for a lock overrides it.
    virtual void lastOwnerGone() noexcept { delete this; }

private:
    mutable std::atomic<std::uint32_t> _owners{1};
};

/// The owning pointer to an Object. An empty Ref is "absent".
template <class T>
class Ref {
public:
    using element_type = T;

    Ref() = default;
    Ref(std::nullptr_t) { }
    /// Becomes one more owner of `object`.
    explicit Ref(T* object) : _object(object)
    {
        if (_object)
            _object->retain();
    }
    Ref(const Ref& other) : Ref(other._object) { }
    template <class U>
    requires std::convertible_to<U*, T*> Ref(const Ref<U>& other) : Ref(other.get()) { }
    template <class U>
    requires std::convertible_to<U*, T*> Ref(Ref<U>&& other)
    noexcept : _object(other.leak()) { }
    Ref(Ref&& other) noexcept : _object(other.leak()) { }
    ~Ref()
    {
        if (_object)
            _object->release();
    }
    Ref& operator=(Ref other) noexcept
    {
        std::swap(_object, other._object);
        return *this;
    }

    /// Takes over an ownership that the caller already has.
    static Ref adopt(T* object) noexcept
    {
        Ref ref;
        ref._object = object;
        return ref;
    }
    /// Gives the ownership away: the caller must `adopt` or release it.
    T* leak() noexcept { return std::exchange(_object, nullptr); }

    T* get() const noexcept { return _object; }
    T* operator->() const noexcept { return _object; }
    T& operator*() const noexcept { return *_object; }
    explicit operator bool() const noexcept { return _object != nullptr; }

    friend bool operator==(const Ref& a, const Ref& b) noexcept { return a._object == b._object; }
    friend bool operator==(const Ref& a, std::nullptr_t) noexcept { return a._object == nullptr; }

private:
    T* _object = nullptr;
};

/// Makes a T and owns it.
template <class T, class... Arguments>
Ref<T> makeRef(Arguments&&... arguments)
{
    return Ref<T>::adopt(new T(std::forward<Arguments>(arguments)...));
}

/// The same object as a U, or absent when it is none.
template <class U, class T>
Ref<U> refCast(const Ref<T>& ref)
{
    return Ref<U>(dynamic_cast<U*>(ref.get()));
}

} // namespace platform

template <class T>
struct std::hash<platform::Ref<T>> {
    std::size_t operator()(const platform::Ref<T>& ref) const noexcept { return std::hash<T*>{}(ref.get()); }
};
