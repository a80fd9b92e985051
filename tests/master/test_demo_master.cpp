// demo_master as a program, with viewers in this process.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <chrono>
#include <cmath>
#include <cstdlib>
#include <iostream>

#include "master/motions.h"
#include "master/recording.h"
#include "matches_pattern.h"
#include "recording/recording_writer.h"
#include "system/started_program.h"
#include "system_facts.h"
#include "temporary_folder.h"
#include "test_viewer.h"

namespace wavo::master {
namespace {

using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::StartsWith;
using wavo::testing::MappedSegment;
using wavo::testing::MatchesPattern;
using wavo::testing::SegmentExists;
using wavo::testing::StartedProgram;
using wavo::testing::TestViewer;

const std::string kCircleFile = std::string(WAVO_RECORDINGS) + "/circle_xy_r50.csv.gz";

class DemoMasterTest : public ::testing::Test {
 protected:
    void Start(const std::vector<std::string>& arguments) {
        m_master = std::make_unique<StartedProgram>(WAVO_DEMO_MASTER, arguments);
        ASSERT_TRUE(m_master->WaitForOutput("axes")) << m_master->Errors();
    }

    /// Runs to the end; exit status.
    int Run(const std::vector<std::string>& arguments) {
        m_master = std::make_unique<StartedProgram>(WAVO_DEMO_MASTER, arguments);
        return m_master->Wait();
    }

    void TearDown() override {
        if (m_master && !m_master->HasEnded()) {
            m_master->RequestEnd();
            EXPECT_EQ(m_master->Wait(), 0) << m_master->Errors();
        }
    }

    std::string CountersLine(const TestViewer& viewer) {
        return "viewer " + std::to_string(viewer.handle()) + ": lines sent " +
               std::to_string(viewer.lines.size()) + ", batches answered " +
               std::to_string(viewer.batches) + ", overruns 0\n";
    }

