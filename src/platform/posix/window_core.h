// The working part of a message window.
//
// It is owned by its MessageWindow and kept alive by every call that is under way, so that a
// handler may destroy the window: the calls above it find `closed` and return.
//
// Invariants:
// 1. Whenever code of the user runs, PollDescriptor is readable if anything waits for Dispatch.
// 2. Connections are found by numbers that are never used again: an event of a connection that a
//    handler has ended finds nothing.
// 3. Waiting for the answer of a Send is not disturbed by posted messages that are queued.
#pragma once

#include <chrono>
#include <cstdint>
#include <deque>
#include <memory>
#include <set>
#include <string>
#include <unordered_map>
#include <vector>

#include "platform/message_window.h"
#include "platform/posix/connections.h"
#include "platform/posix/descriptor.h"
#include "platform/posix/socket_watch.h"

namespace wavo::platform {

class WindowCore : public std::enable_shared_from_this<WindowCore> {
 public:
    explicit WindowCore(MessageWindow::Handler handler);
    ~WindowCore();
    WindowCore(const WindowCore&) = delete;
    WindowCore& operator=(const WindowCore&) = delete;

    /// Makes the sockets. Called once, first. Returns false with the reason in `*error`.
    bool Open(std::string* error);

    /// Ends everything: the name goes first, so that nobody connects to a window that is ending.
    void Close() noexcept;

    /// Handles a message at once, on the stack of the caller.
    std::int64_t Call(const Message& message);

    [[nodiscard]] WindowHandle handle() const noexcept { return m_handle; }
    void SetPeerGoneHandler(MessageWindow::PeerGone handler);
    void SetPeerRefusedHandler(MessageWindow::PeerRefused handler);
    bool Post(WindowHandle target, const Message& message);
    SendResult Send(WindowHandle target, const Message& message);
    [[nodiscard]] int PollDescriptor() const noexcept { return m_sockets.Number(); }
    void Dispatch();
    bool WaitAndDispatch(std::chrono::nanoseconds timeout);

 private:
    using Clock = std::chrono::steady_clock;
    using Incoming = std::shared_ptr<IncomingConnection>;
    using Outgoing = std::shared_ptr<OutgoingConnection>;

    /// A Send that waits; it lives on the stack of that Send.
    struct PendingSend {
        const std::uint64_t sequence;
        const ConnectionId connection;
        bool answered = false;
        bool gone = false;
        std::int64_t result = 0;
    };
    class PendingScope;
    static constexpr ConnectionId kSignalId = 0;
    static constexpr ConnectionId kListenerId = 1;

    /// What waits for Dispatch: a posted message, or news of a peer.
    struct Queued {
        Message message;
        Incoming from;
        WindowHandle peer = 0;              ///< whose news it is
        const char* refused_for = nullptr;  ///< null: it is gone
    };

    // Events
    int Pump(Clock::time_point deadline);
    void HandleEvent(const epoll_event& event);
    void UpdateSignal() noexcept;

    // Connections to us
    void Accept();
    bool TurnAway() noexcept;
    void PauseListening() noexcept;
    void ResumeListening() noexcept;
    void ReadIncoming(const Incoming& connection);
    const char* TakePacket(const Incoming& connection, const MessagePacket& packet);
    const char* Serve(const Incoming& connection, const MessagePacket& packet);
    void EndIncoming(const Incoming& connection);
    /// Ends it for what was written to it, and tells of those whose it is.
    void RefuseIncoming(const Incoming& connection, const char* why);
    /// The windows that this one talks to and whose process made the connection.
    [[nodiscard]] std::vector<WindowHandle> PeersBehind(const IncomingConnection& connection) const;
    /// Ends the oldest of those that have not said whose they are, when there are too many.
    void LimitSilent();

    // Connections from us
    Outgoing ConnectionTo(WindowHandle target);
    void WriteMore(const Outgoing& connection);
    void WatchWriting(const Outgoing& connection);
    void ReadReplies(const Outgoing& connection);
    bool TakeReplies(const Outgoing& connection, bool until_answer);
    void EndOutgoing(const Outgoing& connection);
    SendResult WaitForReply(const Outgoing& connection, PendingSend* pending,
                            Clock::time_point deadline);

    // Queue
    void HandleWaiting(bool pumped);
    void QueueVanished();
    [[nodiscard]] bool HasUnread(WindowHandle peer) const;
    void HandleQueued();
    void TellNews(const Queued& news);

    // Constant after Open.
    const MessageWindow::Handler m_handler;
    std::string m_folder;
    WindowHandle m_handle = 0;
    int m_process = 0;
    Descriptor m_folder_lock;
    SocketWatch m_sockets;  ///< all sockets; its signal: something is queued, and nobody waits for
                            ///< a reply

    // State.
    bool m_closed = false;
    bool m_listening_paused = false;
    std::uint64_t m_handled = 0;  ///< calls of handlers so far
    Descriptor m_listener;
    Descriptor m_spare;  ///< given up to turn a connection away when there are no descriptors left
    MessageWindow::PeerGone m_peer_gone;
    MessageWindow::PeerRefused m_peer_refused;
    ConnectionId m_last_id;
    std::uint64_t m_last_sequence = 0;
    std::unordered_map<ConnectionId, Incoming> m_incoming;
    std::set<ConnectionId> m_silent;  ///< of m_incoming: those that have not said whose they are
    std::unordered_map<ConnectionId, Outgoing> m_outgoing;
    std::unordered_map<WindowHandle, Outgoing> m_targets;
    std::vector<PendingSend*> m_pending;
    std::vector<WindowHandle> m_vanished;  ///< gone, but what they wrote may not be read yet
    std::deque<Queued> m_queue;
    std::set<WindowHandle> m_refusals;  ///< peers of which m_queue tells that they were refused
};

/// The window `handle` of the calling thread; null when there is none.
std::shared_ptr<WindowCore> FindInThread(WindowHandle handle);

/// Whether a window `handle` lives in this process.
bool LivesInProcess(WindowHandle handle);

}  // namespace wavo::platform
