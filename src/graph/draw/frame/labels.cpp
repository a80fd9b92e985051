#include "graph/draw/frame/labels.h"

#include <algorithm>

namespace wavo {

namespace {

/// Room between frame and rectangle left and right, and above and below where no text stands.
constexpr int kSideMargin = 6;
constexpr int kBareMargin = 3;
/// Below this a graph is only its plot area.
constexpr int kSmallWidth = 60;
/// Parts of a slot that range and name take, and the name alone; percent.
constexpr int kRangePercent = 50;
constexpr int kNamePercent = 25;
/// Lower than so many text lines, a graph has one line for all texts.
constexpr int kLowLines = 4;
/// Room above and below the letters of a text line, which a low line does without.
constexpr int kLeading = 4;
/// Less height than this is no plot area.
constexpr int kLeastPlot = 4;

/// The height of the text line of a graph too low for more; 0 when there is no room for one either.
int LowLineHeight(int height, int line_height) {
    if (line_height <= 0 || height >= kLowLines * line_height) {
        return 0;
    }
    const int room = height - kBareMargin - kLeastPlot;
    return room >= line_height - kLeading ? std::min(line_height, room) : 0;
}

/// Whether the plot area keeps half of the height beside so many text lines.
bool LinesFit(int height, int line_height, int lines) {
    return line_height > 0 && lines * line_height <= height / 2;
}

int CeilDivide(int dividend, int divisor) {
    return (dividend + divisor - 1) / divisor;
}

/// Text lines for the y axes when each slot is so wide.
int RowsOfSlots(int inner_width, int slot_width, int y_axes) {
    return CeilDivide(y_axes, std::clamp(inner_width / std::max(slot_width, 1), 1, y_axes));
}

/// Text lines below the plot area: with full slots while they take a third of the height at most,
/// else with slots for the ranges alone, and where not even these fit, for the names alone.
int BottomRows(int inner_width, int height, const LabelMetrics& metrics, int y_axes) {
    int rows = RowsOfSlots(inner_width, metrics.slot_width, y_axes);
    if (rows == 1 || rows * metrics.line_height <= height / 3) {
        return LinesFit(height, metrics.line_height, rows + 1) ? rows : 0;
    }
    rows = RowsOfSlots(inner_width, metrics.slot_width * kRangePercent / 100, y_axes);
    if (!LinesFit(height, metrics.line_height, rows + 1)) {
        rows = RowsOfSlots(inner_width, metrics.slot_width * kNamePercent / 100, y_axes);
    }
    while (rows > 0 && !LinesFit(height, metrics.line_height, rows + 1)) {
        --rows;
    }
    return rows;
}

}  // namespace

FrameLayout LayoutFrame(const QRect& rectangle, const LabelMetrics& metrics, int y_axes) {
    FrameLayout layout;
    layout.y_slots.resize(static_cast<std::size_t>(std::max(y_axes, 0)));
    if (rectangle.width() < 2 || rectangle.height() < 2) {
        return layout;
    }
    const bool wide = rectangle.width() >= kSmallWidth;
    const int side = wide ? kSideMargin : 0;
    const int bare = rectangle.height() >= 4 * kBareMargin ? kBareMargin : 0;
    const int inner_left = rectangle.left() + side;
    const int inner_width = rectangle.width() - 2 * side;
    const int height = rectangle.height();

    const int low_line = wide && y_axes > 0 ? LowLineHeight(height, metrics.line_height) : 0;
    if (low_line > 0) {
        layout.low = true;
        layout.top_line = QRect(inner_left, rectangle.top(), inner_width, low_line);
        layout.plot = QRect(inner_left, rectangle.top() + low_line, inner_width,
                            height - low_line - kBareMargin);
        return layout;
    }
    const bool top = wide && LinesFit(height, metrics.line_height, 1);
    int rows = 0;
    int columns = 1;
    if (wide && y_axes > 0) {
        rows = BottomRows(inner_width, height, metrics, y_axes);
        columns = rows > 0 ? CeilDivide(y_axes, rows) : 1;
    }
    const int pitch = inner_width / columns;
    const int slot_width = columns > 1 ? pitch - metrics.gap : pitch;
    if (slot_width < metrics.minimum_slot) {
        rows = 0;
    }
    const int top_height = top ? metrics.line_height : bare;
    const int bottom_height = rows > 0 ? rows * metrics.line_height : bare;
    layout.plot = QRect(inner_left, rectangle.top() + top_height, inner_width,
                        height - top_height - bottom_height);
    if (top) {
        layout.top_line = QRect(inner_left, rectangle.top(), inner_width, metrics.line_height);
    }
    for (int axis = 0; rows > 0 && axis < y_axes; ++axis) {
        layout.y_slots[static_cast<std::size_t>(axis)] =
            QRect(inner_left + (axis % columns) * pitch,
                  layout.plot.bottom() + 1 + (axis / columns) * metrics.line_height, slot_width,
                  metrics.line_height);
    }
    return layout;
}

TopLinePlaces PlaceTopLine(const QRect& line, int gap, int x_text_width, int status_width,
                           int x_spacing_width) {
    TopLinePlaces places;
    if (line.isEmpty()) {
        return places;
    }
    const auto place = [&line](int offset, int width) {
        return width > 0 ? QRect(line.left() + offset, line.top(), width, line.height()) : QRect();
    };
    const int width = line.width();
    if (status_width <= 0) {
        if (x_text_width + gap + x_spacing_width <= width) {
            places.x_spacing = place(width - x_spacing_width, x_spacing_width);
        }
        places.x_text = place(0, std::min(x_text_width, width));
        return places;
    }
    const int status_offset = (width - std::min(status_width, width)) / 2;
    const int side_room = status_offset - gap;
    places.status = place(status_offset, std::min(status_width, width));
    if (x_text_width <= side_room) {
        places.x_text = place(0, x_text_width);
        if (x_spacing_width <= side_room) {
            places.x_spacing = place(width - x_spacing_width, x_spacing_width);
        }
    }
    return places;
}

LowLinePlaces PlaceLowLine(const QRect& line, const LabelMetrics& metrics, int x_text_width,
                           int status_width, int x_spacing_width, int y_axes) {
    LowLinePlaces places;
    places.y.resize(static_cast<std::size_t>(std::max(y_axes, 0)));
    if (line.isEmpty() || y_axes <= 0) {
        return places;
    }
    const auto place = [&line](int offset, int width) {
        return width > 0 ? QRect(line.left() + offset, line.top(), width, line.height()) : QRect();
    };
    const auto with_gap = [&metrics](int width) { return width > 0 ? width + metrics.gap : 0; };
    const int wanted = y_axes * (metrics.slot_width * kRangePercent / 100 + metrics.gap);
    const int least = y_axes * (metrics.minimum_slot + metrics.gap);
    int begin = with_gap(x_text_width);
    int end = line.width();
    if (begin + wanted + with_gap(status_width) + with_gap(x_spacing_width) <= end) {
        places.top.x_text = place(0, x_text_width);
        places.top.x_spacing = place(end - x_spacing_width, x_spacing_width);
        end -= with_gap(x_spacing_width);
    } else if (begin + wanted + with_gap(status_width) <= end) {
        places.top.x_text = place(0, x_text_width);
    } else {
        begin = 0;
    }
    const int status_room = std::min(status_width, end - begin - least - metrics.gap);
    if (status_room >= std::min(status_width, metrics.minimum_slot) && status_width > 0) {
        // In the middle of the line where that leaves the y axes their room.
        const int rightmost = end - status_room;
        const int offset = std::clamp((line.width() - status_room) / 2,
                                      std::min(begin + wanted, rightmost), rightmost);
        places.top.status = place(offset, status_room);
        end = offset - metrics.gap;
    }
    const int pitch = std::min((end - begin + metrics.gap) / y_axes,
                               metrics.slot_width * kRangePercent / 100 + metrics.gap);
    for (int axis = 0; axis < y_axes && pitch > metrics.gap; ++axis) {
        places.y[static_cast<std::size_t>(axis)] = place(begin + axis * pitch, pitch - metrics.gap);
    }
    return places;
}

SlotPlaces PlaceSlot(const QRect& slot, int gap, int text_width, int spacing_width) {
    SlotPlaces places;
    if (slot.isEmpty()) {
        return places;
    }
    const int shown_width = std::min(text_width, slot.width());
    places.text = QRect(slot.left(), slot.top(), shown_width, slot.height());
    if (text_width + gap + spacing_width <= slot.width()) {
        places.spacing =
            QRect(slot.left() + text_width + gap, slot.top(), spacing_width, slot.height());
    }
    return places;
}

}  // namespace wavo
