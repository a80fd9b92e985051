// Every bit of every packet turned over, and hostile values in every field: the packet is a
// message, or it ends its connection; the window goes on either way.
#include <gtest/gtest.h>

#include <cstring>
#include <string>
#include <vector>

#include "link/hostile_values.h"
#include "packet_fixture.h"

namespace wavo::platform {

using testing::Field;
using testing::ForEachHostileField;
using testing::ForEachTurnedBit;
using testing::PacketTest;

namespace {

class HostilePacket : public PacketTest, public ::testing::WithParamInterface<PacketKind> {
 protected:
    /// Whether a window takes the packet, as the first one of its connection or a later one.
    static bool IsAllowed(const MessagePacket& packet, bool first) {
        if (packet.magic != kPacketMagic || packet.version != kPacketVersion) {
            return false;
        }
        if (packet.kind == PacketKind::kHello) {
            return first && packet.w_param != 0 && packet.w_param <= kLargestWindowHandle;
        }
        return !first && (packet.kind == PacketKind::kPost || packet.kind == PacketKind::kSend);
    }

    void Check(const MessagePacket& packet, bool first) {
        m_seen.clear();
        const Descriptor socket = Connect();
        if (!first) {
            ASSERT_TRUE(Write(socket, Packet(PacketKind::kHello)));
        }
        ASSERT_TRUE(Write(socket, packet));
        DispatchAll();
        const bool allowed = IsAllowed(packet, first);
        const bool is_message = allowed && packet.kind != PacketKind::kHello;
        ASSERT_EQ(m_seen.size(), is_message ? 1U : 0U);
        if (is_message) {
            EXPECT_EQ(m_seen[0], (Message{packet.number, packet.w_param, packet.l_param}));
        }
        if (allowed && packet.kind == PacketKind::kSend) {
            MessagePacket reply;
            ASSERT_EQ(::recv(socket.number(), &reply, sizeof reply, 0), 40);
            EXPECT_EQ(reply.sequence, packet.sequence);
        }
        EXPECT_EQ(IsClosed(socket), !allowed);
        ++(allowed ? m_allowed : m_ended);
    }

    int m_allowed = 0;
    int m_ended = 0;
};

TEST_P(HostilePacket, IsAMessageOrEndsItsConnection) {
    int checks = 0;
    for (const bool first : {false, true}) {
        SCOPED_TRACE(first ? "first packet" : "later packet");
        MessagePacket packet = Packet(GetParam(), 0x52C);
        packet.sequence = 7;
        checks +=
            ForEachTurnedBit(&packet, sizeof packet, [&](std::size_t) { Check(packet, first); });
        checks += ForEachHostileField(&packet,
                                      {{"magic", 0, 4},
                                       {"version", 4, 2},
                                       {"kind", 6, 2},
                                       {"sequence", 8, 8},
                                       {"number", 16, 4},
                                       {"reserved", 20, 4},
                                       {"w_param", 24, 8},
                                       {"l_param", 32, 8}},
                                      [&](const std::string&) { Check(packet, first); });
    }
    EXPECT_GE(checks, 2 * (320 + 8 * 13));
    EXPECT_EQ(m_allowed + m_ended, checks);
    EXPECT_GT(m_ended, 2 * 48);
    ExpectWorks();
}

INSTANTIATE_TEST_SUITE_P(Kinds, HostilePacket,
                         ::testing::Values(PacketKind::kHello, PacketKind::kPost, PacketKind::kSend,
                                           PacketKind::kReply));

}  // namespace

}  // namespace wavo::platform
