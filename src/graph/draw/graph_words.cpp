#include "graph/draw/graph_words.h"

#include <cstddef>

#include "graph/draw/frame/scale.h"
#include "graph/draw/frame/texts.h"
#include "graph/draw/graph_draw.h"

namespace wavo {

namespace {

std::string UnitOf(const UnitsOfAxes& units, const std::string& axis, std::int32_t derivation) {
    const auto found = units.find(axis);
    return found == units.end() ? std::string() : DerivedUnit(found->second, derivation);
}

std::string WithUnit(std::string text, const std::string& unit) {
    return unit.empty() ? text : text.append(" ").append(unit);
}

std::string FromTo(double from, double to, const std::string& unit) {
    std::string text = "from ";
    text.append(FormatNumber(from)).append(" to ").append(FormatNumber(to));
    return WithUnit(text, unit);
}

std::string RangeInWords(const ScaleDefinition& scale, const std::string& unit) {
    const ScaleRange range = GraphDefineGetMinMaxValue(scale);
    return FromTo(range.minimum, range.maximum, unit);
}

std::string XScaleInWords(const GraphDraw& graph, const UnitsOfAxes& units) {
    const WavoGraph& shown = graph.Graph();
    if (shown.XCoorType == CoorType::kAxis) {
        return shown.XCoorAxName + " " +
               RangeInWords(shown.XScale, UnitOf(units, shown.XCoorAxName, 0));
    }
    const TimeWindow window = graph.DisplayedWindow();
    const bool is_window = window.end > window.start;
    return "time " + (is_window ? FromTo(window.start, window.end, "s")
                                : FromTo(0.0, shown.XScale.TimeRange, "s"));
}

}  // namespace

std::string ValueInWords(double value, const std::string& axis, std::int32_t derivation,
                         const UnitsOfAxes& units) {
    return WithUnit(FormatNumber(value), UnitOf(units, axis, derivation));
}

std::string TimeInWords(double seconds) {
    return WithUnit(FormatNumber(seconds), "s");
}

std::string ScalesInWords(const GraphDraw& graph, const UnitsOfAxes& units) {
    const WavoGraph& shown = graph.Graph();
    std::string text = shown.YCoorAxName.empty() ? "no axes, " : "";
    for (std::size_t i = 0; i < shown.YCoorAxName.size(); ++i) {
        const std::string& name = shown.YCoorAxName[i];
        const std::int32_t derivation = shown.YCoorAxDerivation[i];
        text.append(AxisLabel(name, derivation))
            .append(" ")
            .append(RangeInWords(shown.YScales[i], UnitOf(units, name, derivation)))
            .append(", ");
    }
    return text.append("over ").append(XScaleInWords(graph, units));
}

std::string StateInWords(const GraphDraw& graph) {
    std::string text = StatusText(graph.State());
    text.erase(text.find_last_not_of(' ') + 1);
    const WavoGraph& shown = graph.Graph();
    for (std::size_t i = 0; !text.empty() && i < shown.Triggers.size(); ++i) {
        const TriggerEntry& trigger = shown.Triggers[i];
        if (IsTrigger(trigger.TriggerType)) {
            text.append(", ")
                .append(AxisLabel(shown.YCoorAxName[i], shown.YCoorAxDerivation[i]))
                .append(FiresAbove(trigger.TriggerType) ? " above " : " below ")
                .append(FormatNumber(trigger.TriggerValue));
        }
    }
    return text;
}

}  // namespace wavo
