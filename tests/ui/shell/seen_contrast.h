// Contrast of colours after WCAG 2, computed apart from the program's own.
#pragma once

#include <QColor>
#include <algorithm>
#include <cmath>

namespace wavo {

/// 1 (none) to 21 (black on white).
inline double SeenContrast(const QColor& a, const QColor& b) {
    const auto linear = [](double part) {
        return part <= 0.03928 ? part / 12.92 : std::pow((part + 0.055) / 1.055, 2.4);
    };
    const auto luminance = [&](const QColor& color) {
        return 0.2126 * linear(color.redF()) + 0.7152 * linear(color.greenF()) +
               0.0722 * linear(color.blueF());
    };
    const double first = luminance(a);
    const double second = luminance(b);
    return (std::max(first, second) + 0.05) / (std::min(first, second) + 0.05);
}

}  // namespace wavo
