// One graph of the view: takes the new values of its streams, tests its trigger, adapts its
// scales, and draws frame, texts and curves into its rectangle.
//
// One call of DrawGraph is one step: everything that the graph does with new values happens there
// and in no other place. The caller empties the new values of the buffers after all graphs had
// their step, and never takes the same values twice.
//
// Invariants:
// 1. The graph works on its own copy of the definition; an automatic scale changes that copy only.
// 2. There is one curve and one draw buffer per y axis, addressed by the y axis index.
// 3. The streams are not owned. They may be null: frame, texts and what the curves hold are drawn
//    all the same.
// 4. Every label shows the scale that the curves of the same step are drawn with.
// 5. The curves share one time origin: each takes a value for every line of the master that any
//    stream of the graph took, NoSample() where its own has none.
// 6. The rectangle is in logical pixels; curves and lines stand on device pixels of the painter.
#pragma once

#include <QImage>
#include <QRect>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "graph/draw/back_curves.h"
#include "graph/draw/display_settings.h"
#include "graph/draw/frame/graph_frame.h"
#include "graph/draw/graph_curves.h"
#include "graph/draw/graph_places.h"
#include "graph/draw/graph_zoom.h"
#include "graph/draw/lines_draw_axis.h"
#include "graph/draw/raster/plot_canvas.h"
#include "graph/draw/shown_history.h"
#include "graph/draw/shown_values.h"
#include "graph/model/wavo_graph.h"
#include "graph/record/graph_recorder.h"
#include "graph/values/graph_streams.h"
#include "graph/values/time_window.h"

namespace wavo {

class GraphDraw;

/// What a graph tells its surroundings.
class GraphDrawHost {
 public:
    virtual ~GraphDrawHost() = default;
    /// A recording that a start trigger began is complete. Called once, from within DrawGraph.
    virtual void RecordingEnded() = 0;
    /// What lies behind the curves of a graph that is about to draw them; nothing: none.
    virtual std::optional<BackRun> BehindOf(const GraphDraw& /*graph*/) { return std::nullopt; }
};

/// What becomes of the pixels in a drawing step.
enum class PixelWriting {
    kNow,
    kLater,  ///< nobody sees them: Paint writes them when somebody does
};

class GraphDraw {
 public:
    /// Builds the curves and fills each with what its buffer holds, unless the graph waits for its
    /// start trigger; draws nothing yet. `host` and the streams are not owned and outlive the graph
    /// (the streams: until DetachValues).
    /// Numbers of scale lines below 1 are reported and replaced by 5 (x) and 3 (y).
    GraphDraw(const QRect& rectangle, const WavoGraph& graph, GraphDrawHost& host,
              const GraphDisplaySettings& settings, double cycle_time, std::int32_t x_scale_lines,
              std::int32_t y_scale_lines, GraphStreams streams);
    virtual ~GraphDraw() = default;
    GraphDraw(const GraphDraw&) = delete;
    GraphDraw& operator=(const GraphDraw&) = delete;
    GraphDraw(GraphDraw&&) = delete;
    GraphDraw& operator=(GraphDraw&&) = delete;

    /// One drawing step. `restart`: the caller has reset all buffers, the graph begins anew.
    /// Paints all pixels of its rectangle, the background too, and no others. REQUIRES: `picture`
    /// has the format RGB32 and in the rectangle what was painted there last, unless Invalidate was
    /// called since. With PixelWriting::kLater all happens but the painting.
    void DrawGraph(QImage& picture, bool restart, PixelWriting pixels = PixelWriting::kNow);

    /// Paints what the steps have brought that left the pixels alone; takes no values. REQUIRES: as
    /// DrawGraph, with the picture of the last step.
    void Paint(QImage& picture);

    /// The pixels of the rectangle were lost: the next step paints all of them.
    void Invalidate() { m_frame.Invalidate(); }

    /// From the next step on curves are told apart by their dashes, too, or all are solid.
    void SetLineStyles(bool shown);

    /// Moves the graph; its curves follow at once.
    void SetRectangle(const QRect& rectangle);

    /// Tests the values taken last; `index` is the position of the value that fired.
    bool IsTrigger(std::uint64_t& index) const { return m_recorder.IsTrigger(index); }

    /// Zooms a time graph to a span of its displayed time axis, seconds. A span that runs backwards
    /// switches the zoom off; one below 0.1 ms changes nothing; both are reported.
    void SetZoomRange(double start, double end) { m_zoom.Set(start, end, ShowsRecording()); }

    /// Goes back to an earlier zoom (or none) and to the scales of that time.
    void RestoreZoom(const ZoomState& zoom);

