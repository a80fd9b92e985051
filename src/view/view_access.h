// What reads the screen aloud finds in the view: the graph editor, and each graph with what it
// shows.
#pragma once

#include <QString>

namespace wavo {

struct WavoGraph;

/// From now on the graphs of every view are found. May be called more than once.
void MakeGraphsAccessible();

/// What a graph is called: "graph 1".
QString AccessibleName(const WavoGraph& graph);

/// What a graph shows: "X,X' over time, 10 s".
QString AccessibleDescription(const WavoGraph& graph);

}  // namespace wavo
