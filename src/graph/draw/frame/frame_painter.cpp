#include "graph/draw/frame/frame_painter.h"

#include <QFontMetrics>

#include "graph/draw/frame/shortened_text.h"

namespace wavo {

namespace {

/// Scale lines closer than this are a grey area, not a scale.
constexpr int kLeastLineDistance = 4;

/// A line of one device pixel whatever the painter's scale.
QPen HairLine(const QColor& color) {
    QPen pen(color);
    pen.setWidth(1);
    pen.setCosmetic(true);
    pen.setCapStyle(Qt::FlatCap);
    return pen;
}

bool FarEnough(const ScaleLines& lines, Coordinate coordinate) {
    if (lines.size() < 2) {
        return false;
    }
    const ScaleLine& first = lines.front();
    const ScaleLine& last = lines.back();
    const double span = coordinate == Coordinate::kX ? static_cast<double>(last.x1) - first.x1
                                                     : static_cast<double>(first.y1) - last.y1;
    return span >= kLeastLineDistance * static_cast<double>(lines.size() - 1);
}

void PaintInnerLines(QPainter& painter, const ScaleLines& lines, Coordinate coordinate) {
    if (!FarEnough(lines, coordinate)) {
        return;
    }
    for (std::size_t i = 1; i + 1 < lines.size(); ++i) {
        painter.drawLine(lines[i].x1, lines[i].y1, lines[i].x2, lines[i].y2);
    }
}

QColor StatusColor(RunState state, const FrameColors& colors) {
    switch (state) {
        case RunState::kWaitingForStart:
            return colors.waiting;
        case RunState::kRunningAfterStart:
        case RunState::kWaitingForStop:
            return colors.running;
        case RunState::kStoppedAfterStart:
        case RunState::kStoppedAfterStop:
            return colors.stopped;
        case RunState::kRunning:
            return colors.text;
    }
    return colors.text;
}

int JoinedWidth(const QFontMetrics& metrics, const AxisText& text) {
    return TextWidth(metrics, QString::fromStdString(Joined(text)));
}

/// `text`: QString or AxisText.
template <typename Text>
void PaintText(QPainter& painter, const QRect& place, const Text& text, const QColor& color,
               Qt::Alignment alignment) {
    if (place.isEmpty()) {
        return;
    }
    painter.setPen(color);
    painter.drawText(place, static_cast<int>(alignment) | Qt::TextSingleLine,
                     ShortenedText(text, painter.fontMetrics(), place.width()));
}

}  // namespace

void PaintScaleLines(QPainter& painter, const ScaleLines& vertical, const ScaleLines& horizontal,
                     const FrameColors& colors) {
    painter.setPen(HairLine(colors.scale_line));
    PaintInnerLines(painter, vertical, Coordinate::kX);
    PaintInnerLines(painter, horizontal, Coordinate::kY);
}

std::optional<std::int32_t> ZeroPixel(Coordinate coordinate, const ScaleLines& lines) {
    if (lines.empty() || !(lines.front().value < 0.0 && lines.back().value > 0.0)) {
        return std::nullopt;
    }
    return AxisMapping(coordinate, lines).Map(0.0, true);
}

void PaintZeroLine(QPainter& painter, Coordinate coordinate, std::int32_t pixel, const QRect& plot,
                   const QColor& color) {
    painter.setPen(HairLine(color));
    if (coordinate == Coordinate::kX) {
        painter.drawLine(pixel, plot.top(), pixel, plot.bottom());
    } else {
        painter.drawLine(plot.left(), pixel, plot.right(), pixel);
    }
}

void PaintBorder(QPainter& painter, const QRect& plot, const FrameColors& colors) {
    painter.setPen(HairLine(colors.frame));
    painter.setBrush(Qt::NoBrush);
    painter.drawRect(plot.adjusted(0, 0, -1, -1));
}

void PaintTexts(QPainter& painter, const FrameLayout& layout, const LabelMetrics& metrics,
                const FrameTexts& texts, const FrameColors& colors) {
    const QFontMetrics font_metrics = painter.fontMetrics();
    // The blanks at its end take no part in centring.
    const QString status = QString::fromLatin1(StatusText(texts.state)).trimmed();
    const int x_text_width = JoinedWidth(font_metrics, texts.x_text);
    const int status_width = TextWidth(font_metrics, status);
    const int x_spacing_width = TextWidth(font_metrics, texts.x_spacing);
    const LowLinePlaces low =
        PlaceLowLine(layout.low ? layout.top_line : QRect(), metrics, x_text_width, status_width,
                     x_spacing_width, static_cast<int>(texts.y.size()));
    const TopLinePlaces top = layout.low ? low.top
                                         : PlaceTopLine(layout.top_line, metrics.gap, x_text_width,
                                                        status_width, x_spacing_width);
    PaintText(painter, top.x_text, texts.x_text, colors.text, Qt::AlignLeft | Qt::AlignVCenter);
    PaintText(painter, top.status, status, StatusColor(texts.state, colors), Qt::AlignCenter);
    PaintText(painter, top.x_spacing, texts.x_spacing, colors.text,
              Qt::AlignRight | Qt::AlignVCenter);
    for (std::size_t i = 0; i < texts.y.size() && i < layout.y_slots.size(); ++i) {
        const YLabel& label = texts.y[i];
        const QRect& slot = layout.low ? low.y[i] : layout.y_slots[i];
        const SlotPlaces places =
            PlaceSlot(slot, metrics.gap, JoinedWidth(font_metrics, label.text),
                      TextWidth(font_metrics, label.spacing));
        const QColor color = ShownColor(label.color, colors.background, kTextContrast);
        const auto alignment = Qt::AlignLeft | Qt::AlignVCenter;
        if (layout.low) {
            PaintText(painter, slot, WithoutWhatIsKnown(label.alone, font_metrics, slot.width()),
                      color, alignment);
            continue;
        }
        if (places.spacing.isEmpty()) {
            PaintText(painter, slot, label.alone, color, alignment);
            continue;
        }
        PaintText(painter, places.text, label.text, color, alignment);
        PaintText(painter, places.spacing, label.spacing, color, alignment);
    }
}

}  // namespace wavo
