// The curves of one graph, in the order of its y axes, with the x scale that they are drawn on.
//
// Invariant: all curves of a graph over time take as many values as each other, since streams are
// taken row by row.
#pragma once

#include <memory>
#include <vector>

#include "graph/draw/frame/graph_frame.h"
#include "graph/draw/graph_zoom.h"
#include "graph/draw/lines_draw_axis.h"
#include "graph/draw/past_points.h"
#include "graph/draw/raster/plot_canvas.h"
#include "graph/draw/shown_history.h"
#include "graph/model/wavo_graph.h"
#include "graph/record/graph_recorder.h"
#include "support/color_ref.h"

namespace wavo {

class GraphCurves {
 public:
    /// Automatic scales adapt those of `graph`, which is not owned and outlives the curves.
    /// `cycle_time` in seconds.
    GraphCurves(WavoGraph& graph, ColorRef background, double cycle_time);

    /// Makes a curve per y axis on the scale lines of the frame.
    void Create(const GraphFrame& frame);
    [[nodiscard]] const std::vector<std::unique_ptr<LinesDrawAxis>>& Lines() const {
        return m_lines;
    }

    /// The x scale of the graph, over time the span of it that is shown.
    [[nodiscard]] const ScaleDefinition& ShownXScale() const {
        return m_is_over_time ? m_shown_x_scale : m_graph.XScale;
    }
    /// Shows so many seconds. False when it is as before. REQUIRES: over time.
    bool ShowTimeRange(double time_range);
    /// Curves differ in their dashes from now on, or all are solid.
    void SetLineStyles(bool shown);
    /// Takes over the scale lines of the frame.
    void Follow(const GraphFrame& frame);

    /// Empties all curves.
    void Empty();
    /// Empties those whose streams have a buffer.
    void EmptyAttached(const GraphRecorder& recorder);

    /// Adapts automatic scales to what was taken; those of curves that show a window are fitted to
    /// that. An x scale over an axis may be another one afterwards.
    void CheckScales(const GraphRecorder& recorder, bool show_window);
    /// Adds what was taken, and draws. Without a canvas nothing is drawn.
    void AddAndDraw(const GraphRecorder& recorder, PlotCanvas* canvas);
    /// Draws what the curves hold.
    void Draw(PlotCanvas* canvas);

    /// Shows the window of a zoom. `rows` are those of the recorder's streams.
    void ShowWindow(const GraphZoom& zoom, const GraphRecorder& recorder, const StreamRows& rows);
    /// Shows lines of the past in place of the curves, and adapts automatic scales to them.
    void ShowHistory(const ShownHistory& history);
    /// Shows the curves again.
    void ShowLive();
    /// What is shown of the past is exact.
    [[nodiscard]] bool IsExact() const;
    /// Makes what windows show the curves' own, before the buffers go.
    void KeepWindows();
    /// Seconds that a curve over time holds itself, whatever a window shows.
    [[nodiscard]] double HeldTime() const;

    /// What the frame has to know of the curves.
    [[nodiscard]] std::vector<GraphFrame::Curve> OfFrame() const;

 private:
    void ShowPoints(const ShownHistory& history);

    WavoGraph& m_graph;
    ColorRef m_background;
    double m_cycle_time;
    bool m_is_over_time;
    ScaleDefinition m_shown_x_scale;
    std::vector<std::unique_ptr<LinesDrawAxis>> m_lines;
    PastPoints m_past_points;
};

}  // namespace wavo
