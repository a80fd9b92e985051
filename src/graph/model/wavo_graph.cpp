#include "graph/model/wavo_graph.h"

#include <algorithm>
#include <optional>

#include "link/axis_capabilities.h"

namespace wavo {

namespace {

/// Axis limits beyond this say "no limit"; a scale that wide would show a flat line.
constexpr double kLargestDefaultLimit = 1e8;
constexpr double kUnknownAxisLimit = 10.0;
constexpr double kDefaultTimeRange = 10.0;
constexpr double kDefaultFadeOutTime = 1.0;

ScaleDefinition DefaultYScale(const char* axis_name, AxisLimitsSource* limits) {
    ScaleDefinition scale;
    scale.ScaleType = ScaleTypeCode::kAxis;
    scale.TimeRange = 0.0;
    scale.ScaleAx = ScaleAxCode::kManual;
    scale.Minimum = -kUnknownAxisLimit;
    scale.Maximum = kUnknownAxisLimit;
    if (axis_name != nullptr && limits != nullptr) {
        if (const std::optional<AxisCapabilities> axis = limits->FindAxis(axis_name)) {
            // In this order of arguments a limit that is not a number gives the bound.
            scale.Minimum = std::max(-kLargestDefaultLimit, axis->lower_limit);
            scale.Maximum = std::min(kLargestDefaultLimit, axis->upper_limit);
        }
    }
    return scale;
}

}  // namespace

void WavoGraph::InitGraph(std::uint32_t graph_number, const char* axis_name, ColorRef colour,
                          AxisLimitsSource* limits) {
    GraphNumber = graph_number;
    Mode = GraphMode::kContinuity;
    ModeAx = AxisDrawMode::kPoints;
    XCoorType = CoorType::kTime;
    XCoorAxName.clear();
    AutoCircle = true;
    ZeroLines = true;

    if (axis_name != nullptr) {
        YCoorAxName.emplace_back(axis_name);
        YCoorAxColor.push_back(ComplementColor(colour));
        YCoorAxDerivation.push_back(0);
        Triggers.push_back({TriggerTypeCode::kNone, 0.0, {}});
    } else {
        YCoorAxName.clear();
        YCoorAxColor.clear();
        YCoorAxDerivation.clear();
        Triggers.clear();
    }

    XScale.ScaleType = ScaleTypeCode::kTime;
    XScale.TimeRange = kDefaultTimeRange;
    InnerGuidingCircleDX = kNoRadius;
    InnerGuidingCircleDY = kNoRadius;
    OuterGuidingCircleDX = kNoRadius;
    OuterGuidingCircleDY = kNoRadius;
    FadeOutTime = kDefaultFadeOutTime;

    YScales.push_back(DefaultYScale(axis_name, limits));
}

void WavoGraph::UpdateGuidingCircles() {
    if (AutoCircle) {
        InnerGuidingCircleDY = InnerGuidingCircleDX;
        OuterGuidingCircleDY = OuterGuidingCircleDX;
        return;
    }
    if (YScales.empty()) {
        return;
    }
    const double x_span = XScale.Maximum - XScale.Minimum;
    const double y_span = YScales.front().Maximum - YScales.front().Minimum;
    InnerGuidingCircleDY = InnerGuidingCircleDX / x_span * y_span;
    OuterGuidingCircleDY = OuterGuidingCircleDX / x_span * y_span;
}

double GraphTimeRange(const WavoGraph& graph) {
    const double range =
        graph.XCoorType == CoorType::kAxis ? graph.FadeOutTime : graph.XScale.TimeRange;
    // A file can leave the range out, and a buffer without one would grow for ever.
    return range > 0.0 ? range : kShortestStreamRange;
}

std::string AxisLabel(const std::string& axis_name, std::int32_t derivation) {
    std::string label = axis_name;
    label.append(static_cast<std::size_t>(std::max(derivation, 0)), '\'');
    return label;
}

}  // namespace wavo
