// Start and end of a publisher, batches and overruns.
#include "master/publisher.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <thread>

#include "link/wire_format.h"
#include "publisher_fixture.h"
#include "system_facts.h"
#include "test_viewer.h"

namespace wavo::master {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;
using wavo::testing::kSegmentsOutliveTheirMaker;
using wavo::testing::ReadInfo;
using wavo::testing::SegmentExists;
using wavo::testing::TestViewer;

class PublisherTest : public PublisherFixture {};

// ---- Start and end ----

TEST_F(PublisherTest, InfoBlockTellsWindowCycleTimeAxesAndFifoLines) {
    Start(TwoAxes());
    const auto info = ReadInfo();
    ASSERT_TRUE(info);
    EXPECT_EQ(info->master_window, m_master->window());
    EXPECT_TRUE(platform::WindowExists(info->master_window));
    EXPECT_EQ(info->cycle_time, 0.002);
    EXPECT_EQ(info->fifo_lines, 8U);
    EXPECT_THAT(info->axis_names, ElementsAre("X", "Y"));
}

TEST_F(PublisherTest, SecondMasterIsRefusedAndTheFirstGoesOn) {
    Start(TwoAxes());
    std::string error;
    EXPECT_EQ(MasterPublisher::Start(TwoAxes(), {}, &error), nullptr);
    EXPECT_EQ(error,
              "another master is running (window " + std::to_string(m_master->window()) + ")");
    EXPECT_EQ(RunningMaster(), m_master->window());
}

TEST_F(PublisherTest, LeftoverOfADeadMasterIsReplaced) {
    platform::SharedSegment leftover =
        platform::SharedSegment::Create(kInfoSegmentName, sizeof(MasterInfoBlock));
    ASSERT_TRUE(leftover);
    *static_cast<std::uint64_t*>(leftover.data()) = 1;
    EXPECT_EQ(RunningMaster(), 0U);
    Start(TwoAxes());
    const auto info = ReadInfo();
    ASSERT_TRUE(info);
    EXPECT_EQ(info->master_window, m_master->window());
    if (kSegmentsOutliveTheirMaker) {
        EXPECT_EQ(*static_cast<std::uint64_t*>(leftover.data()), 1U)
            << "changed instead of replaced";
    }
}

TEST_F(PublisherTest, ViewersThatAreThereAreToldOnceWhenAllIsPublished) {
    TestViewer first;
    TestViewer second;
    Start(TwoAxes());
    const auto info = ReadInfo();
    ASSERT_TRUE(info) << "told before it had published";
    Settle(&first);
    Settle(&second);
    EXPECT_THAT(first.messages, ElementsAre(platform::Message{0x530, 0, 0}));
    EXPECT_EQ(second.announcements, 1);
    EXPECT_THAT(m_master->Viewers(), IsEmpty());
    Connect(&first);
    PublishLine();
    Settle(&first);
    EXPECT_THAT(FirstValues(first), ElementsAre(1.0));
    EXPECT_EQ(first.announcements, 1);
    TestViewer late;
    Settle(&late);
    EXPECT_EQ(late.announcements, 0) << "it looks for itself";
}

TEST_F(PublisherTest, AMasterThatMayNotStartTellsNobody) {
    Start(TwoAxes());
    TestViewer viewer;
    std::string error;
    EXPECT_EQ(MasterPublisher::Start(TwoAxes(), {}, &error), nullptr);
    Settle(&viewer);
    EXPECT_EQ(viewer.announcements, 0);
}

TEST_F(PublisherTest, LostLinesAreAnOverrunForEveryViewer) {
    Start(TwoAxes());
    TestViewer viewer;
    TestViewer other;
    Connect(&viewer);
    PublishLines(2);
    Settle(&viewer);
    m_master->LinesLost();
    m_master->LinesLost();  // it has been told
    Connect(&other);
    PublishLines(2);
    Settle(&viewer);
    Settle(&other);
    EXPECT_EQ(viewer.overruns, 1);
    EXPECT_EQ(CountersOf(viewer).overruns, 1U);
    EXPECT_THAT(FirstValues(viewer), ElementsAre(1.0, 2.0));
    EXPECT_THAT(FirstValues(other), ElementsAre(3.0, 4.0));
    Connect(&viewer);
    PublishLine();
    Settle(&viewer);
    EXPECT_THAT(FirstValues(viewer), ElementsAre(1.0, 2.0, 5.0));
}

TEST_F(PublisherTest, LeftoverThatIsTooSmallIsReplaced) {
    const auto leftover = platform::SharedSegment::Create(kInfoSegmentName, 8);
    Start(TwoAxes());
    EXPECT_EQ(RunningMaster(), m_master->window());
}

TEST_F(PublisherTest, LeftoverSegmentsOfAViewerAreReplaced) {
    TestViewer viewer;
    const auto fifo = platform::SharedSegment::Create(viewer.FifoName(), 16);
    const auto module = platform::SharedSegment::Create(viewer.ModuleName(), 16);
    Start(TwoAxes());
    Connect(&viewer);
    PublishLine();
    Settle(&viewer);
    EXPECT_THAT(FirstValues(viewer), ElementsAre(1.0));
    EXPECT_EQ(viewer.ReadCapabilities()->size(), 2U);
}

TEST_F(PublisherTest, OptionsThatCannotBePublishedAreRefused) {
    const auto refusal = [](const PublisherOptions& options) {
        std::string error;
        EXPECT_EQ(MasterPublisher::Start(options, {}, &error), nullptr);
        EXPECT_FALSE(SegmentExists(kInfoSegmentName));
        return error;
    };
    PublisherOptions options = TwoAxes();
    options.axis_names = {"X", ""};
    EXPECT_EQ(refusal(options), "an axis name is empty or holds a NUL character");
    options.axis_names = {std::string("X\0Y", 3)};
    EXPECT_EQ(refusal(options), "an axis name is empty or holds a NUL character");
    options.axis_names = {"X", "Y", "X"};
    EXPECT_EQ(refusal(options), "two axes are named X");
    options.axis_names = {std::string(1999, 'X'), "Y"};
    EXPECT_EQ(refusal(options), "the axis names are too long: 2002 bytes of 2000");
    options = TwoAxes();
    options.cycle_time = 0.0;
    EXPECT_EQ(refusal(options), "the cycle time is not above zero");
    options = TwoAxes(1);
    EXPECT_EQ(refusal(options), "no value FIFO can have 1 lines");
    options = TwoAxes();
    options.limits[0].axis = std::string(256, 'X');
    EXPECT_EQ(refusal(options), "the name of an axis with limits is too long");
}

TEST_F(PublisherTest, AxisNamesMayFillTheirPlace) {
    PublisherOptions options = TwoAxes();
    options.axis_names = {std::string(1999, 'X')};
    Start(options);
    EXPECT_THAT(ReadInfo()->axis_names, ElementsAre(std::string(1999, 'X')));
}

TEST_F(PublisherTest, MasterWithoutAxesIsLegal) {
    PublisherOptions options = TwoAxes();
    options.axis_names.clear();
    options.limits.clear();
    Start(options);
    TestViewer viewer;
    Connect(&viewer);
    m_master->Publish({});
    Settle(&viewer);
    EXPECT_EQ(viewer.batches, 1);
    EXPECT_EQ(viewer.lines.size(), 1U);
}

TEST_F(PublisherTest, OrderlyEndTellsViewersAndRemovesAllNames) {
    Start(TwoAxes());
    TestViewer viewer;
    Connect(&viewer);
    PublishLine();
    Settle(&viewer);
    const platform::WindowHandle window = m_master->window();
    EXPECT_TRUE(SegmentExists(viewer.FifoName()));
    EXPECT_TRUE(SegmentExists(viewer.ModuleName()));
    m_master->End();
    EXPECT_FALSE(SegmentExists(kInfoSegmentName));
    EXPECT_FALSE(SegmentExists(viewer.FifoName()));
    EXPECT_FALSE(SegmentExists(viewer.ModuleName()));
    EXPECT_FALSE(platform::WindowExists(window));
    EXPECT_EQ(m_master->window(), 0U);
    EXPECT_TRUE(viewer.ServeUntil([&] { return viewer.master_gone; }));
    EXPECT_EQ(viewer.link_ends, 1);
    // What is left can be asked, and does nothing.
    EXPECT_EQ(m_master->Total(), (Counters{1, 1, 1, 0}));
    PublishLine();
    ServeMaster();
    m_master->Quit();
    m_master->End();
    EXPECT_FALSE(m_master->CapabilitiesChanged({}));
}

TEST_F(PublisherTest, AnotherMasterStartsAfterTheEnd) {
    Start(TwoAxes());
    m_master->End();
    Start(TwoAxes());
    EXPECT_EQ(RunningMaster(), m_master->window());
}

// ---- Batches ----

TEST_F(PublisherTest, LinesArriveInOrderAndAreCounted) {
    Start(TwoAxes());
    TestViewer viewer;
    Connect(&viewer);
    for (int i = 0; i < 50; ++i) {
        PublishLines(3);
        Settle(&viewer);
    }
    const auto values = FirstValues(viewer);
    ASSERT_EQ(values.size(), 150U);
    for (std::size_t i = 0; i < values.size(); ++i) {
        ASSERT_EQ(values[i], static_cast<double>(i + 1));
    }
    const Counters counters = CountersOf(viewer);
    EXPECT_EQ(counters.lines_sent, 150U);
    EXPECT_EQ(counters.batches_announced, static_cast<std::uint64_t>(viewer.batches));
    EXPECT_EQ(counters.batches_answered, counters.batches_announced);
    EXPECT_EQ(counters.overruns, 0U);
    EXPECT_EQ(m_master->Total(), counters);
    EXPECT_EQ(m_events, "connected ");
}

TEST_F(PublisherTest, NothingIsAnnouncedBeforeALineWaits) {
    Start(TwoAxes());
    TestViewer viewer;
    Connect(&viewer);
    Settle(&viewer);
    EXPECT_EQ(viewer.batches, 0);
    PublishLine();
    Settle(&viewer);
    EXPECT_EQ(viewer.batches, 1);
    Settle(&viewer);
    EXPECT_EQ(viewer.batches, 1);
}

TEST_F(PublisherTest, AtMostOneBatchIsOutstanding) {
    Start(TwoAxes(100));
    TestViewer viewer;
    viewer.answers = false;
    Connect(&viewer);
    PublishLines(10);
    Settle(&viewer);
    PublishLines(10);
    Settle(&viewer);
    EXPECT_EQ(viewer.batches, 1);
    EXPECT_EQ(viewer.lines.size(), 10U);
    viewer.answers = true;
    viewer.SendReady();
    Settle(&viewer);
    EXPECT_EQ(viewer.batches, 2);
    EXPECT_EQ(viewer.lines.size(), 20U);
}

TEST_F(PublisherTest, AFifoThatIsMoreThanHalfFullIsAnnouncedBeforeTheInterval) {
    PublisherOptions options = TwoAxes(9);
    options.announce_interval = std::chrono::nanoseconds::max();
    Start(options);
    TestViewer viewer;
    Connect(&viewer);
    PublishLine();
    Settle(&viewer);
    EXPECT_EQ(viewer.batches, 1);
    PublishLines(4);
    Settle(&viewer);
    EXPECT_EQ(viewer.batches, 1);
    PublishLine();
    Settle(&viewer);
    EXPECT_THAT(FirstValues(viewer), ElementsAre(1.0, 2.0, 3.0, 4.0, 5.0, 6.0));
}

TEST_F(PublisherTest, APacedViewerIsToldNoSoonerThanTheInterval) {
    PublisherOptions options = TwoAxes();
    // Longer than any machine has been up: the first batch does not wait for it.
    options.announce_interval = std::chrono::nanoseconds::max();
    Start(options);
    TestViewer viewer;
    Connect(&viewer);
    PublishLine();
    Settle(&viewer);
    PublishLine();
    Settle(&viewer);
    EXPECT_THAT(FirstValues(viewer), ElementsAre(1.0));
    EXPECT_EQ(m_master->Total().batches_announced, 1U);
    EXPECT_EQ(m_master->Total().batches_answered, 1U);
}

TEST_F(PublisherTest, APacedViewerIsToldOnceTheIntervalIsOver) {
    PublisherOptions options = TwoAxes();
    options.announce_interval = std::chrono::milliseconds(5);
    Start(options);
    TestViewer viewer;
    Connect(&viewer);
    for (int line = 0; line < 3; ++line) {
        PublishLine();
        std::this_thread::sleep_for(std::chrono::milliseconds(6));
        Settle(&viewer);
    }
    EXPECT_THAT(FirstValues(viewer), ElementsAre(1.0, 2.0, 3.0));
    EXPECT_EQ(m_master->Total().batches_announced, 3U);
}

TEST_F(PublisherTest, SegmentsOfOtherViewersOfADeadMasterAreRemoved) {
    if (!kSegmentsOutliveTheirMaker) {
        GTEST_SKIP() << "names go with those who hold them here";
    }
    const auto fifo = platform::SharedSegment::Create("MValues_1", 16);
    const auto module = platform::SharedSegment::Create("DataModCap1", 16);
    Start(TwoAxes());
    EXPECT_FALSE(SegmentExists("MValues_1"));
    EXPECT_FALSE(SegmentExists("DataModCap1"));
}

TEST_F(PublisherTest, ReadyWithoutABatchChangesNothing) {
    Start(TwoAxes(100));
    TestViewer viewer;
    Connect(&viewer);
    viewer.SendReady();
    viewer.SendReady();
    viewer.answers = false;
    PublishLine();
    PublishLine();
    Settle(&viewer);
    EXPECT_EQ(viewer.batches, 1);
    EXPECT_EQ(CountersOf(viewer).batches_answered, 0U);
}

TEST_F(PublisherTest, MessagesOfUnknownViewersAndNumbersAreHarmless) {
    Start(TwoAxes());
    TestViewer stranger;
    stranger.info = *ReadInfo();
    stranger.SendReady();
    stranger.SendDisconnect();
    stranger.Send(ToMaster::kCapabilityBegin);
    stranger.Send(ToMaster::kCapabilityEnd);
    stranger.Send(static_cast<ToMaster>(0x999));
    stranger.Send(ToMaster::kLink);  // wParam 0
    ServeMaster();
    EXPECT_THAT(m_master->Viewers(), IsEmpty());
    EXPECT_EQ(m_events, "");
}

TEST_F(PublisherTest, TwoViewersGetTheSameLinesAtTheirOwnPace) {
    Start(TwoAxes(100));
    TestViewer quick;
    TestViewer slow;
    slow.takes_batches = false;
    Connect(&quick);
    Connect(&slow);
    EXPECT_EQ(m_master->ConnectedCount(), 2U);
    for (int i = 0; i < 20; ++i) {
        PublishLine();
        Settle(&quick);
        slow.Serve();
    }
    EXPECT_EQ(quick.lines.size(), 20U);
    EXPECT_EQ(quick.batches, 20);
    EXPECT_EQ(slow.batches, 1);
    slow.takes_batches = true;
    slow.SendReady();
    Settle(&slow);
    EXPECT_EQ(slow.lines, quick.lines);
    EXPECT_EQ(m_master->Total().lines_sent, 40U);
}

TEST_F(PublisherTest, ViewerThatConnectsLaterGetsTheLinesFromThenOn) {
    Start(TwoAxes(100));
    PublishLines(5);
    TestViewer viewer;
    Connect(&viewer);
    PublishLines(2);
    Settle(&viewer);
    EXPECT_THAT(FirstValues(viewer), ElementsAre(6.0, 7.0));
}

TEST_F(PublisherTest, RoomIsThatOfTheFullestFifo) {
    Start(TwoAxes(8));
    EXPECT_EQ(m_master->Room(), MasterPublisher::kNoViewer);
    TestViewer first;
    TestViewer second;
    first.takes_batches = second.takes_batches = false;
    Connect(&first);
    EXPECT_EQ(m_master->Room(), 7U);
    PublishLines(3);
    Connect(&second);
    EXPECT_EQ(m_master->Room(), 4U);
    first.Disconnect();
    EXPECT_EQ(m_master->Room(), 7U);
}

TEST_F(PublisherTest, WaitUntilTakenEndsWhenAllIsAnsweredOrTimeIsUp) {
    Start(TwoAxes(100));
    TestViewer viewer;
    viewer.takes_batches = false;  // where this thread's windows share a message loop it is served
    EXPECT_TRUE(m_master->WaitUntilTaken(std::chrono::milliseconds(0)));
    Connect(&viewer);
    PublishLines(3);
    EXPECT_FALSE(m_master->WaitUntilTaken(std::chrono::milliseconds(20)));
    viewer.takes_batches = true;
    viewer.SendReady();
    Settle(&viewer);
    EXPECT_TRUE(m_master->WaitUntilTaken(std::chrono::milliseconds(0)));
}

// ---- Overrun ----

TEST_F(PublisherTest, FullFifoIsToldOnceAndFilledNoMore) {
    Start(TwoAxes(8));
    TestViewer viewer;
    viewer.takes_batches = false;
    viewer.disconnects_on_overrun = false;
    Connect(&viewer);
    PublishLines(7);
    EXPECT_EQ(CountersOf(viewer).overruns, 0U);
    PublishLines(20);
    viewer.Serve();
    EXPECT_EQ(viewer.overruns, 1);
    EXPECT_EQ(CountersOf(viewer).lines_sent, 7U);
    EXPECT_EQ(CountersOf(viewer).overruns, 1U);
    EXPECT_EQ(m_events, "connected overrun ");
    // An answer afterwards brings no further batch.
    viewer.takes_batches = true;
    viewer.SendReady();
    PublishLines(3);
    Settle(&viewer);
    EXPECT_EQ(viewer.batches, 1);
    EXPECT_EQ(m_master->Room(), MasterPublisher::kNoViewer);
}

TEST_F(PublisherTest, OverrunOfOneViewerDoesNotTouchTheOther) {
    Start(TwoAxes(8));
    TestViewer quick;
    TestViewer slow;
    slow.takes_batches = false;
    Connect(&quick);
    Connect(&slow);
    for (int i = 0; i < 30; ++i) {
        PublishLine();
        Settle(&quick);
    }
    EXPECT_EQ(quick.lines.size(), 30U);
    EXPECT_EQ(quick.overruns, 0);
    slow.Serve();
    EXPECT_EQ(slow.overruns, 1);
}

TEST_F(PublisherTest, ViewerConnectsAgainAfterAnOverrunAndStartsAfresh) {
    PublisherOptions options = TwoAxes(8);
    // The batch before the overrun is never answered: it counts as lost.
    options.batch_grace = std::chrono::nanoseconds(0);
    Start(options);
    TestViewer viewer;
    viewer.answers = false;
    Connect(&viewer);
    PublishLines(30);
    Settle(&viewer);
    EXPECT_EQ(viewer.overruns, 1);
    EXPECT_EQ(m_master->ConnectedCount(), 0U);
    viewer.answers = true;
    viewer.lines.clear();
    viewer.PostConnect();
    m_master->Serve(std::chrono::nanoseconds(0));
    PublishLines(3);
    Settle(&viewer);
    EXPECT_THAT(FirstValues(viewer), ElementsAre(31.0, 32.0, 33.0));
    EXPECT_EQ(viewer.failed_opens, 0);
}

}  // namespace
}  // namespace wavo::master
