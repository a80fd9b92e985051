#include "graph/draw/frame/texts.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdio>
#include <initializer_list>
#include <string_view>

#include "graph/draw/frame/scale.h"

namespace wavo {

namespace {

/// Windows shorter than this are none.
constexpr double kSmallestWindow = 1e-6;

std::string Join(std::initializer_list<std::string_view> parts) {
    std::string text;
    for (const std::string_view part : parts) {
        text.append(part);
    }
    return text;
}

std::string RangeText(const ScaleRange& range) {
    return Join({"(", FormatNumber(range.minimum), " ... ", FormatNumber(range.maximum), ")"});
}

}  // namespace

std::string FormatNumber(double value) {
    constexpr std::size_t kMostCharacters = 320;  // of the largest number
    std::array<char, kMostCharacters> buffer;
    const int length = std::snprintf(buffer.data(), buffer.size(), "%.6f", value);
    if (length <= 0) {
        return {};
    }
    std::string text(buffer.data(), static_cast<std::size_t>(length));
    const std::size_t point = text.find('.');
    if (point == std::string::npos) {
        return text;
    }
    while (text.size() > point + 2 && text.back() == '0') {
        text.pop_back();
    }
    return text;
}

std::string NamePart(const AxisText& text) {
    return text.coordinate + text.name.value_or(std::string());
}

std::string RangePart(const AxisText& text) {
    const bool is_joined = text.name.has_value() && !text.range.empty();
    return Join({is_joined ? "=" : "", text.range, text.unit});
}

std::string Joined(const AxisText& text) {
    return NamePart(text) + RangePart(text);
}

AxisText XAxisText(const WavoGraph& graph, const TimeWindow& window) {
    if (graph.XCoorType == CoorType::kAxis) {
        return {"X: ", graph.XCoorAxName, RangeText(GraphDefineGetMinMaxValue(graph.XScale)), ""};
    }
    if (std::abs(window.end - window.start) < kSmallestWindow) {
        return {"T: ", std::nullopt, Join({"(0 ... ", FormatNumber(graph.XScale.TimeRange), ")"}),
                "s"};
    }
    return {"T: ", std::nullopt, RangeText({window.start, window.end}), "s"};
}

AxisText YAxisText(const WavoGraph& graph, std::size_t axis, const std::string& name) {
    const ScaleDefinition& scale = graph.YScales[axis];
    if (scale.ScaleType != ScaleTypeCode::kAxis) {
        return {"?", std::nullopt, "", ""};
    }
    return {"Y: ", name, RangeText(GraphDefineGetMinMaxValue(scale)), ""};
}

std::string DerivedUnit(const std::string& unit, std::int32_t derivation) {
    constexpr std::array<std::string_view, 10> kPerSecond{"",    "/s",  "/s²", "/s³", "/s⁴",
                                                          "/s⁵", "/s⁶", "/s⁷", "/s⁸", "/s⁹"};
    if (unit.empty()) {
        return {};
    }
    for (std::size_t power = kPerSecond.size() - 1;; --power) {
        if (unit.ends_with(kPerSecond[power])) {
            const std::size_t all = power + static_cast<std::size_t>(std::max(derivation, 0));
            return all < kPerSecond.size() ? Join({std::string_view(unit).substr(
                                                       0, unit.size() - kPerSecond[power].size()),
                                                   kPerSecond[all]})
                                           : std::string();
        }
    }
}

std::string XText(const WavoGraph& graph, const TimeWindow& window) {
    return Joined(XAxisText(graph, window));
}

std::string YText(const WavoGraph& graph, std::size_t axis) {
    return Joined(YAxisText(graph, axis, graph.YCoorAxName[axis]));
}

std::string XSpacingText(const WavoGraph& graph, const ScaleDefinition& shown_scale,
                         std::int32_t lines) {
    const std::string spacing =
        FormatNumber(ScaleSpacing(GraphDefineGetMinMaxValue(shown_scale), lines));
    if (graph.XCoorType == CoorType::kAxis) {
        return Join({graph.XCoorAxName, ":   dx=", spacing});
    }
    return Join({"dT=", spacing, "s"});
}

std::string YSpacingText(const WavoGraph& graph, std::size_t axis, std::int32_t lines) {
    const ScaleRange range = GraphDefineGetMinMaxValue(graph.YScales[axis]);
    return Join({AxisLabel(graph.YCoorAxName[axis], graph.YCoorAxDerivation[axis]),
                 ":   dy=", FormatNumber(ScaleSpacing(range, lines))});
}

}  // namespace wavo
