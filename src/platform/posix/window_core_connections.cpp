// The connections of a message window: accepting, reading, writing and ending them.
#include <fcntl.h>
#include <sys/socket.h>

#include <algorithm>
#include <cerrno>
#include <utility>

#include "platform/posix/message_packet.h"
#include "platform/posix/packet_socket.h"
#include "platform/posix/window_core.h"
#include "platform/posix/window_folder.h"

namespace wavo::platform {

namespace {

constexpr int kAcceptsPerEvent = 64;
/// Who connects says at once whose connection it is. Those that do not take descriptors that files
/// and segments need.
constexpr std::size_t kMostSilent = 64;
/// More than a socket holds: a sent message behind posted ones is found before any of them is
/// handled.
constexpr int kPacketsPerEvent = 1024;

Message MessageOf(const MessagePacket& packet) {
    return {packet.number, packet.w_param, packet.l_param};
}

/// What is wrong with what was read in the place of a packet.
const char* FaultOf(ReadStatus status) {
    return status == ReadStatus::kWrongSize ? "a packet that is not 40 bytes long"
                                            : "a packet of another magic or version";
}

}  // namespace

void WindowCore::Accept() {
    for (int count = 0; count < kAcceptsPerEvent && !m_closed; ++count) {
        Descriptor socket(
            ::accept4(m_listener.number(), nullptr, nullptr, SOCK_NONBLOCK | SOCK_CLOEXEC));
        if (!socket) {
            if (errno == EINTR || errno == ECONNABORTED) {
                continue;
            }
            if (errno == EAGAIN || errno == EWOULDBLOCK) {
                return;
            }
            // Out of descriptors or memory. Left as it is, the listener would stay readable and
            // the event loop would spin.
            if (!TurnAway()) {
                PauseListening();
                return;
            }
            continue;
        }
        if (!PeerIsTrusted(socket.number())) {
            continue;
        }
        const ConnectionId id = ++m_last_id;
        const auto connection = std::make_shared<IncomingConnection>(id, std::move(socket));
        if (!m_sockets.Watch(connection->socket.number(), id, EPOLLIN, EPOLL_CTL_ADD)) {
            continue;
        }
        m_incoming.emplace(id, connection);
        m_silent.insert(id);
        ReadIncoming(connection);  // its first message usually waits already
        LimitSilent();
    }
}

void WindowCore::LimitSilent() {
    while (m_silent.size() > kMostSilent) {
        EndIncoming(Incoming(m_incoming.at(*m_silent.begin())));
    }
}

/// Accepts a connection only to close it, so that its owner knows. Returns false when that is not
/// possible either.
bool WindowCore::TurnAway() noexcept {
    if (!m_spare) {
        return false;
    }
    m_spare.Close();
    Descriptor refused(::accept4(m_listener.number(), nullptr, nullptr, SOCK_CLOEXEC));
    // Nobody waits any more: that is as good.
    const bool done = refused || errno == EAGAIN || errno == EWOULDBLOCK;
    refused.Close();
    m_spare = SpareDescriptor();
    return done;
}

void WindowCore::PauseListening() noexcept {
    m_listening_paused = m_sockets.Watch(m_listener.number(), kListenerId, 0, EPOLL_CTL_MOD);
}

void WindowCore::ResumeListening() noexcept {
    if (!m_listening_paused) {
        return;
    }
    if (!m_spare) {
        m_spare = SpareDescriptor();
    }
    m_listening_paused = !m_sockets.Watch(m_listener.number(), kListenerId, EPOLLIN, EPOLL_CTL_MOD);
}

void WindowCore::ReadIncoming(const Incoming& connection) {
    for (int count = 0; count < kPacketsPerEvent; ++count) {
        if (connection->queued >= IncomingConnection::kLargestQueue) {
            m_sockets.Unwatch(connection->socket.number());
            connection->paused = true;
            return;
        }
        MessagePacket packet;
        const ReadStatus status = ReadPacket(connection->socket.number(), &packet);
        if (status == ReadStatus::kNothing) {
            return;
        }
        if (status == ReadStatus::kEnded) {
            EndIncoming(connection);
            return;
        }
        const char* const fault =
            status == ReadStatus::kPacket ? TakePacket(connection, packet) : FaultOf(status);
        if (fault != nullptr) {
            RefuseIncoming(connection, fault);
            return;
        }
        // Who sends waits for the answer before it writes more: do not ask the socket in vain.
        if (packet.kind == PacketKind::kSend || m_closed || !connection->socket) {
            return;
        }
    }
}

/// Returns null, or in words in what the packet breaks the rules.
const char* WindowCore::TakePacket(const Incoming& connection, const MessagePacket& packet) {
    const bool greeted = connection->peer != 0;
    if (greeted == (packet.kind == PacketKind::kHello)) {
        return greeted ? "a second hello" : "a first packet that is no hello";
    }
    switch (packet.kind) {
        case PacketKind::kHello:
            if (packet.w_param == 0 || packet.w_param > kLargestWindowHandle) {
                return "a hello with a number that no window has";
            }
            connection->peer = packet.w_param;
            m_silent.erase(connection->id);
            return nullptr;
        case PacketKind::kPost:
            m_queue.push_back({MessageOf(packet), connection, 0, nullptr});
            ++connection->queued;
            return nullptr;
        case PacketKind::kSend:
            return Serve(connection, packet);
        case PacketKind::kReply:
            return "a reply to nothing that was sent there";
    }
    return "a packet of unknown kind";
}

/// Returns null, or in words what is wrong with how the answers are taken.
const char* WindowCore::Serve(const Incoming& connection, const MessagePacket& packet) {
    MessagePacket reply;
    reply.kind = PacketKind::kReply;
    reply.sequence = packet.sequence;
    reply.l_param = Call(MessageOf(packet));
    // A sender that leaves its replies unread until no more fit is not waiting for them. One that
    // has closed its end may have written more before: its last words are still to be read.
    const bool unread =
        connection->socket && WritePacket(connection->socket.number(), reply) == WriteStatus::kFull;
    return unread ? "nothing, but it leaves its replies unread" : nullptr;
}

void WindowCore::RefuseIncoming(const Incoming& connection, const char* why) {
    for (const WindowHandle peer : PeersBehind(*connection)) {
        if (m_refusals.insert(peer).second) {
            m_queue.push_back({{}, nullptr, peer, why});
        }
    }
    EndIncoming(connection);
}

std::vector<WindowHandle> WindowCore::PeersBehind(const IncomingConnection& connection) const {
    if (m_targets.contains(connection.peer)) {
        return {connection.peer};
    }
    // It did not say whose it is, or not the truth.
    std::vector<WindowHandle> peers;
    const int process = connection.socket ? PeerProcess(connection.socket.number()) : 0;
    for (const auto& [target, outgoing] : m_targets) {
        if (process != 0 && PeerProcess(outgoing->socket().number()) == process) {
            peers.push_back(target);
        }
    }
    return peers;
}

void WindowCore::EndIncoming(const Incoming& connection) {
    if (!connection->socket) {
        return;
    }
    if (!connection->paused) {
        m_sockets.Unwatch(connection->socket.number());
    }
    ::shutdown(connection->socket.number(), SHUT_RDWR);
    connection->socket.Close();
    m_silent.erase(connection->id);
    m_incoming.erase(connection->id);
}

/// The connection to a window, made when there is none. Null on failure; errno tells why.
WindowCore::Outgoing WindowCore::ConnectionTo(WindowHandle target) {
    if (const auto found = m_targets.find(target); found != m_targets.end()) {
        return found->second;
    }
    Descriptor socket = ConnectToWindow(m_folder, target);
    if (!socket) {
        return nullptr;
    }
    MessagePacket hello;
    hello.w_param = m_handle;
    const ConnectionId id = ++m_last_id;
    if (WritePacket(socket.number(), hello) != WriteStatus::kWritten) {
        errno = ECONNREFUSED;
        return nullptr;
    }
    if (!m_sockets.Watch(socket.number(), id, EPOLLIN, EPOLL_CTL_ADD)) {
        return nullptr;
    }
    auto connection = std::make_shared<OutgoingConnection>(id, target, std::move(socket));
    m_outgoing.emplace(id, connection);
    m_targets.emplace(target, connection);
    return connection;
}

void WindowCore::WriteMore(const Outgoing& connection) {
    if (connection->Flush() == WriteStatus::kEnded) {
        EndOutgoing(connection);
    } else {
        WatchWriting(connection);
    }
}

/// Asks to be told of room in the socket while, and only while, something waits for it.
void WindowCore::WatchWriting(const Outgoing& connection) {
    const bool wanted = connection->HasUnwritten();
    if (!connection->socket() || connection->watches_writing == wanted) {
        return;
    }
    const std::uint32_t events = wanted ? EPOLLIN | EPOLLOUT : EPOLLIN;
    if (m_sockets.Watch(connection->socket().number(), connection->id(), events, EPOLL_CTL_MOD)) {
        connection->watches_writing = wanted;
    }
}

void WindowCore::ReadReplies(const Outgoing& connection) {
    if (connection->socket() && !TakeReplies(connection, true)) {
        EndOutgoing(connection);
    }
}

/// Hands replies to the Sends that wait for them; stops behind the first such one when
/// `until_answer`. Returns false when the connection is at its end.
bool WindowCore::TakeReplies(const Outgoing& connection, bool until_answer) {
    for (;;) {
        MessagePacket packet;
        const ReadStatus status = ReadPacket(connection->socket().number(), &packet);
        if (status != ReadStatus::kPacket) {
            return status == ReadStatus::kNothing;
        }
        if (packet.kind != PacketKind::kReply) {
            return false;
        }
        const auto found =
            std::find_if(m_pending.begin(), m_pending.end(), [&](const PendingSend* pending) {
                return pending->sequence == packet.sequence &&
                       pending->connection == connection->id();
            });
        if (found == m_pending.end()) {
            continue;  // too late: whoever waited for it has been told that none came
        }
        (*found)->answered = true;
        (*found)->result = packet.l_param;
        if (until_answer) {
            return true;
        }
    }
}

void WindowCore::EndOutgoing(const Outgoing& connection) {
    if (!connection->socket()) {
        return;
    }
    // The peer may have answered before it went.
    TakeReplies(connection, false);
    m_sockets.Unwatch(connection->socket().number());
    connection->Close();
    m_outgoing.erase(connection->id());
    m_targets.erase(connection->target());
    for (PendingSend* pending : m_pending) {
        if (pending->connection == connection->id() && !pending->answered) {
            pending->gone = true;
        }
    }
    if (std::find(m_vanished.begin(), m_vanished.end(), connection->target()) == m_vanished.end()) {
        m_vanished.push_back(connection->target());
    }
}

}  // namespace wavo::platform
