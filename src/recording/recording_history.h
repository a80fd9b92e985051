// A stream of a recording, asked as a history.
//
// Columns, values and sums are exact, and all there at once: a row of columns reads the levels and
// the blocks of 64 lines at the bounds that it has not read before. Who draws pixels asks for the
// outline first, and looks closer within a budget where the pixels need it.
#pragma once

#include <algorithm>
#include <cstdint>
#include <limits>
#include <span>
#include <vector>

#include "recording/recording_reader.h"
#include "source/history.h"

namespace wavo::recording {

/// How much may be read before somebody else has his turn. A unit is what one look at what is in
/// memory costs; reading costs one more for every kBytesPerUnit, or kBytesPerUnitOfValues of what
/// stands in a row.
class ReadingBudget {
 public:
    static constexpr std::uint64_t kBytesPerUnit = 4096;
    static constexpr std::uint64_t kBytesPerUnitOfValues = 16 * kBytesPerUnit;
    static constexpr std::uint64_t kUnlimited = std::numeric_limits<std::uint64_t>::max();

    void Renew(std::uint64_t units) { m_left = units; }
    [[nodiscard]] bool IsSpent() const { return m_left == 0; }
    /// A look that has read so much.
    void Spend(std::uint64_t bytes_read, std::uint64_t bytes_per_unit = kBytesPerUnit) {
        if (m_left != kUnlimited) {
            m_left -= std::min(m_left, 1 + bytes_read / bytes_per_unit);
        }
    }

 private:
    std::uint64_t m_left = kUnlimited;
};

class RecordingHistory final : public History {
 public:
    /// The stream of an axis with an order of derivation. `reader` is not owned and outlives the
    /// history, and so does `budget`, which may be null; `absent` stands for lines without a value.
    /// REQUIRES: as RecordingReader::ReadValues.
    RecordingHistory(RecordingReader& reader, std::size_t axis, std::int32_t order, double absent,
                     ReadingBudget* budget = nullptr)
        : m_reader(reader), m_axis(axis), m_order(order), m_absent(absent), m_budget(budget) {}

    // History
    [[nodiscard]] LineRange Lines() const override;
    HistoryAnswer Columns(std::span<const std::int64_t> bounds, ColumnRow& row) override;
    HistoryAnswer Values(std::int64_t first, std::span<double> values) override;
    HistoryAnswer Sums(const LineRange& lines, HistorySums& sums) override;
    bool Outline(std::span<const std::int64_t> bounds, std::span<ColumnOutline> columns) override;
    HistoryAnswer LookCloser(const LineRange& lines, ColumnOutline& column) override;
    void Cut(const LineRange& lines, std::vector<std::int64_t>& bounds) const override;
    HistoryAnswer LookNear(std::span<const std::int64_t> bounds,
                           std::span<ColumnOutline> columns) override;
    HistoryAnswer ValuesToDraw(std::int64_t first, std::span<double> values) override;
    void Announce(const LineRange& lines, const ColumnOutline& column) override;
    [[nodiscard]] std::uint64_t Version() const override { return m_reader.Versions().lines; }
    [[nodiscard]] std::uint64_t Losses() const override { return m_reader.Versions().losses; }

 private:
    /// There are levels of this order in the file.
    [[nodiscard]] bool HasLevels() const {
        return m_order < static_cast<std::int32_t>(kLevelOrders);
    }
    /// How closely the next look at a column is.
    [[nodiscard]] Detail NextDetail(const ColumnOutline& column) const {
        return column.closeness == Closeness::kNear || !HasLevels() ? Detail::kLines
                                                                    : Detail::kBlocks;
    }
    void SetBounds(std::span<const std::int64_t> bounds);
    /// Looks at columns of a stream with levels.
    void LookAt(std::span<const std::int64_t> bounds, Detail detail, Closeness closeness,
                std::span<ColumnOutline> columns);
    [[nodiscard]] bool MayRead() const { return m_budget == nullptr || !m_budget->IsSpent(); }
    /// Lets `read` read, and counts what it has read; kNotLoaded when the budget is spent.
    template <typename Read>
    HistoryAnswer ReadWithinBudget(std::uint64_t bytes_per_unit, Read read) {
        if (!MayRead()) {
            return HistoryAnswer::kNotLoaded;
        }
        const std::uint64_t before = m_reader.BytesRead();
        read();
        if (m_budget != nullptr) {
            m_budget->Spend(m_reader.BytesRead() - before, bytes_per_unit);
        }
        return HistoryAnswer::kAll;
    }

    RecordingReader& m_reader;
    const std::size_t m_axis;
    const std::int32_t m_order;
    const double m_absent;
    ReadingBudget* const m_budget;
    std::vector<std::uint64_t> m_bounds;
    std::vector<ColumnExtent> m_columns;
};

}  // namespace wavo::recording
