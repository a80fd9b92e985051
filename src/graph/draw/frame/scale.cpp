#include "graph/draw/frame/scale.h"

#include <algorithm>
#include <cmath>
#include <limits>

#include "graph/draw/frame/report_texts.h"
#include "support/diagnostics.h"

namespace wavo {

namespace {

/// Ranges below this are widened, so that a constant signal has a scale.
constexpr double kSmallestSpan = 1e-6;

double ToFinite(double value) {
    constexpr double kLargest = std::numeric_limits<double>::max();
    return std::clamp(value, -kLargest, kLargest);
}

/// (maximum - minimum) / parts, finite also where the difference is not.
double PartOfSpan(double minimum, double maximum, double parts) {
    const double span = maximum - minimum;
    return std::isfinite(span) ? span / parts : maximum / parts - minimum / parts;
}

}  // namespace

ScaleRange GraphDefineGetMinMaxValue(const ScaleDefinition& scale) {
    if (scale.ScaleType == ScaleTypeCode::kTime) {
        return {0.0, scale.TimeRange};
    }
    if (scale.ScaleType != ScaleTypeCode::kAxis) {
        MERRLOG(frame_texts::kBadScaleType);
        return {};
    }
    if (scale.ScaleAx != ScaleAxCode::kAutomatic && scale.ScaleAx != ScaleAxCode::kManual) {
        MERRLOG(frame_texts::kBadScaleAx);
        return {};
    }
    return {scale.Minimum, scale.Maximum};
}

double ScaleSpacing(const ScaleRange& range, std::int32_t lines) {
    return PartOfSpan(range.minimum, range.maximum, static_cast<double>(lines) + 1.0);
}

void Extremes::Add(double value) {
    if (!std::isfinite(value)) {
        return;
    }
    if (!set) {
        set = true;
        minimum = value;
        maximum = value;
        return;
    }
    minimum = std::min(minimum, value);
    maximum = std::max(maximum, value);
}

Extremes ExtremesOf(const std::vector<double>& values) {
    Extremes extremes;
    for (const double value : values) {
        extremes.Add(value);
    }
    return extremes;
}

bool AutoScale::Check(ScaleDefinition& scale, const Extremes& new_values, std::uint64_t max_points,
                      const std::function<Extremes()>& held) {
    if (scale.ScaleAx != ScaleAxCode::kAutomatic) {
        m_drawn = 0;
        return false;
    }
    bool minimum_changed = false;
    bool maximum_changed = false;
    if (m_drawn >= max_points / 10) {
        const Extremes points = held();
        if (points.set) {
            m_running = points;
            minimum_changed = true;
            maximum_changed = true;
        }
        m_drawn = 0;
    }
    const Extremes before = m_running;
    if (new_values.set) {
        m_running.Add(new_values.minimum);
        m_running.Add(new_values.maximum);
    }
    if (!m_running.set) {
        return false;
    }
    minimum_changed |= !before.set || m_running.minimum < before.minimum;
    maximum_changed |= !before.set || m_running.maximum > before.maximum;
    if (m_running.maximum - m_running.minimum < kSmallestSpan) {
        m_running.maximum += kSmallestSpan;
        m_running.minimum -= kSmallestSpan;
        minimum_changed = true;
        maximum_changed = true;
    }
    const double margin = PartOfSpan(m_running.minimum, m_running.maximum, 20.0);
    if (maximum_changed) {
        scale.Maximum = ToFinite(m_running.maximum + margin);
    }
    if (minimum_changed) {
        scale.Minimum = ToFinite(m_running.minimum - margin);
    }
    return minimum_changed || maximum_changed;
}

}  // namespace wavo
