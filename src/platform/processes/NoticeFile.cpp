// How the notice file is appended to, replaced when it is full, and read on.
#include "platform/processes/NoticeFile.h"

#include "platform/files/Files.h"

#include <algorithm>
#include <cerrno>

#include <fcntl.h>
#include <sched.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

namespace platform {

namespace {

/// How often a poster asks for the lock, and how many microseconds it sleeps between once it has asked some
/// times in quick succession. Together a second.
constexpr int kLockAttempts = 1000;
constexpr int kQuickAttempts = 20;
constexpr useconds_t kLockPause = 1000;
constexpr char kLockKept[] = "another process does not let go of the notice file";
/// How often the file may be replaced under a poster that opens it.
constexpr int kOpenAttempts = 100;

struct stat statusOf(const FileDescriptor& file)
{
    struct stat info { };
    fstat(file.get(), &info);
    return info;
}

bool isAt(const FileDescriptor& file, const std::string& path)
{
    struct stat named { };
    const auto info = statusOf(file);
    return lstat(path.c_str(), &named) == 0 && named.st_ino == info.st_ino && named.st_dev == info.st_dev;
}

/// Whatever lies at the path, it is opened without waiting and used only if it is a file of this user's.
Result<FileDescriptor> openOwn(const std::string& path, int flags)
{
    FileDescriptor file(
        open(path.c_str(), O_RDWR | O_CREAT | O_CLOEXEC | O_NOFOLLOW | O_NONBLOCK | flags, 0600));
    if (!file)
        return fileError(path, "cannot open the notice file", errno);
    if (const auto info = statusOf(file); !S_ISREG(info.st_mode) || info.st_uid != geteuid())
        return fileError(path, "is no file of this user's own", EPERM);
    return file;
}

/// The posters' lock. A forked child shares the open file and with it the lock, so it is given up by name and
/// not left to closing.
class PosterLock {
public:
    explicit PosterLock(const FileDescriptor& file) : _file(file)
    {
        for (int attempt = 0; attempt < kLockAttempts && !_held; ++attempt) {
            if (attempt >= kQuickAttempts)
                usleep(kLockPause);
            else if (attempt > 0)
                sched_yield();
            _held = flock(_file.get(), LOCK_EX | LOCK_NB) == 0;
        }
    }
    ~PosterLock()
    {
        if (_held)
            flock(_file.get(), LOCK_UN);
    }
    PosterLock(const PosterLock&) = delete;
    PosterLock& operator=(const PosterLock&) = delete;

