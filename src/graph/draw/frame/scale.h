// The range of a scale, and the automatic scale that follows the values of a curve.
//
// Invariants:
// 1. An automatic scale widens at once, with a margin on the side that was widened, and shrinks
//    only after a tenth of the curve has been replaced.
// 2. Values that are not finite never touch a scale.
#pragma once

#include <cstdint>
#include <functional>
#include <vector>

#include "graph/draw/raster/scale_range.h"
#include "graph/model/wavo_graph.h"

namespace wavo {

/// The range of a scale: 0 to the time range, or the axis range. 0 to 0 and an error-log entry for
/// a scale type or kind that is not known.
ScaleRange GraphDefineGetMinMaxValue(const ScaleDefinition& scale);

/// Distance of two of `lines` scale lines, in units of the scale. REQUIRES: lines >= 1.
double ScaleSpacing(const ScaleRange& range, std::int32_t lines);

/// Smallest and largest of a set of values.
struct Extremes {
    bool set = false;
    double minimum = 0.0;
    double maximum = 0.0;

    /// Takes a value in; one that is not finite is passed over.
    void Add(double value);
};

/// Smallest and largest of a list of values.
Extremes ExtremesOf(const std::vector<double>& values);

/// Keeps one automatic scale. One per curve and coordinate.
class AutoScale {
 public:
    /// Adapts `scale` to the new values of the curve before they are drawn. `max_points` is the
    /// most points the curve holds, `held` gives the extremes of those it holds now (it is asked
    /// only when the scale may shrink). True when the scale changed; nothing happens for a
    /// scale that is not automatic.
    bool Check(ScaleDefinition& scale, const Extremes& new_values, std::uint64_t max_points,
               const std::function<Extremes()>& held);

    /// Counts values that were drawn.
    void CountDrawn(std::uint64_t values) { m_drawn += values; }

    /// Forgets all values, as when the curve is emptied.
    void Reset() { *this = AutoScale(); }

 private:
    Extremes m_running;
    std::uint64_t m_drawn = 0;  ///< since the scale last could shrink
};

}  // namespace wavo
