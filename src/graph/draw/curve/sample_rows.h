// The pixel rows of a curve's samples, each found once: a curve that scrolls shows the same samples
// in other columns. A row takes a byte in a plot area of up to 256 rows, else two.
//
// Samples are known by numbers that rise by one and are never used twice. Row 0 is the top.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

#include "graph/draw/raster/pixel_edges.h"
#include "graph/values/sample_ring.h"
#include "support/processor.h"

namespace wavo {

/// Where the answers for a row of columns go, one of each per column.
struct RowsOfColumns {
    std::int32_t* first;  ///< row of the first sample
    std::int32_t* top;    ///< least row
    std::int32_t* bottom;
};

/// Rows of successive samples, one behind the other.
template <typename Row>
class RowStore {
 public:
    /// Samples with the rows, the first of them has this number.
    [[nodiscard]] std::uint64_t First() const { return m_first; }
    [[nodiscard]] std::uint64_t End() const { return m_first + m_count; }
    /// Knows nothing; the next sample has this number.
    void Begin(std::uint64_t first);
    /// REQUIRES: First() <= first <= End().
    void DropBefore(std::uint64_t first);
    /// Makes room for rows of so many samples more.
    void MakeRoom(std::size_t count);
    /// The rows of samples, from their indices from the bottom up. REQUIRES: there is room.
    void Append(std::span<const std::int32_t> indices, std::int32_t lowest_row);
    void OfColumns(std::span<const std::size_t> bounds, const RowsOfColumns& found,
                   Instructions use) const;

 private:
    std::vector<Row> m_rows;    ///< and room to read beyond the last
    std::size_t m_begin = 0;    ///< where the first stands
    std::uint64_t m_first = 0;  ///< its number
    std::size_t m_count = 0;
};

class SampleRows {
 public:
    /// To be called when rows have other values; frees the memory.
    void Forget() { *this = SampleRows(); }
    /// Knows these samples from here on, oldest first, and no others; the first has the number
    /// `first`. `edges`: bottom to top, the same since Forget. False when there is NaN among them,
    /// which have no row: OfColumns must not be asked then.
    bool Follow(std::uint64_t first, const SampleRing::Parts& samples, const PixelEdges& edges);

    /// The rows of a row of columns: column i has the samples from bounds[i] to before bounds[i +
    /// 1], counted from the first. REQUIRES: the bounds rise.
    void OfColumns(std::span<const std::size_t> bounds, const RowsOfColumns& found,
                   Instructions use = BestInstructions()) const;

 private:
    template <typename Row>
    void Follow(RowStore<Row>& rows, std::uint64_t first, const SampleRing::Parts& samples,
                const PixelEdges& edges);
    template <typename Row>
    void Append(RowStore<Row>& rows, std::span<const double> samples, const PixelEdges& edges);

    bool m_bytes = true;  ///< which of the two is used
    RowStore<std::uint8_t> m_byte_rows;
    RowStore<std::uint16_t> m_word_rows;
    std::uint64_t m_after_nan = 0;  ///< no sample from this number on is NaN
};

}  // namespace wavo
