// At which values a mapping steps from one pixel to the next.
//
// A mapping costs a search and a division per value. The edges are found once per scale and give
// the very same pixels for a multiplication and a comparison.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

#include "graph/draw/raster/mapping.h"
#include "support/processor.h"

namespace wavo {

/// The pixels of a coordinate by their index: 0 is the pixel of the scale's minimum (the left
/// column, the bottom row), pixels - 1 that of its maximum.
class PixelEdges {
 public:
    /// Finds the edges of `pixels` pixels of a mapping's forced pixels; `first` is the pixel of
    /// index 0. REQUIRES: pixels >= 1.
    void Find(const AxisMapping& mapping, Coordinate coordinate, std::int32_t first,
              std::int32_t pixels, Instructions use = BestInstructions());

    [[nodiscard]] std::int32_t Size() const { return m_size; }

    /// The least value whose pixel has an index of at least `index`; NaN where none has.
    [[nodiscard]] double Edge(std::int32_t index) const {
        return m_edges[static_cast<std::size_t>(index)];
    }

    /// The index of the pixel of a value; not for NaN.
    [[nodiscard]] std::int32_t IndexOf(double value) const {
        return Settle(static_cast<std::int32_t>(Estimate(value)), value);
    }

    /// The same for many values. `indices` has room for them.
    void IndicesOf(std::span<const double> values, std::int32_t* indices,
                   Instructions use = BestInstructions()) const;

 private:
    /// Finds edges between scale lines, several at once; the others stay NaN.
    void FindWithinSegments(const ScaleLines& lines, Coordinate coordinate, std::int32_t first);
    /// Shifts the estimates so that none is above the index nor more than one below it, if that can
    /// be.
    void FindOffset();
    /// IndicesOf where estimates are right or one too low; returns how many it has done.
    std::size_t IndicesOfFours(std::span<const double> values, std::int32_t* indices) const;

    /// Never falls back as the value grows; 0 where an infinite value makes it NaN.
    [[nodiscard]] double Estimate(double value) const {
        const double estimate = (value - m_origin) * m_pixels_per_unit + m_offset;
        const double not_below = estimate > 0.0 ? estimate : 0.0;
        return not_below < m_last ? not_below : m_last;
    }

    [[nodiscard]] std::int32_t Settle(std::int32_t index, double value) const {
        const double* edge = m_edges.data() + index;
        // Mostly it is right or one off: both without a branch that is hard to foresee.
        edge += static_cast<int>(value >= edge[1]);
        edge -= static_cast<int>(value < edge[0]);
        while (value >= edge[1]) {
            ++edge;
        }
        while (value < edge[0]) {
            --edge;
        }
        return static_cast<std::int32_t>(edge - m_edges.data());
    }

    std::vector<double> m_edges;  // from minus infinity up; NaN, which ends a search, at the end
    std::int32_t m_size = 0;
    double m_last = 0.0;
    double m_origin = 0.0;
    double m_pixels_per_unit = 0.0;
    double m_offset = 0.0;
    bool m_right_or_below = false;  // each estimate is the index or one below it
};

/// The steps of a curve over time by pixel columns: step k stands at k x step.
class StepColumns {
 public:
    /// `step` in seconds; steps from `most` on are of no interest. REQUIRES: step > 0.
    void Find(const PixelEdges& columns, double step, std::uint64_t most);

    /// First step of each column, columns + 1 entries; the last one is `most`.
    [[nodiscard]] const std::vector<std::uint64_t>& FirstSteps() const { return m_first; }

 private:
    std::vector<std::uint64_t> m_first;
};

/// The same for a curve that fills from the left, its times sums of the step. Follows the curve as
/// it grows.
class SumColumns {
 public:
    void Restart() { *this = SumColumns(); }
    /// Takes the samples up to before `size` in; begins anew when the curve has become shorter.
    /// REQUIRES: the same columns and step since Restart.
    void Follow(const PixelEdges& columns, double step, std::uint64_t size);
    /// First sample of each column, columns + 1 entries.
    [[nodiscard]] const std::vector<std::uint64_t>& FirstSteps() const { return m_first; }

 private:
    std::vector<std::uint64_t> m_first;
    std::uint64_t m_size = 0;
    double m_time = 0.0;        // of the sample m_size
    std::int32_t m_column = 0;  // of the last sample taken in
};

}  // namespace wavo
