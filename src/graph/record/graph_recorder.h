// What a graph takes of its streams: the values of a step, the tests of its triggers, and whether
// it records, waits or has stopped. Knows no picture.
//
// A step is: take values (TakeNewest, or nothing where a zoom looks at the buffers itself), test
// the triggers, mark what is no derivative. What was taken then stands in Taken until the next
// step.
//
// Invariants:
// 1. Streams count like the y axes, then that of the x axis; there are Axes() + 1 of them. A stream
//    without a buffer takes nothing.
// 2. Each stream takes a value for every line of the master that any stream of the graph took,
//    NoSample() where its own has none.
// 3. A graph without triggers stays in RunState::kRunning.
#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

#include "graph/model/wavo_graph.h"
#include "graph/record/run_state.h"
#include "graph/values/graph_streams.h"
#include "graph/values/graph_value.h"
#include "graph/values/line_log.h"
#include "graph/values/stream_rows.h"

namespace wavo {

/// What was taken from one stream for the current step.
struct TakenValues {
    GraphValue* value = nullptr;  ///< the buffer; not owned
    std::vector<double> values;
    double start_time = 0.0;               ///< of the first of the values, seconds
    std::vector<SampleStretch> underived;  ///< values that are no derivatives
    SampleOrigin origin;                   ///< of the values, where they are as in the buffer

    void Discard();
    void DropFront(std::uint64_t count);
    void DropBack(std::uint64_t count);
    /// Puts a missing value where there is no derivative.
    void LeaveOutUnderived();
};

/// What the test of the triggers brought about.
enum class TriggerEvent {
    kNone,
    kStarted,  ///< recording begins with the first of the values taken: curves begin anew
    kEnded,    ///< a recording that a start trigger began is complete
};

class GraphRecorder {
 public:
    /// Begins in the state that the last trigger of `graph` asks for. Graph and buffers are not
    /// owned; the graph outlives the recorder, the buffers do until Detach. REQUIRES: the lists of
    /// the graph have an entry per y axis.
    GraphRecorder(const WavoGraph& graph, double cycle_time, const GraphStreams& streams);

    /// Takes what the buffers hold of the graph's time range and is not new.
    void TakeHeld();
    /// Takes the new values, or all of the graph's time range after Restart and LeaveTriggers. True
    /// when it is the latter: the curves of streams with a buffer begin anew.
    bool TakeNewest();
    /// Forgets what was taken.
    void Discard();
    /// Puts a missing value where there is no derivative; triggers are tested before.
    void LeaveOutUnderived();
    /// Rows that were taken since the curves began anew, and with which lines of the master they
    /// came: row n is sequence n. Those that no curve holds any more are forgotten.
    [[nodiscard]] std::uint64_t TakenRows() const { return m_rows; }
    [[nodiscard]] const LineLog& TakenLines() const { return m_lines; }
    /// What was taken of a stream; stream Axes() is that of the x axis. After TestTriggers its
    /// origin tells whether the curves take all that follows. REQUIRES: stream <= Axes().
    [[nodiscard]] const TakenValues& Taken(std::size_t stream) const { return m_taken[stream]; }

    /// Tests the values taken last; `index` is the position of the value that fired.
    bool IsTrigger(std::uint64_t& index) const;
    /// Tests the triggers as the state asks for it, drops what they leave out, and moves the state
    /// on.
    TriggerEvent TestTriggers();

    /// The next Restart resets the buffers, too.
    void AskForRestart() { m_restart_asked = true; }
    [[nodiscard]] bool IsRestartAsked() const { return m_restart_asked; }
    /// Begins anew in the state that the triggers ask for.
    void Restart();
    /// Leaves a finished recording for the state the graph began in, and asks for a restart when
    /// that is waiting for the stop trigger. Nothing in another state.
    void RestartAfterTrigger();
    /// Runs without triggers until the graph is made anew, and takes all of its time range next: it
    /// is zoomed.
    void LeaveTriggers();

    /// Forgets the buffers, before they go.
    void Detach();

    [[nodiscard]] RunState State() const { return m_state; }
    [[nodiscard]] RunState RestartState() const { return m_restart_state; }
    /// Seconds recorded after the step that the start trigger fired in.
    [[nodiscard]] double ElapsedAfterTrigger() const { return m_elapsed; }

    [[nodiscard]] const WavoGraph& Graph() const { return m_graph; }
    /// Seconds from line to line of the master.
    [[nodiscard]] double CycleTime() const { return m_cycle_time; }
    [[nodiscard]] std::size_t Axes() const { return m_taken.size() - 1; }
    /// Buffers that there were for the y axes when the recorder was made, null ones too.
    [[nodiscard]] std::size_t BuffersGiven() const { return m_buffers_given; }
    /// All buffers that there are, y axes first.
    [[nodiscard]] std::vector<GraphValue*> Values() const;

    /// The streams side by side, as they are now.
    [[nodiscard]] StreamRows Rows() const;

 private:
    /// A trigger with the test of its type; null for a type that has none.
    struct TriggerData {
        std::size_t axis;  ///< whose values are tested
        TriggerTest pTestTriggerEvent;
    };

    [[nodiscard]] bool IsOverTime() const { return m_graph.XCoorType != CoorType::kAxis; }
    void CreateTriggers();
    void TakeRows(const StreamRows& rows, const SampleStretch& taken);
    void TakeNew(const StreamRows& rows);
    /// The values taken last are rows of the curves, but for the first `dropped`.
    void KeepLines(std::uint64_t dropped);
    void BeginLines();
    TriggerEvent WaitForStart(std::uint64_t& dropped);
    TriggerEvent RunAfterStart();
    void WaitForStop();
    void StopValues();

    const WavoGraph& m_graph;
    double m_cycle_time;
    std::size_t m_buffers_given;
    std::vector<TriggerData> m_TriggerData;

    std::vector<TakenValues> m_taken;       ///< by stream
    std::vector<LineLog::Run> m_new_lines;  ///< of the values taken last
    LineLog m_lines;
    std::uint64_t m_rows = 0;
    bool m_refill = false;  ///< all of the time range is taken next
    RunState m_state = RunState::kRunning;
    RunState m_restart_state = RunState::kRunning;
    bool m_restart_asked = false;
    double m_elapsed = 0.0;
};

/// The newest time that the buffers hold, seconds.
double LatestTime(const GraphRecorder& recorder);
/// The longest time range that a buffer covers, seconds.
double LongestRange(const GraphRecorder& recorder);

/// The rows of the graph's time range; over an axis only those with both values.
SampleStretch RowsOfSpan(const GraphRecorder& recorder, const StreamRows& rows);
/// Seconds from the oldest row to the first of the graph's time range.
double TimeBeforeSpan(const GraphRecorder& recorder, const StreamRows& rows);

/// Copies rows of a stream: NoSample() where it has none, kNoValue where it has no derivative.
void CopyRows(const StreamRows& rows, std::size_t stream, const SampleStretch& wanted,
              std::vector<double>& out);

}  // namespace wavo
