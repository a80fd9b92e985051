// How the cursors look: painted over the picture when the view is exposed, never into it.
#pragma once

#include <QImage>
#include <QPoint>
#include <QRect>
#include <optional>

#include "support/color_ref.h"
#include "view/graph_board.h"
#include "view/graph_cursors.h"

class QPainter;

namespace wavo {

/// Where a cursor is seen in a graph, logical pixels.
struct CursorMark {
    QPoint place;  ///< over time the top of its line, over an axis its point
    QRect line;    ///< over time the column of the plot area, else the cross around the point
    QRect label;
};

/// Nothing where the cursor is not seen.
[[nodiscard]] std::optional<CursorMark> MarkOf(const GraphDraw& graph, const GraphCursors& cursors,
                                               CursorName name);

/// Paints both cursors in all graphs, to be told from `background`.
void PaintCursors(QPainter& painter, const GraphBoard& board, const GraphCursors& cursors,
                  ColorRef background);

/// The cursors alone, as large as a picture and with its device pixels, the rest transparent; null
/// while none is shown.
[[nodiscard]] QImage CursorsOver(const QImage& picture, const GraphBoard& board,
                                 const GraphCursors& cursors, ColorRef background);

}  // namespace wavo
