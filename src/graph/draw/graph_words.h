// What a graph shows, in words, for those who do not see it.
#pragma once

#include <cstdint>
#include <map>
#include <string>

namespace wavo {

class GraphDraw;

/// Units of values, by the names of axes; of some.
using UnitsOfAxes = std::map<std::string, std::string>;

/// A value of an axis with its unit, where one is known: "3.5 mm".
std::string ValueInWords(double value, const std::string& axis, std::int32_t derivation,
                         const UnitsOfAxes& units);
/// Seconds: "1.5 s".
std::string TimeInWords(double seconds);

/// The axes of a graph and what their scales show: "X from -10.0 to 10.0 mm, X' from -1.0 to 1.0
/// mm/s, over time from 0.0 to 10.0 s".
std::string ScalesInWords(const GraphDraw& graph, const UnitsOfAxes& units);

/// What its trigger does: "waiting for start-trigger, X above 5.0". Empty without a trigger.
std::string StateInWords(const GraphDraw& graph);

}  // namespace wavo
