// The streams of one graph.
#pragma once

#include <vector>

namespace wavo {

class GraphValue;

/// The buffers of a graph: one per y axis, in order, and that of the x axis of an axis-over-axis
/// graph. Null where there is none. Not owned.
struct GraphStreams {
    std::vector<GraphValue*> y;
    GraphValue* x = nullptr;
};

}  // namespace wavo
