// A publisher and viewers whose sockets are busy or bring what is no message.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "expect_errors.h"
#include "publisher_fixture.h"
#include "raw_window.h"

namespace wavo::master {
namespace {

using platform::PacketKind;
using wavo::testing::ExpectErrorLog;
using wavo::testing::Hello;
using wavo::testing::Packet;
using wavo::testing::RawConnection;
using wavo::testing::RawWindow;
using wavo::testing::SegmentExists;

class PublisherPosixTest : public PublisherFixture {
 protected:
    /// The viewer's connection to the master, with its connect on it.
    RawConnection ConnectAs(const RawWindow& viewer) {
        RawConnection to_master(m_master->window());
        const auto window = static_cast<std::int64_t>(viewer.handle());
        to_master.Write(Hello(viewer.handle()));
        to_master.Write(Packet(PacketKind::kPost, {0x52C, 2, window}));
        EXPECT_TRUE(ServeMasterUntil([this] { return m_master->ConnectedCount() == 1; }));
        return to_master;
    }

    static void ExpectPost(const RawConnection& connection, const platform::Message& message) {
        const auto packet = connection.Read();
        ASSERT_TRUE(packet);
        EXPECT_EQ(packet->kind, PacketKind::kPost);
        EXPECT_EQ(packet->number, message.number);
        EXPECT_EQ(packet->w_param, message.w_param);
    }
};

TEST_F(PublisherPosixTest, AViewerThatIsBusyAtItsConnectGetsItsLimitsAndBatchesLater) {
    Start(TwoAxes());
    RawWindow viewer;
    viewer.BeBusy();
    const RawConnection to_master = ConnectAs(viewer);
    PublishLines(3);
    ServeMaster();
    viewer.BeBusyNoMore();
    PublishLine();
    const RawConnection from_master = viewer.Accept();
    ASSERT_TRUE(from_master.Read());  // the hello
    ExpectPost(from_master, {0x52F, 0, 0});
    ExpectPost(from_master, {0x52C, 1, 0});
    EXPECT_EQ(m_master->Total(), (Counters{4, 1, 0, 0}));
}

TEST_F(PublisherPosixTest, AViewerThatWritesWhatIsNoMessageIsForgotten) {
    Start(TwoAxes());
    const RawWindow viewer;
    const RawConnection to_master = ConnectAs(viewer);
    const std::string fifo = kValueSegmentPrefix + std::to_string(viewer.handle());
    EXPECT_TRUE(SegmentExists(fifo));
    to_master.Write("garbage", 7);
    const ExpectErrorLog expected({"MasterPublisher: viewer " + std::to_string(viewer.handle()) +
                                   " is dropped, it wrote a packet that is not 40 bytes long"});
    EXPECT_TRUE(ServeMasterUntil([this] { return m_master->Viewers().empty(); }));
    EXPECT_FALSE(SegmentExists(fifo));
    EXPECT_EQ(m_events, "connected gone ");
}

}  // namespace
}  // namespace wavo::master
