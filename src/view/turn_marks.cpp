#include "view/turn_marks.h"

#include <QPolygonF>
#include <algorithm>
#include <cmath>

#include "graph/draw/display_settings.h"
#include "view/zoom_band.h"

namespace wavo {

namespace {

constexpr std::size_t kPointsOfTurn = 720;
constexpr double kBeginDot = 3.0;  // logical pixels
constexpr double kLabelAway = 10.0;

/// From values to logical pixels, by the scale lines of a graph.
class PlanePixels {
 public:
    explicit PlanePixels(const LinesDrawAxis& line) : m_x(line.XLines()), m_y(line.YLines()) {}

    [[nodiscard]] bool HasScales() const { return m_x.size() > 1 && m_y.size() > 1; }
    [[nodiscard]] QPointF At(double x, double y) const {
        return {Between(x, m_x, &ScaleLine::x1), Between(y, m_y, &ScaleLine::y1)};
    }

 private:
    static double Between(double value, const ScaleLines& lines, std::int32_t ScaleLine::*pixel) {
        const ScaleLine& first = lines.front();
        const ScaleLine& last = lines.back();
        const double span = last.value - first.value;
        const double share = span != 0.0 ? (value - first.value) / span : 0.0;
        return first.*pixel + share * (last.*pixel - first.*pixel);
    }

    const ScaleLines& m_x;
    const ScaleLines& m_y;
};

void PaintTurn(QPainter& painter, const PlanePixels& pixels, const CircleOutcome& outcome,
               const measure::CircleTurn& turn, const QColor& color) {
    const bool is_ccw = turn.sense == measure::Sense::kCounterClockwise;
    const std::size_t step = std::max<std::size_t>(turn.stretch.Size() / kPointsOfTurn, 1);
    QPolygonF way;
    for (std::size_t i = turn.stretch.first; i < turn.stretch.end; i += step) {
        way << pixels.At(outcome.path.x[i], outcome.path.y[i]);
    }
    QPen pen(color, 1.0);
    pen.setDashPattern(is_ccw ? QList<qreal>{6.0, 4.0} : QList<qreal>{2.0, 4.0});
    painter.setPen(pen);
    painter.setBrush(Qt::NoBrush);
    painter.drawPolyline(way);
    const QPointF centre = pixels.At(turn.circle.x, turn.circle.y);
    const QPointF out = way.front() - centre;
    const double length = std::max(std::hypot(out.x(), out.y()), 1.0);
    painter.setPen(QPen(color, 1.0));
    painter.setBrush(is_ccw ? QBrush(color) : QBrush(Qt::NoBrush));
    painter.drawEllipse(way.front(), kBeginDot, kBeginDot);
    // Inside: beyond the circle the label of another turn may stand.
    const double inward = is_ccw ? 1.0 : 2.5;
    const QString text = is_ccw ? QStringLiteral("ccw") : QStringLiteral("cw");
    const QFontMetricsF metrics(painter.font());
    const QSizeF size(metrics.horizontalAdvance(text) + 2.0, metrics.height());
    const QPointF at =
        way.front() -
        out / length * (kLabelAway * inward + std::max(size.width(), size.height()) / 2.0);
    painter.drawText(QRectF(at - QPointF(size.width(), size.height()) / 2.0, size), Qt::AlignCenter,
                     text);
}

}  // namespace

void PaintTurns(QPainter& painter, const GraphBoard& board, const CircleOutcome& outcome,
                ColorRef background) {
    const GraphDraw* const graph = board.Find(outcome.graph);
    if (graph == nullptr || graph->Lines().empty()) {
        return;
    }
    const PlanePixels pixels(*graph->Lines().front());
    if (!pixels.HasScales()) {
        return;
    }
    painter.save();
    painter.setClipRect(graph->PlotArea());
    painter.setRenderHint(QPainter::Antialiasing);
    for (const measure::CircleTurn& turn : outcome.result.turns) {
        PaintTurn(painter, pixels, outcome, turn, MarkColor(background));
    }
    painter.restore();
}

}  // namespace wavo
