// The sample masters, in C and in Python.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <chrono>
#include <cmath>
#include <filesystem>
#include <functional>
#include <memory>
#include <string>
#include <thread>
#include <tuple>
#include <vector>

#include "raw_window.h"
#include "system/started_program.h"
#include "test_viewer.h"

namespace wavo::master {
namespace {

using platform::MessagePacket;
using platform::PacketKind;
using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::Not;
using wavo::testing::Hello;
using wavo::testing::MappedSegment;
using wavo::testing::Packet;
using wavo::testing::RawConnection;
using wavo::testing::RawWindow;
using wavo::testing::ReadInfo;
using wavo::testing::SegmentExists;
using wavo::testing::StartedProgram;
using wavo::testing::TestViewer;

struct Language {
    const char* name;
    std::string program;
    std::vector<std::string> arguments;
};
void PrintTo(const Language& language, std::ostream* out) {
    *out << language.name;
}

constexpr std::size_t kWriteIndex = offsetof(LineFifoHeader, write_index);
constexpr std::uint64_t kFifoLines = 4096;

class SineMaster : public ::testing::TestWithParam<Language> {
 protected:
    static std::unique_ptr<StartedProgram> New() {
        return std::make_unique<StartedProgram>(GetParam().program, GetParam().arguments);
    }
    void Start() {
        m_master = New();
        ASSERT_TRUE(m_master->WaitForOutput("sine_master: window")) << m_master->Errors();
    }

    /// Ends it in order.
    void End() {
        m_master->RequestEnd();
        ExpectEnd();
    }
    void ExpectEnd() {
        EXPECT_EQ(m_master->Wait(), 0) << m_master->Errors();
        EXPECT_EQ(m_master->Errors(), "");
        EXPECT_FALSE(SegmentExists(kInfoSegmentName));
    }

    /// Each line is the next step of the circle.
    static void ExpectWithoutAGap(const std::vector<std::vector<double>>& lines) {
        for (std::size_t i = 0; i < lines.size(); ++i) {
            ASSERT_NEAR(std::hypot(lines[i][0], lines[i][1]), 100.0, 1e-9) << i;
            if (i > 0) {
                ASSERT_NEAR(
                    std::hypot(lines[i][0] - lines[i - 1][0], lines[i][1] - lines[i - 1][1]),
                    200.0 * std::sin(M_PI / 1000.0), 1e-9)
                    << "a line is missing before line " << i;
            }
        }
    }

    /// Waits until it holds, at most 20 seconds.
    static bool WaitFor(const std::function<bool()>& condition) {
        for (int i = 0; i < 4000 && !condition(); ++i) {
            std::this_thread::sleep_for(std::chrono::milliseconds(5));
        }
        return condition();
    }

    static MessagePacket PostOfConnect(platform::WindowHandle viewer) {
        return Packet(PacketKind::kPost, {0x52C, 2, static_cast<std::int64_t>(viewer)});
    }

