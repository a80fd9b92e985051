#include "graph/draw/curve/axis_curve.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdlib>
#include <limits>
#include <span>
#include <utility>

namespace wavo {

namespace {

/// Radius of the disc on the newest point, and width of the rim around it, logical pixels.
constexpr double kMarkRadius = 3.5;
constexpr double kMarkRim = 1.25;

/// Pixels are no larger on any screen; keeps a wild ratio from filling the plot with the mark.
constexpr double kMostDeviceRatio = 16.0;

/// Dropped points are worth moving the others from this number on.
constexpr std::size_t kLeastDropped = 256;

/// It costs less to look at all pixels than at all of so many points.
constexpr std::size_t kManyPoints = 20000;

/// Places that are drawn in one go.
constexpr std::size_t kPlaces = 256;

constexpr std::int32_t kMostPointSize = 4096;

bool IsGap(const LinePoint& point) {
    return std::isunordered(point.y_value, point.x_value);  // one of them is NaN
}

/// How opaque a point of an age is.
class Fading {
 public:
    explicit Fading(double fade_out_age)
        : m_per_sample(fade_out_age > 0.0 ? LevelMask::kOpaque / std::max(fade_out_age, 1.0)
                                          : 0.0) {}

    [[nodiscard]] LevelMask::Level At(std::size_t age) const {
        // Signed numbers are converted by one instruction.
        const auto samples = static_cast<double>(static_cast<std::int64_t>(age));
        const double level = LevelMask::kOpaque - m_per_sample * samples;
        return static_cast<LevelMask::Level>(std::max(level, 0.0));
    }

    /// The same of successive points, the first of which has this age.
    void Of(std::size_t first_age, std::span<LevelMask::Level> levels) const {
        const auto first = static_cast<double>(static_cast<std::int64_t>(first_age));
        const auto count = static_cast<std::int32_t>(levels.size());
        LevelMask::Level* const out = levels.data();
        for (std::int32_t i = 0; i < count; ++i) {
            const double level = LevelMask::kOpaque - m_per_sample * (first - i);
            out[i] = static_cast<LevelMask::Level>(std::max(level, 0.0));
        }
    }

