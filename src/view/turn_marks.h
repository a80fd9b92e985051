// Which parts of a curve over an axis the circle test has taken, painted over the picture.
#pragma once

#include <QPainter>

#include "support/color_ref.h"
#include "view/circle_watch.h"
#include "view/graph_board.h"

namespace wavo {

/// Marks the evaluated turns in the graph they were taken from: the begin of each by a dot and its
/// sense, its way by a broken line; approach and run-out stay without. To be told from
/// `background`.
void PaintTurns(QPainter& painter, const GraphBoard& board, const CircleOutcome& outcome,
                ColorRef background);

}  // namespace wavo