    std::unique_ptr<StartedProgram> m_master;
};

TEST_P(SineMaster, TellsTheViewersThatAreThere) {
    TestViewer first;
    TestViewer second;
    Start();
    EXPECT_TRUE(first.ServeUntil([&] { return first.announcements == 1; }));
    EXPECT_TRUE(ReadInfo()) << "told before it had published";
    EXPECT_TRUE(second.ServeUntil([&] { return second.announcements == 1; }));
    EXPECT_THAT(first.messages, ElementsAre(platform::Message{0x530, 0, 0}));
    // One that was told connects as every other one.
    ASSERT_TRUE(first.Connect());
    EXPECT_TRUE(first.ServeUntil([&] { return first.lines.size() >= 10; }));
    End();
    EXPECT_EQ(first.announcements, 1);
}

TEST_P(SineMaster, ViewersGetTheSineAndTheEnd) {
    Start();
    const auto second = New();
    EXPECT_EQ(second->Wait(), 1);
    EXPECT_THAT(second->Errors(), HasSubstr("another master"));
    TestViewer viewer;
    ASSERT_TRUE(viewer.Connect());
    EXPECT_THAT(viewer.info.axis_names, ElementsAre("X", "Y"));
    EXPECT_EQ(viewer.info.cycle_time, 0.001);
    EXPECT_EQ(viewer.info.fifo_lines, kFifoLines);
    ASSERT_TRUE(viewer.ServeUntil([&] { return viewer.lines.size() > 2000; }));
    ExpectWithoutAGap(viewer.lines);
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
    ExpectWithoutAGap(viewer.lines);
    EXPECT_EQ(viewer.failed_opens, 0);
    EXPECT_EQ(viewer.capability_changes, 2) << "each connect brings the news of the limits";
    m_master->RequestEnd();
    EXPECT_TRUE(viewer.ServeUntil([&] {
        other.Serve();
        return viewer.link_ends == 1 && viewer.master_gone && other.link_ends == 1;
    }));
    ExpectEnd();
    EXPECT_FALSE(SegmentExists(viewer.FifoName()));
    EXPECT_FALSE(SegmentExists(viewer.ModuleName()));
    EXPECT_FALSE(platform::WindowExists(viewer.info.master_window));
}

TEST_P(SineMaster, OverrunIsToldAndDeadViewersAreDropped) {
    Start();
    auto viewer = std::make_unique<TestViewer>();
    viewer->answers = false;
    ASSERT_TRUE(viewer->Connect());
    ASSERT_TRUE(viewer->ServeUntil([&] { return viewer->overruns == 1; }));
    EXPECT_EQ(viewer->batches, 1);
    const std::string fifo = viewer->FifoName();
    EXPECT_TRUE(SegmentExists(fifo));
    viewer.reset();
    EXPECT_TRUE(WaitFor([&] { return !SegmentExists(fifo); }));
    End();
    EXPECT_THAT(m_master->Output(), HasSubstr("overruns 1\n"));
}

TEST_P(SineMaster, AMasterThatIsBusyIsNotReplaced) {
    RawWindow other;
    other.BeBusy();
    const auto info = platform::SharedSegment::Create(kInfoSegmentName, sizeof(MasterInfoBlock));
    *static_cast<std::uint64_t*>(info.data()) = other.handle();
    const auto fifo = platform::SharedSegment::Create("MValues_77", 64);
    m_master = New();
    EXPECT_EQ(m_master->Wait(), 1);
    EXPECT_THAT(m_master->Errors(), HasSubstr("another master"));
    EXPECT_EQ(info.State(), platform::SegmentState::kWhole);
    EXPECT_EQ(fifo.State(), platform::SegmentState::kWhole);
}

TEST_P(SineMaster, WhatADeadMasterHasLeftIsRemoved) {
    RawWindow dead;
    dead.Die();
    const auto info = platform::SharedSegment::Create(kInfoSegmentName, sizeof(MasterInfoBlock));
    *static_cast<std::uint64_t*>(info.data()) = dead.handle();
    const auto fifo = platform::SharedSegment::Create("MValues_77", 64);
    const auto module = platform::SharedSegment::Create("DataModCap77", 64);
    const auto others = platform::SharedSegment::Create("SomebodyElses_77", 64);
    Start();
    EXPECT_EQ(fifo.State(), platform::SegmentState::kRemoved);
    EXPECT_EQ(module.State(), platform::SegmentState::kRemoved);
    EXPECT_EQ(others.State(), platform::SegmentState::kWhole);
    EXPECT_EQ(info.State(), platform::SegmentState::kRemoved);
    EXPECT_EQ(*static_cast<std::uint64_t*>(info.data()), dead.handle()) << "changed in its place";
    EXPECT_TRUE(platform::WindowExists(ReadInfo()->master_window));
    EXPECT_FALSE(std::filesystem::exists(dead.path()));
    End();
}

TEST_P(SineMaster, ABatchThatGotLostIsAnnouncedAgainAfterTheNextConnect) {
    Start();
    TestViewer viewer;
    viewer.answers = false;
    ASSERT_TRUE(viewer.Connect());
    ASSERT_TRUE(viewer.ServeUntil([&] { return viewer.batches == 1; }));
    viewer.PostConnect();
    ASSERT_TRUE(viewer.ServeUntil([&] { return viewer.batches == 2; }));
    viewer.answers = true;
    viewer.SendReady();
    ASSERT_TRUE(viewer.ServeUntil([&] { return viewer.lines.size() > 1000; }));
    ExpectWithoutAGap(viewer.lines);
    EXPECT_EQ(viewer.failed_opens, 0);
}

TEST_P(SineMaster, AWriteIndexThatSomebodyWroteIsNotFollowed) {
    Start();
    TestViewer viewer;
    viewer.takes_batches = false;
    ASSERT_TRUE(viewer.Connect());
    ASSERT_TRUE(viewer.ServeUntil([&] { return viewer.batches == 1; }));
    MappedSegment fifo(viewer.FifoName());
    const std::uint64_t wrong = 3000;
    fifo.Set<std::uint64_t>(kWriteIndex, wrong);
    ASSERT_TRUE(WaitFor([&] { return fifo.Get<std::uint64_t>(kWriteIndex) != wrong; }));
    const auto index = fifo.Get<std::uint64_t>(kWriteIndex);
    std::vector<std::vector<double>> lines;
    for (std::uint64_t slot = 0; slot < index; ++slot) {
        lines.push_back({fifo.Get<double>(64 + 16 * slot), fifo.Get<double>(64 + 16 * slot + 8)});
    }
    ExpectWithoutAGap(lines);
}

TEST_P(SineMaster, AReadIndexOutOfRangeIsAFullRingAndTheNextConnectCuresIt) {
    Start();
    TestViewer viewer;
    viewer.takes_batches = false;
    ASSERT_TRUE(viewer.Connect());
    ASSERT_TRUE(viewer.ServeUntil([&] { return viewer.batches == 1; }));
    MappedSegment(viewer.FifoName())
        .Set<std::uint64_t>(offsetof(LineFifoHeader, read_index), std::uint64_t{1} << 40U);
    ASSERT_TRUE(viewer.ServeUntil([&] { return viewer.overruns == 1; }));
    viewer.takes_batches = true;
    viewer.PostConnect();
    ASSERT_TRUE(viewer.ServeUntil([&] { return viewer.lines.size() > 200; }));
    ExpectWithoutAGap(viewer.lines);
    EXPECT_EQ(viewer.failed_opens, 0);
}

TEST_P(SineMaster, PacketsThatBreakTheRulesEndTheirConnection) {
    Start();
    const platform::WindowHandle window = ReadInfo()->master_window;
    TestViewer viewer;
    ASSERT_TRUE(viewer.Connect());
    const MessagePacket hello = Hello(4711);
    MessagePacket magic = hello;
    magic.magic ^= 1U;
    MessagePacket version = hello;
    version.version = 2;
    const auto kind = [](int number) {
        return Packet(static_cast<PacketKind>(number), {0x52D, 0, 4711});
    };
    for (const std::vector<MessagePacket>& packets :
         std::vector<std::vector<MessagePacket>>{{magic},
                                                 {version},
                                                 {Hello(0)},
                                                 {Hello(std::uint64_t{1} << 31U)},
                                                 {kind(2)},
                                                 {kind(3)},
                                                 {hello, hello},
                                                 {hello, kind(4)},
                                                 {hello, kind(5)}}) {
        const RawConnection connection(window);
        for (const MessagePacket& packet : packets) {
            EXPECT_TRUE(connection.Write(packet));
        }
        EXPECT_TRUE(connection.WaitForEnd());
    }
    for (const std::size_t size : {1, 39, 41, 80}) {
        const RawConnection connection(window);
        EXPECT_TRUE(connection.Write(hello));
        EXPECT_TRUE(connection.Write(std::string(size, 'x').data(), size));
        EXPECT_TRUE(connection.WaitForEnd());
    }
    const RawConnection silent(window);
    const RawConnection good(window);
    EXPECT_TRUE(good.Write(hello));
    EXPECT_TRUE(good.Write(Packet(PacketKind::kSend, {0x52D, 0, 4711}, 99)));
    const auto reply = good.Read();
    ASSERT_TRUE(reply);
    EXPECT_EQ(reply->kind, PacketKind::kReply);
    EXPECT_EQ(reply->sequence, 99U);
    EXPECT_EQ(reply->l_param, 1);
    ASSERT_TRUE(viewer.ServeUntil([&] { return viewer.lines.size() > 200; }));
    ExpectWithoutAGap(viewer.lines);
}

TEST_P(SineMaster, AViewerThatBreaksTheRulesIsForgotten) {
    Start();
    RawWindow viewer;
    const RawConnection to_master(ReadInfo()->master_window);
    to_master.Write(Hello(viewer.handle()));
    to_master.Write(PostOfConnect(viewer.handle()));
    const RawConnection from_master = viewer.Accept();
    const std::string fifo = kValueSegmentPrefix + std::to_string(viewer.handle());
    EXPECT_TRUE(SegmentExists(fifo));
    to_master.Write("garbage", 7);
    EXPECT_TRUE(to_master.WaitForEnd());
    EXPECT_TRUE(from_master.WaitForEnd());
    EXPECT_FALSE(SegmentExists(fifo));
    EXPECT_FALSE(SegmentExists(kCapabilitySegmentPrefix + std::to_string(viewer.handle())));
}

TEST_P(SineMaster, AViewerThatIsBusyAtItsConnectGetsItsBatchesLater) {
    Start();
    RawWindow viewer;
    viewer.BeBusy();
    const RawConnection to_master(ReadInfo()->master_window);
    to_master.Write(Hello(viewer.handle()));
    to_master.Write(PostOfConnect(viewer.handle()));
    to_master.Write(Packet(PacketKind::kSend, {0x52D, 0, 0}));
    ASSERT_TRUE(to_master.Read());  // the connect was handled before
    const MappedSegment fifo(kValueSegmentPrefix + std::to_string(viewer.handle()));
    ASSERT_TRUE(fifo);
    ASSERT_TRUE(WaitFor([&] { return fifo.Get<std::uint64_t>(kWriteIndex) > 20; }));
    viewer.BeBusyNoMore();
    const RawConnection from_master = viewer.Accept();
    for (const auto& [kind, number, w_param] :
         std::vector<std::tuple<PacketKind, std::uint32_t, std::uint64_t>>{
             {PacketKind::kHello, 0, ReadInfo()->master_window},
             {PacketKind::kPost, 0x52F, 0},
             {PacketKind::kPost, 0x52C, 1}}) {
        const auto packet = from_master.Read();
        ASSERT_TRUE(packet);
        EXPECT_EQ(packet->kind, kind);
        EXPECT_EQ(packet->number, number);
        EXPECT_EQ(packet->w_param, w_param);
    }
}

TEST_P(SineMaster, AtTheEndViewersTakeWhatWasWritten) {
    Start();
    TestViewer viewer;
    viewer.takes_batches = false;
    ASSERT_TRUE(viewer.Connect());
    ASSERT_TRUE(viewer.ServeUntil([&] { return viewer.batches == 1; }));
    const MappedSegment fifo(viewer.FifoName());
    ASSERT_TRUE(WaitFor([&] { return fifo.Get<std::uint64_t>(kWriteIndex) > 100; }));
    m_master->RequestEnd();
    viewer.takes_batches = true;
    viewer.SendReady();
    EXPECT_TRUE(viewer.ServeUntil([&] { return viewer.link_ends == 1; }));
    ExpectEnd();
    EXPECT_GT(viewer.lines.size(), 100U);
    EXPECT_THAT(m_master->Output(),
                HasSubstr("total: lines sent " + std::to_string(viewer.lines.size()) + ","));
    EXPECT_THAT(m_master->Output(), Not(HasSubstr("overruns 1")));
}

INSTANTIATE_TEST_SUITE_P(
    Languages, SineMaster,
    ::testing::Values(Language{"C", WAVO_SINE_MASTER_C, {}},
                      Language{"Python", WAVO_PYTHON, {"-B", WAVO_SINE_MASTER_PYTHON}}),
    [](const auto& language) { return std::string(language.param.name); });

}  // namespace
}  // namespace wavo::master
