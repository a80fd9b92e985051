// A stream of a recording, asked as a history.
//
// Answers are exact, and all there at once: a row of columns reads the levels and the blocks of 64
// lines at the bounds that it has not read before. Who draws pixels asks RecordingReader::Columns
// with less detail first.
#pragma once

#include <cstdint>
#include <vector>

#include "recording/recording_reader.h"
#include "source/history.h"

namespace wavo::recording {

class RecordingHistory final : public History {
 public:
    /// The stream of an axis with an order of derivation. `reader` is not owned and outlives the
    /// history; `absent` stands for lines without a value. REQUIRES: as
    /// RecordingReader::ReadValues.
    RecordingHistory(RecordingReader& reader, std::size_t axis, std::int32_t order, double absent)
        : m_reader(reader), m_axis(axis), m_order(order), m_absent(absent) {}

    // History
    [[nodiscard]] LineRange Lines() const override;
    HistoryAnswer Columns(std::span<const std::int64_t> bounds, ColumnRow& row) override;
    HistoryAnswer Values(std::int64_t first, std::span<double> values) override;
    HistoryAnswer Sums(const LineRange& lines, HistorySums& sums) override;

 private:
    RecordingReader& m_reader;
    const std::size_t m_axis;
    const std::int32_t m_order;
    const double m_absent;
    std::vector<std::uint64_t> m_bounds;
    std::vector<ColumnExtent> m_columns;
};

}  // namespace wavo::recording
