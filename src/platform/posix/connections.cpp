#include "platform/posix/connections.h"

#include <sys/socket.h>

namespace wavo::platform {

namespace {

WriteStatus FlushQueue(int socket, std::deque<MessagePacket>* queue) {
    while (!queue->empty()) {
        const WriteStatus status = WritePacket(socket, queue->front());
        if (status != WriteStatus::kWritten) {
            return status;
        }
        queue->pop_front();
    }
    return WriteStatus::kWritten;
}

}  // namespace

WriteStatus OutgoingConnection::Post(const MessagePacket& packet) {
    if (!HasUnwritten()) {
        const WriteStatus status = WritePacket(m_socket.number(), packet);
        if (status != WriteStatus::kFull) {
            return status;
        }
    }
    if (m_posted.size() >= kLargestQueue) {
        // A caller that only posts never dispatches: the peer may have read meanwhile.
        const WriteStatus status = Flush();
        if (status == WriteStatus::kEnded || m_posted.size() >= kLargestQueue) {
            return status == WriteStatus::kEnded ? status : WriteStatus::kFull;
        }
    }
    m_posted.push_back(packet);
    return WriteStatus::kWritten;
}

WriteStatus OutgoingConnection::Send(const MessagePacket& packet) {
    if (m_sent.empty()) {
        const WriteStatus status = WritePacket(m_socket.number(), packet);
        if (status != WriteStatus::kFull) {
            return status;
        }
    }
    m_sent.push_back(packet);
    return WriteStatus::kWritten;
}

void OutgoingConnection::Withdraw(std::uint64_t sequence) {
    std::erase_if(m_sent,
                  [sequence](const MessagePacket& packet) { return packet.sequence == sequence; });
}

WriteStatus OutgoingConnection::Flush() {
    const WriteStatus status = FlushQueue(m_socket.number(), &m_sent);
    return status == WriteStatus::kWritten ? FlushQueue(m_socket.number(), &m_posted) : status;
}

void OutgoingConnection::Close() noexcept {
    if (m_socket) {
        // Also ends the connection when a forked process still holds a copy of the descriptor.
        ::shutdown(m_socket.number(), SHUT_RDWR);
        m_socket.Close();
    }
}

}  // namespace wavo::platform
