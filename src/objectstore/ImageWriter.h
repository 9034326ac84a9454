// How an object becomes again what an image says.
#pragma once

#include "objectstore/ImageModel.h"
#include "objectstore/ImageStream.h"
#include "objectstore/StoreState.h"
#include "objectstore/TextIndex.h"

#include <cstdint>
#include <map>
#include <span>
#include <string>
#include <string_view>
#include <unordered_set>
#include <vector>

namespace objectstore {

/// Writes roots from images straight into the tables, as the save of another context would have: contexts
/// take it in when they catch up.
///
/// Parts get new keys; a root keeps its former one, so that roots stay in the order in which they came.
///
/// Ownership: borrows store and model.
/// Threads:   one, within a write transaction of the caller, who calls `finish` before the commit.
/// Errors:    throws sqlite::Failure, or StoreFailure for bytes that are no image.
class ImageWriter {
public:
    ImageWriter(StoreState& store, const ImageModel& model);

    /// A root with its parts. It gets `formerKey` unless that is taken, or 0. Answers its key.
    std::int64_t insert(std::string_view content, std::int64_t formerKey);
    /// The attributes and parts of a root that is there. What ties it to others stays, where the entries are
    /// still there on which it rests.
    void replaceContent(std::int64_t key, std::string_view content);
    /// What ties the root to others goes. First from all roots of a change: what one gives up another gets.
    void clearTies(std::span<const std::int64_t> keys);
    /// Ties a root without ties. Ties to what is not there are left out; where somebody else is pointed at
    /// already, that stays.
    void addTies(std::int64_t key, std::string_view ties);
    /// Roots of one table with all that belongs to them.
    void remove(const ImageModel::Roots& roots, std::span<const std::int64_t> keys);
    /// Rows of a root entity without parts, those whose `slot` has one of these texts.
    void removePlain(const Slot& slot, std::span<const std::string> texts);
    /// Makes the commit number and the sequence of keys those of what was written.
    void finish();

private:
    struct Part;
    std::vector<Part> read(std::string_view image);
    std::vector<Part> readContent(std::string_view image);
    void writeTie(const ImageModel::Roots& roots, const Part& part, std::int64_t key);
    void writeRow(const Part& part, std::int64_t key, const Slot* owner, std::int64_t root);
    void writeParts(std::vector<Part>& parts, std::int64_t root);
    void writeLarge(const Part& part, std::int64_t key);
    void updateRow(const Part& part, std::int64_t key);
    void removeParts(const ImageModel::Roots& roots, const std::string& keys);
    void removeTies(const ImageModel::Roots& roots, const std::string& keys);
    void cutLinks(const Slot& slot, const std::string& keys);
    void link(const ImageModel::Roots& roots, std::int64_t key, const ImageItem& item);
    void point(const ImageModel::Roots& roots, std::int64_t key, const ImageItem& item);
    std::int64_t resolve(const ImageReference& reference, std::int64_t root);
    std::int64_t sharedObject(const ImageReference& reference, const Entity& entity);
    std::int64_t keyIn(const Family& family, const Slot& slot, std::string_view text);
    void touch(const Family& family, std::int64_t key);
    const ImageModel::Roots& rootsOfKey(std::int64_t key);
    bool isTaken(const Family& family, std::int64_t key);
    TextIndex& textIndex(const Entity& entity);
    sqlite::Statement& prepared(const std::string& sql) { return _store.connection->prepared(sql); }

    StoreState& _store;
    const ImageModel& _model;
    const std::int64_t _version;
    std::int64_t _sequence;
    std::unordered_set<std::int64_t> _inserted;
    std::map<const Entity*, TextIndex> _textIndexes;
    std::map<std::string, std::int64_t, std::less<>> _shared;
};

} // namespace objectstore
