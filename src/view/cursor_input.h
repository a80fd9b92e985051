// Mouse and keys for the cursors, while they are shown.
//
//   drag of a line or its label  moves it and makes it active
//   Ctrl + click                 puts A there; with Shift too B
//   A, B                         make a cursor active
//   Tab                          makes the other one active
//   Left, Right                  move the active one by a pixel; with Ctrl by a line of the source,
//                                with Shift by a tenth of what is shown
//   P, V, 0                      jump to the next peak, valley, zero crossing of the selected
//                                curve; with Shift to the one before
//   T                            jumps to the trigger
//   Escape                       makes no cursor active: keys are the view's again
#pragma once

#include <QPoint>
#include <Qt>
#include <cstdint>
#include <optional>

#include "view/graph_board.h"
#include "view/graph_cursors.h"
#include "view/measurements.h"
#include "view/zoom_target.h"

namespace wavo {

class CursorInput {
 public:
    /// None of the references is owned; all outlive this object.
    CursorInput(GraphBoard& board, GraphCursors& cursors, Measurements& measurements,
                ZoomTarget& zooms)
        : m_board(board), m_cursors(cursors), m_measurements(measurements), m_zooms(zooms) {}

    // Points are logical pixels of the view. False for what means nothing here.
    bool LeftButtonDown(const QPoint& point, Qt::KeyboardModifiers modifiers);
    bool MouseMove(const QPoint& point);
    bool LeftButtonUp();
    bool KeyPress(int key, Qt::KeyboardModifiers modifiers);

    /// Whether a press there would take a cursor.
    [[nodiscard]] bool IsOverCursor(const QPoint& point) const { return Meets(point).has_value(); }

 private:
    /// A cursor in one of the graphs.
    struct Grip {
        CursorName name;
        std::uint32_t graph;
    };

    [[nodiscard]] std::optional<Grip> Meets(const QPoint& point) const;
    bool MoveActive(int direction, Qt::KeyboardModifiers modifiers);
    bool JumpActive(int key, Qt::KeyboardModifiers modifiers);
    bool Jump(Measurements::Target target, Qt::KeyboardModifiers modifiers);
    bool JumpToTrigger();

    GraphBoard& m_board;
    GraphCursors& m_cursors;
    Measurements& m_measurements;
    ZoomTarget& m_zooms;
    std::optional<Grip> m_dragged;
};

}  // namespace wavo