    bool isHeld() const { return _held; }

private:
    const FileDescriptor& _file;
    bool _held = false;
};

bool writeAt(const FileDescriptor& file, std::string_view bytes, std::uint64_t offset)
{
    while (!bytes.empty()) {
        const auto written = pwrite(file.get(), bytes.data(), bytes.size(), static_cast<off_t>(offset));
        if (written < 0 && errno != EINTR)
            return false;
        const auto count = static_cast<std::size_t>(std::max<ssize_t>(written, 0));
        bytes.remove_prefix(count);
        offset += count;
    }
    return true;
}

/// The bytes that are there, up to `count` of them.
std::string readAt(const FileDescriptor& file, std::uint64_t offset, std::size_t count)
{
    std::string bytes(count, '\0');
    std::size_t length = 0;
    while (length < count) {
        const auto got =
            pread(file.get(), bytes.data() + length, count - length, static_cast<off_t>(offset + length));
        if (got < 0 && errno == EINTR)
            continue;
        if (got <= 0)
            break;
        length += static_cast<std::size_t>(got);
    }
    bytes.resize(length);
    return bytes;
}

/// The header, if it is one and the file is as long as it says.
std::optional<NoticeHeader> headerOf(const FileDescriptor& file)
{
    const auto header = NoticeHeader::decode(readAt(file, 0, NoticeHeader::kLength));
    if (!header || header->end > static_cast<std::uint64_t>(statusOf(file).st_size))
        return {};
    return header;
}

/// Puts a new file with one record in the place of the one whose lock the caller holds.
Result<void> replaceWith(const std::string& path, std::uint64_t generation, std::string_view record)
{
    const auto fresh = path + ".new";
    const auto file = openOwn(fresh, O_TRUNC);
    if (!file)
        return file.error();
    const NoticeHeader header{generation, NoticeHeader::kLength + record.size()};
    if (!writeAt(*file, header.encode().append(record), 0) || rename(fresh.c_str(), path.c_str()) != 0) {
        const int code = errno;
        unlink(fresh.c_str());
        return fileError(path, "cannot start a new notice file", code);
    }
    return {};
}

Result<void> appendLocked(const FileDescriptor& file, const std::string& path, std::string_view record)
{
    const auto size = static_cast<std::uint64_t>(statusOf(file).st_size);
    auto header = size == 0 ? NoticeHeader() : headerOf(file);
    if (!header)
        return replaceWith(path, NoticeHeader().generation, record);
    if (header->end + record.size() > kLargestNoticeFile)
        return replaceWith(path, header->generation + 1, record);
    const auto at = header->end;
    header->end += record.size();
    if ((size > at && ftruncate(file.get(), static_cast<off_t>(at)) != 0) || !writeAt(file, record, at)
        || !writeAt(file, header->encode(), 0))
        return fileError(path, "cannot append a notice", errno);
    return {};
}

/// Makes an empty file one without notices.
Result<void> beginFile(const FileDescriptor& file, const std::string& path)
{
    const PosterLock lock(file);
    if (!lock.isHeld())
        return fileError(path, kLockKept, EWOULDBLOCK);
    if (statusOf(file).st_size == 0 && !writeAt(file, NoticeHeader().encode(), 0))
        return fileError(path, "cannot begin the notice file", errno);
    return {};
}

} // namespace

Result<void> appendNotice(const std::string& path, std::string_view record)
{
    for (int attempt = 0; attempt < kOpenAttempts; ++attempt) {
        const auto file = openOwn(path, 0);
        if (!file)
            return file.error();
        const PosterLock lock(*file);
        if (!lock.isHeld())
            return fileError(path, kLockKept, EWOULDBLOCK);
        if (isAt(*file, path))
            return appendLocked(*file, path, record);
    }
    return fileError(path, "is replaced again and again", EAGAIN);
}

Result<void> NoticeTail::startAtEnd()
{
    if (!_file || !isCurrent()) {
        auto file = openOwn(_path, 0);
        if (!file)
            return file.error();
        if (statusOf(*file).st_size == 0)
            if (auto begun = beginFile(*file, _path); !begun)
                return begun;
        _file = std::move(*file);
    }
    // A damaged file is replaced by the next poster; its successor is then news from the beginning.
    const auto header = headerOf(_file).value_or(NoticeHeader{0});
    _generation = header.generation;
    _offset = header.end;
    return {};
}

bool NoticeTail::isCurrent() const { return isAt(_file, _path); }

NoticeBatch NoticeTail::read()
{
    NoticeBatch batch;
    if (!_file) {
        follow(batch);
        return batch;
    }
    auto end = postedEnd();
    if (_offset == end && !isCurrent()) {
        // Nothing is posted to a file that was replaced, so this end is its last.
        end = postedEnd();
        if (_offset == end) {
            follow(batch);
            return batch;
        }
    }
    if (_offset > end)
        passOver(end, batch);
    else if (_offset < end)
        take(bytesAt(_offset, end - _offset), end, batch);
    batch.more = _offset < end || !isCurrent();
    return batch;
}

std::uint64_t NoticeTail::postedEnd() const
{
    const auto header = headerOf(_file);
    return header ? header->end : _offset;
}

/// A piece of what was posted, or the one record that is larger than a piece.
std::string NoticeTail::bytesAt(std::uint64_t offset, std::uint64_t count) const
{
    auto bytes = readAt(_file, offset, static_cast<std::size_t>(std::min<std::uint64_t>(count, kPiece)));
    const auto first = frontNotice(bytes);
    if (first.state == NoticeRecord::State::partial && first.length <= count)
        bytes = readAt(_file, offset, first.length);
    return bytes;
}

void NoticeTail::take(std::string_view bytes, std::uint64_t end, NoticeBatch& batch)
{
    std::string_view before;
    while (_offset < end) {
        const auto record = frontNotice(bytes);
        const bool isCutOff = record.state == NoticeRecord::State::partial;
        if (record.state == NoticeRecord::State::damaged || (isCutOff && record.length > end - _offset))
            return passOver(end, batch);
        if (isCutOff)
            return;
        if (record.payload != before)
            if (auto notice = decodeNotice(record.payload))
                batch.notices.push_back(std::move(*notice));
        before = record.payload;
        bytes.remove_prefix(record.length);
        _offset += record.length;
    }
}

void NoticeTail::passOver(std::uint64_t end, NoticeBatch& batch)
{
    batch.missed = true;
    _offset = end;
}

void NoticeTail::follow(NoticeBatch& batch)
{
    auto file = openOwn(_path, 0);
    if (!file)
        return;
    const bool begun = statusOf(*file).st_size != 0 || beginFile(*file, _path);
    const auto header = begun ? headerOf(*file) : std::nullopt;
    if (!header)
        return;
    batch.missed = header->generation != _generation + 1;
    batch.moved = batch.more = true;
    _file = std::move(*file);
    _generation = header->generation;
    _offset = NoticeHeader::kLength;
}

} // namespace platform
