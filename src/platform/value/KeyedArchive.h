// How objects are put away under keys and come back: the archive of a search, of an image map, of an order.
#pragma once

#include "platform/value/PropertyList.h"

#include <concepts>
#include <functional>
#include <map>
#include <unordered_map>

namespace platform {

class KeyedArchiver;
class KeyedUnarchiver;

// An archive is a property list whose dictionaries name their class:
//
//     {archive = 1; root = {key = value …}; objects = ({@class = Name; key = value …}, …)}
//
// Where an object stands, there is {@object = n}, its place in `objects`; the null marker is {@null = true}.
// A key of the archived values that starts with "@" gets a second one in front. Objects are numbered as they
// are met and keys are sorted, hence the same values give the same bytes.
//
// An object that is met twice is written once and comes back as one object. One that holds itself, over
// however many others, is refused in both directions: what is archived is a tree with shared parts.

/// The codes of errors in the domain "KeyedArchive". A property list that cannot be read or written is
/// answered with the error of that domain.
enum class KeyedArchiveFault : long {
    /// A property list, but no archive; or one at odds with itself.
    notArchive = 1,
    /// Written by a version that knows more than this one.
    newerArchive = 2,
    unknownClass = 3,
    /// The key holds something of another type than was asked for.
    wrongType = 4,
    /// An object that holds itself.
    cycle = 5,
    /// Past the limits of a property list, shared objects counted as often as something refers to them.
    tooLarge = 6,
    /// An object that is not Archivable, or an absent element of an array.
    notArchivable = 7,
};

inline constexpr char kKeyedArchiveErrorDomain[] = "KeyedArchive";

/// What an Object also is when it can be archived.
class PLATFORM_EXPORT Archivable {
public:
    /// The name by which the unarchiver finds the factory. It lasts as long as the archives do.
    virtual std::string archiveClassName() const = 0;
    /// Hands the fields to the coder. What goes wrong is told to `KeyedArchiver::fail`.
    virtual void encodeWithCoder(KeyedArchiver& coder) const = 0;

protected:
    ~Archivable() = default;
};

/// Writes an archive: encode under keys, then `finish`.
///
/// It is not reusable, and `encodeWithCoder` must not keep it.
///
/// Ownership: shares ownership of the objects met, until it goes.
/// Threads:   used by one thread.
/// Errors:    the first one is kept and what follows is passed over; `finish` answers it.
class KeyedArchiver {
public:
    explicit KeyedArchiver(const PropertyListLimits& limits = {});

    /// Of any kind, objects within arrays and dictionaries included. An absent value writes nothing.
    void encodeValue(std::string_view key, const Value& value);
    void encodeObject(std::string_view key, const Ref<const Object>& object)
    {
        encodeValue(key, Value(object));
    }
    void encodeInteger(std::string_view key, std::int64_t integer) { encodeValue(key, Value(integer)); }
    void encodeDouble(std::string_view key, double real) { encodeValue(key, Value(real)); }
    void encodeBool(std::string_view key, bool boolean) { encodeValue(key, Value(boolean)); }
    void encodeString(std::string_view key, std::string_view text) { encodeValue(key, Value(text)); }

    /// Gives up for a reason of the class's own. The first reason stays.
    void fail(Error error);

    Result<std::string> finish(PropertyListFormat format = PropertyListFormat::binary);

private:
    using Entries = std::vector<Dictionary::Entry>;
    struct Written {
        std::size_t index;
        bool isOpen;
        std::size_t cost;
        Value keptAlive;
    };

    Value encoded(const Value& value);
    Value encodedContainer(const Value& value);
    Value encodedObject(const Value& value);
    void fail(KeyedArchiveFault code, std::string text);
    void charge(std::size_t nodes);

    PropertyListLimits _limits;
    Entries _root;
    /// Of the object that is encoding itself; else the root's.
    Entries* _fields = &_root;
    std::vector<Value> _objects;
    std::unordered_map<const Object*, Written> _written;
    std::size_t _depth = 0;
    std::size_t _nodes = 0;
    std::optional<Error> _failure;
};

/// The archive of one value, under the key "root".
Result<std::string> archivedValue(const Value& value, PropertyListFormat format = PropertyListFormat::binary);

/// Which class names an unarchiver understands, and what makes an object of each.
///
/// Ownership: a plain copyable value.
/// Threads:   like any plain value; a table that is only read may be shared.
/// Errors:    none.
class ArchiveClasses {
public:
    /// Makes an object from the fields that the coder stands on. An empty Ref is refused as no object; a
    /// factory may call `fail` for a better reason, or throw.
    using Factory = std::function<Ref<const Object>(KeyedUnarchiver& coder)>;

    ArchiveClasses() = default;
    ArchiveClasses(std::initializer_list<std::pair<const std::string, Factory>> classes) : _factories(classes)
    {
    }

    /// A name that is already known gets the new factory.
    void add(std::string className, Factory factory);
    /// The factory, or null.
    const Factory* find(std::string_view className) const;

private:
    std::map<std::string, Factory, std::less<>> _factories;
};

/// Reads an archive: decode by key, in any order, then look whether it failed.
///
/// A key that is missing answers absent, 0, false or empty, and is no failure: a class tells older archives
/// from newer ones by `contains` or by a version of its own.
///
/// Ownership: owns the archive; borrows the table of classes.
/// Threads:   used by one thread.
/// Errors:    the first one is kept, and every further question answers like a missing key. A factory's
/// exception
///            passes through; the unarchiver must then be dropped.
class KeyedUnarchiver {
public:
    /// `classes` must outlive the unarchiver.
    KeyedUnarchiver(
        std::string_view archive, const ArchiveClasses& classes, const PropertyListLimits& limits = {});

    bool contains(std::string_view key) const;
    /// Of any kind. An object that stands in several places is the same object in all.
    Value decodeValue(std::string_view key);
    /// A whole number of 64 bits, or a failure.
    std::int64_t decodeInteger(std::string_view key);
    /// Any number but a boolean.
    double decodeDouble(std::string_view key);
    bool decodeBool(std::string_view key);
    std::string decodeString(std::string_view key);
    /// An object that is a T; empty when the key is missing.
    template <class T>
    Ref<T> decodeObject(std::string_view key)
    {
        const Value value = decodeValue(key);
        Ref<T> object(value.as<T>());
        if (!object && !value.isAbsent())
            failWithType(key, "not an object of that class");
        return object;
    }

    /// Gives up for a reason of the class's own. The first reason stays.
    void fail(Error error);
    const std::optional<Error>& failure() const { return _failure; }

private:
    struct Slot {
        Value object;
        bool isOpen = false;
        std::size_t cost = 0;
    };

    void open(const Value& archive);
    const Value& field(std::string_view key) const;
    Value scalar(std::string_view key, bool (*fits)(const Value&), const char* wanted);
    Value decoded(const Value& value);
    Value decodedContainer(const Value& value);
    Value decodedObject(const Value& reference);
    Value made(const Value& fields);
    void fail(KeyedArchiveFault code, std::string text);
    void failWithType(std::string_view key, std::string_view wanted);
    bool charge(std::size_t nodes);

    const ArchiveClasses& _classes;
    PropertyListLimits _limits;
    Value _archive;
    /// The dictionary that the class in turn asks for its keys.
    Value _fields;
    std::vector<Slot> _slots;
    std::size_t _depth = 0;
    std::size_t _nodes = 0;
    std::optional<Error> _failure;
};

/// What `archivedValue` archived.
Result<Value> unarchivedValue(std::string_view archive, const ArchiveClasses& classes);

} // namespace platform
