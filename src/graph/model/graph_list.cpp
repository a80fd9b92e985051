#include "graph/model/graph_list.h"

#include <algorithm>

namespace wavo {

std::vector<WavoGraph>::iterator GraphList::Locate(std::uint32_t number) {
    return std::find_if(m_graphs.begin(), m_graphs.end(),
                        [number](const WavoGraph& graph) { return graph.GraphNumber == number; });
}

const WavoGraph* GraphList::Find(std::uint32_t number) const {
    const auto found =
        std::find_if(m_graphs.begin(), m_graphs.end(),
                     [number](const WavoGraph& graph) { return graph.GraphNumber == number; });
    return found == m_graphs.end() ? nullptr : &*found;
}

std::uint32_t GraphList::FreeNumber() const {
    std::uint32_t highest = 0;
    for (const WavoGraph& graph : m_graphs) {
        highest = std::max(highest, graph.GraphNumber);
    }
    return highest + 1;
}

bool GraphList::Put(WavoGraph graph, Telling telling) {
    const auto found = Locate(graph.GraphNumber);
    if (found == m_graphs.end()) {
        return false;
    }
    graph.UpdateGuidingCircles();
    const std::uint32_t number = graph.GraphNumber;
    *found = std::move(graph);
    Tell(GraphChange::Kind::kPut, number, telling);
    return true;
}

void GraphList::Add(WavoGraph graph, Telling telling) {
    const std::uint32_t number = graph.GraphNumber;
    m_graphs.push_back(std::move(graph));
    Tell(GraphChange::Kind::kAdded, number, telling);
}

bool GraphList::Remove(std::uint32_t number, Telling telling) {
    const auto found = Locate(number);
    if (found == m_graphs.end()) {
        return false;
    }
    m_graphs.erase(found);
    Tell(GraphChange::Kind::kRemoved, number, telling);
    return true;
}

void GraphList::Replace(std::vector<WavoGraph> graphs, Telling telling) {
    m_graphs = std::move(graphs);
    Tell(GraphChange::Kind::kReplaced, 0, telling);
}

void GraphList::Tell(GraphChange::Kind kind, std::uint32_t number, Telling telling) const {
    if (m_observer) {
        m_observer({kind, number, telling == Telling::kSilent});
    }
}

}  // namespace wavo