    std::unique_ptr<StartedProgram> m_master;
};

TEST_F(DemoMasterTest, HelpAndVersionGoToStandardOutput) {
    EXPECT_EQ(Run({"--help"}), 0);
    EXPECT_THAT(m_master->Output(), StartsWith("Usage: demo_master"));
    EXPECT_EQ(Run({"--version"}), 0);
    EXPECT_THAT(m_master->Output(), MatchesPattern("demo_master [0-9]+\\.[0-9]+\\.[0-9]+\n"));
}

TEST_F(DemoMasterTest, WrongArgumentsGoToStandardErrorWithStatus2) {
    EXPECT_EQ(Run({"--bogus"}), 2);
    EXPECT_EQ(m_master->Errors(),
              "demo_master: unknown argument \"--bogus\"\nTry demo_master --help.\n");
    EXPECT_EQ(m_master->Output(), "");
    EXPECT_EQ(Run({"--recording", "no_such_file.csv"}), 2);
    EXPECT_EQ(m_master->Errors(), "demo_master: no_such_file.csv: no such file\n");
    EXPECT_EQ(Run({"--recording", kCircleFile, "--axes", "Q"}), 2);
    EXPECT_THAT(m_master->Errors(), HasSubstr("no column \"Q\""));
    EXPECT_EQ(Run({"--axes", "Q"}), 2);
    EXPECT_EQ(m_master->Errors(), "demo_master: the motion has no axis \"Q\"; it has X Y\n");
}

TEST_F(DemoMasterTest, SecondMasterIsRefusedWithStatus1) {
    Start({});
    StartedProgram second(WAVO_DEMO_MASTER, {});
    EXPECT_EQ(second.Wait(), 1);
    EXPECT_THAT(second.Errors(), StartsWith("demo_master: another master is running (window "));
}

TEST_F(DemoMasterTest, ViewerGetsEveryValueOfTheRecording) {
    Start({"--recording", kCircleFile, "--axes", "Y,X_cmd,line", "--speed", "full", "--loop", "2"});
    TestViewer viewer;
    ASSERT_TRUE(viewer.Connect());
    EXPECT_THAT(viewer.info.axis_names, ElementsAre("Y", "X_cmd", "line"));
    EXPECT_TRUE(viewer.ServeUntil([&] { return viewer.link_ends == 1; }));
    EXPECT_EQ(m_master->Wait(), 0);
    std::string error;
    const auto recording = Recording::Read(kCircleFile, {"Y", "X_cmd", "line"}, &error);
    ASSERT_TRUE(recording) << error;
    ASSERT_EQ(viewer.lines.size(), 2 * recording->LinesPerRound());
    std::vector<double> line(3);
    for (std::size_t i = 0; i < viewer.lines.size(); ++i) {
        recording->Line(i, line);
        ASSERT_EQ(viewer.lines[i], line) << "line " << i;
    }
    EXPECT_THAT(m_master->Output(), HasSubstr(CountersLine(viewer)));
    EXPECT_FALSE(SegmentExists(kInfoSegmentName));
    EXPECT_FALSE(SegmentExists(viewer.FifoName()));
    EXPECT_FALSE(SegmentExists(viewer.ModuleName()));
}

TEST_F(DemoMasterTest, ViewerGetsARecordingAsItWasMade) {
    const wavo::testing::TemporaryFolder folder;
    recording::RecordingHead head;
    head.axis_names = {"X", "spindle"};
    head.cycle_time = 0.00025;
    head.limits = {recording::AxisLimits{-5, 50, 7, 8, 0.01}};
    const std::string path = folder.File("run.mcap");
    auto writer = recording::RecordingWriter::Create(path, head, std::nullopt);
    ASSERT_TRUE(writer);
    for (std::uint64_t line = 0; line < 3000; ++line) {
        const double values[] = {static_cast<double>(line) / 3.0, -1.0};
        if (line < 1000 || line >= 1500) {
            ASSERT_FALSE((*writer)->Append(line, values, 1));
        }
    }
    ASSERT_FALSE((*writer)->Finish());
    Start({"--recording", path, "--speed", "full", "--loop", "1"});
    TestViewer viewer;
    ASSERT_TRUE(viewer.Connect());
    EXPECT_THAT(viewer.info.axis_names, ElementsAre("X", "spindle"));
    EXPECT_EQ(viewer.info.cycle_time, 0.00025);
    EXPECT_TRUE(viewer.ServeUntil([&] { return viewer.link_ends == 1; }));
    EXPECT_EQ(m_master->Wait(), 0);
    ASSERT_EQ(viewer.lines.size(), 3000U);
    for (std::size_t i = 0; i < viewer.lines.size(); ++i) {
        if (i < 1000 || i >= 1500) {
            ASSERT_EQ(viewer.lines[i][0], static_cast<double>(i) / 3.0) << "line " << i;
        } else {
            ASSERT_TRUE(std::isnan(viewer.lines[i][0])) << "line " << i;
        }
    }
    EXPECT_EQ(Run({"--recording", path, "--speed", "1000", "--lines", "100", "--skip-gaps"}), 0);
    EXPECT_EQ(Run({"--recording", path, "--axes", "Q"}), 2);
    EXPECT_EQ(m_master->Errors(),
              "demo_master: " + path + ": no axis \"Q\"; there are \"X\" \"spindle\"\n");
}

TEST_F(DemoMasterTest, FullSpeedLosesNoLineToAnyViewer) {
    Start({"--motion", "noise", "--speed", "full", "--lines", "600000", "--fifo-lines", "4096"});
    TestViewer first;
    TestViewer second;
    const auto begin = std::chrono::steady_clock::now();
    ASSERT_TRUE(first.Connect());
    ASSERT_TRUE(second.Connect());
    EXPECT_TRUE(first.ServeUntil([&] {
        second.Serve();
        return first.link_ends == 1 && second.link_ends == 1;
    }));
    const std::chrono::duration<double> time = std::chrono::steady_clock::now() - begin;
    EXPECT_EQ(m_master->Wait(), 0);
    EXPECT_EQ(first.lines.size(), 600000U);
    EXPECT_GT(second.lines.size(), 0U);
    std::cout << "lines per second: " << 600000 / time.count() << "\n";
    std::string error;
    const auto noise = MakeMotion(MotionKind::kNoise, {}, 0.001, 1, &error);
    std::vector<double> line(3);
    for (std::size_t i = 0; i < first.lines.size(); ++i) {
        noise->Line(i, line);
        ASSERT_EQ(first.lines[i], line) << "line " << i;
    }
    EXPECT_EQ(second.lines.back(), line);
    EXPECT_THAT(m_master->Output(), HasSubstr("overruns 0\ntotal: "));
}

TEST_F(DemoMasterTest, PlaysInTimeWithoutAViewer) {
    EXPECT_EQ(Run({"--motion", "jog", "--lines", "50"}), 0);
    EXPECT_THAT(m_master->Output(),
                MatchesPattern("demo_master: window [0-9]+, cycle time 0.001 s, "
                               "value FIFO 10000 lines, axes X Y Z C\n"
                               "total: lines sent 0, batches answered 0, "
                               "overruns 0\n"));
}

TEST_F(DemoMasterTest, WaitsForAViewerAndBeginsAnewForTheNextOne) {
    Start({"--recording", kCircleFile, "--axes", "X,F", "--wait-viewer", "--cycle", "0.0005"});
    std::string error;
    const auto recording = Recording::Read(kCircleFile, {"X", "F"}, &error);
    std::vector<double> line(2);
    for (int round = 0; round < 2; ++round) {
        TestViewer viewer;
        ASSERT_TRUE(viewer.Connect());
        EXPECT_TRUE(viewer.ServeUntil([&] { return viewer.lines.size() > 1000; }));
        for (std::size_t i = 0; i < viewer.lines.size(); ++i) {
            recording->Line(i, line);
            ASSERT_EQ(viewer.lines[i], line) << "line " << i;
        }
        viewer.Disconnect();
        ASSERT_TRUE(m_master->WaitForOutput(std::to_string(viewer.handle()) + " disconnected"));
    }
}

// What a viewer does at its start: connect, disconnect, connect.
TEST_F(DemoMasterTest, ViewersStartLosesNoLine) {
    Start({"--recording", kCircleFile, "--axes", "X,F", "--wait-viewer"});
    TestViewer viewer;
    ASSERT_TRUE(viewer.Connect());
    viewer.Disconnect();
    viewer.PostConnect();
    EXPECT_TRUE(viewer.ServeUntil([&] { return viewer.lines.size() > 300; }));
    EXPECT_EQ(viewer.failed_opens, 0);
    std::string error;
    const auto recording = Recording::Read(kCircleFile, {"X", "F"}, &error);
    std::vector<double> line(2);
    for (std::size_t i = 0; i < viewer.lines.size(); ++i) {
        recording->Line(i, line);
        ASSERT_EQ(viewer.lines[i], line) << "line " << i;
    }
}

TEST_F(DemoMasterTest, SignalsEndItInOrder) {
    for (const bool interrupt : {false, true}) {
        Start({});
        TestViewer viewer;
        ASSERT_TRUE(viewer.Connect());
        ASSERT_TRUE(viewer.ServeUntil([&] { return viewer.batches > 5; }));
        const platform::WindowHandle window = viewer.info.master_window;
        if (!(interrupt ? m_master->Interrupt() : m_master->RequestEnd())) {
            GTEST_SKIP() << "there is no console here whose Ctrl-C could be pressed";
        }
        EXPECT_TRUE(viewer.ServeUntil([&] { return viewer.link_ends == 1 && viewer.master_gone; }));
        EXPECT_EQ(m_master->Wait(), 0);
        EXPECT_EQ(m_master->Errors(), "");
        EXPECT_THAT(m_master->Output(), HasSubstr(CountersLine(viewer)));
        EXPECT_FALSE(SegmentExists(kInfoSegmentName));
        EXPECT_FALSE(SegmentExists(viewer.FifoName()));
        EXPECT_FALSE(SegmentExists(viewer.ModuleName()));
        EXPECT_FALSE(platform::WindowExists(window));
    }
}

TEST_F(DemoMasterTest, StayKeepsTheLinkAfterTheLastLine) {
    Start({"--motion", "jog", "--speed", "full", "--lines", "100", "--stay"});
    TestViewer viewer;
    ASSERT_TRUE(viewer.Connect());
    ASSERT_TRUE(viewer.ServeUntil([&] { return viewer.lines.size() == 100; }));
    viewer.Serve(std::chrono::milliseconds(200));
    EXPECT_EQ(viewer.link_ends, 0);
    EXPECT_FALSE(m_master->HasEnded());
}

TEST_F(DemoMasterTest, LimitsAreThoseOfTheRecordingUnlessGiven) {
    Start({"--recording", kCircleFile, "--axes", "X,Y,S", "--limits", "Y=-7:8:9:10"});
    TestViewer viewer;
    ASSERT_TRUE(viewer.Connect());
    ASSERT_TRUE(viewer.ServeUntil([&] { return viewer.capability_changes == 1; }));
    const auto records = viewer.ReadCapabilities();
    ASSERT_TRUE(records);
    ASSERT_EQ(records->size(), 3U);
    EXPECT_EQ(records->at("Y"), (AxisCapabilities{8.0, -7.0, 9.0, 10.0, 0.001}));
    EXPECT_EQ(records->at("X").velocity_limit, 400.0);
    EXPECT_LT(records->at("X").lower_limit, -49.9);
    EXPECT_GT(records->at("X").upper_limit, 49.9);
    EXPECT_GE(records->at("S").upper_limit, 3000.0);
}

// ---- Faults ----

TEST_F(DemoMasterTest, FaultOverrun) {
    Start({"--fault", "overrun", "--fault-after", "50", "--fifo-lines", "200"});
    TestViewer viewer;
    ASSERT_TRUE(viewer.Connect());
    EXPECT_TRUE(viewer.ServeUntil([&] { return viewer.overruns == 1; }));
    // The viewer connects again, and the link works as before.
    viewer.lines.clear();
    viewer.PostConnect();
    EXPECT_TRUE(viewer.ServeUntil([&] { return viewer.lines.size() > 300; }));
    EXPECT_EQ(viewer.overruns, 1);
    EXPECT_EQ(viewer.failed_opens, 0);
    m_master->RequestEnd();
    EXPECT_EQ(m_master->Wait(), 0);
    EXPECT_THAT(m_master->Output(), HasSubstr("overruns 1\ntotal: "));
}

TEST_F(DemoMasterTest, FaultNeverReady) {
    Start({"--fault", "never-ready", "--fault-after", "50", "--fifo-lines", "200"});
    TestViewer viewer;
    ASSERT_TRUE(viewer.Connect());
    EXPECT_TRUE(viewer.ServeUntil([&] { return viewer.overruns == 1; }));
    EXPECT_GT(viewer.lines.size(), 0U);
    EXPECT_LT(viewer.lines.size(), 250U);
}

TEST_F(DemoMasterTest, FaultHangLeavesASentMessageWithoutAnswer) {
    Start({"--fault", "hang", "--fault-after", "2000"});
    TestViewer viewer;
    ASSERT_TRUE(viewer.Connect());
    ASSERT_TRUE(viewer.ServeUntil([&] { return viewer.lines.size() > 40; }));
    std::string error;
    const auto window = platform::MessageWindow::Create([](const auto&) { return 0; }, &error);
    platform::SendResult result{platform::SendStatus::kDone, 0};
    const auto end = std::chrono::steady_clock::now() + std::chrono::seconds(60);
    while (result.status == platform::SendStatus::kDone && std::chrono::steady_clock::now() < end) {
        viewer.Serve();
        result = window->Send(viewer.info.master_window, {0x52D, 0, 1});
    }
    EXPECT_EQ(result.status, platform::SendStatus::kNoAnswer);
    // It comes round, and the batches go on.
    const std::size_t lines = viewer.lines.size();
    EXPECT_TRUE(viewer.ServeUntil([&] { return viewer.lines.size() > lines + 1000; }));
    EXPECT_EQ(viewer.overruns, 0);
}

TEST_F(DemoMasterTest, FaultDieLeavesEverythingBehindAndTheNextMasterReplacesIt) {
    Start({"--fault", "die", "--fault-after", "50"});
    TestViewer viewer;
    ASSERT_TRUE(viewer.Connect());
    EXPECT_TRUE(viewer.ServeUntil([&] { return viewer.master_gone; }));
    EXPECT_EQ(m_master->Wait(), 137);
    EXPECT_EQ(viewer.link_ends, 0);
    EXPECT_EQ(SegmentExists(kInfoSegmentName), testing::kSegmentsOutliveTheirMaker);
    EXPECT_EQ(SegmentExists(viewer.FifoName()), testing::kSegmentsOutliveTheirMaker);
    EXPECT_FALSE(platform::WindowExists(viewer.info.master_window));
    viewer.Detach();
    Start({});
    viewer.lines.clear();
    viewer.master_gone = false;
    ASSERT_TRUE(viewer.Connect());
    EXPECT_TRUE(viewer.ServeUntil([&] { return viewer.lines.size() > 100; }));
    EXPECT_EQ(viewer.failed_opens, 0);
}

TEST_F(DemoMasterTest, FaultGarbageHeaders) {
    Start({"--fault", "garbage-headers", "--fault-after", "50", "--fifo-lines", "100"});
    TestViewer viewer;
    ASSERT_TRUE(viewer.Connect());
    ASSERT_TRUE(viewer.ServeUntil([&] { return viewer.lines.size() > 10; }));
    EXPECT_TRUE(viewer.ServeUntil(
        [&] { return MappedSegment(kInfoSegmentName).Get<std::uint64_t>(24) > 1000; }));
    const MappedSegment info(kInfoSegmentName);
    EXPECT_EQ(info.Get<std::uint64_t>(0), viewer.info.master_window);
    EXPECT_TRUE(std::isnan(info.Get<double>(8)));
    EXPECT_EQ(info.Get<char>(2039), 'X') << "the last name still ends";
    EXPECT_GT(MappedSegment(viewer.ModuleName()).Get<std::int32_t>(0), 1000);
    EXPECT_TRUE(viewer.ServeUntil([&] {
        const MappedSegment fifo(viewer.FifoName());
        return fifo && fifo.Get<std::uint64_t>(32) > 1'000'000 &&
               fifo.Get<std::uint64_t>(40) > 1'000'000;
    }));
}

TEST_F(DemoMasterTest, FaultQuit) {
    Start({"--fault", "quit", "--fault-after", "50"});
    TestViewer viewer;
    ASSERT_TRUE(viewer.Connect());
    EXPECT_TRUE(viewer.ServeUntil([&] { return viewer.quits == 1; }));
    EXPECT_TRUE(m_master->WaitForOutput(std::to_string(viewer.handle()) + " disconnected"));
}

TEST_F(DemoMasterTest, FaultCapabilities) {
    Start({"--limits", "X=-1:2:3:4", "--fault", "capabilities", "--fault-after", "50"});
    TestViewer viewer;
    ASSERT_TRUE(viewer.Connect());
    ASSERT_TRUE(viewer.ServeUntil([&] { return viewer.capability_changes == 1; }));
    const AxisCapabilities given{2.0, -1.0, 3.0, 4.0, 0.001};
    const AxisCapabilities doubled{4.0, -2.0, 6.0, 8.0, 0.001};
    // On a busy machine they may have changed before they are read for the first time.
    EXPECT_THAT(viewer.ReadCapabilities()->at("X"), ::testing::AnyOf(given, doubled));
    ASSERT_TRUE(viewer.ServeUntil([&] { return viewer.capability_changes == 2; }));
    EXPECT_EQ(viewer.ReadCapabilities()->at("X"), doubled);
}

}  // namespace
}  // namespace wavo::master
