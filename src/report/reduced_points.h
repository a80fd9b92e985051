// Curves of many lines as few points, for charts.
#pragma once

#include <QPointF>
#include <algorithm>
#include <cmath>
#include <cstddef>
#include <limits>
#include <vector>

#include "measure/series.h"

namespace wavo::report {

inline constexpr std::size_t kMostChartPoints = 3000;

/// What a stretch of lines shows: the smallest and the largest value of each piece. `value` gives
/// that of a line, NaN for none.
template <typename Value>
std::vector<QPointF> ReducedPoints(const measure::Stretch& stretch, double cycle_time,
                                   Value value) {
    constexpr double kNone = std::numeric_limits<double>::quiet_NaN();
    std::vector<QPointF> points;
    const std::size_t pieces = std::min(stretch.Size(), kMostChartPoints / 2);
    for (std::size_t piece = 0; piece < pieces; ++piece) {
        const std::size_t first = stretch.first + piece * stretch.Size() / pieces;
        const std::size_t end = stretch.first + (piece + 1) * stretch.Size() / pieces;
        double low = kNone;
        double high = kNone;
        for (std::size_t i = first; i < end; ++i) {
            low = std::fmin(low, value(i));
            high = std::fmax(high, value(i));
        }
        const double time = static_cast<double>(first) * cycle_time;
        points.emplace_back(time, low);
        if (high != low && !std::isnan(high)) {
            points.emplace_back(time, high);
        }
    }
    return points;
}

}  // namespace wavo::report
