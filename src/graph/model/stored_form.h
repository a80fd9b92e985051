// What of a graph can stand in a file and is read back from there.
#pragma once

#include <cstddef>
#include <utility>

#include "graph/model/wavo_graph.h"

namespace wavo {

/// White space that is removed from lists that are read.
bool IsWhiteSpace(char c) noexcept;

/// Removes the axes whose names cannot stand in a file, each with an error-log entry: y axes with
/// their colour, derivation, trigger and scale when the name is empty (white space aside) or holds
/// a comma or a line end; the x axis for a line end. Returns how many there were.
std::size_t RemoveAxesWithoutAForm(WavoGraph& graph);

/// Minimum and maximum of a scale as they are written: finite and in ascending order.
std::pair<double, double> StoredBounds(const ScaleDefinition& scale);

}  // namespace wavo
