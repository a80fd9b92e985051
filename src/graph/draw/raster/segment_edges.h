// The values at which one segment of a scale steps from pixel to pixel, several at once.
#pragma once

#include <cstdint>
#include <span>

#include "graph/draw/raster/mapping.h"
#include "support/processor.h"

namespace wavo {

/// The part of a mapping between two scale lines: pixel = (to - from) * (value - origin) / whole +
/// from, each operation rounded, for values above `lower` up to `upper`.
struct MappedSegment {
    MappedSegment(const ScaleLine& lower_line, const ScaleLine& upper_line, Coordinate coordinate);

    double lower;
    double upper;
    double from;
    double to;
    double origin;
    double whole;
};

/// For successive borders between pixels, `step` (1 or -1) apart from `first` on, the least value
/// that lies beyond: at or above a border when they rise, below it when they fall. NaN where that
/// was not found. REQUIRES: lower < upper, all numbers finite; instructions that are wide.
void FindSegmentEdges(const MappedSegment& segment, double first, double step,
                      std::span<double> edges);

}  // namespace wavo
