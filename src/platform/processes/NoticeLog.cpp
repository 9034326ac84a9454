// How the notice file is watched, and what is read there handed to those who subscribed.
#include "platform/processes/NoticeLog.h"

#include "platform/files/Directories.h"
#include "platform/processes/NoticeFile.h"
#include "platform/run/Log.h"
#include "platform/run/MainQueue.h"
#include "platform/run/NeverDestroyed.h"
#include "platform/run/ProcessMark.h"

#include <deque>
#include <utility>

#include <sys/inotify.h>
#include <unistd.h>

namespace platform {

namespace {

/// How often a process looks that the kernel has no watch for.
constexpr double kSecondsBetweenLooks = 0.5;

/// How long a process without a loop of its own must live before it watches. The end of a process that
/// watched waits for the kernel to let go of its watch, 15 ms at times: longer than all else that a short
/// command does.
constexpr double kSecondsUntilWatched = 0.05;

/// The kernel's watch on whichever file stands at a path. What exactly happened there does not matter: a wake
/// means "look".
class FileWatch {
public:
    bool begin()
    {
        if (!_queue)
            _queue = FileDescriptor(inotify_init1(IN_NONBLOCK | IN_CLOEXEC));
        return bool(_queue);
    }
    int descriptor() const { return _queue.get(); }

    /// Turns from the file watched so far to the one at `path`. A change of attributes is what a replaced
    /// file is left with: it loses its name.
    bool turnTo(const std::string& path)
    {
        const int before =
            std::exchange(_watch, inotify_add_watch(_queue.get(), path.c_str(), IN_MODIFY | IN_ATTRIB));
        if (before >= 0 && before != _watch)
            inotify_rm_watch(_queue.get(), before);
        return _watch >= 0;
    }

    void readEmpty() const
    {
        char events[4096];
        while (::read(_queue.get(), events, sizeof events) > 0) { }
    }

private:
    FileDescriptor _queue;
    int _watch = -1;
};

class NoticeLog final : public DistributedNotificationCenter, public std::enable_shared_from_this<NoticeLog> {
public:
    explicit NoticeLog(std::string path) : _path(std::move(path)), _tail(_path) { }

    void post(const DistributedNotification& notice) override
    {
        if (_mark.isForeign())
            return;
        const auto record = encodeNotice(notice);
        const auto posted = record ? appendNotice(_path, *record) : record.error();
        if (!posted)
            log("The notice " + notice.name + " is not passed on: " + posted.error().text);
    }

    Subscription subscribe(
        std::optional<std::string> name, std::optional<std::string> object, Callback callback) override
    {
        if (_mark.isForeign())
            return {};
        Lock lock(_mutex);
        if (_observers.count() == 0)
            beginListening();
        return _observers.subscribe([filterName = std::move(name), filterObject = std::move(object),
                                        call = std::move(callback)](const DistributedNotification& notice) {
            if ((!filterName || filterName == notice.name)
                && (!filterObject || filterObject == notice.object))
                call(notice);
        });
    }

private:
    void beginListening() ZR_REQUIRES(_mutex)
    {
        _waiting.clear();
        if (const auto started = _tail.startAtEnd(); !started)
            log("No notices are heard for now: " + started.error().text);
        auto watching = [self = weak_from_this()] {
            if (const auto log = self.lock())
                log->beginWatching();
        };
        if (MainQueue::shared().isAdopted())
            MainQueue::shared().async(std::move(watching));
        else
            _nextLook = MainQueue::shared().after(kSecondsUntilWatched, std::move(watching));
    }

    /// What was posted between reading the end and watching the file is heard now.
    void beginWatching()
    {
        {
            Lock lock(_mutex);
            if (watchFile() && !_token.isPending())
                _token = MainQueue::shared().watch(_watch.descriptor(), looking());
        }
        look();
    }

    /// Watches the file that is at the path now; where the kernel has no watch left, looks from time to time.
    bool watchFile() ZR_REQUIRES(_mutex)
    {
        const bool watches = _watch.begin() && _watch.turnTo(_path);
        if (!watches)
            lookLater();
        return watches;
    }

    void lookLater() ZR_REQUIRES(_mutex)
    {
        _nextLook = MainQueue::shared().after(kSecondsBetweenLooks, looking());
    }

    Block looking()
    {
        return [self = weak_from_this()] {
            if (const auto log = self.lock())
                log->look();
        };
    }

    /// On the main queue: reads one piece, and tells what was read. A callback may serve the queue itself, so
    /// what was read waits where the inner turn finds it, and the order is kept.
    void look()
    {
        bool more = false;
        {
            Lock lock(_mutex);
            if (_waiting.empty())
                more = readOn();
        }
        while (auto notice = nextWaiting())
            _observers.call(*notice);
        if (more)
            MainQueue::shared().async(looking());
    }

    bool readOn() ZR_REQUIRES(_mutex);

    std::optional<DistributedNotification> nextWaiting()
    {
        Lock lock(_mutex);
        if (_waiting.empty())
            return {};
        auto notice = std::move(_waiting.front());
        _waiting.pop_front();
        return notice;
    }

    const ProcessMark _mark;
    const std::string _path;
    Observers<DistributedNotification> _observers;
    Mutex _mutex{LockRank::queue};
    NoticeTail _tail ZR_GUARDED_BY(_mutex);
    std::deque<DistributedNotification> _waiting ZR_GUARDED_BY(_mutex);
    FileWatch _watch ZR_GUARDED_BY(_mutex);
    // Behind the descriptor that they look at: they go first.
    MainQueue::Token _token ZR_GUARDED_BY(_mutex);
    MainQueue::Token _nextLook ZR_GUARDED_BY(_mutex);
};

bool NoticeLog::readOn()
{
    _watch.readEmpty();
    if (_observers.count() == 0)
        return false;
    auto batch = _tail.read();
    // A directory that is gone has no next event.
    if ((batch.moved && !watchFile()) || (!batch.more && !_tail.isCurrent()) || !_token.isPending())
        lookLater();
    if (batch.missed) {
        log(_path + ": notices were passed over");
        _waiting.push_back({kNoticesMissed, std::nullopt, {}});
    }
    for (auto& notice : batch.notices)
        _waiting.push_back(std::move(notice));
    return batch.more;
}

struct UserLog {
    Mutex mutex{LockRank::leaf};
    std::string path ZR_GUARDED_BY(mutex);
    std::shared_ptr<DistributedNotificationCenter> log ZR_GUARDED_BY(mutex);
};

} // namespace

std::shared_ptr<DistributedNotificationCenter> makeNoticeLog(std::string path)
{
    return std::make_shared<NoticeLog>(std::move(path));
}

Result<std::string> userNoticeFile()
{
    const auto directory = Directories::current()->runtime();
    if (!directory)
        return directory.error();
    return *directory + "/roster-notices";
}

std::shared_ptr<DistributedNotificationCenter> userNoticeLog()
{
    static const NeverDestroyed<UserLog> only;
    const auto path = userNoticeFile();
    if (!path) {
        log("No notices between processes: " + path.error().text);
        return nullptr;
    }
    Lock lock(only->mutex);
    if (!only->log || only->path != *path) {
        only->path = *path;
        only->log = makeNoticeLog(*path);
    }
    return only->log;
}

} // namespace platform
