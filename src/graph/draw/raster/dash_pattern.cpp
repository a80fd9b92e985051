#include "graph/draw/raster/dash_pattern.h"

#include <algorithm>
#include <array>
#include <cmath>

namespace wavo {

namespace {

/// Logical pixels that are painted and left out in turns; 0 ends a pattern.
constexpr std::array<std::array<std::int8_t, 6>, DashPattern::kPatterns> kDashes{{
    {},                   // solid
    {12, 6},              // dashed
    {2, 4},               // dotted
    {12, 4, 2, 4},        // dash, dot
    {24, 6},              // long dashes
    {12, 4, 2, 4, 2, 4},  // dash, two dots
    {6, 6},               // short dashes
    {24, 4, 2, 4},        // long dash, dot
}};

/// Logical rows of a column in a gap that may be left out.
constexpr double kMostHidden = 8.0;

/// Pixels are no larger on any screen.
constexpr double kMostDeviceRatio = 16.0;

std::int32_t ToDevicePixels(double logical, double ratio) {
    return std::max(1, static_cast<std::int32_t>(std::lround(logical * ratio)));
}

}  // namespace

DashPattern::DashPattern(std::size_t curve, double device_ratio) {
    const double ratio = device_ratio > 0.0 ? std::min(device_ratio, kMostDeviceRatio) : 1.0;
    std::uint8_t painted = 1;
    for (const std::int8_t length : kDashes[curve % kPatterns]) {
        if (length > 0) {
            m_period.insert(m_period.end(), static_cast<std::size_t>(ToDevicePixels(length, ratio)),
                            painted);
            painted ^= 1U;
        }
    }
    m_most_hidden = ToDevicePixels(kMostHidden, ratio);
}

void DashPattern::Cut(const ColumnSpans& whole, ColumnSpans& dashed) const {
    dashed.Clear(whole.Columns());
    const auto cut = [&](std::int32_t column, std::int32_t top, std::int32_t bottom) {
        if (top > bottom) {
            return;
        }
        if (Paints(column)) {
            dashed.Add(column, top, bottom);
        } else if (bottom - top >= m_most_hidden) {
            dashed.Add(column, top, top + EndRows() - 1);
            dashed.Add(column, bottom - EndRows() + 1, bottom);
        }
    };
    for (std::int32_t column = 0; column < whole.Columns(); ++column) {
        const auto at = static_cast<std::size_t>(column);
        cut(column, whole.top[at], whole.bottom[at]);
    }
    for (const ColumnSpans::Span& span : whole.more) {
        cut(span.column, span.top, span.bottom);
    }
}

}  // namespace wavo
