#include "graph/draw/frame/frame_painter.h"

#include <QFontMetrics>
#include <algorithm>

#include "graph/draw/frame/shortened_text.h"

namespace wavo {

namespace {

/// Scale lines closer than this are a grey area, not a scale.
constexpr int kLeastLineDistance = 4;

/// Letters under which the dashes of a curve are shown.
constexpr int kSampleLetters = 16;

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

QString WholeText(const QString& text) {
    return text;
}

QString WholeText(const AxisText& text) {
    return QString::fromStdString(Joined(text));
}

/// A text, QString or AxisText, with its width: to measure one costs as much as to paint it.
template <typename Text>
class MeasuredText {
 public:
    MeasuredText(const QFontMetrics& metrics, const Text& text)
        : m_text(text), m_whole(WholeText(text)), m_width(TextWidth(metrics, m_whole)) {}

    [[nodiscard]] int Width() const { return m_width; }

    void Paint(QPainter& painter, const QRect& place, const QColor& color,
               Qt::Alignment alignment) const {
        if (place.isEmpty()) {
            return;
        }
        painter.setPen(color);
        painter.drawText(place, static_cast<int>(alignment) | Qt::TextSingleLine,
                         m_width <= place.width()
                             ? m_whole
                             : ShortenedText(m_text, painter.fontMetrics(), place.width()));
    }

 private:
    const Text& m_text;
    QString m_whole;
    int m_width;
};

/// Paints what stands above the plot area, but for y axes; gives their places in a low graph.
std::vector<QRect> PaintXTexts(QPainter& painter, const FrameLayout& layout,
                               const LabelMetrics& metrics, const FrameTexts& texts,
                               const FrameColors& colors) {
    const QFontMetrics font_metrics = painter.fontMetrics();
    // The blanks at its end take no part in centring.
    const QString status_text = QString::fromLatin1(StatusText(texts.state)).trimmed();
    const MeasuredText x_text(font_metrics, texts.x_text);
    const MeasuredText status(font_metrics, status_text);
    const MeasuredText x_spacing(font_metrics, texts.x_spacing);
    const LowLinePlaces low =
        PlaceLowLine(layout.low ? layout.top_line : QRect(), metrics, x_text.Width(),
                     status.Width(), x_spacing.Width(), static_cast<int>(texts.y.size()));
    const TopLinePlaces top = layout.low
                                  ? low.top
                                  : PlaceTopLine(layout.top_line, metrics.gap, x_text.Width(),
                                                 status.Width(), x_spacing.Width());
    x_text.Paint(painter, top.x_text, colors.text, Qt::AlignLeft | Qt::AlignVCenter);
    status.Paint(painter, top.status, StatusColor(texts.state, colors), Qt::AlignCenter);
    x_spacing.Paint(painter, top.x_spacing, colors.text, Qt::AlignRight | Qt::AlignVCenter);
    return low.y;
}

/// Paints the texts of a y axis into its slot.
void PaintYTexts(QPainter& painter, const QRect& slot, const LabelMetrics& metrics,
                 const YLabel& label, const QColor& color) {
    const QFontMetrics font_metrics = painter.fontMetrics();
    const auto alignment = Qt::AlignLeft | Qt::AlignVCenter;
    const MeasuredText text(font_metrics, label.text);
    const MeasuredText spacing(font_metrics, label.spacing);
    const SlotPlaces places = PlaceSlot(slot, metrics.gap, text.Width(), spacing.Width());
    if (places.spacing.isEmpty()) {
        MeasuredText(font_metrics, label.alone).Paint(painter, slot, color, alignment);
        return;
    }
    text.Paint(painter, places.text, color, alignment);
    spacing.Paint(painter, places.spacing, color, alignment);
}

/// Paints a piece of a curve's line at the bottom of a slot.
void PaintDashes(QPainter& painter, const QRect& slot, int width, const DashPattern& dashes,
                 const QColor& color) {
    const int end = std::min(width, slot.width());
    for (int x = 0; x < end; ++x) {
        if (dashes.Paints(x)) {
            painter.fillRect(QRect(slot.left() + x, slot.bottom(), 1, 1), color);
        }
    }
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
                const FrameTexts& texts, const FrameColors& colors, const TextLines& lines) {
    std::vector<QRect> low_slots;
    if (lines.above) {
        low_slots = PaintXTexts(painter, layout, metrics, texts, colors);
    }
    if (layout.low ? !lines.above : !lines.below) {
        return;
    }
    const std::vector<QRect>& places = layout.low ? low_slots : layout.y_slots;
    // As long as the pattern that needs most to be known.
    const int sample_width = kSampleLetters * painter.fontMetrics().averageCharWidth();
    for (std::size_t i = 0; i < texts.y.size() && i < layout.y_slots.size(); ++i) {
        const YLabel& label = texts.y[i];
        const QColor color = ShownColor(label.color, colors.background, kTextContrast);
        if (layout.low) {
            const QFontMetrics font_metrics = painter.fontMetrics();
            const AxisText known = WithoutWhatIsKnown(label.alone, font_metrics, places[i].width());
            MeasuredText(font_metrics, known)
                .Paint(painter, places[i], color, Qt::AlignLeft | Qt::AlignVCenter);
        } else {
            PaintYTexts(painter, places[i], metrics, label, color);
        }
        if (label.dashes.has_value()) {
            PaintDashes(painter, places[i], sample_width, *label.dashes, color);
        }
    }
}

}  // namespace wavo
