// The pixel rows of columns with many samples, from the blocks of a pyramid over them.
//
// The blocks that lie within a column tell which rows it covers at least, and with those that its
// borders cut, which it covers at most. Where the two differ, smaller blocks at the borders are
// looked at, and at last the samples there: long columns lie in few rows more or less than their
// blocks, and few columns come so far.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

#include "graph/draw/curve/sample_rows.h"
#include "graph/draw/raster/pixel_edges.h"
#include "graph/values/min_max_pyramid.h"

namespace wavo {

class RowsFromBlocks {
 public:
    /// Samples without NaN by their slots, and the pyramid over them.
    struct Source {
        const double* slots;
        const MinMaxPyramid& pyramid;
    };

    /// Finds the rows of a row of columns; column i has the slots from bounds[i] to before
    /// bounds[i + 1]. The first row of a column is exact where the way to it from the column before
    /// may leave the rows of that one, and in the first and in the last column; elsewhere it is
    /// some row of the column before. `detail`: where to begin, from MinMaxPyramid::DetailOf, not
    /// 0. Returns the number of columns whose samples were looked at. REQUIRES: the bounds rise.
    std::size_t Find(const Source& source, std::span<const std::size_t> bounds, std::size_t detail,
                     const PixelEdges& rows, const RowsOfColumns& found);

 private:
    void Resize(std::size_t columns);
    /// Maps the limits of the columns that are looked at; those whose rows are known leave. Returns
    /// how many are left.
    std::size_t TakeKnown(const PixelEdges& rows, const RowsOfColumns& found, std::size_t count,
                          std::size_t detail);
    void NarrowAll(const Source& source, std::span<const std::size_t> bounds, std::size_t count,
                   std::size_t detail);
    void FindFirst(const Source& source, std::span<const std::size_t> bounds,
                   const PixelEdges& rows, const RowsOfColumns& found);

    std::vector<std::uint8_t> m_details;  ///< at which the rows of each column became known
    // The columns that are looked at, one behind the other: number, limits, and their pixels.
    std::vector<std::uint32_t> m_columns;
    std::vector<double> m_inner_minimum;
    std::vector<double> m_inner_maximum;
    std::vector<double> m_outer_minimum;
    std::vector<double> m_outer_maximum;
    std::vector<std::int32_t> m_inner_low;
    std::vector<std::int32_t> m_inner_high;
    std::vector<std::int32_t> m_outer_low;
    std::vector<std::int32_t> m_outer_high;
};

}  // namespace wavo
