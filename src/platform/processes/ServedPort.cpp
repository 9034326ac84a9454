// How a name is taken, and how those who call it are read and answered.
#include "platform/files/FileDescriptor.h"
#include "platform/files/Files.h"
#include "platform/notify/Subscription.h"
#include "platform/processes/MessagePort.h"
#include "platform/processes/PortAddress.h"
#include "platform/processes/PortFrame.h"
#include "platform/processes/PortPeer.h"
#include "platform/run/Log.h"
#include "platform/run/MainQueue.h"
#include "platform/run/ProcessMark.h"

#include <algorithm>
#include <cerrno>
#include <map>
#include <optional>
#include <utility>

#include <fcntl.h>
#include <sys/file.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <unistd.h>

namespace platform {

namespace {

/// So many callers are connected at once; another is hung up on.
constexpr std::size_t kMostCallers = 64;
constexpr double kSecondsOfRest = 0.5;
constexpr std::size_t kReadAtOnce = std::size_t(64) << 10;

/// The right to the name: a lock that the system drops when its holder ends. The file stays, since one that
/// is removed could be locked by two.
Result<FileDescriptor> takeLock(const std::string& path)
{
    FileDescriptor file(open(path.c_str(), O_RDWR | O_CREAT | O_CLOEXEC | O_NOFOLLOW, 0600));
    if (!file)
        return fileError(path, "cannot open", errno);
    if (flock(file.get(), LOCK_EX | LOCK_NB) != 0)
        return fileError(path, "is held already", errno == EWOULDBLOCK ? EADDRINUSE : errno);
    return file;
}

/// Under the lock: what lies at the path is a dead holder's.
Result<FileDescriptor> listenAt(const std::string& path)
{
    FileDescriptor socket(::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0));
    const auto address = portAddressOf(path);
    unlink(path.c_str());
    // The socket's own mode becomes the file's when it is bound.
    if (!socket || fchmod(socket.get(), 0600) != 0
        || bind(socket.get(), reinterpret_cast<const sockaddr*>(&address), sizeof address) != 0
        || listen(socket.get(), static_cast<int>(kMostCallers)) != 0)
        return fileError(path, "cannot be listened at", errno);
    return socket;
}

/// 0 where nothing lies, as when a socket is gone before it was looked at: no file has that number.
ino_t inodeOf(const std::string& path)
{
    struct stat info { };
    return lstat(path.c_str(), &info) == 0 ? info.st_ino : 0;
}

/// One who has connected, and what came from there so far.
struct Caller {
    FileDescriptor socket;
    std::string received;
    // Behind the descriptor that it looks at: it goes first.
    MainQueue::Token token;
};

} // namespace

struct ServedPort::State : std::enable_shared_from_this<State> {
    State(std::string at, FileDescriptor heldLock, FileDescriptor listening, PortHandler handle)
        : path(std::move(at))
        , inode(inodeOf(path))
        , handler(std::move(handle))
        , lockFile(std::move(heldLock))
        , socket(std::move(listening))
    {
    }

    /// Answers false where nobody serves the main queue: in a forked child, and at the end of the process.
    bool begin()
    {
        Lock lock(mutex);
        if (!socket)
            return false;
        token = MainQueue::shared().watch(socket.get(), [weak = weak_from_this()] {
            if (const auto self = weak.lock())
                self->acceptCallers();
        });
        return token.isPending();
    }

    void end()
    {
        if (mark.isForeign())
            return;
        gate.close();
        std::map<int, Caller> dropped;
        Lock lock(mutex);
        token.cancel();
        dropped.swap(callers);
        if (!socket)
            return;
        if (inodeOf(path) == inode)
            unlink(path.c_str());
        socket.close();
        // By name and not by closing: a forked child may have the file open too.
        flock(lockFile.get(), LOCK_UN);
        lockFile.close();
    }

    void acceptCallers()
    {
        Lock lock(mutex);
        while (socket) {
            FileDescriptor called(accept4(socket.get(), nullptr, nullptr, SOCK_CLOEXEC | SOCK_NONBLOCK));
            if (!called)
                return restWhenFull();
            if (!isSameUser(called.get()) || !handler || callers.size() >= kMostCallers)
                continue;
            const int key = called.get();
            auto& caller = callers[key];
            caller.socket = std::move(called);
            caller.token = MainQueue::shared().watch(key, [weak = weak_from_this(), key] {
                if (const auto self = weak.lock())
                    self->hear(key);
            });
        }
    }

