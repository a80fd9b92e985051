// The buffers of all streams that any graph shows, one per (axis name, derivation order).
//
// Invariant: buffers keep their addresses while the list grows, until Clear.
#pragma once

#include <cstdint>
#include <deque>
#include <string>

#include "graph/values/graph_value.h"

namespace wavo {

class GraphValueRegistry {
 public:
    /// What GetGraphValueFifo returns: a buffer owned by the registry, or null and the reason
    /// in the words for the error log and the user.
    struct Result {
        GraphValue* value = nullptr;
        const char* reason = nullptr;
    };

    /// Finds the buffer of the stream, growing it when `time_range` (seconds) is longer than what
    /// it covers, or makes one. Fails when the stream is held with another cycle time.
    Result GetGraphValueFifo(const std::string& name, double cycle_time, double time_range,
                             std::int32_t derivation_order);

    void Clear() { m_values.clear(); }

    [[nodiscard]] std::deque<GraphValue>& Values() { return m_values; }
    [[nodiscard]] const std::deque<GraphValue>& Values() const { return m_values; }

 private:
    std::deque<GraphValue> m_values;
};

}  // namespace wavo
