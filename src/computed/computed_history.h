// One stream of ComputedStreams.
#pragma once

#include <cstddef>
#include <cstdint>
#include <limits>
#include <optional>
#include <span>
#include <vector>

#include "computed/computed_streams.h"

namespace wavo::computed {

class ComputedHistory final : public History {
 public:
    /// `streams` is not owned and outlives the history.
    ComputedHistory(ComputedStreams& streams, std::size_t axis, std::int32_t order);

    // History
    [[nodiscard]] LineRange Lines() const override;
    HistoryAnswer Columns(std::span<const std::int64_t> bounds, ColumnRow& row) override;
    HistoryAnswer Values(std::int64_t first, std::span<double> values) override;
    HistoryAnswer Sums(const LineRange& lines, HistorySums& sums) override;
    bool Outline(std::span<const std::int64_t> bounds, std::span<ColumnOutline> columns) override;
    HistoryAnswer LookCloser(const LineRange& lines, ColumnOutline& column) override;
    void Cut(const LineRange& lines, std::vector<std::int64_t>& bounds) const override;
    HistoryAnswer ValuesToDraw(std::int64_t first, std::span<double> values) override;
    [[nodiscard]] std::uint64_t Version() const override;
    [[nodiscard]] std::uint64_t Losses() const override;

 private:
    /// What lines cover; without values the minimum is above the maximum.
    struct Extent {
        double minimum = std::numeric_limits<double>::infinity();
        double maximum = -std::numeric_limits<double>::infinity();
        double first = std::numeric_limits<double>::quiet_NaN();  ///< value
        double last = std::numeric_limits<double>::quiet_NaN();
        bool missing = false;

        void Take(std::span<const double> values);
        void Take(const Extent& next);
    };
    enum class Effort { kAll, kAsFarAsAllowed };

    /// What a block covers, by its number; null when it was not computed. REQUIRES: it has lines.
    [[nodiscard]] const Extent* ExtentOf(std::int64_t block) const;
    /// Adds what a stretch of lines covers; false when no more may be computed.
    bool TakeLines(const LineRange& lines, Effort effort, Extent& extent);
    /// The values of a block; null when it may not be computed.
    const std::vector<double>* ValuesOf(std::int64_t block, Effort effort);
    /// Copies the values of lines; false when no more may be computed.
    bool CopyValues(std::int64_t first, Effort effort, std::span<double> values);
    void ComputeLines(const LineRange& lines, std::span<double> out);
    /// Computes the axis itself into m_computed from a line on; `present` tells which lines there
    /// are.
    void ComputeAxis(std::int64_t first, std::size_t count, std::vector<std::uint8_t>& present);
    /// Forgets what no longer holds.
    void Check();

    ComputedStreams& m_streams;
    const std::size_t m_axis;
    const std::int32_t m_order;
    const ComputedProgram::Needs m_needs;
    std::vector<std::optional<Extent>> m_extents;  ///< of blocks, from m_first_block on
    std::int64_t m_first_block = 0;
    LineRange m_lines;  ///< that m_extents were found in
    std::uint64_t m_version = 0;
    std::uint64_t m_losses = 0;
    std::vector<std::vector<double>> m_source;    ///< values of axes, as m_needs.source
    std::vector<std::vector<double>> m_computed;  ///< as m_needs.order
};

}  // namespace wavo::computed
