// How a message is sent to whoever holds a name, and its reply waited for.
#include "platform/processes/MessagePort.h"

#include "platform/files/FileDescriptor.h"
#include "platform/files/Files.h"
#include "platform/processes/PortAddress.h"
#include "platform/processes/PortFrame.h"
#include "platform/processes/PortPeer.h"
#include "platform/run/Clock.h"

#include <algorithm>
#include <cerrno>
#include <cmath>

#include <poll.h>

namespace platform {

struct MessagePort::State {
    FileDescriptor socket;
    std::string path;
};

namespace {

/// Waits for what `events` name until the monotonic time `deadline`; answers 0 or an error number.
int waitFor(int socket, short events, double deadline)
{
    for (;;) {
        const double left = Clock::current().realSecondsUntil(deadline);
        pollfd wanted{socket, events, 0};
        const int ready = poll(&wanted, 1, static_cast<int>(std::ceil(std::min(left, 86400.0) * 1000)));
        if (ready > 0)
            return 0;
        if (ready < 0 && errno != EINTR)
            return errno;
        if (ready == 0 && left <= 0)
            return ETIMEDOUT;
    }
}

/// Calls `move`, which hands on bytes one way, until it has moved `count` of them.
template <class Move>
int moveAll(int socket, short events, double deadline, std::size_t count, Move move)
{
    for (std::size_t done = 0; done < count;) {
        const ssize_t moved = move(done);
        if (moved > 0)
            done += static_cast<std::size_t>(moved);
        else if (moved == 0)
            return EPIPE;
        else if (errno != EAGAIN && errno != EINTR)
            return errno == ECONNRESET ? EPIPE : errno;
        else if (const int code = waitFor(socket, events, deadline))
            return code;
    }
    return 0;
}

int sendAll(int socket, std::string_view bytes, double deadline)
{
    return moveAll(socket, POLLOUT, deadline, bytes.size(), [&](std::size_t done) {
        return send(socket, bytes.data() + done, bytes.size() - done, MSG_NOSIGNAL | MSG_DONTWAIT);
    });
}

int receiveAll(int socket, std::string& bytes, double deadline)
{
    return moveAll(socket, POLLIN, deadline, bytes.size(), [&](std::size_t done) {
        return recv(socket, bytes.data() + done, bytes.size() - done, MSG_DONTWAIT);
    });
}

int receiveReply(int socket, std::uint32_t message, std::string& reply, double deadline)
{
    std::string head(sizeof(PortFrame), '\0');
    if (const int code = receiveAll(socket, head, deadline))
        return code;
    const auto frame = PortFrame::of(head);
    if (!frame.isSound(kLargestPortReply) || frame.message != message)
        return EPROTO;
    reply.resize(frame.length);
    return receiveAll(socket, reply, deadline);
}

double deadlineIn(double seconds) { return Clock::current().monotonic() + seconds; }

} // namespace

MessagePort::MessagePort(std::unique_ptr<State> state) : _state(std::move(state)) { }
MessagePort::MessagePort(MessagePort&&) noexcept = default;
MessagePort& MessagePort::operator=(MessagePort&&) noexcept = default;
MessagePort::~MessagePort() = default;

Result<MessagePort> MessagePort::connect(const std::string& name)
{
    const auto path = portSocketPath(name);
    if (!path)
        return path.error();
    const auto address = portAddressOf(*path);
    FileDescriptor socket(::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0));
    if (!socket || ::connect(socket.get(), reinterpret_cast<const sockaddr*>(&address), sizeof address) != 0)
        return fileError(*path, "cannot be reached", errno);
    if (!isSameUser(socket.get()))
        return fileError(*path, "is another user's", EPERM);
    return MessagePort(std::make_unique<State>(State{std::move(socket), *path}));
}

Result<std::string> MessagePort::send(
    std::uint32_t message, std::string_view data, double sendTimeout, double receiveTimeout, Reply wanted)
{
    if (!isValid())
        return fileError("message port", "is no longer valid", ENOTCONN);
    if (data.size() > kLargestPortMessage)
        return fileError(_state->path, "is sent too large a message", EMSGSIZE);
    const PortFrame frame{.message = message,
        .length = static_cast<std::uint32_t>(data.size()),
        .wantsReply = wanted == Reply::wanted};
    const int socket = _state->socket.get();
    std::string reply;
    int code = sendAll(socket, frame.with(data), deadlineIn(sendTimeout));
    if (code == 0 && wanted == Reply::wanted)
        code = receiveReply(socket, message, reply, deadlineIn(receiveTimeout));
    if (code == 0)
        return reply;
    auto failure = fileError(_state->path, "cannot be asked", code);
    invalidate();
    return failure;
}

void MessagePort::invalidate() { _state.reset(); }

bool MessagePort::isValid() const { return _state != nullptr; }

} // namespace platform
