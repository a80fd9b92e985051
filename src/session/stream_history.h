// A buffer as a history of what can be measured: where a derived stream has no derivative, it has
// no value either.
#pragma once

#include "graph/values/graph_value.h"
#include "graph/values/ring_history.h"
#include "source/history.h"

namespace wavo {

class StreamHistory final : public History {
 public:
    /// `value` is not owned and outlives the history. It may change between two questions.
    explicit StreamHistory(const GraphValue& value) : m_value(value), m_ring(value) {}

    // History
    [[nodiscard]] LineRange Lines() const override { return m_ring.Lines(); }
    HistoryAnswer Columns(std::span<const std::int64_t> bounds, ColumnRow& row) override {
        return m_ring.Columns(bounds, row);
    }
    HistoryAnswer Values(std::int64_t first, std::span<double> values) override;
    HistoryAnswer Sums(const LineRange& lines, HistorySums& sums) override {
        return m_ring.Sums(lines, sums);
    }

 private:
    const GraphValue& m_value;
    RingHistory m_ring;
};

}  // namespace wavo
