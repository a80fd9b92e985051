#include "graph/draw/curve/curve_kinds.h"

#include <algorithm>
#include <iterator>

#include "graph/draw/curve/curve_over_axis.h"
#include "graph/draw/curve/curve_over_time.h"
#include "graph/draw/curve/scroll_curve.h"
#include "graph/draw/curve/sweep_curve.h"

namespace wavo {

namespace {

struct CurveKind {
    bool (*is_meant)(const CurveDefinition& definition);
    std::unique_ptr<LiveCurve> (*make)(const CurveDefinition& definition);
};

std::unique_ptr<LiveCurve> OverAxis(const CurveDefinition& definition) {
    return std::make_unique<CurveOverAxis>(definition.max_points);
}

template <typename Samples>
std::unique_ptr<LiveCurve> OverTime(const CurveDefinition& definition) {
    return std::make_unique<CurveOverTime>(
        std::make_unique<Samples>(definition.step, definition.max_points));
}

bool IsOverAxis(const CurveDefinition& definition) {
    return definition.x_type == CoorType::kAxis;
}

bool Scrolls(const CurveDefinition& definition) {
    return definition.mode == GraphMode::kContinuity;
}

bool IsAnyOther(const CurveDefinition&) {
    return true;
}

constexpr CurveKind kKinds[] = {
    {IsOverAxis, OverAxis},
    {Scrolls, OverTime<ScrollCurve>},
    {IsAnyOther, OverTime<SweepCurve>},
};

}  // namespace

std::unique_ptr<LiveCurve> MakeCurve(const CurveDefinition& definition) {
    const auto* const kind =
        std::find_if(std::begin(kKinds), std::end(kKinds),
                     [&](const CurveKind& each) { return each.is_meant(definition); });
    return kind->make(definition);
}

}  // namespace wavo
