// Which part of its time a graph shows, and the zooms that graphs share.
//
// A zoom inside a zoom counts from the one before: what a user marks are places of the display.
#pragma once

#include <cstdint>
#include <optional>
#include <vector>

#include "graph/model/wavo_graph.h"
#include "graph/record/graph_recorder.h"
#include "graph/values/stream_rows.h"
#include "graph/values/time_window.h"

namespace wavo {

class GraphDraw;

/// The zoom of a time graph. Start and end count from the left border of the display in which the
/// zoom was chosen; `offset` is where that left border stood.
struct ZoomState {
    bool active = false;
    bool first = true;  ///< no zoom since the graph was made or restarted
    double start = 0.0;
    double end = 0.0;
    double offset = 0.0;
    std::uint32_t graph_number = 0;
    WavoGraph definition;  ///< as it was when the zoom was set

    /// Seconds that the zoom shows.
    [[nodiscard]] double Length() const { return end - start; }
};

/// The zoom of one graph, and the window of time that it shows in a step.
class GraphZoom {
 public:
    /// `graph` is not owned and outlives the zoom. `cycle_time` in seconds.
    GraphZoom(const WavoGraph& graph, double cycle_time);

    /// Zooms to a span of the displayed time axis, seconds. A span that runs backwards switches the
    /// zoom off; one below 0.1 ms changes nothing; both are reported. `of_recording`: the curves
    /// show a recording, which the buffers may have run on from; counts for the first zoom alone.
    void Set(double start, double end, bool of_recording);
    /// Goes back to an earlier zoom, or to none.
    void Restore(const ZoomState& zoom);
    /// The graph begins anew.
    void Leave();

    [[nodiscard]] const ZoomState& State() const { return m_state; }
    /// A window is shown: zoomed, and over time.
    [[nodiscard]] bool IsShown() const {
        return m_state.active && m_graph.XCoorType != CoorType::kAxis;
    }
    /// A window of the recording that the curves hold is shown, not one of the buffers.
    [[nodiscard]] bool IsOfRecording() const { return IsShown() && m_of_recording; }

    /// The window of this step is not known yet.
    void BeginStep() { m_taken = false; }
    /// Finds what the zoom shows of the buffers, or of the `recorded` seconds that the curves hold.
    /// False, and nothing changed, when there are no buffers: the curves keep what they show.
    bool TakeWindow(const GraphRecorder& recorder, const StreamRows& rows, double recorded);
    /// No window, but the whole time range.
    void ShowAll() { m_window = {}; }

    /// This step shows what TakeWindow found.
    [[nodiscard]] bool IsTaken() const { return m_taken; }
    /// A window of the buffers is shown.
    [[nodiscard]] bool IsOfBuffers() const { return IsShown() && !m_of_recording; }
    /// The window as the time axis names it; start == end when the whole range is shown.
    [[nodiscard]] const TimeWindow& Window() const { return m_window; }
    /// The window, seconds from the oldest sample that is held. After TakeWindow.
    [[nodiscard]] const TimeWindow& HeldWindow() const { return m_held; }
    /// The rows of the streams in the window. After TakeWindow, and not of a recording.
    [[nodiscard]] const SampleStretch& Rows() const { return m_rows; }

 private:
    [[nodiscard]] TimeWindow WindowIn(double before, double longest) const;
    [[nodiscard]] SampleStretch RowsOf(GraphValue& value, const StreamRows& rows) const;

    const WavoGraph& m_graph;
    double m_cycle_time;
    ZoomState m_state;
    bool m_of_recording = false;
    TimeWindow m_window;
    TimeWindow m_held;
    SampleStretch m_rows;
    bool m_taken = false;
};

/// The zooms of all graphs: made together, remembered, and stepped back from one by one.
///
/// Invariant: an entry says how a graph was shown before the zoom that made the entry.
class GraphZooms {
 public:
    /// Zooms graphs to one span of their displayed time axes, seconds. A graph that refuses it (and
    /// reports it) has no step to go back.
    void Zoom(const std::vector<GraphDraw*>& graphs, const TimeWindow& span);
    /// Takes the last zoom of each graph back.
    void StepBack(const std::vector<GraphDraw*>& graphs);
    /// Takes all zooms of the graphs back.
    void LeaveAll(const std::vector<GraphDraw*>& graphs);
    /// Zooms can no longer be stepped back from.
    void Forget() { m_entries.clear(); }
    [[nodiscard]] bool IsEmpty() const { return m_entries.empty(); }

 private:
    struct Entry {
        std::uint32_t graph_number;
        ZoomState before;
    };

    /// Takes the last entry of a graph and shows it as it says. False when it has none.
    bool StepBack(GraphDraw& graph);

    std::vector<Entry> m_entries;  // of all graphs, oldest first
};

}  // namespace wavo
