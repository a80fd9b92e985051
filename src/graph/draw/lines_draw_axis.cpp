#include "graph/draw/lines_draw_axis.h"

#include <QLine>
#include <QPoint>
#include <QVarLengthArray>
#include <algorithm>
#include <cmath>
#include <limits>
#include <utility>

#include "graph/draw/display_settings.h"
#include "support/diagnostics.h"

namespace wavo {

namespace {

/// Sweep times beyond the range by less than this still belong to the sweep.
constexpr double kTimeTolerance = 1e-6;

/// More points than any machine records; keeps a wild range from becoming a number of points.
constexpr std::uint64_t kMostPoints = std::uint64_t{1} << 31U;

bool IsGap(const LinePoint& point) {
    return std::isnan(point.y_value) || std::isnan(point.x_value);
}

ScaleRange RangeOf(const ScaleDefinition& scale) {
    return GraphDefineGetMinMaxValue(scale);
}

}  // namespace

std::uint64_t MaxCurvePoints(double range, double cycle_time) {
    return ToCount(std::round(range / cycle_time), kMostPoints) + 1;
}

LinesDrawAxis::LinesDrawAxis(const PlotGeometry& geometry, ScaleDefinition& x_scale,
                             ScaleDefinition& y_scale, Settings settings)
    : m_settings(std::move(settings)),
      m_x_scale(x_scale),
      m_y_scale(y_scale),
      m_max_points(MaxCurvePoints(m_settings.range, m_settings.cycle_time)),
      m_plot(geometry.plot),
      m_x_mapping(Coordinate::kX, geometry.vertical),
      m_y_mapping(Coordinate::kY, geometry.horizontal) {
    m_x_mapping.Fill(RangeOf(m_x_scale));
    m_y_mapping.Fill(RangeOf(m_y_scale));
    Empty();
}

void LinesDrawAxis::Empty() {
    m_points.clear();
    m_write_index = 0;
    // One step before the left border: the first value of a sweep goes to 0.
    m_sweep_position = -m_settings.cycle_time;
    m_x_auto.Reset();
    m_y_auto.Reset();
}

void LinesDrawAxis::SetGeometry(const PlotGeometry& geometry, double device_ratio) {
    m_plot = geometry.plot;
    m_device_ratio = device_ratio;
    m_x_mapping.SetLines(geometry.vertical);
    m_x_mapping.Fill(RangeOf(m_x_scale));
    m_x_mapping.ResetSegment();
    m_y_mapping.SetLines(geometry.horizontal);
    m_y_mapping.Fill(RangeOf(m_y_scale));
    m_y_mapping.ResetSegment();
    MapAll(true, true);
}

void LinesDrawAxis::XScaleChanged() {
    m_x_mapping.Fill(RangeOf(m_x_scale));
    m_x_mapping.ResetSegment();
    MapAll(true, false);
}

void LinesDrawAxis::MapPoint(LinePoint& point, bool force_x, bool force_y) {
    point.x = m_x_mapping.Map(point.x_value, force_x);
    point.y = m_y_mapping.Map(point.y_value, force_y);
}

void LinesDrawAxis::MapAll(bool force_x, bool force_y) {
    for (LinePoint& point : m_points) {
        MapPoint(point, force_x, force_y);
    }
}

LinePoint LinesDrawAxis::MakePoint(double x_value, double y_value) {
    LinePoint point{0, 0, y_value, x_value};
    MapPoint(point, false, false);
    return point;
}

double LinesDrawAxis::GetXTimeRange() const {
    if (m_x_scale.ScaleType != ScaleTypeCode::kTime) {
        MERRLOG("LinesDrawAxis::GetXTimeRange(): x scale is not a time range");
        return 0.0;
    }
    return m_x_scale.TimeRange;
}

void LinesDrawAxis::DrawLinesXIsTime(const std::vector<double>& values, double start_time,
                                     QPainter* painter) {
    if (values.empty()) {
        return;
    }
    if (start_time == 0.0) {
        m_sweep_position = 0.0;
    } else {
        m_sweep_position += m_settings.cycle_time;
        if (m_sweep_position > m_x_scale.TimeRange + kTimeTolerance) {
            m_sweep_position = 0.0;
        }
    }
    if (m_settings.mode == GraphMode::kContinuity) {
        AddContinuity(values);
    } else {
        AddClassic(values);
    }
    DrawAllLinesXIsTime(kOwnColor, painter);
}

void LinesDrawAxis::AddContinuity(const std::vector<double>& values) {
    if (values.size() > m_max_points) {
        MERRLOG(
            "LinesDrawAxis::DrawLinesXIsTime(): number of new values > number of max. values in "
            "line-fifo");
        return;
    }
    const std::uint64_t room =
        m_max_points - std::min<std::uint64_t>(m_points.size(), m_max_points);
    const std::size_t fitting = std::min<std::uint64_t>(room, values.size());
    AppendContinuity(values.data(), fitting);
    if (fitting < values.size()) {
        ScrollContinuity(values.data() + fitting, values.size() - fitting);
    }
    m_y_auto.CountDrawn(values.size());
}

void LinesDrawAxis::AppendContinuity(const double* values, std::size_t count) {
    double time = m_points.empty() ? 0.0 : m_points.back().x_value + m_settings.cycle_time;
    for (std::size_t i = 0; i < count; ++i) {
        m_points.push_back(MakePoint(time, values[i]));
        time += m_settings.cycle_time;
    }
}

void LinesDrawAxis::ScrollContinuity(const double* values, std::size_t count) {
    m_points.erase(m_points.begin(), m_points.begin() + static_cast<std::ptrdiff_t>(count));
    double place = 0.0;
    for (LinePoint& point : m_points) {
        point.x_value = place * m_settings.cycle_time;
        MapPoint(point, false, false);
        place += 1.0;
    }
    for (std::size_t i = 0; i < count; ++i) {
        m_points.push_back(MakePoint(place * m_settings.cycle_time, values[i]));
        place += 1.0;
    }
}

void LinesDrawAxis::AddClassic(const std::vector<double>& values) {
    const double step = m_settings.cycle_time;
    const double end = m_x_scale.TimeRange + kTimeTolerance;
    double sweep_start = m_sweep_position;
    double j = 0.0;
    for (const double value : values) {
        const double time = sweep_start + j * step;
        const LinePoint point = MakePoint(time, value);
        if (m_points.size() < m_max_points) {
            m_points.push_back(point);
        } else {
            if (m_write_index >= m_max_points) {
                m_write_index = 0;
            }
            m_points[m_write_index] = point;
            ++m_write_index;
        }
        m_sweep_position = time;
        j += 1.0;
        if (sweep_start + j * step > end) {
            // The sweep has arrived at the right border, which is the left one of the next sweep:
            // the next value stands one step from it.
            sweep_start = 0.0;
            m_sweep_position = 0.0;
            j = 1.0;
        }
    }
    m_y_auto.CountDrawn(values.size());
}

void LinesDrawAxis::ShowWindow(const std::vector<double>& values) {
    m_points.clear();
    m_write_index = 0;
    double place = 0.0;
    for (const double value : values) {
        m_points.push_back(MakePoint(place * m_settings.cycle_time, value));
        place += 1.0;
    }
    m_y_auto.CountDrawn(values.size());
}

void LinesDrawAxis::DrawLinesXIsAx(const std::vector<double>& x_values,
                                   const std::vector<double>& y_values, QPainter* painter) {
    if (x_values.size() != y_values.size()) {
        MERRLOG(
            "LinesDrawAxis::DrawLinesXIsAx(): number of values x-coor. and number of values "
            "y-coor. are not equal");
    } else {
        for (std::size_t i = 0; i < x_values.size(); ++i) {
            if (m_points.size() >= m_max_points) {
                m_points.pop_front();
            }
            m_points.push_back(MakePoint(x_values[i], y_values[i]));
        }
        m_x_auto.CountDrawn(x_values.size());
        m_y_auto.CountDrawn(y_values.size());
    }
    DrawAllLinesXIsAx(kOwnColor, painter);
}

Extremes LinesDrawAxis::HeldExtremes(double LinePoint::*value) const {
    Extremes extremes;
    for (const LinePoint& point : m_points) {
        extremes.Add(point.*value);
    }
    return extremes;
}

void LinesDrawAxis::ApplyScaleChange(AxisMapping& mapping, const ScaleDefinition& scale) {
    mapping.Fill(RangeOf(scale));
    m_x_mapping.ResetSegment();
    m_y_mapping.ResetSegment();
    MapAll(false, true);
}

void LinesDrawAxis::CheckXScaleValue(const std::vector<double>& x_values) {
    MTRACE(4, "CheckXScaleValue(): --- starting");
    const auto held = [this] { return HeldExtremes(&LinePoint::x_value); };
    if (m_x_auto.Check(m_x_scale, x_values, m_max_points, held)) {
        ApplyScaleChange(m_x_mapping, m_x_scale);
    }
    MTRACE(4, "CheckXScaleValue(): --- leaving");
}

void LinesDrawAxis::CheckYScaleValue(const std::vector<double>& y_values) {
    MTRACE(4, "CheckYScaleValue(): --- starting");
    const auto held = [this] { return HeldExtremes(&LinePoint::y_value); };
    if (m_y_auto.Check(m_y_scale, y_values, m_max_points, held)) {
        ApplyScaleChange(m_y_mapping, m_y_scale);
    }
    MTRACE(4, "CheckYScaleValue(): --- leaving");
}

QColor LinesDrawAxis::DrawColor(ColorRef color) const {
    return ToQColor((color & kOwnColor) != 0 ? m_settings.color : color);
}

void LinesDrawAxis::DrawAllLinesXIsTime(ColorRef color, QPainter* painter) {
    MTRACE(4, "DrawAllLinesXIsTime(): --- starting");
    if (painter != nullptr && m_points.size() >= 2) {
        DrawSegments(*painter, DrawColor(color), true);
    }
    MTRACE(4, "DrawAllLinesXIsTime(): --- leaving");
}

void LinesDrawAxis::DrawAllLinesXIsAx(ColorRef color, QPainter* painter) {
    MTRACE(4, "DrawAllLinesXIsAx(): --- starting");
    if (painter != nullptr && m_points.size() >= 2) {
        if (m_settings.mode_ax == AxisDrawMode::kPoints) {
            DrawPoints(*painter, DrawColor(color));
        } else {
            DrawSegments(*painter, DrawColor(color), false);
        }
    }
    MTRACE(4, "DrawAllLines(): --- leaving");
}

void LinesDrawAxis::DrawSegments(QPainter& painter, const QColor& color, bool over_time) const {
    // Each segment on its own: the picture does not depend on how many are drawn in one call.
    std::vector<QLine> segments;
    segments.reserve(m_points.size());
    const LinePoint* previous = nullptr;
    for (std::size_t place = 0; place < m_points.size(); ++place) {
        const LinePoint& point = m_points[place];
        if (IsGap(point)) {
            previous = nullptr;
            continue;
        }
        const bool sweep_gap = over_time && previous != nullptr &&
                               (previous->x_value > point.x_value || place == m_write_index);
        if (previous != nullptr && !sweep_gap) {
            segments.emplace_back(previous->x, previous->y, point.x, point.y);
        }
        previous = &point;
    }
    // Where the ring is closed, in the middle of a sweep, its last point leads to its first.
    const bool closed = over_time && m_write_index > 0 && m_write_index < m_points.size();
    const LinePoint& first = m_points.front();
    if (closed && previous == &m_points.back() && !IsGap(first) &&
        previous->x_value <= first.x_value) {
        segments.emplace_back(previous->x, previous->y, first.x, first.y);
    }
    painter.save();
    painter.setClipRect(m_plot, Qt::IntersectClip);
    painter.setRenderHint(QPainter::Antialiasing, false);
    QPen pen(color);
    pen.setWidth(1);
    pen.setCosmetic(true);
    painter.setPen(pen);
    painter.drawLines(segments.data(), static_cast<int>(segments.size()));
    painter.restore();
}

void LinesDrawAxis::DrawPoints(QPainter& painter, const QColor& color) const {
    const int size =
        std::max(1, static_cast<int>(std::lround(m_settings.point_size * m_device_ratio)));
    painter.save();
    painter.setClipRect(m_plot, Qt::IntersectClip);
    QPoint last(std::numeric_limits<int>::min(), 0);
    for (const LinePoint& point : m_points) {
        const QPoint corner(point.x - size / 2, point.y - size / 2);
        if (!IsGap(point) && corner != last) {
            painter.fillRect(QRect(corner, QSize(size, size)), color);
            last = corner;
        }
    }
    painter.restore();
}

void LinesDrawAxis::CopyValues(double LinePoint::*value, std::vector<double>& out) const {
    out.clear();
    out.reserve(m_points.size());
    for (std::size_t i = 0; i < m_points.size(); ++i) {
        out.push_back(m_points[(m_write_index + i) % m_points.size()].*value);
    }
}

void LinesDrawAxis::GetYValues(std::vector<double>& out) const {
    CopyValues(&LinePoint::y_value, out);
}

void LinesDrawAxis::GetXValues(std::vector<double>& out) const {
    CopyValues(&LinePoint::x_value, out);
}

}  // namespace wavo
