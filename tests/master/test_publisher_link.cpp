// Viewers that connect, disconnect, die, and read their capabilities.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <chrono>

#include "master/publisher.h"
#include "publisher_fixture.h"
#include "test_viewer.h"

namespace wavo::master {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;
using wavo::testing::MappedSegment;
using wavo::testing::SegmentExists;
using wavo::testing::TestViewer;

class PublisherLinkTest : public PublisherFixture {};

// ---- Connect and disconnect ----

TEST_F(PublisherLinkTest, DisconnectRemovesTheFifoAndStopsTheBatches) {
    Start(TwoAxes());
    TestViewer viewer;
    Connect(&viewer);
    PublishLine();
    Settle(&viewer);
    viewer.Disconnect();
    EXPECT_FALSE(SegmentExists(viewer.FifoName()));
    PublishLines(20);
    Settle(&viewer);
    EXPECT_EQ(viewer.batches, 1);
    EXPECT_EQ(viewer.overruns, 0);
    EXPECT_EQ(m_events, "connected disconnected ");
}

TEST_F(PublisherLinkTest, DisconnectTwiceIsHarmless) {
    Start(TwoAxes());
    TestViewer viewer;
    Connect(&viewer);
    viewer.Disconnect();
    viewer.Disconnect();
    EXPECT_EQ(m_events, "connected disconnected ");
    viewer.PostConnect();
    ServeMaster();
    PublishLine();
    Settle(&viewer);
    EXPECT_EQ(viewer.lines.size(), 1U);
}

TEST_F(PublisherLinkTest, ReconnectStartsWithAFreshFifo) {
    Start(TwoAxes(100));
    TestViewer viewer;
    Connect(&viewer);
    PublishLines(5);
    Settle(&viewer);
    viewer.Disconnect();
    PublishLines(5);
    Connect(&viewer);
    viewer.lines.clear();
    PublishLines(2);
    Settle(&viewer);
    EXPECT_THAT(FirstValues(viewer), ElementsAre(11.0, 12.0));
    EXPECT_EQ(viewer.failed_opens, 0);
    EXPECT_EQ(CountersOf(viewer).lines_sent, 7U) << "counted over all connections of a viewer";
}

// A viewer starts by connecting, and connects again after it has opened its graph file; its
// disconnect in between is sent and overtakes the first connect.
TEST_F(PublisherLinkTest, DisconnectThatOvertakesTheConnectLosesNothing) {
    Start(TwoAxes(100));
    TestViewer viewer;
    ASSERT_TRUE(viewer.Connect());
    viewer.SendDisconnect();
    viewer.PostConnect();
    m_master->Serve(std::chrono::nanoseconds(0));
    PublishLines(2);
    Settle(&viewer);
    PublishLines(2);
    Settle(&viewer);
    EXPECT_THAT(FirstValues(viewer), ElementsAre(1.0, 2.0, 3.0, 4.0));
    EXPECT_EQ(viewer.failed_opens, 0);
    EXPECT_EQ(m_events, "connected ");
}

TEST_F(PublisherLinkTest, SecondConnectFindsTheViewerReadingAndLetsItGoOn) {
    Start(TwoAxes(100));
    TestViewer viewer;
    Connect(&viewer);
    PublishLines(2);
    Settle(&viewer);
    ASSERT_TRUE(viewer.attached());
    Connect(&viewer);
    PublishLines(2);
    Settle(&viewer);
    EXPECT_THAT(FirstValues(viewer), ElementsAre(1.0, 2.0, 3.0, 4.0));
}

TEST_F(PublisherLinkTest, SecondConnectWhileABatchIsAnnouncedKeepsItsLines) {
    Start(TwoAxes(100));
    TestViewer viewer;
    Connect(&viewer);
    PublishLines(2);
    Connect(&viewer);
    PublishLines(2);
    Settle(&viewer);
    EXPECT_THAT(FirstValues(viewer), ElementsAre(1.0, 2.0, 3.0, 4.0));
    EXPECT_EQ(viewer.batches, 1);
    EXPECT_EQ(viewer.failed_opens, 0);
}

// The announcement waits in the viewer's queue when the user opens another file: the viewer
// disconnects, connects, and then comes to the announcement.
TEST_F(PublisherLinkTest, AnnouncementHandledAfterTheDisconnectFindsItsFifo) {
    Start(TwoAxes(100));
    TestViewer viewer;
    Connect(&viewer);
    PublishLines(2);
    viewer.Disconnect();
    EXPECT_TRUE(SegmentExists(viewer.FifoName()));
    viewer.PostConnect();
    viewer.Serve();  // the old announcement, before the master knows of the connect
    EXPECT_EQ(viewer.batches, 1);
    EXPECT_EQ(viewer.failed_opens, 0);
    EXPECT_THAT(viewer.lines, IsEmpty()) << "lines from before the disconnect";
    ServeMaster();
    PublishLines(2);
    Settle(&viewer);
    EXPECT_THAT(FirstValues(viewer), ElementsAre(3.0, 4.0));
}

TEST_F(PublisherLinkTest, AnnouncementHandledAfterTheReconnectFindsTheNewLinesOnly) {
    Start(TwoAxes(100));
    TestViewer viewer;
    Connect(&viewer);
    PublishLines(2);
    viewer.Disconnect();
    viewer.PostConnect();
    ServeMaster();
    PublishLines(2);
    Settle(&viewer);
    EXPECT_THAT(FirstValues(viewer), ElementsAre(3.0, 4.0));
    EXPECT_EQ(viewer.batches, 1);
    PublishLines(1);
    Settle(&viewer);
    EXPECT_THAT(FirstValues(viewer), ElementsAre(3.0, 4.0, 5.0));
    EXPECT_EQ(viewer.batches, 2);
}

TEST_F(PublisherLinkTest, ReadyAfterTheDisconnectLeavesNoFifoBehind) {
    Start(TwoAxes(100));
    TestViewer viewer;
    viewer.takes_batches = false;
    Connect(&viewer);
    PublishLines(2);
    viewer.Serve();
    viewer.Disconnect();
    EXPECT_TRUE(SegmentExists(viewer.FifoName()));
    viewer.SendReady();
    EXPECT_FALSE(SegmentExists(viewer.FifoName()));
}

/// A viewer that refuses its batch of two lines, connects again, and may read two more.
class RefusedBatch : public PublisherLinkTest {
 protected:
    void Refuse(std::chrono::nanoseconds grace) {
        PublisherOptions options = TwoAxes(100);
        options.batch_grace = grace;
        Start(options);
        m_viewer.takes_batches = false;
        Connect(&m_viewer);
        PublishLines(2);
        Settle(&m_viewer);
        EXPECT_EQ(m_viewer.batches, 1);
        m_viewer.Disconnect();
        m_viewer.takes_batches = true;
        Connect(&m_viewer);
        PublishLines(2);
        Settle(&m_viewer);
    }
    TestViewer m_viewer;
};

TEST_F(RefusedBatch, IsWaitedForAfterItsViewerConnectedAgain) {
    Refuse(std::chrono::hours(1));
    EXPECT_EQ(m_viewer.batches, 1);
    EXPECT_TRUE(m_viewer.lines.empty());
}

TEST_F(RefusedBatch, IsLostOnceItsTimeIsOver) {
    Refuse(std::chrono::nanoseconds(0));
    EXPECT_EQ(m_viewer.batches, 2);
    EXPECT_THAT(FirstValues(m_viewer), ElementsAre(3.0, 4.0));
}

TEST_F(PublisherLinkTest, ConnectOfAWindowThatIsGoneIsIgnored) {
    Start(TwoAxes());
    auto viewer = std::make_unique<TestViewer>();
    ASSERT_TRUE(viewer->Connect());
    viewer.reset();
    for (int i = 0; i < 10; ++i) {
        ServeMaster();
    }
    EXPECT_THAT(m_master->Viewers(), IsEmpty());
    EXPECT_EQ(m_events, "");
}

TEST_F(PublisherLinkTest, DeadViewerIsDroppedWithItsSegments) {
    Start(TwoAxes(100));
    TestViewer survivor;
    Connect(&survivor);
    auto viewer = std::make_unique<TestViewer>();
    Connect(viewer.get());
    PublishLines(2);
    Settle(viewer.get());
    const std::string fifo = viewer->FifoName();
    const std::string module = viewer->ModuleName();
    EXPECT_TRUE(SegmentExists(fifo));
    EXPECT_TRUE(SegmentExists(module));
    viewer.reset();
    EXPECT_TRUE(ServeMasterUntil([this] { return m_master->ConnectedCount() == 1; }));
    EXPECT_FALSE(SegmentExists(fifo));
    EXPECT_FALSE(SegmentExists(module));
    EXPECT_EQ(m_events, "connected connected gone ");
    EXPECT_EQ(m_master->Total().lines_sent, 4U) << "the dead one's lines still count";
    PublishLine();
    Settle(&survivor);
    EXPECT_EQ(survivor.lines.size(), 3U);
}

TEST_F(PublisherLinkTest, DeadViewerIsDroppedByPublishingToo) {
    Start(TwoAxes(100));
    auto viewer = std::make_unique<TestViewer>();
    Connect(viewer.get());
    viewer.reset();
    PublishLines(2);
    ServeMaster();
    PublishLines(2);
    ServeMaster();
    EXPECT_THAT(m_master->Viewers(), IsEmpty());
}

TEST_F(PublisherLinkTest, DisconnectedViewerIsForgottenWhenItDies) {
    Start(TwoAxes(100));
    auto viewer = std::make_unique<TestViewer>();
    Connect(viewer.get());
    PublishLines(2);
    const std::string fifo = viewer->FifoName();
    const std::string module = viewer->ModuleName();
    viewer->Disconnect();
    EXPECT_TRUE(SegmentExists(module)) << "the viewer may still ask for limits";
    viewer.reset();
    EXPECT_TRUE(ServeMasterUntil([this] { return m_master->Viewers().empty(); }));
    EXPECT_FALSE(SegmentExists(fifo));
    EXPECT_FALSE(SegmentExists(module));
}

TEST_F(PublisherLinkTest, QuitIsToldToConnectedViewers) {
    Start(TwoAxes());
    TestViewer viewer;
    TestViewer disconnected;
    Connect(&viewer);
    Connect(&disconnected);
    disconnected.Disconnect();
    m_master->Quit();
    Settle(&viewer);
    Settle(&disconnected);
    EXPECT_EQ(viewer.quits, 1);
    EXPECT_EQ(disconnected.quits, 0);
    EXPECT_EQ(m_master->ConnectedCount(), 0U);
}

TEST_F(PublisherLinkTest, IgnoredAnswersEndInAnOverrun) {
    Start(TwoAxes(8));
    TestViewer viewer;
    Connect(&viewer);
    m_master->IgnoreAnswers();
    for (int i = 0; i < 30; ++i) {
        PublishLine();
        Settle(&viewer);
    }
    EXPECT_EQ(viewer.batches, 1);
    EXPECT_EQ(viewer.overruns, 1);
    EXPECT_EQ(m_master->Total().batches_answered, 0U);
}

// ---- Capabilities ----

TEST_F(PublisherLinkTest, LimitsAreAnnouncedBeforeTheFirstBatch) {
    Start(TwoAxes());
    TestViewer viewer;
    Connect(&viewer);
    PublishLine();
    Settle(&viewer);
    ASSERT_EQ(viewer.messages.size(), 2U);
    EXPECT_EQ(viewer.messages[0].number, 0x52FU);
    EXPECT_EQ(viewer.messages[1].number, 0x52CU);
    EXPECT_EQ(viewer.messages[1].w_param, 1U);
}

TEST_F(PublisherLinkTest, ModuleHoldsTheRecordsAtTheirOffsets) {
    Start(TwoAxes());
    TestViewer viewer;
    Connect(&viewer);
    const MappedSegment module(viewer.ModuleName());
    ASSERT_TRUE(module);
    EXPECT_EQ(module.Get<std::int32_t>(0), 2);
    EXPECT_EQ(module.Get<char>(4), 'X');
    EXPECT_EQ(module.Get<char>(5), '\0');
    EXPECT_EQ(module.Get<double>(4 + 256), 100.0);
    EXPECT_EQ(module.Get<double>(4 + 264), -50.0);
    EXPECT_EQ(module.Get<double>(4 + 272), 400.0);
    EXPECT_EQ(module.Get<double>(4 + 280), 3000.0);
    EXPECT_EQ(module.Get<double>(4 + 288), 0.001);
    EXPECT_EQ(module.Get<char>(4 + 296), 'Y');
    EXPECT_EQ(module.Get<double>(4 + 296 + 256), 200.0);
    EXPECT_EQ(module.Get<double>(4 + 296 + 288), 0.01);
}

TEST_F(PublisherLinkTest, TheModuleIsNamedByTheSigned32BitsOfTheWindow) {
    EXPECT_EQ(CapabilityModuleName(4711), "DataModCap4711");
    EXPECT_EQ(CapabilityModuleName(0x7FFFFFFF), "DataModCap2147483647");
    // Where handles of windows are extended with their sign.
    EXPECT_EQ(CapabilityModuleName(0xFFFFFFFF80010234), "DataModCap-2147417548");
    EXPECT_EQ(CapabilityModuleName(0x80010234), "DataModCap-2147417548");
}

TEST_F(PublisherLinkTest, WithoutLimitsNothingIsAnnouncedAndTheModuleIsEmpty) {
    PublisherOptions options = TwoAxes();
    options.limits.clear();
    Start(options);
    TestViewer viewer;
    Connect(&viewer);
    Settle(&viewer);
    EXPECT_EQ(viewer.capability_changes, 0);
    const auto records = viewer.ReadCapabilities();
    ASSERT_TRUE(records);
    EXPECT_THAT(*records, IsEmpty());
    viewer.Disconnect();
    EXPECT_FALSE(SegmentExists(viewer.ModuleName()));
}

TEST_F(PublisherLinkTest, ChangedLimitsAreAnnouncedAndReplaceTheModule) {
    Start(TwoAxes());
    TestViewer viewer;
    Connect(&viewer);
    Settle(&viewer);
    EXPECT_EQ(viewer.ReadCapabilities()->at("X"), kLimitsX.values);
    AxisLimits changed = kLimitsX;
    changed.values.upper_limit = 123.0;
    EXPECT_TRUE(m_master->CapabilitiesChanged({changed}));
    Settle(&viewer);
    EXPECT_EQ(viewer.capability_changes, 2);
    const auto records = viewer.ReadCapabilities();
    EXPECT_EQ(records->size(), 1U);
    EXPECT_EQ(records->at("X").upper_limit, 123.0);
}

TEST_F(PublisherLinkTest, ModuleIsNotReplacedWhileItsViewerReads) {
    Start(TwoAxes());
    TestViewer viewer;
    Connect(&viewer);
    Settle(&viewer);
    viewer.Send(ToMaster::kCapabilityBegin);
    EXPECT_TRUE(m_master->CapabilitiesChanged({kLimitsY}));
    Settle(&viewer);
    EXPECT_EQ(MappedSegment(viewer.ModuleName()).Get<std::int32_t>(0), 2);
    EXPECT_EQ(viewer.capability_changes, 1);
    viewer.Send(ToMaster::kCapabilityEnd);
    Settle(&viewer);
    EXPECT_EQ(MappedSegment(viewer.ModuleName()).Get<std::int32_t>(0), 1);
    EXPECT_EQ(viewer.capability_changes, 2);
}

TEST_F(PublisherLinkTest, LimitsWithATooLongNameChangeNothing) {
    Start(TwoAxes());
    TestViewer viewer;
    Connect(&viewer);
    AxisLimits wrong = kLimitsX;
    wrong.axis = std::string(256, 'X');
    EXPECT_FALSE(m_master->CapabilitiesChanged({wrong}));
    EXPECT_EQ(viewer.ReadCapabilities()->size(), 2U);
    wrong.axis = std::string(255, 'X');
    EXPECT_TRUE(m_master->CapabilitiesChanged({wrong}));
    EXPECT_EQ(viewer.ReadCapabilities()->begin()->first, std::string(255, 'X'));
}

}  // namespace
}  // namespace wavo::master
