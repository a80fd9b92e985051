// docs/master-protocol.md tells the same offsets and numbers as the code.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <fstream>
#include <iterator>
#include <sstream>
#include <string>

#include "link/master_messages.h"
#include "link/wire_format.h"
#include "master/publisher.h"
#include "platform/posix/message_packet.h"

namespace wavo::master {
namespace {

using ::testing::HasSubstr;

class ProtocolDocumentTest : public ::testing::Test {
 protected:
    /// Expects a table row that begins with these cells.
    void ExpectRow(std::size_t offset, const std::string& cells) const {
        EXPECT_THAT(m_text, HasSubstr("\n| " + std::to_string(offset) + " | " + cells));
    }

    template <typename Number>
    void ExpectMessage(Number number, const std::string& cells) const {
        std::ostringstream row;
        row << "\n| 0x" << std::hex << std::uppercase << static_cast<unsigned>(number) << " | "
            << cells;
        EXPECT_THAT(m_text, HasSubstr(row.str()));
    }

    static std::string ReadDocument() {
        std::ifstream file(WAVO_PROTOCOL_DOCUMENT);
        return {std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
    }

    const std::string m_text = ReadDocument();
};

TEST_F(ProtocolDocumentTest, InfoBlock) {
    EXPECT_THAT(m_text, HasSubstr(kInfoSegmentName));
    ExpectRow(offsetof(MasterInfoBlock, master_window), "u64 | number of the master's window");
    ExpectRow(offsetof(MasterInfoBlock, cycle_time), "double | cycle time in seconds");
    ExpectRow(offsetof(MasterInfoBlock, master_word), "u64 | not used");
    ExpectRow(offsetof(MasterInfoBlock, axis_count), "u64 | number of axes");
    ExpectRow(offsetof(MasterInfoBlock, fifo_lines), "u64 | number of lines");
    ExpectRow(offsetof(MasterInfoBlock, axis_names),
              std::to_string(sizeof(MasterInfoBlock::axis_names)) + " bytes | the names");
    EXPECT_THAT(m_text, HasSubstr(std::to_string(sizeof(MasterInfoBlock)) + " bytes"));
}

TEST_F(ProtocolDocumentTest, ValueFifo) {
    EXPECT_THAT(m_text, HasSubstr(std::string(kValueSegmentPrefix) + "<viewer>"));
    ExpectRow(offsetof(LineFifoHeader, master_word), "u64 | free for the master");
    ExpectRow(offsetof(LineFifoHeader, write_index), "u64 | write index");
    ExpectRow(offsetof(LineFifoHeader, reader_mark), "u64 | reader mark");
    ExpectRow(offsetof(LineFifoHeader, read_index), "u64 | read index");
    ExpectRow(offsetof(LineFifoHeader, line_size), "u64 | line size");
    ExpectRow(offsetof(LineFifoHeader, line_count), "u64 | number of lines");
    ExpectRow(offsetof(LineFifoHeader, master_words), "16 bytes | free for the master");
    ExpectRow(sizeof(LineFifoHeader), "| the slots");
}

TEST_F(ProtocolDocumentTest, CapabilityModule) {
    EXPECT_THAT(m_text, HasSubstr(std::string(kCapabilitySegmentPrefix) + "<viewer>"));
    EXPECT_THAT(m_text, HasSubstr("| 4 + 296 × k | 296 bytes | record k |"));
    EXPECT_EQ(CapabilityRecordOffset(1), 4U + 296U);
    ExpectRow(offsetof(CapabilityRecord, axis_name),
              std::to_string(sizeof(CapabilityRecord::axis_name)) + " bytes | name of the axis");
    ExpectRow(offsetof(CapabilityRecord, upper_limit), "double | upper limit");
    ExpectRow(offsetof(CapabilityRecord, lower_limit), "double | lower limit");
    ExpectRow(offsetof(CapabilityRecord, velocity_limit), "double | limit of its velocity");
    ExpectRow(offsetof(CapabilityRecord, acceleration_limit), "double | limit of its acceleration");
    ExpectRow(offsetof(CapabilityRecord, resolution), "double | resolution");
}

TEST_F(ProtocolDocumentTest, Messages) {
    const auto w_param = [](auto value) {
        return std::to_string(static_cast<std::uint64_t>(value));
    };
    ExpectMessage(ToMaster::kLink,
                  "viewer to master | posted | " + w_param(LinkRequest::kConnect) + " | connect");
    ExpectMessage(ToMaster::kLink, "viewer to master | sent | " +
                                       w_param(LinkRequest::kDisconnect) + " | disconnect");
    ExpectMessage(ToMaster::kReady, "viewer to master | sent | 0 | ready");
    ExpectMessage(ToMaster::kCapabilityBegin, "viewer to master | sent | 0 | about to read");
    ExpectMessage(ToMaster::kCapabilityEnd, "viewer to master | sent | 0 | capability module read");
    ExpectMessage(FromMaster::kValues, "master to viewer | posted | " +
                                           w_param(ValuesNotice::kNewValues) + " | a batch");
    ExpectMessage(FromMaster::kValues, "master to viewer | posted | " +
                                           w_param(ValuesNotice::kLinkEnded) + " | the link ends");
    ExpectMessage(FromMaster::kOverrun, "master to viewer | posted | any | overrun");
    ExpectMessage(FromMaster::kQuit, "master to viewer | posted | any | quit");
    ExpectMessage(FromMaster::kCapabilitiesChanged, "master to viewer | posted | any | the capab");
    ExpectMessage(kMasterIsHere, "master to viewer | posted | any | a master is here");
}

TEST_F(ProtocolDocumentTest, Packets) {
    using platform::MessagePacket;
    using platform::PacketKind;
    EXPECT_THAT(m_text,
                HasSubstr("one record of " + std::to_string(sizeof(MessagePacket)) + " bytes"));
    std::ostringstream magic;
    magic << "u32 | magic 0x" << std::hex << std::uppercase << platform::kPacketMagic;
    ExpectRow(offsetof(MessagePacket, magic), magic.str());
    ExpectRow(offsetof(MessagePacket, version),
              "u16 | version, " + std::to_string(platform::kPacketVersion));
    ExpectRow(offsetof(MessagePacket, kind), "u16 | kind");
    ExpectRow(offsetof(MessagePacket, sequence), "u64 | sequence");
    ExpectRow(offsetof(MessagePacket, number), "u32 | number");
    ExpectRow(offsetof(MessagePacket, reserved), "u32 | reserved");
    ExpectRow(offsetof(MessagePacket, w_param), "u64 | wParam");
    ExpectRow(offsetof(MessagePacket, l_param), "i64 | lParam");
    ExpectRow(static_cast<std::size_t>(PacketKind::kHello), "hello");
    ExpectRow(static_cast<std::size_t>(PacketKind::kPost), "post");
    ExpectRow(static_cast<std::size_t>(PacketKind::kSend), "send");
    ExpectRow(static_cast<std::size_t>(PacketKind::kReply), "reply");
}

TEST_F(ProtocolDocumentTest, NumbersOfWindowsInNames) {
    for (const platform::WindowHandle window : {0xA01F2ULL, 0xFFFFFFFF80010234ULL}) {
        const std::string fifo = kValueSegmentPrefix + std::to_string(window);
        EXPECT_THAT(m_text, HasSubstr("`" + fifo + "` | "));
        EXPECT_THAT(m_text, HasSubstr("| `" + CapabilityModuleName(window) + "` |"));
    }
}

TEST_F(ProtocolDocumentTest, Times) {
    EXPECT_EQ(platform::MessageWindow::kSendTimeout, std::chrono::milliseconds(900));
    EXPECT_THAT(m_text, HasSubstr("waits 0.9 seconds for a reply"));
    EXPECT_EQ(kBatchGrace, std::chrono::seconds(1));
    EXPECT_THAT(m_text, HasSubstr("within a second after the connect"));
}

}  // namespace
}  // namespace wavo::master
