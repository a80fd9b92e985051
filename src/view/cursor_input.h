// Mouse and keys for the cursors, while they are shown.
//
//   drag of a line or its label  moves it and makes it active
//   Ctrl + click                 puts A there; with Shift too B
//   A, B                         make a cursor active
//   Tab                          makes the other one active
//   Left, Right                  move the active one by a pixel; with Ctrl by a line of the source,
//                                with Shift by a tenth of what is shown
//   P, V, Z                      jump to the next peak, valley, zero crossing of the selected
//                                curve; with Shift to the one before
//   0                            as Z; Shift makes other keys of it on most keyboards
//   T                            jumps to the trigger; in an open recording to the next place where
//                                one fires, with Shift to the one before
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

class QObject;

namespace wavo {

class PastControl;

class CursorInput {
 public:
    /// What it needs of others. None of the references is owned; all outlive this object.
    struct Parts {
        GraphBoard& board;
        GraphCursors& cursors;
        Measurements& measurements;
        ZoomTarget& zooms;
        PastControl& past;
        QObject& view;  ///< receives what is done when events were handled
    };
    explicit CursorInput(const Parts& parts) : m_parts(parts) {}

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
    bool Jump(Landmark landmark, measure::Search search);
    /// Searches on from a line, until the next key or press.
    void GoOn(Landmark landmark, measure::Search search, std::int64_t line, std::uint64_t turn);
    bool JumpToTrigger(bool forward);

    const Parts m_parts;
    std::optional<Grip> m_dragged;
    std::uint64_t m_turn = 0;  ///< of keys and presses
};

}  // namespace wavo