 private:
    double m_per_sample;
};

/// The part of `area` in which points can leave a trace; each covers `before` pixels to its left
/// and above, `after` to its right and below.
QRect Bounds(const LinePoint* first, const LinePoint* end, std::int32_t before, std::int32_t after,
             const QRect& area) {
    std::int32_t left = std::numeric_limits<std::int32_t>::max();
    std::int32_t top = left;
    std::int32_t right = std::numeric_limits<std::int32_t>::min();
    std::int32_t bottom = right;
    for (const LinePoint* point = first; point != end; ++point) {
        if (!IsGap(*point)) {
            left = std::min(left, point->x);
            right = std::max(right, point->x);
            top = std::min(top, point->y);
            bottom = std::max(bottom, point->y);
        }
    }
    const auto inside = [](std::int64_t pixel, int least, int most) {
        return static_cast<int>(std::clamp<std::int64_t>(pixel, least, most));
    };
    // One pixel beyond the area stays recognizable as outside.
    const QRect bounds(QPoint(inside(std::int64_t{left} - before, area.left(), area.right() + 1),
                              inside(std::int64_t{top} - before, area.top(), area.bottom() + 1)),
                       QPoint(inside(std::int64_t{right} + after, area.left() - 1, area.right()),
                              inside(std::int64_t{bottom} + after, area.top() - 1, area.bottom())));
    return bounds.isEmpty() ? QRect() : bounds;
}

std::uint32_t Opacity(double coverage) {
    return static_cast<std::uint32_t>(std::lround(std::clamp(coverage, 0.0, 1.0) * 255.0));
}

/// The place nearest to `pixel` that is at least `reach` away from what lies outside least to most;
/// the middle when there is no such place.
std::int32_t Within(std::int32_t pixel, int least, int most, int reach) {
    return most - least < 2 * reach ? least + (most - least) / 2
                                    : std::clamp(pixel, least + reach, most - reach);
}

/// Marks a point with a disc in a rim, both with smooth edges. At the edge of the area, where
/// points stand that are out of scale, the mark is moved inside: half of it would be overlooked.
QRect DrawMark(QImage& picture, const QRect& area, const LinePoint& point,
               const AxisCurve::Style& style) {
    const double ratio =
        style.device_ratio > 0.0 ? std::min(style.device_ratio, kMostDeviceRatio) : 1.0;
    const double radius = kMarkRadius * ratio;
    const double rim = radius + kMarkRim * ratio;
    const auto reach = static_cast<int>(std::ceil(rim));
    const QPoint centre(Within(point.x, area.left(), area.right(), reach),
                        Within(point.y, area.top(), area.bottom(), reach));
    const QRect box =
        QRect(centre - QPoint(reach, reach), centre + QPoint(reach, reach)).intersected(area);
    const QRgb disc_color = style.color.rgb();
    const QRgb rim_color = style.background.rgb();
    for (int y = box.top(); y <= box.bottom(); ++y) {
        auto* const pixels = reinterpret_cast<QRgb*>(picture.scanLine(y));
        for (int x = box.left(); x <= box.right(); ++x) {
            const double distance = std::hypot(x - centre.x(), y - centre.y());
            pixels[x] = BlendPixel(pixels[x], rim_color, Opacity(rim + 0.5 - distance));
            pixels[x] = BlendPixel(pixels[x], disc_color, Opacity(radius + 0.5 - distance));
        }
    }
    return box;
}

}  // namespace

void AxisCurve::Add(const LinePoint& point) {
    if (Size() >= m_max_points) {
        if (m_gone.size() >= kManyPoints) {
            m_shown_first.reset();
        }
        if (m_shown_first.has_value()) {
            m_gone.push_back(m_points[m_dropped]);
        }
        ++m_dropped;
        ++m_left;
    }
    if (m_dropped >= kLeastDropped && m_dropped > m_points.size() / 2) {
        const auto dropped = static_cast<std::ptrdiff_t>(m_dropped);
        m_points.erase(m_points.begin(), m_points.begin() + dropped);
        m_places.erase(m_places.begin(), m_places.begin() + dropped);
        m_dropped = 0;
    }
    m_points.push_back(point);
    m_places.push_back(PlaceOf(point));
}

LevelMask::Place AxisCurve::PlaceOf(const LinePoint& point) {
    // A pixel that far to the left is beyond every area, and so is the one beside it.
    return {IsGap(point) ? LevelMask::kGap : std::max(point.x, LevelMask::kGap + 1), point.y};
}

void AxisCurve::PointsMoved() {
    m_shown_first.reset();
    std::transform(m_points.begin(), m_points.end(), m_places.begin(), PlaceOf);
}

void AxisCurve::Clear() {
    m_shown_first.reset();
    m_left += Size();
    m_points.clear();
    m_places.clear();
    m_dropped = 0;
}

std::size_t AxisCurve::FirstVisible(double fade_out_age) const {
    const std::size_t oldest_age = Size() - 1;
    if (!(fade_out_age > 0.0) || fade_out_age >= static_cast<double>(oldest_age)) {
        return 0;
    }
    // The first that has vanished is still the end of a segment.
    return oldest_age - static_cast<std::size_t>(std::ceil(fade_out_age));
}

QRect AxisCurve::Draw(QImage& picture, const QRect& plot, const Style& style, PixelRuns* runs) {
    const QRect area = plot.isEmpty() ? QRect() : plot & picture.rect();
    if (Size() < 2 || area.isEmpty()) {
        return {};
    }
    const std::size_t first = FirstVisible(style.fade_out_age);
    const std::int32_t size = std::clamp(style.point_size, 1, kMostPointSize);
    const std::int32_t before = style.points ? size / 2 : 0;
    const std::int32_t after = style.points ? size - 1 - before : 0;
    QRect touched =
        Size() < kManyPoints ? Bounds(begin() + first, end(), before, after, area) : area;
    if (!touched.isEmpty()) {
        m_mask.Begin(touched);
        if (style.points) {
            DrawPoints(first, size, style.fade_out_age);
        } else if (style.dashes.IsSolid()) {
            DrawLines(first, style.fade_out_age);
        } else {
            DrawLinesAlong(Coordinate::kX, first, style.fade_out_age);
            m_mask.Cut(style.dashes, Coordinate::kX, plot.topLeft());
            m_mask.BlendInto(picture, style.color.rgb(), runs);
            DrawLinesAlong(Coordinate::kY, first, style.fade_out_age);
            m_mask.Cut(style.dashes, Coordinate::kY, plot.topLeft());
        }
        m_mask.BlendInto(picture, style.color.rgb(), runs);
    }
    const LinePoint& newest = m_points.back();
    if (!IsGap(newest)) {
        const QRect mark = DrawMark(picture, area, newest, style);
        touched |= mark;
        if (runs != nullptr) {
            AddRectangle(*runs, mark);
        }
    }
    return touched;
}

void AxisCurve::DrawOn(QImage& picture, const QRect& area, const PixelColumns& target,
                       const Style& style, bool go_on, PixelRuns& touched) {
    const std::size_t first = FirstVisible(style.fade_out_age);
    m_mask.BeginOn(area, target, style.color.rgb());
    if (go_on) {
        DrawGone(first);
    }
    DrawLines(first, style.fade_out_age);
    m_gone.clear();
    m_shown_first = m_left + first;
    m_shown_style = style;
    const LinePoint& newest = m_points.back();
    if (!IsGap(newest)) {
        AddRectangle(touched, DrawMark(picture, area, newest, style));
    }
}

void AxisCurve::DrawGone(std::size_t first) {
    // The lines from the first point that was drawn to the first that is drawn now, in no colour.
    LevelMask::Spot previous;
    bool gap = true;
    const auto draw = [&](const LinePoint& point) {
        const LevelMask::Spot spot{point.x, point.y, 0};
        if (IsGap(point)) {
            gap = true;
            return;
        }
        if (gap) {
            m_mask.Pixel(spot);
        } else {
            m_mask.Line(previous, spot);
        }
        previous = spot;
        gap = false;
    };
    const std::uint64_t gone_before = m_left - m_gone.size();  // number of the first of m_gone
    for (std::uint64_t i = *m_shown_first; i < m_left; ++i) {
        draw(m_gone[static_cast<std::size_t>(i - gone_before)]);
    }
    for (std::uint64_t i = std::max(*m_shown_first, m_left); i <= m_left + first; ++i) {
        draw((*this)[static_cast<std::size_t>(i - m_left)]);
    }
}

void AxisCurve::DrawLines(std::size_t first, double fade_out_age) {
    const Fading fading(fade_out_age);
    const std::span<const LevelMask::Place> places(m_places.data() + m_dropped, Size());
    std::array<LevelMask::Level, kPlaces> levels;
    for (std::size_t i = first;;) {
        const std::size_t count = std::min(kPlaces, places.size() - i);
        fading.Of(places.size() - 1 - i, std::span(levels).first(count));
        m_mask.Lines(places.subspan(i, count), levels.data());
        if (i + count == places.size()) {
            return;
        }
        i += count - 1;  // a line leads on from the last one
    }
}

void AxisCurve::DrawLinesAlong(Coordinate along, std::size_t first, double fade_out_age) {
    // Where a line goes is seen over some pixels, not from one to the next. The point to compare
    // with depends on those near it alone, so that dashes stay where they are.
    constexpr std::int64_t kApart = 6;
    const Fading fading(fade_out_age);
    const LinePoint* const points = begin();
    const std::size_t count = Size();
    const auto across = [](const LinePoint& a, const LinePoint& b) {
        return std::pair(std::abs(std::int64_t{a.x} - b.x), std::abs(std::int64_t{a.y} - b.y));
    };
    std::size_t behind = first;
    for (std::size_t i = first + 1; i < count; ++i) {
        if (IsGap(points[i]) || IsGap(points[i - 1])) {
            behind = i;
            continue;
        }
        const auto is_apart = [&](std::size_t other) {
            const auto [x, y] = across(points[other], points[i]);
            return std::max(x, y) >= kApart;
        };
        while (behind + 1 < i && is_apart(behind + 1)) {
            ++behind;
        }
        const auto [x, y] = across(points[behind], points[i]);
        if ((x >= y) == (along == Coordinate::kX)) {
            m_mask.Line({points[i - 1].x, points[i - 1].y, fading.At(count - i)},
                        {points[i].x, points[i].y, fading.At(count - 1 - i)});
        }
    }
}

void AxisCurve::DrawPoints(std::size_t first, std::int32_t size, double fade_out_age) {
    const Fading fading(fade_out_age);
    const LinePoint* const points = begin();
    const std::size_t count = Size();
    for (std::size_t i = first; i < count; ++i) {
        const LinePoint& point = points[i];
        const auto covers = [&point](const LinePoint& next) {
            return next.x == point.x && next.y == point.y && !IsGap(next);
        };
        if (IsGap(point) || (i + 1 < count && covers(points[i + 1]))) {
            continue;
        }
        m_mask.Square({point.x, point.y, fading.At(count - 1 - i)}, size);
    }
}

}  // namespace wavo
