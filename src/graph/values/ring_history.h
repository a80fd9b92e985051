// The buffer of a stream, asked as a history.
//
// The extremes of a column come from a pyramid over the ring: a question costs as much as its
// columns, not as its lines.
#pragma once

#include "graph/values/graph_value.h"
#include "source/history.h"

namespace wavo {

class RingHistory final : public History {
 public:
    /// `value` is not owned and outlives the history. It may change between two questions.
    explicit RingHistory(const GraphValue& value) : m_value(value) {}

    // History
    [[nodiscard]] LineRange Lines() const override;
    HistoryAnswer Columns(std::span<const std::int64_t> bounds, ColumnRow& row) override;
    HistoryAnswer Values(std::int64_t first, std::span<double> values) override;
    HistoryAnswer Sums(const LineRange& lines, HistorySums& sums) override;

 private:
    /// Samples that came with successive lines, as they are held.
    [[nodiscard]] std::vector<LineLog::Run> Runs() const;
    /// Takes `count` samples from a sequence number on into a column.
    void Take(std::uint64_t sequence, std::uint64_t count, ColumnRow& row,
              std::size_t column) const;

    const GraphValue& m_value;
};

}  // namespace wavo
