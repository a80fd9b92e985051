// The document: the definitions of all graphs, in the order in which they are shown.
//
// Invariants:
// 1. Nobody else holds or changes the records: each change is a call here.
// 2. The observer is told of each change, after it is made. It sees to everything that follows from
//    it, so that who changes the document need not.
// 3. Graph numbers are unique, as long as those are that Replace is given.
// 4. A record that was put has guiding circles that fit its scales.
#pragma once

#include <cstdint>
#include <functional>
#include <utility>
#include <vector>

#include "graph/model/wavo_graph.h"

namespace wavo {

/// What has become of the document.
struct GraphChange {
    enum class Kind {
        kPut,       ///< a graph has another definition
        kAdded,     ///< a graph came to the end
        kRemoved,   ///< a graph is gone
        kReplaced,  ///< all are others
    };
    Kind kind = Kind::kPut;
    std::uint32_t number = 0;  ///< of the graph; 0 for kReplaced
    /// Who made the change tells himself who has to know of it: the graph editor does so with its
    /// messages.
    bool silent = false;

    friend bool operator==(const GraphChange&, const GraphChange&) = default;
};

class GraphList {
 public:
    enum class Telling { kTold, kSilent };

    using Observer = std::function<void(const GraphChange&)>;
    /// Tells `observer` of each change from now on; null tells nobody.
    void SetObserver(Observer observer) { m_observer = std::move(observer); }

    [[nodiscard]] const std::vector<WavoGraph>& Graphs() const { return m_graphs; }
    [[nodiscard]] bool IsEmpty() const { return m_graphs.empty(); }
    /// The graph of that number; null when there is none. Valid until the next change.
    [[nodiscard]] const WavoGraph* Find(std::uint32_t number) const;
    /// A number that no graph has: one above the highest.
    [[nodiscard]] std::uint32_t FreeNumber() const;

    /// Gives the graph of that number the definition. False, and nothing changed, when there is
    /// none.
    bool Put(WavoGraph graph, Telling telling = Telling::kTold);
    /// Adds a graph at the end. REQUIRES: no graph has its number.
    void Add(WavoGraph graph, Telling telling = Telling::kTold);
    /// Removes the graph of that number. False when there is none.
    bool Remove(std::uint32_t number, Telling telling = Telling::kTold);
    /// Takes these graphs in the place of all that there are.
    void Replace(std::vector<WavoGraph> graphs, Telling telling = Telling::kTold);

 private:
    [[nodiscard]] std::vector<WavoGraph>::iterator Locate(std::uint32_t number);
    void Tell(GraphChange::Kind kind, std::uint32_t number, Telling telling) const;

    std::vector<WavoGraph> m_graphs;
    Observer m_observer;
};

}  // namespace wavo
