// How a value that is no object of its own becomes one, so that a handle can stand for it.
#pragma once

#include "platform/value/Object.h"
#include "platform/value/Value.h"

#include <vector>

namespace border {

/// A number, a date, the null marker, or an array or dictionary that holds any of these.
///
/// It lives at the border alone: `valueOf` takes it off what comes in, and no value inside the library holds
/// one. A boxed container also holds a handle for each element, since a caller borrows elements from it.
///
/// Ownership: owns its value and the objects of its elements.
/// Threads:   constant.
/// Errors:    none.
class Boxed final : public platform::Object {
public:
    using Objects = std::vector<platform::Ref<const platform::Object>>;

    enum class Origin { value, bareWord };

    explicit Boxed(platform::Value scalar, Origin origin = Origin::value)
        : _value(std::move(scalar)), _origin(origin)
    {
    }
    /// A container with the objects that stand for its elements, in the order of the elements or entries.
    Boxed(platform::Value container, Objects elements)
        : _value(std::move(container)), _elements(std::move(elements))
    {
    }

    const platform::Value& value() const { return _value; }
    const Objects& elements() const { return _elements; }
    Origin origin() const { return _origin; }

    bool isEqual(const Object& other) const override;
    std::size_t hash() const override { return _value.hash(); }
    std::string description() const override { return _value.description(); }

private:
    ~Boxed() override = default;

    const platform::Value _value;
    const Objects _elements;
    const Origin _origin = Origin::value;
};

/// The object that a value is, or a box for it; absent for an absent value. A multi-value gets its primary
/// entry now, so that from here on it may be read on several threads.
platform::Ref<const platform::Object> objectOf(const platform::Value& value);

/// The value that an object stands for: what a box holds, and of others the object itself.
platform::Value valueOf(const platform::Object* object);

/// An element of an array, or a value of a dictionary by its place among the keys; the container owns it.
/// Null for a bad index, and for what is no container.
const platform::Object* elementOf(const platform::Object& container, std::size_t index);

/// Whether a handle for the value would stand for something that is no object: what is no object itself, and
/// a container of such.
bool needsBox(const platform::Value& value);

/// A type code that a caller gave itself, in place of a number: it is read as that number, and known as bare.
platform::Ref<const platform::Object> bareWord(std::int64_t word);
bool isBare(const platform::Object& object);

/// The null marker: one for the process.
const platform::Ref<const platform::Object>& nullMarker();

/// How deep containers may nest that a caller makes: their end is recursive.
inline constexpr int kDeepestNesting = 512;
bool nestsDeeper(const platform::Value& value, int levels);

} // namespace border
