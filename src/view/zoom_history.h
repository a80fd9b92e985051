// The zooms that can be stepped back from, of all graphs.
//
// Invariant: an entry says how a graph was shown before the zoom that made the entry.
#pragma once

#include <cstdint>
#include <optional>
#include <vector>

#include "graph/draw/graph_draw.h"

namespace wavo {

class ZoomHistory {
 public:
    /// A graph is being zoomed that was shown like this.
    void Push(std::uint32_t graph_number, const ZoomState& before) {
        m_entries.push_back({graph_number, before});
    }

    /// Takes the last entry of a graph; nothing when it has none.
    std::optional<ZoomState> Pop(std::uint32_t graph_number);

    void Clear() { m_entries.clear(); }
    [[nodiscard]] bool IsEmpty() const { return m_entries.empty(); }

 private:
    struct Entry {
        std::uint32_t graph_number;
        ZoomState before;
    };

    std::vector<Entry> m_entries;  // of all graphs, oldest first
};

}  // namespace wavo
