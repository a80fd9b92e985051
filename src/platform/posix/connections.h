// The two kinds of connection that a message window holds.
#pragma once

#include <cstddef>
#include <cstdint>
#include <deque>
#include <utility>

#include "platform/message_window.h"
#include "platform/posix/descriptor.h"
#include "platform/posix/packet_socket.h"

namespace wavo::platform {

/// Number of a connection within its window; never used again for another one.
using ConnectionId = std::uint64_t;

/// Somebody posts and sends to us here.
struct IncomingConnection {
    /// Posted messages that wait for Dispatch; more stay in the socket.
    static constexpr std::size_t kLargestQueue = 10000;

    IncomingConnection(ConnectionId number, Descriptor accepted)
        : id(number), socket(std::move(accepted)) {}

    const ConnectionId id;
    Descriptor socket;
    WindowHandle peer = 0;   ///< 0 until the hello
    std::size_t queued = 0;  ///< posted messages from here that wait for Dispatch
    bool paused = false;     ///< not read until some of them are handled
};

/// We post and send to a window here, and its replies come back.
///
/// What the socket does not take waits in two queues: sent messages go before posted ones.
class OutgoingConnection {
 public:
    /// Posted messages that wait for a peer that does not read.
    static constexpr std::size_t kLargestQueue = 10000;

    OutgoingConnection(ConnectionId id, WindowHandle target, Descriptor socket)
        : m_id(id), m_target(target), m_socket(std::move(socket)) {}

    [[nodiscard]] ConnectionId id() const noexcept { return m_id; }
    [[nodiscard]] WindowHandle target() const noexcept { return m_target; }
    [[nodiscard]] const Descriptor& socket() const noexcept { return m_socket; }
    [[nodiscard]] bool HasUnwritten() const noexcept {
        return !m_sent.empty() || !m_posted.empty();
    }

    /// Whether the event loop is asked to tell when the socket takes more.
    bool watches_writing = false;

    /// Writes or queues a posted message. kFull: the queue is full, the message is not taken.
    WriteStatus Post(const MessagePacket& packet);

    /// Writes or queues a sent message; never kFull.
    WriteStatus Send(const MessagePacket& packet);

    /// Takes a sent message back that was not written yet.
    void Withdraw(std::uint64_t sequence);

    /// Writes what was queued, as far as the socket takes it. kWritten: nothing is left.
    WriteStatus Flush();

    void Close() noexcept;

 private:
    const ConnectionId m_id;
    const WindowHandle m_target;
    Descriptor m_socket;
    std::deque<MessagePacket> m_sent;
    std::deque<MessagePacket> m_posted;
};

}  // namespace wavo::platform