    /// Without a descriptor to spare, those who call stay in the queue; looking at it at once would find the
    /// same.
    void restWhenFull() ZR_REQUIRES(mutex)
    {
        if (errno == EAGAIN || errno == EINTR || errno == ECONNABORTED)
            return;
        token = MainQueue::shared().after(kSecondsOfRest, [weak = weak_from_this()] {
            if (const auto self = weak.lock())
                self->begin();
        });
    }

    enum class Front { message, part, nonsense };

    /// Takes the message at the front of what was received, if it is all there.
    static Front takeMessage(std::string& received, PortFrame& frame, std::string& data)
    {
        if (received.size() < sizeof frame)
            return Front::part;
        frame = PortFrame::of(received);
        if (!frame.isSound(kLargestPortMessage))
            return Front::nonsense;
        if (received.size() - sizeof frame < frame.length)
            return Front::part;
        data = received.substr(sizeof frame, frame.length);
        received.erase(0, sizeof frame + frame.length);
        return Front::message;
    }

    /// Answers the next message of a caller to `frame` and `data`, or false. A caller who said what nobody
    /// can read, or hung up, is forgotten.
    bool nextMessage(int key, bool mayRead, PortFrame& frame, std::string& data)
    {
        Lock lock(mutex);
        const auto found = callers.find(key);
        if (found == callers.end())
            return false;
        auto& caller = found->second;
        const bool isOpen = !mayRead || readSome(caller.socket, caller.received);
        const auto front = takeMessage(caller.received, frame, data);
        if (front == Front::nonsense || (front == Front::part && !isOpen))
            callers.erase(found);
        return front == Front::message;
    }

    static bool readSome(const FileDescriptor& from, std::string& received)
    {
        const auto before = received.size();
        received.resize(before + kReadAtOnce);
        const auto count = recv(from.get(), received.data() + before, kReadAtOnce, 0);
        received.resize(before + static_cast<std::size_t>(std::max<ssize_t>(count, 0)));
        return count > 0 || (count < 0 && (errno == EAGAIN || errno == EINTR));
    }

    void hear(int key)
    {
        PortFrame frame;
        std::string data;
        for (bool mayRead = true; nextMessage(key, mayRead, frame, data); mayRead = false)
            answer(key, frame, data);
    }

    void answer(int key, const PortFrame& frame, const std::string& data)
    {
        std::optional<std::string> reply;
        if (!gate.enter())
            return;
        runLogged([&] { reply = handler(frame.message, data); });
        gate.leave();
        if (reply && !frame.wantsReply)
            return;
        Lock lock(mutex);
        const auto caller = callers.find(key);
        if (caller != callers.end() && !(reply && sendWhole(caller->second.socket, frame.message, *reply)))
            callers.erase(caller);
    }

    /// What the kernel does not take at once is too much, or for a caller who does not read.
    static bool sendWhole(const FileDescriptor& to, std::uint32_t message, const std::string& reply)
    {
        if (reply.size() > kLargestPortReply) {
            log("A reply of " + std::to_string(reply.size()) + " bytes is too large for a message port");
            return false;
        }
        const PortFrame frame{.message = message, .length = static_cast<std::uint32_t>(reply.size())};
        const auto bytes = frame.with(reply);
        return send(to.get(), bytes.data(), bytes.size(), MSG_NOSIGNAL) == static_cast<ssize_t>(bytes.size());
    }

    const ProcessMark mark;
    const std::string path;
    const ino_t inode;
    const PortHandler handler;
    CallGate gate;
    Mutex mutex{LockRank::queue};
    FileDescriptor lockFile ZR_GUARDED_BY(mutex);
    FileDescriptor socket ZR_GUARDED_BY(mutex);
    MainQueue::Token token ZR_GUARDED_BY(mutex);
    std::map<int, Caller> callers ZR_GUARDED_BY(mutex);
};

void ServedPort::invalidate() { _state->end(); }

bool ServedPort::isReachable() const
{
    if (_state->mark.isForeign())
        return false;
    Lock lock(_state->mutex);
    return _state->socket && _state->inode != 0 && inodeOf(_state->path) == _state->inode;
}

Result<std::unique_ptr<ServedPort>> MessagePort::serve(const std::string& name, PortHandler handler)
{
    const auto path = portSocketPath(name);
    if (!path)
        return path.error();
    auto lock = takeLock(*path + ".lock");
    if (!lock)
        return lock.error();
    auto socket = listenAt(*path);
    if (!socket)
        return socket.error();
    auto state =
        std::make_shared<ServedPort::State>(*path, std::move(*lock), std::move(*socket), std::move(handler));
    if (!state->begin()) {
        state->end();
        return fileError(*path, "cannot be served by this process", ECANCELED);
    }
    return std::unique_ptr<ServedPort>(new ServedPort(std::move(state)));
}

} // namespace platform
