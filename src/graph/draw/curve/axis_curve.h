// The curve of an axis over another axis: a FIFO of points, oldest first, and its drawing. A point
// fades evenly while newer ones follow it, and the newest is marked with a disc.
//
// Invariants:
// 1. There are at most max_points points; one more drops the oldest.
// 2. The age of a point is the number of points added after it: fading follows the time of the
//    stream, not that of the screen, and stands still with it.
// 3. A point whose value or x value is NaN is a gap in the curve, and ages like any other.
// 4. Where the curve meets or crosses itself, the newer part alone is seen.
#pragma once

#include <QColor>
#include <QImage>
#include <QRect>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <optional>
#include <vector>

#include "graph/draw/curve/line_point.h"
#include "graph/draw/raster/dash_pattern.h"
#include "graph/draw/raster/level_mask.h"
#include "graph/draw/raster/mapping.h"

namespace wavo {

class AxisCurve {
 public:
    struct Style {
        bool points = false;          ///< single points instead of lines
        std::int32_t point_size = 2;  ///< side of a point, device pixels; at least 1
        QColor color;
        QColor background;  ///< sets the mark of the newest point off from what is around it
        double device_ratio = 1.0;  ///< device pixels per logical pixel
        /// Age at which a point has vanished; nothing fades when it is not above 0.
        double fade_out_age = 0.0;
        DashPattern dashes = {};  ///< of lines

        friend bool operator==(const Style&, const Style&) = default;
    };

    /// REQUIRES: max_points >= 1. Memory grows with the points, not with the number allowed.
    explicit AxisCurve(std::uint64_t max_points) : m_max_points(max_points) {}

    void Add(const LinePoint& point);
    void Clear();

    [[nodiscard]] std::size_t Size() const { return m_points.size() - m_dropped; }
    [[nodiscard]] std::uint64_t MaxPoints() const { return m_max_points; }

    /// The points lie one behind the other, oldest first. REQUIRES: index < Size().
    [[nodiscard]] const LinePoint& operator[](std::size_t index) const {
        return m_points[m_dropped + index];
    }
    [[nodiscard]] LinePoint* begin() { return m_points.data() + m_dropped; }
    [[nodiscard]] LinePoint* end() { return m_points.data() + m_points.size(); }
    [[nodiscard]] const LinePoint* begin() const { return m_points.data() + m_dropped; }
    [[nodiscard]] const LinePoint* end() const { return m_points.data() + m_points.size(); }

    /// Draws the curve inside the plot area. Everything is in device pixels, whatever ratio the
    /// picture says of itself. Returns a rectangle that holds all pixels that were changed; empty
    /// when there were none, as with fewer than 2 points. REQUIRES: `picture` has the format RGB32.
    /// Adds the same to `touched`, less widely.
    QRect Draw(QImage& picture, const QRect& plot, const Style& style,
               PixelRuns* touched = nullptr);

    /// To be called when points were moved in place.
    void PointsMoved();

    /// Whether DrawOn can go on from what the last call of it has drawn.
    [[nodiscard]] bool CanGoOn(const Style& style) const {
        return m_shown_first.has_value() && style == m_shown_style;
    }

    /// Draws solid lines over nothing but a background, pixel by pixel as Draw does. `target`: the
    /// pixels of the area from its top left on. `go_on`: the picture still shows what the last call
    /// has drawn, but for `touched` of it, which is background again; else it shows the background.
    /// Adds to `touched` what is not drawn anew each time. REQUIRES: CanGoOn when `go_on`.
    void DrawOn(QImage& picture, const QRect& area, const PixelColumns& target, const Style& style,
                bool go_on, PixelRuns& touched);

 private:
    [[nodiscard]] static LevelMask::Place PlaceOf(const LinePoint& point);

    void DrawGone(std::size_t first);
    [[nodiscard]] std::size_t FirstVisible(double fade_out_age) const;
    void DrawLines(std::size_t first, double fade_out_age);
    /// The lines that go rather along a coordinate than along the other.
    void DrawLinesAlong(Coordinate along, std::size_t first, double fade_out_age);
    void DrawPoints(std::size_t first, std::int32_t size, double fade_out_age);

    std::uint64_t m_max_points;       ///< constant after construction
    std::vector<LinePoint> m_points;  ///< dropped points, then those of the curve
    /// Where they stand, and nothing else of them: what all lines are drawn from is read in each
    /// frame, and stays in the cache.
    std::vector<LevelMask::Place> m_places;
    std::size_t m_dropped = 0;
    LevelMask m_mask;  ///< kept for its memory

    std::uint64_t m_left = 0;  ///< points that have been dropped since the curve was made
    // What DrawOn has drawn last.
    std::optional<std::uint64_t> m_shown_first;  ///< number of the first point, those left included
    Style m_shown_style;
    std::vector<LinePoint> m_gone;  ///< points dropped since then
};

}  // namespace wavo
