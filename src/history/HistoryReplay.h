// What takes a step back, or makes it again, within one transaction.
#pragma once

#include "history/HistoryTables.h"
#include "objectstore/ImageReader.h"
#include "objectstore/ImageWriter.h"

#include <cstdint>
#include <string>
#include <vector>

namespace history {

/// A record that is not as the step left it.
struct Deviation {
    std::string record;
    std::string name;
    /// Whether the record is missing, was made meanwhile, or was changed.
    enum class Kind : std::uint8_t { missing, present, changed } kind = Kind::changed;
};

/// Which records came, went and were changed, by unique id.
struct Replayed {
    std::vector<std::string> added;
    std::vector<std::string> changed;
    std::vector<std::string> removed;
};

/// Replays one step towards a side.
///
/// `capture` looks at each record of the step and keeps what the other direction will need; `apply` makes the
/// records what they were; `leave` notes what was left behind. Pictures of records that come are written
/// before the caller commits, so that no card is ever there without its picture; those of others are pending
/// then, and `settlePictures` puts them in place after the commit.
///
/// Ownership: borrows the store.
/// Threads:   one, within a write transaction of the caller.
/// Errors:    throws sqlite::Failure, or StoreFailure.
class HistoryReplay {
public:
    HistoryReplay(
        objectstore::StoreState& store, std::int64_t step, Side towards, std::string imagesDirectory);

    /// The records that are not as they were left. Where there are any nothing is to be applied, unless
    /// the caller insists.
    std::vector<Deviation> capture();
    void apply();
    void leave();
    /// Removes the picture files of records that were to come and do not.
    void forgetPictures();
    const Replayed& replayed() const { return _replayed; }

private:
    struct Item {
        Change change;
        std::int64_t key = 0;
    };

    template <class Visit>
    void forEachBatch(Visit visit);
    std::vector<objectstore::ObjectImage> imagesNow(const std::vector<Change>& changes,
        std::vector<std::int64_t>& keys, objectstore::ImageReader::Want want);
    void captureOne(Change& change, objectstore::ObjectImage* now, std::vector<Deviation>& deviations);
    bool isAsLeft(const Change& change, const objectstore::ObjectImage* now, std::int64_t pictures) const;
    void clearTies();
    void removeRecords();
    void bringRecords();
    void bringRecord(Change& change);
    void addTies();
    void bringPictures();
    void writeFiles(const std::vector<std::pair<std::string, Pictures>>& pictures);
    void logDeletion(const Change& change);

    ChangeSide& wanted(Change& change) const
    {
        return _towards == Side::before ? change.before : change.after;
    }
    ChangeSide& present(Change& change) const
    {
        return _towards == Side::before ? change.after : change.before;
    }
    Side presentSide() const { return _towards == Side::before ? Side::after : Side::before; }

    objectstore::StoreState& _store;
    Tables _tables;
    const std::int64_t _step;
    const Side _towards;
    const std::string _imagesDirectory;
    objectstore::ImageReader _reader;
    objectstore::ImageWriter _writer;
    Replayed _replayed;
    std::vector<std::string> _writtenFiles;
};

/// Puts the pictures in place that a committed step decided on. In a write transaction; also at the next
/// occasion after a crash in between.
platform::Result<void> settlePictures(objectstore::StoreState& store, const std::string& imagesDirectory);

} // namespace history
