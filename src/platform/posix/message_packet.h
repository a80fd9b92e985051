// What message windows of different processes say to each other over a SOCK_SEQPACKET socket.
//
// A window listens on a socket in the folder of the user's windows; the name of the socket is the
// window's handle in decimal. Who posts or sends to it connects, says hello once and then writes
// one packet per message. Every packet is one MessagePacket, in the byte order of the machine.
//
//   kind    written by   sequence             number   w_param            l_param
//   kHello  connector    0                    0        connector's handle 0
//   kPost   connector    0                    message  message's wParam   message's lParam
//   kSend   connector    counts up            message  message's wParam   message's lParam
//   kReply  listener     that of the kSend    0        0                  result
//
// Invariants:
// 1. The first packet of a connection is kHello, and no later one is.
// 2. Every kSend is answered by one kReply on the same connection, unless one side closes it.
// 3. A packet of another size, magic, version or an unexpected kind ends the connection. Who reads
//    it then relies on that peer no more: MessageWindow::PeerRefused.
// 4. The end of the connection tells the connector that the window is gone.
#pragma once

#include <cstddef>
#include <cstdint>
#include <type_traits>

#include "platform/message_window.h"

namespace wavo::platform {

enum class PacketKind : std::uint16_t {
    kHello = 1,
    kPost = 2,
    kSend = 3,
    kReply = 4,
};

inline constexpr std::uint32_t kPacketMagic = 0x4F564157;  // "WAVO" in little-endian memory
inline constexpr std::uint16_t kPacketVersion = 1;

struct MessagePacket {
    std::uint32_t magic = kPacketMagic;
    std::uint16_t version = kPacketVersion;
    PacketKind kind = PacketKind::kHello;
    std::uint64_t sequence = 0;
    std::uint32_t number = 0;
    std::uint32_t reserved = 0;  ///< written as 0, not looked at
    std::uint64_t w_param = 0;
    std::int64_t l_param = 0;
};
static_assert(std::is_trivially_copyable_v<MessagePacket>);
static_assert(std::is_standard_layout_v<MessagePacket>);
static_assert(sizeof(MessagePacket) == 40);
static_assert(offsetof(MessagePacket, magic) == 0);
static_assert(offsetof(MessagePacket, version) == 4);
static_assert(offsetof(MessagePacket, kind) == 6);
static_assert(offsetof(MessagePacket, sequence) == 8);
static_assert(offsetof(MessagePacket, number) == 16);
static_assert(offsetof(MessagePacket, reserved) == 20);
static_assert(offsetof(MessagePacket, w_param) == 24);
static_assert(offsetof(MessagePacket, l_param) == 32);

/// The packet of a message: a kPost, kSend or kReply.
inline MessagePacket PacketOf(PacketKind kind, std::uint64_t sequence, const Message& message) {
    MessagePacket packet;
    packet.kind = kind;
    packet.sequence = sequence;
    packet.number = message.number;
    packet.w_param = message.w_param;
    packet.l_param = message.l_param;
    return packet;
}

/// Handles lie between 1 and this, so that they fit a signed 32-bit number everywhere.
inline constexpr std::uint64_t kLargestWindowHandle = 0x7FFFFFFF;

}  // namespace wavo::platform
