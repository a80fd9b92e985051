#include "graph/draw/raster/mapping.h"

#include <algorithm>
#include <cmath>

namespace wavo {

namespace {

/// Values closer than this are one value to the mapping cache.
constexpr double kSameValue = 1e-6;

std::int32_t PlaceOfLine(std::int32_t from, std::int32_t to, std::size_t index, std::size_t last) {
    const double part = static_cast<double>(index) / static_cast<double>(last);
    return from + ToPixel(std::round((static_cast<double>(to) - from) * part));
}

std::size_t LineCount(std::int32_t lines) {
    return static_cast<std::size_t>(std::clamp(lines, 1, kMostScaleLines)) + 2;
}

/// from + (to - from) * part / whole, in an order that does not overflow.
double Between(double from, double to, double part, double whole) {
    const double result = (to - from) * part / whole + from;
    return std::isfinite(result) ? result : (to - from) * (part / whole) + from;
}

}  // namespace

ScaleLines VerticalScaleLines(const QRect& plot, std::int32_t lines) {
    ScaleLines result(LineCount(lines));
    for (std::size_t i = 0; i < result.size(); ++i) {
        const std::int32_t x = PlaceOfLine(plot.left(), plot.right(), i, result.size() - 1);
        result[i] = {x, plot.bottom(), x, plot.top(), 0.0};
    }
    return result;
}

ScaleLines HorizontalScaleLines(const QRect& plot, std::int32_t lines) {
    ScaleLines result(LineCount(lines));
    for (std::size_t i = 0; i < result.size(); ++i) {
        const std::int32_t y = PlaceOfLine(plot.bottom(), plot.top(), i, result.size() - 1);
        result[i] = {plot.left(), y, plot.right(), y, 0.0};
    }
    return result;
}

void FillScaleValues(ScaleLines& lines, const ScaleRange& range) {
    const double last = static_cast<double>(lines.size()) - 1.0;
    for (std::size_t i = 0; i < lines.size(); ++i) {
        const auto index = static_cast<double>(i);
        double value = range.minimum + index * (range.maximum - range.minimum) / last;
        if (!std::isfinite(value)) {
            value = range.minimum * (1.0 - index / last) + range.maximum * (index / last);
        }
        lines[i].value = value;
    }
}

std::int32_t ToPixel(double value) noexcept {
    if (std::isnan(value)) {
        return 0;
    }
    constexpr double kLeast = std::numeric_limits<std::int32_t>::min();
    constexpr double kMost = std::numeric_limits<std::int32_t>::max();
    return static_cast<std::int32_t>(std::clamp(value, kLeast, kMost));
}

double ValueAtColumn(const ScaleLines& vertical, double pixel) noexcept {
    for (std::size_t k = 0; k + 1 < vertical.size(); ++k) {
        const double left = vertical[k].x1;
        const double right = vertical[k + 1].x1;
        if (left <= pixel && pixel <= right) {
            if (right == left) {
                return vertical[k].value;
            }
            return Between(vertical[k].value, vertical[k + 1].value, pixel - left, right - left);
        }
    }
    return -1.0;
}

std::int32_t AxisMapping::Map(double value, bool force) {
    if (std::isnan(value)) {
        return 0;
    }
    if (!force && std::abs(value - m_last_value) < kSameValue) {
        return m_last_pixel;
    }
    m_last_value = value;
    m_last_pixel = Compute(value, [this](double within) { return FindSegment(within); });
    return m_last_pixel;
}

std::int32_t AxisMapping::MapForced(double value) const {
    if (std::isnan(value)) {
        return 0;
    }
    return Compute(value, [this](double within) { return FindLowestSegment(within); });
}

template <typename Find>
std::int32_t AxisMapping::Compute(double value, Find find) const {
    if (m_lines.empty()) {
        return 0;
    }
    const ScaleLine& first = m_lines.front();
    const ScaleLine& last = m_lines.back();
    if (value > last.value) {
        return SecondEnd(last);
    }
    if (value < first.value) {
        return FirstEnd(first);
    }
    if (first.value == last.value) {
        // A scale without extent: the value stands in the middle, where it can be seen.
        return ToPixel((static_cast<double>(FirstEnd(first)) + SecondEnd(last)) / 2.0);
    }
    const std::size_t segment = find(value);
    return segment + 1 < m_lines.size() ? Interpolate(value, segment) : FirstEnd(first);
}

std::size_t AxisMapping::FindSegment(double value) {
    const std::size_t segments = m_lines.size() - 1;
    for (std::size_t tried = 0; tried <= segments; ++tried) {
        if (m_segment >= segments) {
            m_segment = 0;
        }
        if (m_lines[m_segment].value <= value && value <= m_lines[m_segment + 1].value) {
            return m_segment;
        }
        ++m_segment;
    }
    m_segment = 0;
    return segments;
}

std::size_t AxisMapping::FindLowestSegment(double value) const {
    const auto upper =
        std::lower_bound(m_lines.begin() + 1, m_lines.end(), value,
                         [](const ScaleLine& line, double wanted) { return line.value < wanted; });
    const auto segment = static_cast<std::size_t>(upper - m_lines.begin()) - 1;
    const bool found = upper != m_lines.end() && m_lines[segment].value <= value;
    return found ? segment : m_lines.size() - 1;
}

std::int32_t AxisMapping::Interpolate(double value, std::size_t segment) const {
    const ScaleLine& lower = m_lines[segment];
    const ScaleLine& upper = m_lines[segment + 1];
    if (upper.value == lower.value) {
        return FirstEnd(lower);
    }
    // y from the upper line, so that truncation goes the same way on the screen for both ends.
    const double pixel =
        m_coordinate == Coordinate::kX
            ? Between(lower.x1, upper.x1, value - lower.value, upper.value - lower.value)
            : Between(upper.y1, lower.y1, value - upper.value, lower.value - upper.value);
    // A scale line at infinity or at no number leaves nothing to divide by.
    return std::isnan(pixel) ? FirstEnd(lower) : ToPixel(pixel);
}

}  // namespace wavo
