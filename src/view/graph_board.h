// The graphs on the screen: one drawer for each graph of the document, below each other.
//
// Invariant: drawers never outlive the buffers they refer to: before these go they are detached,
// and go on showing what they hold.
#pragma once

#include <QRect>
#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "graph/draw/graph_draw.h"
#include "graph/model/graph_list.h"
#include "session/shown_graphs.h"
#include "session/value_streams.h"
#include "settings/view_settings.h"

class QImage;

namespace wavo {

class GraphBoard final : public ShownGraphs, private GraphDrawHost {
 public:
    /// Document and streams are not owned and outlive the board. `recording_ended`: a recording
    /// that a start trigger began is complete.
    GraphBoard(const GraphList& graphs, ValueStreams& streams,
               std::function<void()> recording_ended);

    [[nodiscard]] const std::vector<std::unique_ptr<GraphDraw>>& Drawers() const {
        return m_drawers;
    }
    /// The drawer of a graph; null when there is none.
    [[nodiscard]] GraphDraw* Find(std::uint32_t graph_number) const;
    /// The drawer of a graph that holds values, of several of that number the one with the newest;
    /// null when there is none.
    [[nodiscard]] const GraphDraw* FindDrawerWithValues(std::uint32_t graph_number) const;

    /// From the next making on the graphs show a recording: they get no buffers, and wait for no
    /// trigger.
    void SetOfRecording(bool of_recording) { m_of_recording = of_recording; }

    /// Units of the values of some axes, shown from the next making on.
    void SetUnits(std::map<std::string, std::string> units) { m_units = std::move(units); }

    /// Makes a drawer for every graph, one below the other in `area` (pixels), with the buffers of
    /// its streams, and lists the buffers for `axis_names`. While `cycle_time` (seconds) is 0 the
    /// drawers get no buffers. Returns faults that the user must see.
    std::vector<std::string> CreateAllGraphRects(const QRect& area, double cycle_time,
                                                 const std::vector<std::string>& axis_names,
                                                 const ViewSettings& settings);

    /// Keeps all drawers with what they show, and has none until the next making or BringBack.
    void SetAside();
    /// Goes on with the drawers that were set aside, in `area`; lists their buffers as above. False
    /// when graphs are to look differently now: they have to be made.
    bool BringBack(const QRect& area, const std::vector<std::string>& axis_names,
                   const ViewSettings& settings);

    /// All drawers, those that were set aside too, tell curves apart by their dashes from the next
    /// step on, or do no more.
    void SetLineStyles(bool shown);

    /// Moves every drawer to its place in `area`.
    void Layout(const QRect& area);

    /// One drawing step of all graphs; afterwards the new values of all buffers are emptied. With
    /// `restart` all buffers are reset first and the graphs begin anew.
    void DrawAll(QImage& picture, bool restart, PixelWriting pixels = PixelWriting::kNow);
    /// Another number whenever graphs were made, placed or drawn.
    [[nodiscard]] std::uint64_t Steps() const { return m_steps; }
    /// What the last drawing showed of the past is exact.
    [[nodiscard]] bool IsExact() const;
    /// Paints what steps have left unpainted.
    void PaintAll(QImage& picture);

    /// What lies behind the curves of a graph, asked in each drawing; empty: nothing.
    using Behind = std::function<std::optional<BackRun>(const GraphDraw& graph)>;
    void SetBehind(Behind behind) { m_behind = std::move(behind); }

    // ShownGraphs
    [[nodiscard]] const WavoGraph* Shown(std::uint32_t number) const override;
    [[nodiscard]] bool IsAnyStopped() const override;
    [[nodiscard]] bool IsAnyWithoutValues() const override;
    void RestartAfterTrigger() override;

 private:
    // GraphDrawHost
    void RecordingEnded() override { m_recording_ended(); }
    std::optional<BackRun> BehindOf(const GraphDraw& graph) override {
        return m_behind ? m_behind(graph) : std::nullopt;
    }

    void DetachValues();
    [[nodiscard]] GraphStreams StreamsOf(const WavoGraph& graph, double cycle_time);

    const GraphList& m_graphs;
    ValueStreams& m_streams;
    const std::function<void()> m_recording_ended;
    Behind m_behind;
    std::vector<std::unique_ptr<GraphDraw>> m_drawers;
    std::vector<std::unique_ptr<GraphDraw>> m_aside;
    ViewSettings m_looks_aside;  // that those were made with
    ViewSettings m_looks;        // that the others were
    std::map<std::string, std::string> m_units;
    bool m_of_recording = false;
    std::uint64_t m_steps = 0;
};

/// Splits `area` into `count` rectangles of equal height (at least 1), one below the other.
std::vector<QRect> SplitGraphArea(const QRect& area, std::size_t count);

}  // namespace wavo
