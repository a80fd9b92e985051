// The mouse in the view: the left button selects a graph, the right one selects and, dragged to the
// right over a graph over time, zooms.
//
// Invariant: only the graph whose zoom is being dragged has a band.
#pragma once

#include <QPoint>
#include <cstddef>
#include <optional>

#include "view/graph_board.h"
#include "view/zoom_target.h"

namespace wavo {

class ViewMouse {
 public:
    /// None of the references is owned; all outlive this object.
    ViewMouse(GraphBoard& board, ZoomTarget& zooms) : m_board(board), m_zooms(zooms) {}

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
    ZoomTarget& m_zooms;
    std::optional<std::size_t> m_selected;  // index of the graph that is being zoomed
    QPoint m_anchor;
};

}  // namespace wavo
