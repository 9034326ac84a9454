// How posters write the notice file, and how one listener reads on in it.
#pragma once

#include "platform/files/FileDescriptor.h"
#include "platform/processes/NoticeForm.h"

#include <vector>

namespace platform {

/// A poster starts a new file rather than let one grow past this.
inline constexpr std::uint64_t kLargestNoticeFile = std::uint64_t(4) << 20;

/// Appends a record to the file at `path`, which is made if missing. What a poster that died has left behind
/// the last whole record is cut first; a full or damaged file makes room for a new one.
///
/// Posters take turns by a lock on the file, for some microseconds each. When one keeps the lock for a second
/// (it was stopped just then), this one gives up: a notice is a hint, and whoever saved must not hang.
Result<void> appendNotice(const std::string& path, std::string_view record);

/// What a listener read in one go.
struct NoticeBatch {
    std::vector<DistributedNotification> notices;
    /// Records near these were passed over: damaged ones, or those of files that were full and replaced
    /// before this listener looked.
    bool missed = false;
    /// There is more to read at once.
    bool more = false;
    /// The listener stands in another file than before.
    bool moved = false;
};

/// The place of one listener in the notice file.
///
/// It takes no lock that a poster waits for, and reads a bounded piece at a time. A file that was replaced is
/// read to its end first.
///
/// Ownership: owns its descriptor of the file.
/// Threads:   one at a time.
/// Errors:    damage is passed over up to the present end, and told in the batch.
class NoticeTail {
public:
    /// The bytes read in one go, unless a single record is larger.
    static constexpr std::size_t kPiece = std::size_t(64) << 10;

    explicit NoticeTail(std::string path) : _path(std::move(path)) { }

    /// Goes behind everything posted so far; makes the file if missing.
    Result<void> startAtEnd();
    /// What was posted since, oldest first. Of equal records in a row only one is answered.
    NoticeBatch read();
    /// Whether the file at the path is the one that is read.
    bool isCurrent() const;

private:
    std::uint64_t postedEnd() const;
    std::string bytesAt(std::uint64_t offset, std::uint64_t count) const;
    void take(std::string_view bytes, std::uint64_t end, NoticeBatch& batch);
    void passOver(std::uint64_t end, NoticeBatch& batch);
    void follow(NoticeBatch& batch);

    const std::string _path;
    FileDescriptor _file;
    std::uint64_t _generation = 0;
    std::uint64_t _offset = 0;
};

} // namespace platform
