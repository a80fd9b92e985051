// Reading and writing single packets on a non-blocking socket.
#pragma once

#include "platform/posix/message_packet.h"

namespace wavo::platform {

enum class ReadStatus {
    kPacket,     ///< a packet of the right size, magic and version was read
    kNothing,    ///< nothing waits
    kEnded,      ///< the other side closed: close the socket
    kWrongSize,  ///< what it wrote is no packet, by its size: close the socket
    kWrongHead,  ///< ... by its magic or version
};

/// Reads one packet into `*packet`. Never blocks. What the peer wrote before it closed is read
/// before kEnded is told.
ReadStatus ReadPacket(int socket, MessagePacket* packet) noexcept;

enum class WriteStatus {
    kWritten,
    kFull,   ///< the peer reads too slowly: try again when the socket is writable
    kEnded,  ///< the other side closed
};

/// Writes one packet. Never blocks, raises no SIGPIPE.
WriteStatus WritePacket(int socket, const MessagePacket& packet) noexcept;

/// Whether the process at the other end belongs to this user or to root.
bool PeerIsTrusted(int socket) noexcept;

/// Number of the process that made the other end; 0 when it cannot be told.
int PeerProcess(int socket) noexcept;

}  // namespace wavo::platform
