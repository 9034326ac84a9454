// How one process of the user asks another, found by a name, for something.
#pragma once

#include "platform/value/Error.h"

#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <string_view>

namespace platform {

/// The bytes of one message, either way.
inline constexpr std::size_t kLargestPortMessage = std::size_t(1) << 20;
/// The bytes of a reply: what the kernel holds for a caller who is slow to read it.
inline constexpr std::size_t kLargestPortReply = std::size_t(64) << 10;

/// Answers a message: its number and its data, to the reply, which only a caller who wants one gets.
using PortHandler = std::function<std::string(std::uint32_t message, std::string_view data)>;

/// A name held by this process, and what it does with the messages that come in under it.
///
/// Of all processes of the user, one holds a name at a time; when it ends in whatever way, the name is free.
/// (A child that it forked and that runs on without becoming another program keeps the name of a holder that
/// was killed.) Programs of other users are not heard.
///
/// Ownership: owned by who serves; its end is `invalidate`.
/// Threads:   any; the handler runs on the main queue.
/// Errors:    a caller who sends no message, or one past the bound, is hung up on; what the handler throws is
///            logged and its caller hung up on.
class ServedPort {
public:
    ~ServedPort() { invalidate(); }
    ServedPort(const ServedPort&) = delete;
    ServedPort& operator=(const ServedPort&) = delete;

    /// Gives the name free. When it has returned, the handler does not start again; it waits for a call under
    /// way on another thread. In a forked child it lets go of the descriptors only: the name is its parent's.
    void invalidate();
    /// Whether the name still leads here: its socket may be gone with the user's run-time directory.
    bool isReachable() const;

private:
    friend class MessagePort;
    struct State;
    explicit ServedPort(std::shared_ptr<State> state) : _state(std::move(state)) { }
    const std::shared_ptr<State> _state;
};

/// A connection to the process that holds a name, and the name server's two operations.
///
/// Ownership: owns its connection.
/// Threads:   one at a time.
/// Errors:    system error numbers in the file domain; after one the connection is invalid.
class MessagePort {
public:
    /// Takes `name`. Without a handler it is only held, and every caller hung up on.
    /// Refused at once, with EADDRINUSE, when it is held already, be it by this process; with ECANCELED in a
    /// forked child of a process that uses the library.
    static Result<std::unique_ptr<ServedPort>> serve(const std::string& name, PortHandler handler);
    /// Refused at once, with ECONNREFUSED or ENOENT, when nobody holds `name`.
    static Result<MessagePort> connect(const std::string& name);

    MessagePort(MessagePort&&) noexcept;
    MessagePort& operator=(MessagePort&&) noexcept;
    ~MessagePort();

    enum class Reply { none, wanted };
    /// Sends a message within `sendTimeout` seconds. The reply, waited for at most `receiveTimeout` seconds,
    /// is the answer; without one wanted, the empty text once the message is on its way, read or not.
    /// ETIMEDOUT tells that time ran out, EPIPE that the other side hung up. Not for the main thread, when
    /// this process itself holds the name and a reply is wanted.
    Result<std::string> send(
        std::uint32_t message, std::string_view data, double sendTimeout, double receiveTimeout, Reply reply);
    void invalidate();
    bool isValid() const;

private:
    struct State;
    explicit MessagePort(std::unique_ptr<State> state);
    std::unique_ptr<State> _state;
};

} // namespace platform
