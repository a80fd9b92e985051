// What the cursors read in a graph, in words, for those who do not see it.
#pragma once

#include <string>

#include "graph/draw/graph_words.h"

namespace wavo {

struct MeasuredTable;

/// "cursor A at -1.5 s: X 3.5 mm; cursor B not on the data". Empty where `table` has no curve of
/// the graph.
std::string CursorsInWords(const GraphDraw& graph, const MeasuredTable& table,
                           const UnitsOfAxes& units);

}  // namespace wavo
