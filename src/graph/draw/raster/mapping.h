// From values to pixels and back, over the scale lines of a graph.
//
// A mapping table is the list of the scale lines of one coordinate, borders included, in the order
// of their values. Between two lines a value is mapped linearly; lines need not be evenly spaced.
//
// Invariants:
// 1. A value beyond the scale maps to the border, never outside.
// 2. Every conversion to a pixel is defined for every double: there is no division by zero and no
//    overflow, whatever the scale and the value.
#pragma once

#include <QRect>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <vector>

#include "graph/draw/raster/scale_range.h"
#include "support/to_count.h"

namespace wavo {

/// A scale line by its end points, pixels, and the scale value there.
struct ScaleLine {
    std::int32_t x1 = 0;
    std::int32_t y1 = 0;
    std::int32_t x2 = 0;
    std::int32_t y2 = 0;
    double value = 0.0;

    friend bool operator==(const ScaleLine&, const ScaleLine&) = default;
};

using ScaleLines = std::vector<ScaleLine>;

/// `lines` scale lines and the two borders over a plot area (pixels), left to right or bottom to
/// top, with values 0. More lines than anybody can tell apart (kMostScaleLines) are not made.
/// REQUIRES: lines >= 1.
inline constexpr std::int32_t kMostScaleLines = 4096;
ScaleLines VerticalScaleLines(const QRect& plot, std::int32_t lines);
ScaleLines HorizontalScaleLines(const QRect& plot, std::int32_t lines);

/// A plot area and its scale lines, borders included; the device pixels of the picture.
struct PlotGeometry {
    QRect plot;
    ScaleLines vertical;
    ScaleLines horizontal;
};

/// Spreads the range evenly over the lines.
void FillScaleValues(ScaleLines& lines, const ScaleRange& range);

/// Truncates toward zero; what does not fit becomes the nearest number that does, NaN becomes 0.
std::int32_t ToPixel(double value) noexcept;

/// The value at a pixel column of vertical scale lines; -1 outside them.
double ValueAtColumn(const ScaleLines& vertical, double pixel) noexcept;

/// Which coordinate of the scale lines a mapping uses.
enum class Coordinate { kX, kY };

/// Maps the values of one coordinate, with a memory of the last value and of the last segment, so
/// that a slowly moving signal costs one comparison per value.
class AxisMapping {
 public:
    AxisMapping(Coordinate coordinate, ScaleLines lines)
        : m_coordinate(coordinate), m_lines(std::move(lines)) {}

    /// The pixel of a value. Unless `force` is set, a value within 1e-6 of the last one mapped
    /// gets the same pixel. NaN maps to 0: a caller draws nothing there.
    std::int32_t Map(double value, bool force);

    /// The pixel of a value whatever was mapped before: where two segments of the scale meet, the
    /// lower one counts. Never falls back as the value grows (x) or as it shrinks (y).
    [[nodiscard]] std::int32_t MapForced(double value) const;

    /// Takes other scale lines; the values stay unset until Fill.
    void SetLines(ScaleLines lines) { m_lines = std::move(lines); }

    /// Spreads a range over the lines.
    void Fill(const ScaleRange& range) { FillScaleValues(m_lines, range); }

    /// Forgets the last value mapped.
    void ForgetLast() { m_last_value = std::numeric_limits<double>::quiet_NaN(); }

    /// Starts the segment search at the first segment again.
    void ResetSegment() { m_segment = 0; }

    [[nodiscard]] const ScaleLines& Lines() const { return m_lines; }

 private:
    /// The pixel of a value, given a function that finds the segment of a value within the scale.
    template <typename FindSegment>
    [[nodiscard]] std::int32_t Compute(double value, FindSegment find) const;
    /// Number of the segment that holds a value, from the one found last on; the number of segments
    /// when there is none.
    [[nodiscard]] std::size_t FindSegment(double value);
    [[nodiscard]] std::size_t FindLowestSegment(double value) const;
    [[nodiscard]] std::int32_t Interpolate(double value, std::size_t segment) const;
    [[nodiscard]] std::int32_t FirstEnd(const ScaleLine& line) const {
        return m_coordinate == Coordinate::kX ? line.x1 : line.y1;
    }
    [[nodiscard]] std::int32_t SecondEnd(const ScaleLine& line) const {
        return m_coordinate == Coordinate::kX ? line.x2 : line.y2;
    }

    Coordinate m_coordinate;
    ScaleLines m_lines;
    std::size_t m_segment = 0;
    double m_last_value = std::numeric_limits<double>::quiet_NaN();
    std::int32_t m_last_pixel = 0;
};

}  // namespace wavo
