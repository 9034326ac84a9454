// What an object is as a whole, read straight from the tables.
#pragma once

#include "objectstore/ImageModel.h"
#include "objectstore/ImageStream.h"
#include "objectstore/StoreState.h"

#include <cstdint>
#include <span>
#include <string>
#include <unordered_map>
#include <vector>

namespace objectstore {

/// A root with its parts and ties, as the store shows it.
struct ObjectImage {
    std::int64_t key = 0;
    const Entity* entity = nullptr;
    std::string uniqueId;
    /// For people.
    std::string name;
    /// Items; empty where only hashes were wanted.
    std::string content;
    std::string ties;
    /// Of what counts, never 0: equal for equal content, whatever its keys.
    std::int64_t contentHash = 0;
    std::int64_t tiesHash = 0;
};

/// Reads images of many roots with a few queries a table.
///
/// Ownership: borrows store and model.
/// Threads:   one, within a transaction of the caller.
/// Errors:    throws sqlite::Failure.
class ImageReader {
public:
    enum class Want : bool { hashes, images };

    ImageReader(StoreState& store, const ImageModel& model) : _store(store), _model(model) { }

    /// Those of these keys that are there and are roots of the model, in the order of their keys.
    std::vector<ObjectImage> read(std::span<const std::int64_t> keys, Want want);
    /// The hashes of the roots among these rows, which with their parts were just inserted: most of it need
    /// not be read. Parts of other roots are passed over.
    std::vector<ObjectImage> readInserted(std::span<const RowRef> rows);
    /// The key of the root with that unique id, 0 for none.
    std::int64_t keyOf(std::string_view uniqueId);

private:
    struct Building {
        ObjectImage image;
        const ImageModel::Roots* roots = nullptr;
        ImageHash content;
        ImageHash ties;
    };
    enum class Section : bool { content, ties };

    void readBatch(std::span<const std::int64_t> keys);
    void finishImages(std::vector<ObjectImage>& images);
    void readRoots(const ImageModel::Roots& roots, const std::string& keys);
    void readTies(const ImageModel::Roots& roots, const std::string& keys);
    void addInsertedPart(const Row& row);
    void readParts(const ImageModel::Found& parts, const std::string& keys, Section section);
    void readLarge(const Slot& slot, const std::string& keys);
    void readMemberships(const Slot& slot, const std::string& keys);
    void readPointers(const Slot& slot, const std::string& keys);
    template <class Fields>
    void addRoot(
        const Entity& entity, std::int64_t key, const ImageModel::Roots& roots, const Fields& fields);
    template <class Fields>
    void addRow(
        const Entity& entity, const Fields& fields, const Slot* owner, Building& into, Section section);
    void addTie(std::int64_t key, ImageItem::Kind kind, std::string_view name, std::string_view uniqueId);
    void append(std::string& to, const Slot& slot, const FieldValue& value);
    void finishPart(Building& into, Section section, bool isCounted);
    Building* building(std::int64_t key);
    const std::string& reference(const Slot& slot, std::int64_t key);
    ImageReference referenceTo(const Entity& destination, std::int64_t key);

    StoreState& _store;
    const ImageModel& _model;
    Want _want = Want::images;
    std::vector<Building> _building;
    std::unordered_map<std::int64_t, std::size_t> _at;
    std::unordered_map<std::int64_t, std::string> _references;
    std::string _bytes;
    std::string _counted;
};

} // namespace objectstore
