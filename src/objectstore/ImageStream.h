// The form in which the image of an object is kept: a stream of items that names everything by its key.
#pragma once

#include "objectstore/Row.h"

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace objectstore {

/// How an image refers to another object: by what names it for every store and process, never by its key.
struct ImageReference {
    enum class Kind : char {
        /// A shared object, with all that it says, so that it can be made where it is missing.
        shared = 'S',
        /// Another root, by its unique id.
        root = 'U',
        /// A part of the same root, by its identifier.
        part = 'I',
    };
    Kind kind = Kind::root;
    std::string entity;
    std::string name;
    std::vector<std::pair<std::string, FieldValue>> fields;
    /// What texts of `fields` lie in.
    std::vector<std::unique_ptr<std::string>> held;
};

/// One item of an image. Texts are borrowed from the stream.
struct ImageItem {
    enum class Kind : char {
        /// An object of entity `key` begins: first the root, then its parts.
        object = 'E',
        field = 'F',
        large = 'L',
        /// The to-one `key` leads to `reference`.
        reference = 'R',
        /// The root is linked, by the table `key`, to the root with the unique id `text`.
        link = 'K',
        /// The to-one `key` of the root with the unique id `text` points at this one.
        pointer = 'P',
    };
    Kind kind = Kind::object;
    std::string_view key;
    FieldValue value;
    std::string_view text;
    ImageReference reference;
};

/// Writes items, each into a text of its own: images are put together from many tables at once.
void appendObject(std::string& to, std::string_view entity);
void appendField(std::string& to, ImageItem::Kind kind, std::string_view key, const FieldValue& value);
void appendReference(std::string& to, std::string_view key, std::string_view encodedReference);
void appendTie(std::string& to, ImageItem::Kind kind, std::string_view key, std::string_view uniqueId);
std::string encodedReference(const ImageReference& reference);

/// Reads the items of an image.
///
/// Ownership: borrows the bytes.
/// Threads:   one.
/// Errors:    bytes that are no image throw StoreFailure with StoreFault::corrupt.
class ImageItems {
public:
    explicit ImageItems(std::string_view bytes) : _rest(bytes) { }

    /// False behind the last one.
    bool next(ImageItem& item);

private:
    char byte();
    std::uint64_t number();
    std::string_view text();
    FieldValue value();
    void readReference(ImageReference& reference);

    std::string_view _rest;
};

/// Sums up what counts in an image, whatever the order of its parts.
class ImageHash {
public:
    /// An object, or a tie, ends.
    void add(std::string_view countedBytes);
    /// Never 0.
    std::int64_t value() const;

private:
    std::uint64_t _sum = 0;
};

} // namespace objectstore
