// The sample master in C.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cmath>

#include "system/started_program.h"
#include "test_viewer.h"

namespace wavo::master {
namespace {

using ::testing::ElementsAre;
using wavo::testing::SegmentExists;
using wavo::testing::StartedProgram;
using wavo::testing::TestViewer;

TEST(SineMasterTest, ViewerGetsTheSineAndTheEnd) {
    StartedProgram master(WAVO_SINE_MASTER, {});
    ASSERT_TRUE(master.WaitForOutput("sine_master: window")) << master.Errors();
    StartedProgram second(WAVO_SINE_MASTER, {});
    EXPECT_EQ(second.Wait(), 1);
    TestViewer viewer;
    ASSERT_TRUE(viewer.Connect());
    EXPECT_THAT(viewer.info.axis_names, ElementsAre("X", "Y"));
    EXPECT_EQ(viewer.info.cycle_time, 0.001);
    EXPECT_EQ(viewer.info.fifo_lines, 4096U);
    ASSERT_TRUE(viewer.ServeUntil([&] { return viewer.lines.size() > 2000; }));
    for (std::size_t i = 1; i < viewer.lines.size(); ++i) {
        const auto& line = viewer.lines[i];
        const auto& before = viewer.lines[i - 1];
        ASSERT_NEAR(std::hypot(line[0], line[1]), 100.0, 1e-9);
        ASSERT_NEAR(std::hypot(line[0] - before[0], line[1] - before[1]),
                    200.0 * std::sin(M_PI / 1000.0), 1e-9)
            << "a line is missing before line " << i;
    }
    EXPECT_EQ(viewer.capability_changes, 1);
    EXPECT_EQ(viewer.ReadCapabilities()->at("Y"),
              (AxisCapabilities{120.0, -120.0, 1000.0, 10000.0, 0.001}));
    // A reconnect and a second viewer.
    viewer.Disconnect();
    viewer.PostConnect();
    TestViewer other;
    ASSERT_TRUE(other.Connect());
    viewer.lines.clear();
    ASSERT_TRUE(viewer.ServeUntil([&] {
        other.Serve();
        return viewer.lines.size() > 200 && other.lines.size() > 200;
    }));
    EXPECT_EQ(viewer.failed_opens, 0);
    master.RequestEnd();
    EXPECT_TRUE(viewer.ServeUntil([&] { return viewer.link_ends == 1 && viewer.master_gone; }));
    EXPECT_EQ(master.Wait(), 0);
    EXPECT_FALSE(SegmentExists(kInfoSegmentName));
    EXPECT_FALSE(SegmentExists(viewer.FifoName()));
    EXPECT_FALSE(SegmentExists(viewer.ModuleName()));
    EXPECT_FALSE(platform::WindowExists(viewer.info.master_window));
}

TEST(SineMasterTest, OverrunIsToldAndDeadViewersAreDropped) {
    StartedProgram master(WAVO_SINE_MASTER, {});
    ASSERT_TRUE(master.WaitForOutput("sine_master: window")) << master.Errors();
    auto viewer = std::make_unique<TestViewer>();
    viewer->answers = false;
    ASSERT_TRUE(viewer->Connect());
    ASSERT_TRUE(viewer->ServeUntil([&] { return viewer->overruns == 1; }));
    EXPECT_EQ(viewer->batches, 1);
    const std::string fifo = viewer->FifoName();
    EXPECT_TRUE(SegmentExists(fifo));
    viewer.reset();
    TestViewer other;
    EXPECT_TRUE(other.ServeUntil([&] { return !SegmentExists(fifo); }));
    master.RequestEnd();
    EXPECT_EQ(master.Wait(), 0);
}

}  // namespace
}  // namespace wavo::master
