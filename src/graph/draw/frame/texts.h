// The texts of a graph: what its coordinates show, from where to where, and how far apart the
// scale lines stand.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>

#include "graph/model/wavo_graph.h"
#include "graph/values/time_window.h"

namespace wavo {

/// A number as all graph texts show it: six decimals, of which trailing zeros are cut down to one
/// digit after the point.
std::string FormatNumber(double value);

/// "T: (0 ... 10.0)s", "T: (1.0 ... 3.0)s" for a window, or "X: name=(minimum ... maximum)".
std::string XText(const WavoGraph& graph, const TimeWindow& window);

/// "Y: name=(minimum ... maximum)" of a y axis; "?" when its scale is no axis scale.
/// REQUIRES: axis < graph.YCoorAxName.size() and graph.YScales.size().
std::string YText(const WavoGraph& graph, std::size_t axis);

/// The same text with another name for the axis. REQUIRES: as YText.
std::string YTextNamed(const WavoGraph& graph, std::size_t axis, const std::string& name);

/// "dT=2.0s" or "name:   dx=2.0" for `lines` lines on the scale that is shown.
std::string XSpacingText(const WavoGraph& graph, const ScaleDefinition& shown_scale,
                         std::int32_t lines);

/// "name':   dy=5.0" of a y axis, one "'" per derivation order. REQUIRES: as YText.
std::string YSpacingText(const WavoGraph& graph, std::size_t axis, std::int32_t lines);

}  // namespace wavo