    /// The values that the graph shows of an axis (the first y axis of that name, else the x
    /// axis), oldest first: the lines of the past that are seen, else the zoom window, else the
    /// finished recording, else the most recent span. False, an error-log entry and no values for a
    /// name that the graph does not know.
    bool GetAxValues(const std::string& axis_name, std::vector<double>& values) const {
        return ShownValues(*this).Of(axis_name, values);
    }

    /// The same of several axes as rows of one line of the master each: only lines that the streams
    /// of all of them hold. A derivative that has no earlier samples is NaN. `columns` are as many
    /// as the names; one of a name that the graph does not know is empty.
    void GetAxRows(const std::vector<std::string>& axis_names,
                   std::vector<std::vector<double>>& columns) const {
        ShownValues(*this).RowsOf(axis_names, columns);
    }

    /// Shows the past from the next step on: no values are taken meanwhile, no trigger is tested,
    /// the run state stays. Nothing: the curves as they were, and the scales of that time.
    /// REQUIRES: an entry per y axis.
    void ShowHistory(std::optional<ShownHistory> history);
    [[nodiscard]] const std::optional<ShownHistory>& Past() const { return m_history; }
    /// What the last drawing showed is exact; else drawing again brings it closer.
    [[nodiscard]] bool IsExact() const { return PlotArea().isEmpty() || m_curves.IsExact(); }

    /// Forgets the buffers, before they go. The curves keep what they show.
    void DetachValues();

    /// Makes the next step empty the curves, reset the graph's buffers and begin anew.
    void SetRestartFlag() { m_recorder.AskForRestart(); }

    /// Leaves a finished recording for the state the graph began in, and lets its buffers be
    /// reset when that is waiting for the stop trigger. Nothing in another state.
    void RestartAfterTrigger() { m_recorder.RestartAfterTrigger(); }

    /// The time, seconds, at a logical pixel column of the displayed time axis; -1 outside the
    /// plot area and for a graph whose x is no time.
    [[nodiscard]] double PixelToTime(int x) const { return Places().TimeAt(x); }
    /// Where times, lines and values stand, until the next step.
    [[nodiscard]] GraphPlaces Places() const { return GraphPlaces(*this); }

    [[nodiscard]] const WavoGraph& Graph() const { return m_graph; }
    [[nodiscard]] const QRect& Rectangle() const { return m_frame.Rectangle(); }
    [[nodiscard]] const QRect& PlotArea() const { return m_frame.PlotArea(); }
    [[nodiscard]] RunState State() const { return m_recorder.State(); }
    /// What the graph has taken of its streams.
    [[nodiscard]] const GraphRecorder& Recorder() const { return m_recorder; }
    [[nodiscard]] const GraphFrame& Frame() const { return m_frame; }
    [[nodiscard]] const GraphZoom& ZoomWindow() const { return m_zoom; }
    [[nodiscard]] const ZoomState& Zoom() const { return m_zoom.State(); }
    [[nodiscard]] TimeWindow DisplayedWindow() const;

    /// The rubber band of a zoom that is being dragged; null when there is none.
    [[nodiscard]] const QRect& Tracker() const { return m_tracker; }
    void SetTracker(const QRect& tracker) { m_tracker = tracker; }

    [[nodiscard]] const std::vector<std::unique_ptr<LinesDrawAxis>>& Lines() const {
        return m_curves.Lines();
    }
    /// The curves show what was recorded after a trigger.
    [[nodiscard]] bool ShowsRecording() const;

 private:
    // Construction and scales (graph_draw.cpp).
    void PrimeCurves();
    /// The curves take over the scale lines of the frame.
    void FollowFrame();
    void FillScaleLines();
    void ShowScale(double time_range);
    void ShowFullScale();
    void RestoreScales(const WavoGraph& graph);

    // The step (graph_draw_steps.cpp).
    void Restart();
    void TakeValues();
    void TestTriggers();
    void CheckScales();
    /// Paints the frame, and gives what the curves are drawn on; null where there is no plot area.
    PlotCanvas* BeginPicture(QImage& picture);
    void ReportDifferentSizes() const;

    void ShowPast();

    [[nodiscard]] bool IsTimeGraph() const { return m_graph.XCoorType != CoorType::kAxis; }

    WavoGraph m_graph;  ///< but for its scales; the curves refer to them, so it is never replaced
    GraphDrawHost& m_host;
    QRect m_tracker;
    GraphFrame m_frame;
    GraphRecorder m_recorder;
    GraphZoom m_zoom;
    GraphCurves m_curves;
    BackCurves m_back;
    PlotCanvas m_canvas;
    std::optional<ShownHistory> m_history;
    WavoGraph m_before_history;  ///< for the scales of that time
};

}  // namespace wavo
