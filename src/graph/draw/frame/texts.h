// The texts of a graph: what its coordinates show, from where to where, and how far apart the
// scale lines stand.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>

#include "graph/model/wavo_graph.h"
#include "graph/values/time_window.h"

namespace wavo {

/// A number as all graph texts show it: six decimals, of which trailing zeros are cut down to one
/// digit after the point.
std::string FormatNumber(double value);

/// What a coordinate shows, by its parts: where there is little room, whole parts go.
struct AxisText {
    std::string coordinate;           ///< "T: ", "X: " or "Y: "; "?" where nothing else is known
    std::optional<std::string> name;  ///< of an axis; none over time
    std::string range;                ///< "(minimum ... maximum)"
    std::string unit;                 ///< "s" over time, that of the axis where one is known

    friend bool operator==(const AxisText&, const AxisText&) = default;
};

/// The parts as one text: "T: (0 ... 10.0)s", "X: name=(minimum ... maximum)".
std::string Joined(const AxisText& text);
/// What stands before the range: "Y: name".
std::string NamePart(const AxisText& text);
/// The range and what joins it to the name: "=(minimum ... maximum)".
std::string RangePart(const AxisText& text);

/// The x coordinate: over time "(0 ... 10.0)" s, or the window where there is one.
AxisText XAxisText(const WavoGraph& graph, const TimeWindow& window);
/// A y axis, called `name`; "?" when its scale is no axis scale.
/// REQUIRES: axis < graph.YCoorAxName.size() and graph.YScales.size().
AxisText YAxisText(const WavoGraph& graph, std::size_t axis, const std::string& name);

/// The unit of a derivative of values with a unit: "mm/s" of "mm" and 1, "mm/s²" of "mm/s" and
/// 1. Empty without a unit.
std::string DerivedUnit(const std::string& unit, std::int32_t derivation);

/// XAxisText in one text.
std::string XText(const WavoGraph& graph, const TimeWindow& window);
/// YAxisText in one text, with the name that the axis has. REQUIRES: as YAxisText.
std::string YText(const WavoGraph& graph, std::size_t axis);

/// "dT=2.0s" or "name:   dx=2.0" for `lines` lines on the scale that is shown.
std::string XSpacingText(const WavoGraph& graph, const ScaleDefinition& shown_scale,
                         std::int32_t lines);

/// "name':   dy=5.0" of a y axis, one "'" per derivation order. REQUIRES: as YAxisText.
std::string YSpacingText(const WavoGraph& graph, std::size_t axis, std::int32_t lines);

}  // namespace wavo
