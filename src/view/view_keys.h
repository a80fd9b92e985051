// The keyboard in the view, for all that the mouse does there.
//
//   Up, Down                   select the graph above or below
//   Left, Right                move the mark of the selected graph; with Ctrl by one pixel
//   Shift + Left, Right        span a band from the mark; with Ctrl by one pixel
//   Enter                      zoom to the band
//   Plus                       zoom to the middle half
//   Minus, Backspace           step back to the zoom before
//   Escape                     take the band away
#pragma once

#include <Qt>
#include <cstdint>
#include <optional>

#include "view/graph_board.h"
#include "view/zoom_target.h"

namespace wavo {

class ViewKeys {
 public:
    /// None of the references is owned; all outlive this object.
    ViewKeys(GraphBoard& board, ZoomTarget& zooms) : m_board(board), m_zooms(zooms) {}

    /// False for a key that means nothing here.
    bool KeyPress(int key, Qt::KeyboardModifiers modifiers);

    /// Takes the band away. The graphs may be others than when it was spanned.
    void Cancel();

 private:
    /// The graph that the editor shows, else the first one; null when there is none.
    [[nodiscard]] GraphDraw* Current() const;
    bool Select(int step);
    bool MoveMark(int direction, Qt::KeyboardModifiers modifiers);
    bool ZoomToBand();
    bool ZoomToMiddle();
    bool StepBack();

    GraphBoard& m_board;
    ZoomTarget& m_zooms;
    std::optional<std::uint32_t> m_marked;  // number of the graph whose mark is shown
    int m_anchor = 0;                       // pixel column where the band begins
    int m_mark = 0;                         // and ends
};

}  // namespace wavo
