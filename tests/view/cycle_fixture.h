// The acquisition cycle with everything around it faked: master, segments, editor and view.
#pragma once

#include <gtest/gtest.h>

#include <cstring>
#include <memory>
#include <string>
#include <vector>

#include "fake_acquisition_host.h"
#include "fake_master_channel.h"
#include "fake_shared_memory.h"
#include "support/diagnostics.h"
#include "test_fifo_segment.h"
#include "ui/dialogs/graph_editor.h"
#include "view/acquisition_cycle.h"

namespace wavo::testing {

inline constexpr char kReady[] = "send 815 52d 0";
inline constexpr char kConnect[] = "post 815 52c 2";
inline constexpr char kDisconnect[] = "send 815 52c 1";
inline constexpr platform::Message kNewValues{0x52C, 1, 0};
inline constexpr platform::Message kLinkEnded{0x52C, 2, 0};
inline constexpr platform::Message kOverrun{0x52D, 0, 0};

/// Initialised by hand, records what it is told; never posts anything.
class FakeEditor : public GraphEditor {
 public:
    bool Init(std::vector<WavoGraph>& graphs, const std::vector<std::string>& axes) override {
        happened.push_back("init " + std::to_string(graphs.size()) + " " +
                           std::to_string(axes.size()));
        initialised = !graphs.empty();
        return !fails;
    }
    [[nodiscard]] bool IsInitialised() const override { return initialised; }
    void SetNotInitialised() override {
        initialised = false;
        happened.emplace_back("not initialised");
    }
    void ResetSelection() override { happened.emplace_back("reset selection"); }
    void SetCycleTime(double cycle_time) override { cycle = cycle_time; }
    void SetAcquisitionRuns(bool runs) override {
        happened.emplace_back(runs ? "acquisition runs" : "acquisition stands");
    }

    bool initialised = false;
    bool fails = false;
    double cycle = 0.0;
    std::vector<std::string> happened;
};

class CycleFixture : public ::testing::Test {
 protected:
    CycleFixture() {
        ResetFakeSharedMemory();
        m_host.board = &m_board;
        m_host.cycle = &m_cycle;
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
        graph.InitGraph(static_cast<std::uint32_t>(m_board.Graphs().size() + 1), axis.c_str(), 0,
                        nullptr);
        graph.YCoorAxDerivation = {derivation};
        m_board.Graphs().push_back(graph);
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
        for (GraphValue& value : m_board.Registry().Values()) {
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
    FakeHost m_host;
    FakeEditor m_editor;
    std::recursive_mutex m_lock;
    GraphBoard m_board{m_host, [this](const std::string& text) { m_host.ShowError(text); }};
    AcquisitionCycle m_cycle{m_channel, m_board, m_editor, m_host, m_lock};
    std::unique_ptr<FifoSegment> m_fifo;
};

}  // namespace wavo::testing
