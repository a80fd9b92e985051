#include "graph/draw/frame/guiding_circles.h"

#include <QPolygonF>
#include <algorithm>
#include <cmath>
#include <numbers>
#include <vector>

namespace wavo {

namespace {

/// Beyond this, pixels, double numbers no longer tell one pixel from the next well enough.
constexpr double kFarthest = 1e12;

/// How far a piece of the polyline may stray from the circle, pixels.
constexpr double kStraying = 0.05;

/// More pieces than any circle needs that can be seen.
constexpr double kMostPieces = 20000.0;

/// A scale that goes on evenly beyond its ends.
struct EvenScale {
    double zero = 0.0;      ///< pixel of the value 0
    double per_unit = 0.0;  ///< pixels; negative upward
};

std::optional<EvenScale> MakeEvenScale(const ScaleLines& lines, Coordinate coordinate) {
    if (lines.size() < 2) {
        return std::nullopt;
    }
    const ScaleLine& first = lines.front();
    const ScaleLine& last = lines.back();
    const double from = coordinate == Coordinate::kX ? first.x1 : first.y1;
    const double to = coordinate == Coordinate::kX ? last.x1 : last.y1;
    const double span = last.value - first.value;
    if (!std::isfinite(span) || !(span > 0.0) || from == to) {
        return std::nullopt;
    }
    return EvenScale{from - first.value / span * (to - from), (to - from) / span};
}

bool IsRadius(double radius) {
    return std::isfinite(radius) && radius > 0.0 && radius < kNoRadius;
}

/// A span of angles, radians, in which a circle is seen.
struct Arc {
    double from = 0.0;
    double to = 0.0;
};

/// The angles from 0 to pi at which a cosine lies between two numbers; nothing when there are none.
std::optional<Arc> AnglesBetween(double least, double most) {
    if (least > 1.0 || most < -1.0) {
        return std::nullopt;
    }
    return Arc{std::acos(std::clamp(most, -1.0, 1.0)), std::acos(std::clamp(least, -1.0, 1.0))};
}

/// The parts of a circle that lie in a rectangle.
std::vector<Arc> ArcsInside(const CirclePlace& circle, const QRectF& area) {
    using std::numbers::pi;
    // x follows the cosine, y the sine, which is the cosine a quarter turn earlier.
    const std::optional<Arc> x_angles = AnglesBetween((area.left() - circle.x) / circle.x_radius,
                                                      (area.right() - circle.x) / circle.x_radius);
    const std::optional<Arc> y_angles = AnglesBetween((area.top() - circle.y) / circle.y_radius,
                                                      (area.bottom() - circle.y) / circle.y_radius);
    std::vector<Arc> arcs;
    if (!x_angles || !y_angles) {
        return arcs;
    }
    // Angles from minus to plus half a turn. Both spans are mirrored: at minus the angle for x, at
    // half a turn minus the angle for y.
    for (const Arc& x : {*x_angles, Arc{-x_angles->to, -x_angles->from}}) {
        for (const double turn : {-2.0 * pi, 0.0}) {
            for (const Arc& y : {Arc{y_angles->from + pi / 2.0, y_angles->to + pi / 2.0},
                                 Arc{pi / 2.0 - y_angles->to, pi / 2.0 - y_angles->from}}) {
                const Arc both{std::max(x.from, y.from + turn), std::min(x.to, y.to + turn)};
                if (both.from < both.to) {
                    arcs.push_back(both);
                }
            }
        }
    }
    return arcs;
}

/// A circle as arcs that follow one another are one line, so that dashes run through.
std::vector<Arc> Joined(std::vector<Arc> arcs) {
    constexpr double kSameAngle = 1e-12;
    std::sort(arcs.begin(), arcs.end(), [](const Arc& a, const Arc& b) { return a.from < b.from; });
    std::vector<Arc> joined;
    for (const Arc& arc : arcs) {
        if (!joined.empty() && arc.from - joined.back().to <= kSameAngle) {
            joined.back().to = std::max(joined.back().to, arc.to);
        } else {
            joined.push_back(arc);
        }
    }
    return joined;
}

QPolygonF Polyline(const CirclePlace& circle, const Arc& arc) {
    const double radius = std::max(circle.x_radius, circle.y_radius);
    const double step = std::sqrt(8.0 * kStraying / std::max(radius, 1.0));
    const double pieces = std::clamp(std::ceil((arc.to - arc.from) / step), 1.0, kMostPieces);
    QPolygonF line;
    line.reserve(static_cast<int>(pieces) + 1);
    for (int i = 0; i <= static_cast<int>(pieces); ++i) {
        const double angle = arc.from + (arc.to - arc.from) * i / pieces;
        // Whole numbers are the middles of pixels here, and their corners for the painter.
        line << QPointF(circle.x + circle.x_radius * std::cos(angle) + 0.5,
                        circle.y + circle.y_radius * std::sin(angle) + 0.5);
    }
    return line;
}

void PaintCircle(QPainter& painter, const QRect& plot, const CirclePlace& circle) {
    // A line that runs just outside still shows its edge.
    const double margin = painter.pen().widthF() + 1.0;
    const QRectF area = QRectF(plot).adjusted(-margin, -margin, margin, margin);
    for (const Arc& arc : Joined(ArcsInside(circle, area))) {
        painter.drawPolyline(Polyline(circle, arc));
    }
}

/// Pixels between the first and the last line of a scale are one less than there are pixels.
int RoundSide(double span, double pixels_per_unit) {
    return ToPixel(std::round(span * pixels_per_unit)) + 1;
}

bool IsManualAroundZero(const ScaleDefinition& scale) {
    return scale.ScaleType == ScaleTypeCode::kAxis && scale.ScaleAx == ScaleAxCode::kManual &&
           scale.Minimum <= 0.0 && scale.Maximum >= 0.0 && scale.Minimum < scale.Maximum &&
           std::isfinite(scale.Maximum - scale.Minimum);
}

bool WantsRoundCircle(const WavoGraph& graph) {
    return graph.AutoCircle && graph.XCoorType == CoorType::kAxis && !graph.YScales.empty() &&
           (IsRadius(graph.InnerGuidingCircleDX) || IsRadius(graph.OuterGuidingCircleDX)) &&
           IsManualAroundZero(graph.XScale) && IsManualAroundZero(graph.YScales.front());
}

/// How different two colours look, roughly.
int Distance(const QColor& a, const QColor& b) {
    return 2 * std::abs(a.red() - b.red()) + 4 * std::abs(a.green() - b.green()) +
           3 * std::abs(a.blue() - b.blue());
}

}  // namespace

std::optional<CirclePlace> PlaceCircle(double x_radius, double y_radius, const ScaleLines& vertical,
                                       const ScaleLines& horizontal) {
    const std::optional<EvenScale> x = MakeEvenScale(vertical, Coordinate::kX);
    const std::optional<EvenScale> y = MakeEvenScale(horizontal, Coordinate::kY);
    if (!IsRadius(x_radius) || !IsRadius(y_radius) || !x || !y) {
        return std::nullopt;
    }
    const CirclePlace place{x->zero, y->zero, x_radius * std::abs(x->per_unit),
                            y_radius * std::abs(y->per_unit)};
    const auto is_place = [](double pixel) { return std::abs(pixel) <= kFarthest; };
    const bool usable = is_place(place.x) && is_place(place.y) && is_place(place.x_radius) &&
                        is_place(place.y_radius) && place.x_radius > 0.0 && place.y_radius > 0.0;
    return usable ? std::optional(place) : std::nullopt;
}

GuidingCircles PlaceCircles(const WavoGraph& graph, const ScaleLines& vertical,
                            const ScaleLines& horizontal) {
    if (graph.XCoorType != CoorType::kAxis) {
        return {};
    }
    return {
        PlaceCircle(graph.InnerGuidingCircleDX, graph.InnerGuidingCircleDY, vertical, horizontal),
        PlaceCircle(graph.OuterGuidingCircleDX, graph.OuterGuidingCircleDY, vertical, horizontal)};
}

QRect RoundPlot(const QRect& available, const WavoGraph& graph) {
    if (!WantsRoundCircle(graph)) {
        return available;
    }
    const ScaleDefinition& x = graph.XScale;
    const ScaleDefinition& y = graph.YScales.front();
    const double x_span = x.Maximum - x.Minimum;
    const double y_span = y.Maximum - y.Minimum;
    const double per_unit =
        std::min((available.width() - 1) / x_span, (available.height() - 1) / y_span);
    const int width = RoundSide(x_span, per_unit);
    const int height = RoundSide(y_span, per_unit);
    if (width < kLeastRoundSide || height < kLeastRoundSide) {
        return available;
    }
    return {available.left() + (available.width() - width) / 2,
            available.top() + (available.height() - height) / 2, width, height};
}

QColor CircleColor(const FrameColors& colors, const QColor& curve) {
    return Distance(colors.circle, curve) >= Distance(colors.other_circle, curve)
               ? colors.circle
               : colors.other_circle;
}

void PaintCircles(QPainter& painter, const QRect& plot, const GuidingCircles& circles,
                  const QColor& color, double device_ratio) {
    painter.save();
    painter.setClipRect(plot, Qt::IntersectClip);
    painter.setRenderHint(QPainter::Antialiasing, true);
    painter.setBrush(Qt::NoBrush);
    QPen pen(color, std::max(device_ratio, 1.0));
    pen.setCapStyle(Qt::FlatCap);
    pen.setJoinStyle(Qt::BevelJoin);
    painter.setPen(pen);
    if (circles.inner) {
        PaintCircle(painter, plot, *circles.inner);
    }
    if (circles.outer) {
        pen.setDashPattern({6.0, 4.0});
        painter.setPen(pen);
        PaintCircle(painter, plot, *circles.outer);
    }
    painter.restore();
}

}  // namespace wavo
