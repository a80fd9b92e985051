// The mouse in the view: the left button selects a graph, the right one selects and, dragged to the
// right over a graph over time, zooms.
//
// Invariant: only the graph whose zoom is being dragged has a band.
#pragma once

#include <QPoint>
#include <QRect>
#include <cstddef>
#include <cstdint>
#include <optional>

#include "view/graph_board.h"
#include "view/zoom_band.h"

namespace wavo {

/// What mouse and keys need of the view to select and to zoom.
class ZoomHost {
 public:
    virtual ~ZoomHost() = default;
    /// The graph editor shows the graph of that number.
    virtual void SelectInEditor(std::uint32_t graph_number) = 0;
    /// Number of the graph that the editor shows; of none in the list when it shows none.
    [[nodiscard]] virtual std::uint32_t SelectedInEditor() const = 0;
    /// The user allows zooming.
    [[nodiscard]] virtual bool IsZoomEnabled() const = 0;
    /// Graphs are being drawn.
    [[nodiscard]] virtual bool IsBusy() const = 0;
    /// Seconds per line of the master.
    [[nodiscard]] virtual double TimeStep() const = 0;
    /// Zooms the graph of that number, and all others over time if the user wants so; shown at
    /// once.
    virtual void ZoomTo(std::uint32_t graph_number, const ZoomSpan& span) = 0;
    /// Takes the last zoom of the graph back, and that of all others if the user wants so; shown
    /// at once.
    virtual void ZoomOut(std::uint32_t graph_number) = 0;
    /// A part of the view has to be exposed anew: soon, or now.
    virtual void UpdatePart(const QRect& part) = 0;
    virtual void RepaintPart(const QRect& part) = 0;
};

class ViewMouse {
 public:
    /// None of the references is owned; all outlive this object.
    ViewMouse(GraphBoard& board, ZoomHost& host) : m_board(board), m_host(host) {}

    // Points are logical pixels of the view.
    void LeftButtonDown(const QPoint& point);
    /// False when the press is left to others: graphs are being drawn.
    bool RightButtonDown(const QPoint& point);
    void MouseMove(const QPoint& point);
    void RightButtonUp(const QPoint& point);

    /// Ends a drag without a zoom. The graphs may be others than at its begin.
    void Cancel();

    [[nodiscard]] bool IsDragging() const { return m_selected.has_value(); }

 private:
    /// The graph that is being zoomed; null when there is none.
    [[nodiscard]] GraphDraw* Selected() const;

    GraphBoard& m_board;
    ZoomHost& m_host;
    std::optional<std::size_t> m_selected;  // index of the graph that is being zoomed
    QPoint m_anchor;
};

}  // namespace wavo
