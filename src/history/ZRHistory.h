// What was changed step by step: looked at, taken back, and made again.
#pragma once

#include "core/ZRExport.h"
#include "core/ZRGlobalLock.h"
#include "platform/value/Error.h"
#include "platform/value/Object.h"

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

class ZRRoster;

/// One step, as it is told to people.
struct ZRHistoryEntry {
    std::int64_t number = 0;
    std::string title;
    /// When its first save was made; seconds since 1 January 1970 UTC.
    double date = 0;
    bool isUndone = false;
    /// How many records it added, changed and removed.
    std::int64_t added = 0;
    std::int64_t changed = 0;
    std::int64_t removed = 0;
    /// What is kept of it, in bytes.
    std::int64_t size = 0;
};

/// A record that stands in the way: it is not as the step left it.
struct ZRHistoryConflict {
    std::string uniqueId;
    std::string name;
    /// "is missing", "is there again" or "was changed".
    std::string reason;
};

/// What came of undoing or redoing a step.
struct ZRHistoryOutcome {
    enum class Status : std::uint8_t {
        done,
        /// There is no step to take.
        nothing,
        /// Whoever makes the step is still at work. Nothing was changed.
        inUse,
        /// Records are not as the step left them. Nothing was changed.
        conflict,
        /// See `error`. Unless it says that pictures are behind, nothing was changed.
        failed,
    };
    Status status = Status::nothing;
    std::optional<ZRHistoryEntry> step;
    std::vector<ZRHistoryConflict> conflicts;
    platform::Error error;
    std::size_t added = 0;
    std::size_t changed = 0;
    std::size_t removed = 0;
};

enum class ZRHistoryForce : bool { no, yes };

/// The history of a roster's store: the steps that processes made with ZRHistoryStep.
///
/// It knows nothing of what was saved without a step, and takes such a change for a conflict. Steps are
/// undone from the newest to the oldest and redone the other way; a new step drops what was undone. The last
/// 1,000 steps and 64 MB are kept, a bigger step by itself.
///
/// Ownership: shares ownership of the roster.
/// Threads:   each operation takes the lock.
/// Errors:    as answered. An undo and a redo are one transaction: after a crash the roster is what it was,
///            or what it was to be.
class ZR_EXPORT ZRHistory {
public:
    explicit ZRHistory(ZRRoster& roster);
    ~ZRHistory();
    ZRHistory(const ZRHistory&) = delete;
    ZRHistory& operator=(const ZRHistory&) = delete;

    /// The newest first, at most `limit`; 0: all.
    platform::Result<std::vector<ZRHistoryEntry>> steps(std::size_t limit = 0);
    /// Brings the records of the last step back to what they were. Forced, records that are not as the step
    /// left them are brought back too, as far as they can be. The roster must have no unsaved changes.
    ZRHistoryOutcome undo(ZRHistoryForce force = ZRHistoryForce::no);
    /// Makes the step again that was undone last.
    ZRHistoryOutcome redo(ZRHistoryForce force = ZRHistoryForce::no);
    /// Puts pictures in place that a process decided on which was killed then. Costs one look into the store
    /// when there are none. For whoever opens a roster; undo and redo do it by themselves.
    platform::Result<void> settlePictures();
    /// Forgets all steps. Records stay as they are.
    platform::Result<void> clear();

private:
    struct State;
    std::unique_ptr<State> _state;
};
