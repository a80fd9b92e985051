// What a graph shows, in words, for those who do not see it.
#pragma once

#include <QString>
#include <map>
#include <string>

namespace wavo {

class GraphDraw;
struct MeasuredTable;
struct WavoGraph;

/// Units of values, by the names of axes; of some.
using UnitsOfAxes = std::map<std::string, std::string>;

/// What a graph is called: "graph 1".
QString NameInWords(const WavoGraph& graph);

/// Its axes and what their scales show: "X from -10.0 to 10.0 mm, X' from -1.0 to 1.0 mm/s, over
/// time from 0.0 to 10.0 s".
QString ScalesInWords(const GraphDraw& graph, const UnitsOfAxes& units);

/// What its trigger does: "waiting for start-trigger, X above 5.0". Empty without a trigger.
QString StateInWords(const GraphDraw& graph);

/// What the cursors read: "cursor A at -1.5 s: X 3.5 mm; cursor B not on the data". Empty where
/// `table` has no curve of the graph.
QString CursorsInWords(const GraphDraw& graph, const MeasuredTable& table,
                       const UnitsOfAxes& units);

}  // namespace wavo
