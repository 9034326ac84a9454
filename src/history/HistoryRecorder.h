// What writes a step of the history down, within the saves that make it.
#pragma once

#include "history/HistoryTables.h"
#include "history/StepInUse.h"
#include "objectstore/ImageReader.h"
#include "objectstore/SaveObserver.h"
#include "platform/value/Value.h"

#include <map>
#include <optional>
#include <string>
#include <unordered_map>
#include <vector>

namespace history {

/// Sees the saves of one store and puts what they change into one step: of what was there the image before,
/// of everything that stays a hash of what it is now.
///
/// Ownership: borrowed by the store as its observer.
/// Threads:   `pictureWillChange` under the global lock; the rest under the coordinator's.
/// Errors:    what SQLite refuses fails the save.
class HistoryRecorder final : public objectstore::SaveObserver {
public:
    HistoryRecorder(std::string title, std::string directory, std::string imagesDirectory);

    /// Notes the pictures of a record while they are still there.
    void pictureWillChange(const std::string& uniqueId, std::string_view kind, const platform::Value& data);

    bool counts(const objectstore::Slot& slot, const objectstore::FieldValue& before,
        const objectstore::FieldValue& after) const override;
    void willWrite(objectstore::StoreState& store, const std::vector<objectstore::SavedRoot>& roots) override;
    void didWrite(objectstore::StoreState& store, const std::vector<objectstore::SavedRoot>& roots,
        const std::vector<objectstore::RowRef>* inserted) override;
    void didCommit() override;

private:
    struct PictureNote {
        Pictures before;
        Pictures now;
    };
    struct Saved {
        Change change;
        /// Where the step changed them, or the record came or went.
        std::optional<Pictures> picturesBefore;
    };

    void noteRemoved(std::vector<Saved>& changes, const objectstore::SavedRoot& root);
    void noteStaying(std::vector<Saved>& changes, const objectstore::ObjectImage& now);
    void notePictures(Saved& saved, const std::string& record) const;
    void write(objectstore::StoreState& store, std::vector<Saved>& changes);
    void beginStep(Tables& tables);
    bool mergeEarlier(Tables& tables, Saved& saved) const;

    const std::string _title;
    const std::string _directory;
    const std::string _imagesDirectory;
    std::int64_t _step = 0;
    bool _isNewStep = false;
    StepInUse _inUse;
    std::unordered_map<std::int64_t, objectstore::ObjectImage> _before;
    std::map<std::string, PictureNote, std::less<>> _pictures;
    /// Of the save under way.
    std::vector<std::string> _savedRecords;
};

} // namespace history
