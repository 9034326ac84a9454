// How a save becomes changes of a step.
#include "history/HistoryRecorder.h"

#include "history/HistoryModel.h"
#include "platform/run/Clock.h"

#include <utility>

namespace history {

using objectstore::FieldValue;
using objectstore::ImageReader;
using objectstore::ObjectImage;
using objectstore::RowRef;
using objectstore::SavedRoot;
using objectstore::StoreState;

namespace {

bool isSame(const FieldValue& a, const FieldValue& b, std::int64_t withoutBits)
{
    return a.kind == b.kind && (a.integer & ~withoutBits) == (b.integer & ~withoutBits) && a.real == b.real
        && a.bytes == b.bytes;
}

} // namespace

HistoryRecorder::HistoryRecorder(std::string title, std::string directory, std::string imagesDirectory)
    : _title(std::move(title)), _directory(std::move(directory)), _imagesDirectory(std::move(imagesDirectory))
{
}

void HistoryRecorder::pictureWillChange(
    const std::string& uniqueId, std::string_view kind, const platform::Value& data)
{
    auto at = _pictures.find(uniqueId);
    if (at == _pictures.end()) {
        at = _pictures.emplace(uniqueId, PictureNote()).first;
        at->second.before = at->second.now = picturesOf(_imagesDirectory, uniqueId);
    }
    Pictures& now = at->second.now;
    if (data.isData())
        now.insert_or_assign(std::string(kind), std::string(data.asBytes()));
    else if (const auto former = now.find(kind); former != now.end())
        now.erase(former);
}

bool HistoryRecorder::counts(
    const objectstore::Slot& slot, const FieldValue& before, const FieldValue& after) const
{
    const auto field = imageModel().fieldOf(slot);
    return field.isCounted && !isSame(before, after, field.uncountedBits);
}

void HistoryRecorder::willWrite(StoreState& store, const std::vector<SavedRoot>& roots)
{
    _before.clear();
    std::vector<std::int64_t> keys;
    for (const SavedRoot& root : roots)
        if (root.fate != SavedRoot::Fate::inserted)
            keys.push_back(root.key);
    for (auto& image : ImageReader(store, imageModel()).read(keys, ImageReader::Want::images))
        _before.emplace(image.key, std::move(image));
}

// An import adds many and changes nobody: what it has just written need not be read back.
void HistoryRecorder::didWrite(
    StoreState& store, const std::vector<SavedRoot>& roots, const std::vector<RowRef>* inserted)
{
    std::vector<Saved> changes;
    std::vector<std::int64_t> toRead;
    for (const SavedRoot& root : roots)
        if (root.fate == SavedRoot::Fate::deleted)
            noteRemoved(changes, root);
        else if (root.fate == SavedRoot::Fate::changed || !inserted)
            toRead.push_back(root.key);
    ImageReader reader(store, imageModel());
    for (const auto& image : reader.read(toRead, ImageReader::Want::hashes))
        noteStaying(changes, image);
    if (inserted)
        for (const auto& image : reader.readInserted(*inserted))
            noteStaying(changes, image);
    _before.clear();
    _savedRecords.clear();
    for (const auto& saved : changes)
        _savedRecords.push_back(saved.change.record);
    if (!changes.empty())
        write(store, changes);
}

// Pictures of records that wait for another save are still to be told of.
void HistoryRecorder::didCommit()
{
    for (const auto& record : _savedRecords)
        _pictures.erase(record);
    _savedRecords.clear();
}

// ---- one record

void HistoryRecorder::noteRemoved(std::vector<Saved>& changes, const SavedRoot& root)
{
    const auto at = _before.find(root.key);
    if (at == _before.end())
        return;
    ObjectImage& before = at->second;
    Saved saved;
    saved.change.record = before.uniqueId;
    saved.change.key = before.key;
    saved.change.name = before.name;
    saved.change.before = {true, std::move(before.content), std::move(before.ties)};
    notePictures(saved, before.uniqueId);
    if (!saved.picturesBefore)
        saved.picturesBefore = picturesOf(_imagesDirectory, before.uniqueId);
    saved.change.left.picture.reset();
    changes.push_back(std::move(saved));
}

void HistoryRecorder::noteStaying(std::vector<Saved>& changes, const ObjectImage& now)
{
    Saved saved;
    Change& change = saved.change;
    change.record = now.uniqueId;
    change.key = now.key;
    change.name = now.name;
    change.after.isThere = true;
    const auto at = _before.find(now.key);
    change.before.isThere = at != _before.end();
    notePictures(saved, now.uniqueId);
    if (!change.before.isThere) {
        change.left.content = now.contentHash;
        change.left.ties = now.tiesHash;
        if (!saved.picturesBefore)
            change.left.picture = hashOf({});
        changes.push_back(std::move(saved));
        return;
    }
    ObjectImage& before = at->second;
    if (before.contentHash != now.contentHash) {
        change.before.content = std::move(before.content);
        change.left.content = now.contentHash;
    }
    if (before.tiesHash != now.tiesHash) {
        change.before.ties = std::move(before.ties);
        change.left.ties = now.tiesHash;
    }
    if (change.left.content || change.left.ties || change.left.picture)
        changes.push_back(std::move(saved));
}

/// What is known of pictures that were set or removed since the last save.
void HistoryRecorder::notePictures(Saved& saved, const std::string& record) const
{
    const auto at = _pictures.find(record);
    if (at == _pictures.end())
        return;
    const auto& [before, now] = at->second;
    if (saved.change.before.isThere && saved.change.after.isThere && before == now)
        return;
    saved.picturesBefore = before;
    saved.change.left.picture = hashOf(now);
}

// ---- the step

void HistoryRecorder::beginStep(Tables& tables)
{
    tables.create();
    _isNewStep = _step == 0 || !tables.hasOpenStep(_step);
    if (!_isNewStep)
        return;
    _step = tables.addStep(_title, platform::Clock::current().now());
    _inUse = StepInUse(_directory, _step);
}

void HistoryRecorder::write(StoreState& store, std::vector<Saved>& changes)
{
    Tables tables(store);
    beginStep(tables);
    bool isRewritten = false;
    std::int64_t size = 0;
    for (Saved& saved : changes) {
        isRewritten |= !_isNewStep && mergeEarlier(tables, saved);
        if (!saved.change.before.isThere && !saved.change.after.isThere) {
            tables.remove(_step, saved.change.record);
            continue;
        }
        tables.put(_step, saved.change);
        size += Tables::sizeOf(saved.change);
        if (!saved.picturesBefore)
            continue;
        tables.putPictures(_step, saved.change.record, Side::before, *saved.picturesBefore);
        size += Tables::sizeOf(*saved.picturesBefore);
    }
    if (isRewritten)
        tables.settle(_step);
    else
        tables.grow(_step, size);
}

/// Where an earlier save of this step touched the record too, what was there before that one counts.
bool HistoryRecorder::mergeEarlier(Tables& tables, Saved& saved) const
{
    auto earlier = tables.change(_step, saved.change.record);
    if (!earlier)
        return false;
    Change& change = saved.change;
    change.before.isThere = earlier->before.isThere;
    if (earlier->left.content || earlier->before.content)
        change.before.content = std::move(earlier->before.content);
    if (earlier->left.ties || earlier->before.ties)
        change.before.ties = std::move(earlier->before.ties);
    if (earlier->left.picture || !earlier->after.isThere)
        saved.picturesBefore.reset();
    if (!change.after.isThere)
        return true;
    const auto keep = [](std::optional<std::int64_t>& now, const std::optional<std::int64_t>& former) {
        if (!now)
            now = former;
    };
    keep(change.left.content, earlier->left.content);
    keep(change.left.ties, earlier->left.ties);
    keep(change.left.picture, earlier->left.picture);
    return true;
}

} // namespace history
