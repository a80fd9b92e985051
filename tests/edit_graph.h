// Editing a graph of the document as the graph editor does: the view learns of it by messages
// alone.
#pragma once

#include <cstddef>

#include "graph/model/graph_list.h"

namespace wavo::testing {

/// `edit` changes the graph at a place of the list; not its number.
template <typename Edit>
void EditGraph(GraphList& graphs, std::size_t index, const Edit& edit) {
    WavoGraph graph = graphs.Graphs()[index];
    edit(graph);
    graphs.Put(graph, GraphList::Telling::kSilent);
}

}  // namespace wavo::testing
