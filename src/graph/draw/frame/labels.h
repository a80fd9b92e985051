// Where frame and texts of a graph stand: rectangles and widths in, rectangles out.
//
// Above the plot area is one line with the text of the x coordinate (left), the run state (middle)
// and the spacing of the vertical lines (right); below it is a slot for each y axis with its range
// and spacing. The slots depend on the size of the graph alone, so that a changing number does
// not move the picture. When the slots would take much of the height, they become narrower and the
// spacing goes before the plot area shrinks further.
//
// A graph lower than four text lines has one text line alone, above the plot area: there the
// ranges of the y axes stand between the text of the x coordinate and the spacing, which give way
// to them.
//
// Invariants:
// 1. No two rectangles overlap and none leaves the graph rectangle.
// 2. From four text lines on the plot area keeps at least half of the height; text lines go first,
//    from the bottom. Below, names and ranges of the y axes are the last to go.
//
// All lengths are logical pixels. An empty rectangle means: not shown.
#pragma once

#include <QRect>
#include <vector>

namespace wavo {

struct LabelMetrics {
    int line_height = 0;   ///< of a text line
    int slot_width = 0;    ///< wanted for the texts of one y axis
    int minimum_slot = 0;  ///< below this the texts of a y axis are not shown
    int gap = 0;           ///< between two texts of a line
};

struct FrameLayout {
    QRect plot;                  ///< the borders of the plot area; empty when there is no room
    QRect top_line;              ///< text line above the plot area
    std::vector<QRect> y_slots;  ///< one per y axis
    bool low = false;            ///< the texts of the y axes stand in the top line
};

FrameLayout LayoutFrame(const QRect& rectangle, const LabelMetrics& metrics, int y_axes);

struct TopLinePlaces {
    QRect x_text;
    QRect status;
    QRect x_spacing;
};

/// Places the texts of the top line, given their widths (0: no such text). When there is no room
/// for all, the spacing goes first, then the x text; the last text left may be cut to the line.
TopLinePlaces PlaceTopLine(const QRect& line, int gap, int x_text_width, int status_width,
                           int x_spacing_width);

struct LowLinePlaces {
    TopLinePlaces top;
    std::vector<QRect> y;  ///< one per y axis
};

/// Places the texts of a low graph, given the widths of those that are not of y axes (0: no such
/// text). When it gets narrow the spacing goes first, then the x text; then the y axes share what
/// the run state leaves, at last the whole line.
LowLinePlaces PlaceLowLine(const QRect& line, const LabelMetrics& metrics, int x_text_width,
                           int status_width, int x_spacing_width, int y_axes);

struct SlotPlaces {
    QRect text;
    QRect spacing;
};

/// Places range and spacing of a y axis; the spacing goes when both do not fit, and the range may
/// be cut to the slot.
SlotPlaces PlaceSlot(const QRect& slot, int gap, int text_width, int spacing_width);

}  // namespace wavo
