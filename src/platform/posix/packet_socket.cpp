#include "platform/posix/packet_socket.h"

#include <sys/socket.h>
#include <unistd.h>

#include <cerrno>

namespace wavo::platform {

namespace {

bool AskForPeer(int socket, ucred* peer) noexcept {
    socklen_t size = sizeof *peer;
    return ::getsockopt(socket, SOL_SOCKET, SO_PEERCRED, peer, &size) == 0;
}

}  // namespace

ReadStatus ReadPacket(int socket, MessagePacket* packet) noexcept {
    bool was_reset = false;
    for (;;) {
        // MSG_TRUNC gives the true size of a packet that is too long.
        const ssize_t size =
            ::recv(socket, packet, sizeof *packet, MSG_DONTWAIT | MSG_TRUNC | MSG_NOSIGNAL);
        if (size == static_cast<ssize_t>(sizeof *packet)) {
            return packet->magic == kPacketMagic && packet->version == kPacketVersion
                       ? ReadStatus::kPacket
                       : ReadStatus::kWrongHead;
        }
        if (size >= 0) {
            return size == 0 ? ReadStatus::kEnded : ReadStatus::kWrongSize;
        }
        if (errno == EINTR) {
            continue;
        }
        if (errno == EAGAIN || errno == EWOULDBLOCK) {
            return ReadStatus::kNothing;
        }
        if (errno == ECONNRESET && !was_reset) {
            // Told once, when the peer closed without reading all of ours. What it wrote itself
            // still waits behind the error.
            was_reset = true;
            continue;
        }
        return ReadStatus::kEnded;
    }
}

WriteStatus WritePacket(int socket, const MessagePacket& packet) noexcept {
    for (;;) {
        if (::send(socket, &packet, sizeof packet, MSG_DONTWAIT | MSG_NOSIGNAL) >= 0) {
            return WriteStatus::kWritten;
        }
        if (errno == EINTR) {
            continue;
        }
        // Short of memory is short of room: both pass.
        const bool full =
            errno == EAGAIN || errno == EWOULDBLOCK || errno == ENOBUFS || errno == ENOMEM;
        return full ? WriteStatus::kFull : WriteStatus::kEnded;
    }
}

bool PeerIsTrusted(int socket) noexcept {
    ucred peer{};
    return AskForPeer(socket, &peer) && (peer.uid == ::geteuid() || peer.uid == 0);
}

int PeerProcess(int socket) noexcept {
    ucred peer{};
    return AskForPeer(socket, &peer) ? peer.pid : 0;
}

}  // namespace wavo::platform
