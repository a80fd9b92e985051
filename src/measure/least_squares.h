// Least squares by Householder's QR, block of rows after block of rows: as exact as one
// decomposition of all rows, in little memory.
#pragma once

#include <cstddef>
#include <span>
#include <vector>

namespace wavo::measure {

class LeastSquares {
 public:
    /// REQUIRES: unknowns >= 1.
    explicit LeastSquares(std::size_t unknowns);

    /// Room for the next row, times one weight: the entries of its unknowns and the right side
    /// stand `Stride()` apart. The row counts from the next call on.
    double* NextRow() {
        if (m_row == m_stride) {
            Reduce();
        }
        return m_block.data() + m_row++;
    }
    [[nodiscard]] std::size_t Stride() const { return m_stride; }

    /// The same from a row in one piece: entries, then the right side.
    void Add(std::span<const double> row);

    struct Solution {
        std::vector<double> unknowns;
        std::size_t rank = 0;          ///< of the matrix with columns scaled to unit length
        double condition = 0.0;        ///< of the same; infinite when it has not its full rank
        double residual = 0.0;         ///< sum of the squared residuals
        std::vector<double> variance;  ///< per unknown, for unit variance of the right side
    };

    /// REQUIRES: as many rows as unknowns. With a lower rank the unknowns are zeros.
    Solution Solve();

 private:
    void Reduce();

    std::size_t m_unknowns;
    std::size_t m_stride;
    std::size_t m_row = 0;        ///< rows in use; the first ones hold the triangle so far
    std::vector<double> m_block;  ///< column after column, the right side last
};

}  // namespace wavo::measure
