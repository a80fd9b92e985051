// The kinds of curves that follow the values of a graph.
#pragma once

#include <cstdint>
#include <memory>

#include "graph/draw/curve/curve.h"
#include "graph/model/wavo_graph.h"

namespace wavo {

struct CurveDefinition {
    CoorType x_type = CoorType::kTime;
    GraphMode mode{};
    double step = 0.0;             ///< seconds from point to point
    std::uint64_t max_points = 1;  ///< at least 1
};

/// The curve of the first kind in the list that is meant by the definition.
std::unique_ptr<LiveCurve> MakeCurve(const CurveDefinition& definition);

}  // namespace wavo
