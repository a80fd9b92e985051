// The session on a master with everything around it faked: master, segments, editor and view.
#pragma once

#include <gtest/gtest.h>

#include <chrono>
#include <cstring>
#include <memory>
#include <string>
#include <vector>

#include "fake_master_channel.h"
#include "fake_session_observer.h"
#include "fake_shared_memory.h"
#include "link/shared_memory_source.h"
#include "session/session.h"
#include "support/diagnostics.h"
#include "test_fifo_segment.h"

namespace wavo::testing {

inline constexpr char kReady[] = "send 815 52d 0";
inline constexpr char kConnect[] = "post 815 52c 2";
inline constexpr char kDisconnect[] = "send 815 52c 1";
inline constexpr platform::Message kNewValues{0x52C, 1, 0};
inline constexpr platform::Message kLinkEnded{0x52C, 2, 0};
inline constexpr platform::Message kOverrun{0x52D, 0, 0};

/// The acquisition of a session and its link to the master.
class Cycle {
 public:
    Cycle(SharedMemorySource& source, Session& session) : m_source(source), m_session(session) {}

    bool Connect(bool post) { return m_source.Connect(post); }
    void ConnectByUser() { m_session.Values().ConnectByUser(); }
    void LeaveMaster() { m_source.Hold(); }
    bool JoinMaster() { return m_source.GoOn(); }
    void End() { m_source.Stop(); }
    void InitialiseEditor() { m_session.Values().InitialiseEditor(); }
    void SendPendingReady() { m_session.Values().AnswerDrawn(); }
    void SetRunning(bool running) { m_session.Values().SetRunning(running); }
    std::int64_t OnMessage(const platform::Message& message) { return m_source.OnMessage(message); }
    void OnPeerGone(platform::WindowHandle window) { m_source.OnPeerGone(window); }
    void OnPeerRefused(platform::WindowHandle window, const char* why) {
        m_source.OnPeerRefused(window, why);
    }

    [[nodiscard]] bool IsRunning() const { return m_session.Values().IsRunning(); }
    [[nodiscard]] bool IsMasterKnown() const { return m_source.IsPresent(); }
    [[nodiscard]] bool CanConnect() const { return m_source.CanStart(); }
    [[nodiscard]] bool IsReaderOpen() const { return m_source.IsReaderOpen(); }
    [[nodiscard]] std::uint64_t TotalLines() const { return m_session.Values().TotalLines(); }
    [[nodiscard]] std::uint64_t BatchesAnswered() const { return Counters().batches_answered; }
    [[nodiscard]] LinkCounters Counters() const { return m_session.Values().Counters(); }
    [[nodiscard]] const BatchTimes& LastBatchTimes() const {
        return m_session.Values().LastBatchTimes();
    }
    [[nodiscard]] double CycleTime() const { return m_session.Values().CycleTime(); }
    [[nodiscard]] const std::vector<std::string>& AxisNames() const {
        return m_session.Values().AxisNames();
    }
    [[nodiscard]] AxisLimitsSource& Capabilities() { return m_source.Limits(); }

 private:
    SharedMemorySource& m_source;
    Session& m_session;
};

class CycleFixture : public ::testing::Test {
 protected:
    CycleFixture() {
        ResetFakeSharedMemory();
        m_host.board = &m_board;
        m_host.session = &m_session;
        PublishInfo({"X1", "Y1"});
        NewFifo();
    }
    ~CycleFixture() override { _MTrace_SetLevel("default", 1); }

    static void PublishInfo(const std::vector<std::string>& axes, double cycle_time = 0.004,
                            std::uint64_t lines = 8,
                            platform::WindowHandle master = FakeMasterChannel::kMaster) {
        MasterInfoBlock block{};
        block.master_window = master;
        block.cycle_time = cycle_time;
        block.axis_count = axes.size();
        block.fifo_lines = lines;
        char* position = block.axis_names;
        for (const std::string& axis : axes) {
            std::memcpy(position, axis.c_str(), axis.size() + 1);
            position += axis.size() + 1;
        }
        std::memcpy(AddFakeSegment("MachineTools_InfoData", sizeof block), &block, sizeof block);
    }

    /// Limits of X1, as a master publishes them.
    static void PublishLimits(double lower, double upper) {
        std::byte* const module = AddFakeSegment("DataModCap4711", CapabilityRecordOffset(1));
        const std::int32_t count = 1;
        const CapabilityRecord record{"X1", upper, lower, 0.0, 0.0, 0.001};
        std::memcpy(module, &count, sizeof count);
        std::memcpy(module + CapabilityRecordOffset(0), &record, sizeof record);
    }

    /// The info block of another master that runs.
    void PublishAnotherMaster() {
        m_channel.alive.insert(kOther);
        PublishInfo({"X1", "Y1"}, 0.004, 8, kOther);
    }
    static constexpr platform::WindowHandle kOther = 816;

    void NewFifo(std::uint64_t lines = 8, std::uint64_t doubles = 2) {
        m_fifo = std::make_unique<FifoSegment>("MValues_4711", lines, doubles);
    }

    /// A graph of one axis, so that no default graph is added.
    void AddGraph(const std::string& axis, std::int32_t derivation = 0) {
        WavoGraph graph;
        graph.InitGraph(static_cast<std::uint32_t>(m_graphs.Graphs().size() + 1), axis.c_str(), 0,
                        nullptr);
        graph.YCoorAxDerivation = {derivation};
        m_graphs.Add(graph, GraphList::Telling::kSilent);
    }

    /// Connected, one batch of one line taken and answered.
    void ConnectAndTakeFirstBatch() {
        AddGraph("X1");
        ASSERT_TRUE(m_cycle.Connect(true));
        m_fifo->Write(1.0);
        ASSERT_EQ(m_cycle.OnMessage(kNewValues), 1);
        m_channel.Take();
        m_host.Take();
        m_editor.happened.clear();
    }

    [[nodiscard]] std::vector<double> Held(const std::string& name, std::int32_t derivation = 0) {
        for (GraphValue& value : m_streams.Registry().Values()) {
            if (value.Name() == name && value.DerivationOrder() == derivation) {
                std::vector<double> held;
                double start = 0.0;
                value.GetTimeRangeValues(held, value.TimeRange(), start);
                return held;
            }
        }
        ADD_FAILURE() << "no buffer " << name;
        return {};
    }

    /// What every batch and line came to adds up.
    void ExpectAllAccountedFor() const {
        const LinkCounters counters = m_cycle.Counters();
        EXPECT_EQ(counters.lines_read, counters.lines_shown + counters.lines_not_shown);
        EXPECT_EQ(counters.batches_announced,
                  counters.batches_answered + counters.batches_unanswered +
                      counters.batches_refused + counters.batches_drained +
                      counters.batches_failed);
    }

    FakeMasterChannel m_channel;
    FakeEditor m_editor;
    FakeHost m_host{m_editor};
    std::chrono::steady_clock::time_point m_now{};
    SharedMemorySource m_source{m_channel, [this] { return m_now; }};
    Session m_session{m_source, m_board, m_host};
    GraphList& m_graphs = m_session.Graphs();
    ValueStreams& m_streams = m_session.Streams();
    GraphBoard m_board{m_graphs, m_streams, [] {}};
    Cycle m_cycle{m_source, m_session};
    std::unique_ptr<FifoSegment> m_fifo;
};

}  // namespace wavo::testing
