// Spikes at the reversals of the axes, in what the model of a circle leaves.
#pragma once

#include <vector>

#include "measure/circle_model.h"
#include "measure/circle_shape.h"

namespace wavo::measure {

struct FoundSpike {
    ReversalSpike spike;
    /// Where it has fallen to a tenth of its height or to 0.1 um, degrees behind the reversal.
    double end = 0.0;
};

/// The spikes of one turn at 0, 90, 180 and 270 degrees. `deviation`: standard deviation of the
/// turn's residual outside the zones, mm.
std::vector<FoundSpike> FindSpikes(const ShapeTurn& turn, const Circle& centre,
                                   const RadialModel& model, double deviation,
                                   const ShapeSetup& setup);

}  // namespace wavo::measure
