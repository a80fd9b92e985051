#include "ui/graph_editor/graph_edits.h"

#include <algorithm>
#include <cmath>

#include "link/axis_capabilities.h"
#include "support/diagnostics.h"
#include "ui/graph_editor/report_texts.h"

namespace wavo {

namespace {

constexpr double kDefaultFadeOutTime = 1.0;
/// Fade-out times that differ by less are the same, seconds.
constexpr double kFadeOutTolerance = 0.001;
constexpr double kUnknownLimit = 1000.0;
constexpr double kUnknownXBound = 10.0;

struct Bounds {
    double minimum;
    double maximum;
};

/// What the limits of an axis mean for a derivation of it.
Bounds BoundsOf(const std::optional<AxisCapabilities>& limits, std::int32_t derivation) {
    Bounds bounds{0.0, 0.0};
    if (limits.has_value()) {
        switch (derivation) {
            case 0:
                bounds = {limits->lower_limit, limits->upper_limit};
                break;
            case 1:
                bounds = {-limits->velocity_limit, limits->velocity_limit};
                break;
            case 2:
                bounds = {-limits->acceleration_limit, limits->acceleration_limit};
                break;
            default:
                break;
        }
    }
    // Equal bounds are those that the master does not tell.
    if (!(bounds.maximum > bounds.minimum)) {
        bounds = {-kUnknownLimit, kUnknownLimit};
    }
    return {std::max(bounds.minimum, -kLargestBound), std::min(bounds.maximum, kLargestBound)};
}

template <typename Item>
void Erase(std::vector<Item>& list, std::size_t index) {
    if (index < list.size()) {
        list.erase(list.begin() + static_cast<std::ptrdiff_t>(index));
    }
}

template <typename Item>
void KeepFirst(std::vector<Item>& list) {
    if (list.size() > 1) {
        list.erase(list.begin() + 1, list.end());
    }
}

double HeldBound(double value) {
    return std::clamp(value, -kLargestBound, kLargestBound);
}

/// A scale of axis values that was never told how it is scaled.
void CompleteXScale(WavoGraph& graph, const PlotSize& plot) {
    ScaleDefinition& x = graph.XScale;
    if (x.ScaleAx == ScaleAxCode::kAutomatic || x.ScaleAx == ScaleAxCode::kManual) {
        return;
    }
    x.ScaleAx = graph.AutoCircle ? ScaleAxCode::kManual : ScaleAxCode::kAutomatic;
    if (x.Maximum > x.Minimum) {
        return;
    }
    x.Minimum = -kUnknownXBound;
    x.Maximum = kUnknownXBound;
    if (!graph.YScales.empty() && graph.YScales.front().Maximum > graph.YScales.front().Minimum) {
        x.Minimum = graph.YScales.front().Minimum;
        x.Maximum = graph.YScales.front().Maximum;
    }
    KeepCirclesRound(graph, 0, plot);
}

}  // namespace

std::int32_t DerivationOf(const WavoGraph& graph, std::size_t axis) {
    return axis < graph.YCoorAxDerivation.size() ? graph.YCoorAxDerivation[axis] : 0;
}

std::optional<std::size_t> FindYAxis(const WavoGraph& graph, const std::string& name,
                                     std::int32_t derivation) {
    for (std::size_t i = graph.YCoorAxName.size(); i > 0; --i) {
        if (graph.YCoorAxName[i - 1] == name && DerivationOf(graph, i - 1) == derivation) {
            return i - 1;
        }
    }
    return std::nullopt;
}

std::string YAxesText(const WavoGraph& graph) {
    std::string text;
    for (std::size_t i = 0; i < graph.YCoorAxName.size(); ++i) {
        text += i == 0 ? "" : ",";
        text += AxisLabel(graph.YCoorAxName[i], DerivationOf(graph, i));
    }
    return text;
}

void MakeXTime(WavoGraph& graph) {
    graph.XCoorType = CoorType::kTime;
    graph.XScale.ScaleType = ScaleTypeCode::kTime;
    graph.XCoorAxName.clear();
    if (std::fabs(graph.XScale.TimeRange) < kMinTimeRange) {
        graph.XScale.TimeRange = kDefaultTimeRange;
    }
}

void MakeXAxis(WavoGraph& graph, const std::string& name, const PlotSize& plot) {
    KeepFirst(graph.YCoorAxName);
    KeepFirst(graph.YCoorAxColor);
    KeepFirst(graph.YCoorAxDerivation);
    KeepFirst(graph.Triggers);
    KeepFirst(graph.YScales);
    if (!graph.YCoorAxDerivation.empty()) {
        graph.YCoorAxDerivation.front() = 0;
    }
    graph.XCoorAxName = name;
    graph.XCoorType = CoorType::kAxis;
    graph.XScale.ScaleType = ScaleTypeCode::kAxis;
    if (!graph.YScales.empty()) {
        graph.YScales.front().ScaleType = ScaleTypeCode::kAxis;
    }
    graph.FadeOutTime = kDefaultFadeOutTime;
    CompleteXScale(graph, plot);
}

void AddYAxis(WavoGraph& graph, const YAxisToAdd& axis,
              const std::optional<AxisCapabilities>& limits) {
    const Bounds bounds = BoundsOf(limits, axis.derivation);
    const std::size_t axes = graph.YCoorAxName.size();
    graph.YCoorAxColor.resize(axes, axis.color);
    graph.YCoorAxDerivation.resize(axes, 0);
    graph.Triggers.resize(axes, {TriggerTypeCode::kNone, 0.0, {}});
    graph.YScales.resize(
        axes, {ScaleTypeCode::kAxis, 0.0, ScaleAxCode::kManual, -kUnknownLimit, kUnknownLimit});
    graph.YCoorAxName.push_back(axis.name);
    graph.YCoorAxColor.push_back(axis.color);
    graph.YCoorAxDerivation.push_back(axis.derivation);
    graph.Triggers.push_back({TriggerTypeCode::kNone, 0.0, {}});
    graph.YScales.push_back(
        {ScaleTypeCode::kAxis, 0.0, ScaleAxCode::kManual, bounds.minimum, bounds.maximum});
}

void RemoveYAxis(WavoGraph& graph, std::size_t axis) {
    if (axis >= graph.YCoorAxColor.size()) {
        MERRLOG(editor_texts::kColorMissing);
    }
    if (axis >= graph.YCoorAxDerivation.size()) {
        MERRLOG(editor_texts::kDerivationMissing);
    }
    Erase(graph.YCoorAxName, axis);
    Erase(graph.YCoorAxColor, axis);
    Erase(graph.YCoorAxDerivation, axis);
    Erase(graph.Triggers, axis);
    Erase(graph.YScales, axis);
}

void KeepCirclesRound(WavoGraph& graph, std::size_t y_scale, const PlotSize& plot) {
    if (!graph.AutoCircle || graph.XCoorType == CoorType::kTime ||
        y_scale >= graph.YScales.size() || plot.height == 0) {
        return;
    }
    const ScaleDefinition& y = graph.YScales[y_scale];
    const double span = y.Maximum - y.Minimum;
    if (!(span > 0.0)) {
        return;
    }
    graph.XScale.Maximum =
        graph.XScale.Minimum + plot.width * span / static_cast<double>(plot.height);
}

void SetXScale(WavoGraph& graph, const XScaleChoice& choice) {
    ScaleDefinition& scale = graph.XScale;
    if (choice.is_time) {
        scale.ScaleType = ScaleTypeCode::kTime;
        scale.TimeRange = choice.time_range.value_or(scale.TimeRange);
        if (!(scale.TimeRange > kMinTimeRange)) {
            scale.TimeRange = kDefaultTimeRange;
        }
        return;
    }
    scale.ScaleType = ScaleTypeCode::kAxis;
    scale.ScaleAx = ScaleAxCode::kAutomatic;
    if (choice.is_manual && choice.maximum >= choice.minimum) {
        scale.ScaleAx = ScaleAxCode::kManual;
        scale.Minimum = choice.minimum;
        scale.Maximum = choice.maximum;
    }
}

BoundChange SetXBound(WavoGraph& graph, bool is_minimum, double value, const PlotSize& plot) {
    ScaleDefinition& scale = graph.XScale;
    BoundChange change;
    change.is_taken = IsManual(scale);
    if (change.is_taken) {
        (is_minimum ? scale.Minimum : scale.Maximum) = HeldBound(value);
        // Round circles find a maximum for every minimum.
        change.goes_up = scale.Maximum > scale.Minimum || (is_minimum && graph.AutoCircle);
        if (change.goes_up) {
            KeepCirclesRound(graph, 0, plot);
        }
    }
    return change;
}

BoundChange SetYBound(WavoGraph& graph, std::size_t axis, bool is_minimum, double value,
                      const PlotSize& plot) {
    BoundChange change;
    change.is_taken = axis < graph.YScales.size() && IsManual(graph.YScales[axis]);
    if (change.is_taken) {
        ScaleDefinition& scale = graph.YScales[axis];
        (is_minimum ? scale.Minimum : scale.Maximum) = HeldBound(value);
        change.goes_up = scale.Maximum > scale.Minimum;
        change.moved_x = change.goes_up && graph.XCoorType == CoorType::kAxis && graph.AutoCircle;
        if (change.moved_x) {
            KeepCirclesRound(graph, axis, plot);
        }
    }
    return change;
}

void SetAutoCircle(WavoGraph& graph, bool is_on, std::optional<std::size_t> axis) {
    graph.AutoCircle = is_on;
    if (!is_on) {
        return;
    }
    graph.XScale.ScaleAx = ScaleAxCode::kManual;
    if (axis.has_value() && *axis < graph.YScales.size()) {
        graph.YScales[*axis].ScaleAx = ScaleAxCode::kManual;
    }
}

bool SetCircle(WavoGraph& graph, bool is_inner, std::optional<double> radius) {
    if (graph.XScale.ScaleType != ScaleTypeCode::kAxis || graph.YScales.size() != 1) {
        return false;
    }
    (is_inner ? graph.InnerGuidingCircleDX : graph.OuterGuidingCircleDX) =
        radius.value_or(kNoRadius);
    if (!radius.has_value()) {
        (is_inner ? graph.InnerGuidingCircleDY : graph.OuterGuidingCircleDY) = kNoRadius;
    }
    return true;
}

bool SetFadeOutTime(WavoGraph& graph, double time) {
    if (!(time > 0.0) || !(std::fabs(time - graph.FadeOutTime) > kFadeOutTolerance)) {
        return false;
    }
    graph.FadeOutTime = time;
    return true;
}

bool IsManual(const ScaleDefinition& scale) {
    return scale.ScaleType == ScaleTypeCode::kAxis && scale.ScaleAx == ScaleAxCode::kManual;
}

bool HasBounds(const ScaleDefinition& scale) {
    return IsManual(scale) || scale.Maximum > scale.Minimum;
}

std::optional<double> RadiusOf(double dx) {
    return dx == kNoRadius ? std::nullopt : std::optional(dx);
}

bool MixesTriggers(const WavoGraph& graph) {
    const auto has = [&graph](bool (*kind)(TriggerTypeCode)) {
        return std::any_of(
            graph.Triggers.begin(), graph.Triggers.end(),
            [kind](const TriggerEntry& trigger) { return kind(trigger.TriggerType); });
    };
    return has(IsStartTrigger) && has(IsStopTrigger);
}

TriggerEntry TriggerOf(const WavoGraph& graph, std::size_t axis) {
    TriggerEntry trigger{TriggerTypeCode::kNone, 0.0, {}};
    if (axis < graph.Triggers.size()) {
        trigger = graph.Triggers[axis];
    }
    if (trigger.AxName.empty() && axis < graph.YCoorAxName.size()) {
        trigger.AxName = graph.YCoorAxName[axis];
    }
    return trigger;
}

void SetTrigger(WavoGraph& graph, std::size_t axis, const TriggerEntry& trigger) {
    if (axis >= graph.Triggers.size()) {
        graph.Triggers.resize(axis + 1, {TriggerTypeCode::kNone, 0.0, {}});
    }
    graph.Triggers[axis] = trigger;
}

}  // namespace wavo
