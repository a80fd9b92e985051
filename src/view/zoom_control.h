// Zooming: into a graph, or with the editor's `all graphs` into every graph over time, and back
// step by step. Says which graphs zoom together, and shows what they do.
#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <vector>

#include "graph/draw/graph_draw.h"
#include "graph/draw/graph_zoom.h"
#include "graph/values/time_window.h"
#include "view/graph_board.h"
#include "view/zoom_target.h"

namespace wavo {

class Acquisition;
class CAxSelect;
class GraphScreen;
class PastView;

class ZoomControl final : public ZoomTarget {
 public:
    /// None of the references is owned; all outlive this object. `zoomed`: a zoomed graph leaves
    /// the state that its trigger brought it to.
    ZoomControl(GraphBoard& board, CAxSelect& editor, GraphScreen& screen,
                const Acquisition& acquisition, std::function<void()> zoomed);

    /// Who zooms graphs that show the past; not owned, outlives this object.
    void SetPast(PastView* past) { m_past = past; }
    /// The window of the past has changed: the editor shows how long it is.
    void OnPastChanged();

    /// Zooms the drawn graph of an index to a span of its displayed time axis, seconds; in a swept
    /// picture to the samples that stand there; shown at once. Nothing for a graph that is not over
    /// time.
    void ZoomGraph(std::size_t index, double start, double end);
    /// All graphs leave all their zooms; not shown yet.
    void LeaveAll();
    /// Zooms can no longer be stepped back from.
    void Forget();
    /// The same, and the editor knows it already.
    void Clear() { m_zooms.Forget(); }

    /// Keeps the zooms for graphs that are set aside; there are none until they come back.
    void SetAside();
    /// The graphs are back with their zooms; the editor shows the one of this number.
    void BringBack(std::uint32_t selected);

    // ZoomTarget
    void Select(std::uint32_t graph_number) override;
    [[nodiscard]] std::uint32_t Selected() const override;
    [[nodiscard]] bool IsEnabled() const override;
    [[nodiscard]] bool IsBusy() const override;
    [[nodiscard]] double TimeStep() const override;
    void ZoomTo(std::uint32_t graph_number, const TimeWindow& span) override;
    void ZoomOut(std::uint32_t graph_number) override;
    void UpdatePart(const QRect& part) override;
    void RepaintPart(const QRect& part) override;

 private:
    /// The drawers that a zoom of one of them is for.
    [[nodiscard]] std::vector<GraphDraw*> ZoomedTogether(const GraphDraw& drawer) const;
    void TellEditor(const GraphDraw& drawer);

    GraphBoard& m_board;
    CAxSelect& m_editor;
    GraphScreen& m_screen;
    const Acquisition& m_acquisition;
    const std::function<void()> m_zoomed;
    PastView* m_past = nullptr;
    double m_past_length = 0.0;  // seconds, that the editor was told last
    GraphZooms m_zooms;
    GraphZooms m_aside;
};

}  // namespace wavo
