// How a step is taken back or made again: looked at, applied, and noted.
#include "history/HistoryReplay.h"

#include "core/ZRUniqueId.h"
#include "history/HistoryModel.h"
#include "objectstore/StoreErrors.h"
#include "platform/files/Files.h"
#include "platform/run/Clock.h"
#include "store/ZRModelTable.h"

#include <fmt/format.h>

#include <algorithm>
#include <utility>

namespace history {

using objectstore::FieldKind;
using objectstore::FieldValue;
using objectstore::ImageItem;
using objectstore::ImageReader;
using objectstore::ObjectImage;

namespace {

constexpr std::size_t kChangesAtOnce = 500;
/// Of pictures so many bytes wait in memory for their files.
constexpr std::size_t kBytesOfPictures = 8U << 20;

void require(const platform::Result<void>& done)
{
    if (!done)
        throw objectstore::StoreFailure(done.error());
}

FieldValue textField(std::string_view text) { return {.kind = FieldKind::text, .bytes = text}; }

} // namespace

HistoryReplay::HistoryReplay(
    objectstore::StoreState& store, std::int64_t step, Side towards, std::string imagesDirectory)
    : _store(store)
    , _tables(store)
    , _step(step)
    , _towards(towards)
    , _imagesDirectory(std::move(imagesDirectory))
    , _reader(store, imageModel())
    , _writer(store, imageModel())
{
}

template <class Visit>
void HistoryReplay::forEachBatch(Visit visit)
{
    // A record that gets another key meanwhile is not met again.
    const std::int64_t last = _tables.lastKey(_step);
    for (std::int64_t key = 0; key < last;) {
        auto batch = _tables.changesBetween(_step, key, last, kChangesAtOnce);
        if (batch.empty())
            return;
        key = batch.back().key;
        visit(batch);
    }
}

/// The image of each record, by the place of its change in `keys`; 0 for one that is not there.
std::vector<ObjectImage> HistoryReplay::imagesNow(
    const std::vector<Change>& changes, std::vector<std::int64_t>& keys, ImageReader::Want want)
{
    keys.clear();
    for (const Change& change : changes)
        keys.push_back(_reader.keyOf(change.record));
    std::vector<std::int64_t> there = keys;
    std::erase(there, 0);
    return _reader.read(there, want);
}

// ---- looking

std::vector<Deviation> HistoryReplay::capture()
{
    std::vector<Deviation> deviations;
    std::vector<std::int64_t> keys;
    forEachBatch([&](std::vector<Change>& batch) {
        auto images = imagesNow(batch, keys, ImageReader::Want::images);
        for (std::size_t i = 0; i < batch.size(); ++i) {
            const auto at = std::ranges::find(images, keys[i], &ObjectImage::key);
            captureOne(batch[i], keys[i] && at != images.end() ? &*at : nullptr, deviations);
        }
    });
    return deviations;
}

bool HistoryReplay::isAsLeft(const Change& change, const ObjectImage* now, std::int64_t pictures) const
{
    const auto& left = change.left;
    return (!left.content || *left.content == now->contentHash) && (!left.ties || *left.ties == now->tiesHash)
        && (!left.picture || *left.picture == pictures);
}

void HistoryReplay::captureOne(Change& change, ObjectImage* now, std::vector<Deviation>& deviations)
{
    const bool wasLeft = present(change).isThere;
    const bool isWhole = !wanted(change).isThere || !wasLeft;
    const bool looksAtPictures = now && (isWhole || change.left.picture);
    const Pictures pictures = looksAtPictures ? picturesOf(_imagesDirectory, change.record) : Pictures();
    if (wasLeft != (now != nullptr))
        deviations.push_back({change.record, now ? now->name : change.name,
            now ? Deviation::Kind::present : Deviation::Kind::missing});
    else if (now && !isAsLeft(change, now, looksAtPictures ? hashOf(pictures) : 0))
        deviations.push_back({change.record, now->name, Deviation::Kind::changed});
    ChangeSide& side = present(change);
    side = {.isThere = now != nullptr, .content = {}, .ties = {}};
    if (now && (isWhole || change.left.content))
        side.content = std::move(now->content);
    if (now && (isWhole || change.left.ties))
        side.ties = std::move(now->ties);
    if (now) {
        change.key = now->key;
        change.name = now->name;
    }
    _tables.put(_step, change);
    if (looksAtPictures)
        _tables.putPictures(_step, change.record, presentSide(), pictures);
}

// ---- applying

void HistoryReplay::apply()
{
    clearTies();
    removeRecords();
    bringRecords();
    addTies();
    bringPictures();
    _writer.finish();
}

/// What one gives up another gets: a membership, or to be Me.
void HistoryReplay::clearTies()
{
    forEachBatch([&](std::vector<Change>& batch) {
        std::vector<std::int64_t> keys;
        for (Change& change : batch)
            if (present(change).isThere && wanted(change).isThere && wanted(change).ties)
                keys.push_back(change.key);
        if (!keys.empty())
            _writer.clearTies(keys);
    });
}

/// Sources of changes hear of a record that went by its entry in the log.
void HistoryReplay::logDeletion(const Change& change)
{
    const std::string id = zrUniqueString() + ":ZRDeletedRecordLog";
    const FieldValue now{.kind = FieldKind::real, .real = platform::Clock::current().now()};
    std::string image;
    objectstore::appendObject(image, "ZROSDeletedRecordLog");
    appendField(image, ImageItem::Kind::field, "uniqueId", textField(id));
    appendField(image, ImageItem::Kind::field, "creationDate", now);
    appendField(image, ImageItem::Kind::field, "modificationDate", now);
    appendField(image, ImageItem::Kind::field, "deletedRecordUniqueId", textField(change.record));
    _writer.insert(image, 0);
}

void HistoryReplay::removeRecords()
{
    forEachBatch([&](std::vector<Change>& batch) {
        std::vector<std::int64_t> keys;
        for (Change& change : batch) {
            if (!present(change).isThere || wanted(change).isThere)
                continue;
            keys.push_back(change.key);
            logDeletion(change);
            _replayed.removed.push_back(change.record);
            for (const auto& [kind, bytes] : _tables.pictures(_step, change.record, presentSide()))
                _tables.putPending(_step, change.record, kind, std::nullopt);
        }
        if (!keys.empty())
            for (const auto& roots : imageModel().roots())
                _writer.remove(roots, keys);
    });
}

void HistoryReplay::bringRecords()
{
    static const auto& logged = *rosterModel()->entity("ZROSDeletedRecordLog")->slot("deletedRecordUniqueId");
    forEachBatch([&](std::vector<Change>& batch) {
        const std::size_t before = _replayed.added.size();
        for (Change& change : batch)
            bringRecord(change);
        _writer.removePlain(logged, std::span(_replayed.added).subspan(before));
    });
}

void HistoryReplay::bringRecord(Change& change)
{
    const ChangeSide& to = wanted(change);
    if (!to.isThere)
        return;
    if (present(change).isThere) {
        if (to.content)
            _writer.replaceContent(change.key, *to.content);
        _replayed.changed.push_back(change.record);
    } else if (to.content) {
        const std::int64_t former = std::exchange(change.key, _writer.insert(*to.content, change.key));
        if (change.key != former)
            _tables.put(_step, change);
        _replayed.added.push_back(change.record);
    }
}

void HistoryReplay::addTies()
{
    forEachBatch([&](std::vector<Change>& batch) {
        for (Change& change : batch)
            if (wanted(change).isThere && wanted(change).ties && _reader.keyOf(change.record) == change.key)
                _writer.addTies(change.key, *wanted(change).ties);
    });
}

/// Files of records that come are written now, those of others after the commit.
void HistoryReplay::bringPictures()
{
    std::vector<std::pair<std::string, Pictures>> waiting;
    std::size_t bytes = 0;
    const auto flush = [&] {
        writeFiles(waiting);
        waiting.clear();
        bytes = 0;
    };
    forEachBatch([&](std::vector<Change>& batch) {
        for (Change& change : batch) {
            if (!wanted(change).isThere || (present(change).isThere && !change.left.picture))
                continue;
            Pictures pictures = _tables.pictures(_step, change.record, _towards);
            if (present(change).isThere) {
                for (const auto& [kind, former] : _tables.pictures(_step, change.record, presentSide()))
                    _tables.putPending(_step, change.record, kind, std::nullopt);
                for (const auto& [kind, data] : pictures)
                    _tables.putPending(_step, change.record, kind, data);
                continue;
            }
            // A large picture may have outlived its card.
            for (const auto& [kind, stale] : picturesOf(_imagesDirectory, change.record))
                if (!pictures.contains(kind))
                    _tables.putPending(_step, change.record, kind, std::nullopt);
            for (const auto& [kind, data] : pictures)
                bytes += data.size();
            if (!pictures.empty())
                waiting.emplace_back(change.record, std::move(pictures));
            if (bytes > kBytesOfPictures)
                flush();
        }
    });
    flush();
}

void HistoryReplay::writeFiles(const std::vector<std::pair<std::string, Pictures>>& pictures)
{
    if (pictures.empty())
        return;
    std::vector<platform::FileContents> files;
    for (const auto& [record, ofRecord] : pictures)
        for (const auto& [kind, bytes] : ofRecord) {
            files.push_back({picturePath(_imagesDirectory, record, kind), bytes});
            _writtenFiles.push_back(files.back().path);
        }
    require(platform::makePrivateDirectory(_imagesDirectory));
    require(platform::writeFilesAtomically(files));
}

void HistoryReplay::forgetPictures()
{
    for (const auto& path : std::exchange(_writtenFiles, {}))
        static_cast<void>(platform::removeFile(path));
}

// ---- noting

/// The store shows the wanted side now, so that it need not be kept; what is kept of it is its hash.
void HistoryReplay::leave()
{
    std::vector<std::int64_t> keys;
    forEachBatch([&](std::vector<Change>& batch) {
        const auto images = imagesNow(batch, keys, ImageReader::Want::hashes);
        for (std::size_t i = 0; i < batch.size(); ++i) {
            Change& change = batch[i];
            const auto at = std::ranges::find(images, keys[i], &ObjectImage::key);
            const bool isThere = keys[i] && at != images.end();
            const bool isWhole = !present(change).isThere;
            LeftBehind left;
            if (isThere && (isWhole || change.left.content))
                left.content = at->contentHash;
            if (isThere && (isWhole || change.left.ties))
                left.ties = at->tiesHash;
            if (isThere && (isWhole || change.left.picture))
                left.picture = hashOf(_tables.pictures(_step, change.record, _towards));
            change.left = left;
            wanted(change) = {.isThere = isThere, .content = {}, .ties = {}};
            _tables.put(_step, change);
            _tables.removePictures(_step, change.record, _towards);
        }
    });
    _tables.setUndone(_step, _towards == Side::before);
    _tables.settle(_step);
}

platform::Result<void> settlePictures(objectstore::StoreState& store, const std::string& imagesDirectory)
{
    platform::Result<void> settled;
    Tables(store).settlePictures(
        [&](std::string_view record, std::string_view kind, std::optional<std::string_view> bytes) {
            const std::string path = picturePath(imagesDirectory, record, kind);
            auto done = bytes ? platform::makePrivateDirectory(imagesDirectory) : platform::removeFile(path);
            if (done && bytes)
                done = platform::writeFileAtomically(path, *bytes);
            if (!done && settled)
                settled = done.error();
        });
    if (settled)
        store.connection->execute("DELETE FROM history_picture WHERE side = 2");
    return settled;
}

} // namespace history
