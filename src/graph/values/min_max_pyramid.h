// Smallest and largest sample of any stretch of a ring, found without looking at each sample.
//
// Over the slots of the ring lie blocks of 16, over these blocks of 16 blocks, and so on; each
// block keeps the minimum and the maximum of what lies under it. A stretch is made of a few samples
// at its edges and of a few blocks per level between them. The blocks follow the slots, not the
// positions, so that a sample that arrives changes one block per level and no other.
//
// Invariants:
// 1. After Update(ring) every block over slots that hold samples, dropped ones too, is right.
// 2. A block that holds a NaN or an infinite sample is marked; NaN takes no part in its minimum and
//    maximum.
// 3. Its memory is 1/7 of that of the samples.
#pragma once

#include <cstddef>
#include <cstdint>
#include <limits>
#include <span>
#include <vector>

#include "graph/values/sample_ring.h"
#include "support/processor.h"

namespace wavo {

/// Minimum and maximum of a set of samples; maximum < minimum when there was none but NaN.
struct MinMax {
    double minimum = std::numeric_limits<double>::infinity();
    double maximum = -std::numeric_limits<double>::infinity();

    [[nodiscard]] bool IsEmpty() const { return maximum < minimum; }
};

/// Where the answers for a row of columns go, one of each per column.
struct RowExtremes {
    double* first;  ///< the first sample
    double* minimum;
    double* maximum;
};

/// What is known of the extremes of columns, an entry of each per column. Inner: of what lies
/// within a column; none: as of MinMax. Outer: of all blocks that the column has a part in.
struct RowLimits {
    double* inner_minimum;
    double* inner_maximum;
    double* outer_minimum;
    double* outer_maximum;
};

/// The finite ones of some samples, read one by one.
[[nodiscard]] MinMax FiniteExtremesOf(std::span<const double> samples);

class MinMaxPyramid {
 public:
    /// Takes in what has arrived in the ring since the last Update. Costs a few operations per new
    /// sample; after the ring has moved its samples, all are taken in anew. REQUIRES: the same ring
    /// each time (or Clear in between).
    void Update(const SampleRing& ring);

    /// It was updated once, and of what it took in then the ring keeps nothing.
    [[nodiscard]] bool HasMissedAllOf(const SampleRing& ring) const {
        return m_started && m_appended < ring.FirstKept();
    }

    /// Forgets the ring and frees the memory.
    void Clear() { *this = MinMaxPyramid(); }

    /// Minimum and maximum of `count` samples from a sequence number on, infinite ones included,
    /// NaN not. REQUIRES: Update(ring) since its last change; ring keeps the samples.
    [[nodiscard]] MinMax Of(const SampleRing& ring, std::uint64_t sequence,
                            std::size_t count) const;

    /// The same for the samples of the slots from `begin` to before `end` of ring.Slots().data().
    [[nodiscard]] MinMax OfSlots(const double* slots, std::size_t begin, std::size_t end) const;

    /// The same for a row of columns: column i has the slots from bounds[i] to before bounds[i +
    /// 1]. Where both zeros are the least or the largest, it is either of them. REQUIRES: the
    /// bounds rise.
    void OfRow(const double* slots, std::span<const std::size_t> bounds, const RowExtremes& found,
               Instructions use = BestInstructions()) const;

    /// Details at which columns are known by limits. At detail 0 they are exact, at detail n known
    /// by blocks of this many samples.
    static constexpr std::size_t BlockSize(std::size_t detail) {
        return std::size_t{1} << (kFanOutBits * detail);
    }
    /// The coarsest detail at which a column of `count` samples has some blocks; 0: none has.
    [[nodiscard]] std::size_t DetailOf(std::size_t count) const;

    /// Limits to the extremes of a row of columns. REQUIRES: as OfRow; detail from DetailOf, not 0.
    void LimitsOfRow(std::span<const std::size_t> bounds, std::size_t detail,
                     const RowLimits& found) const;

    /// Brings the limits of the column with the slots from `begin` to before `end`, known at the
    /// detail above, to this detail. REQUIRES: begin < end.
    void Narrow(const double* slots, std::size_t begin, std::size_t end, std::size_t detail,
                MinMax& inner, MinMax& outer) const;
    /// Asks for the memory that Narrow reads.
    void FetchToNarrow(const double* slots, std::size_t begin, std::size_t end,
                       std::size_t detail) const;

    /// Whether any sample at all is NaN. REQUIRES: Update since the last change of the ring.
    [[nodiscard]] bool HasNaN() const;

    /// Whether one of `count` samples from a sequence number on is NaN. REQUIRES: as Of.
    [[nodiscard]] bool HasNaN(const SampleRing& ring, std::uint64_t sequence,
                              std::size_t count) const;

    /// Minimum and maximum of the finite ones of `count` samples. REQUIRES: as Of.
    [[nodiscard]] MinMax FiniteOf(const SampleRing& ring, std::uint64_t sequence,
                                  std::size_t count) const;

 private:
    static constexpr std::size_t kFanOutBits = 4;
    static constexpr std::size_t kFanOut = std::size_t{1} << kFanOutBits;

    struct Level {
        std::vector<double> minimum;
        std::vector<double> maximum;
        std::vector<std::uint8_t> marks;

        void Resize(std::size_t blocks, std::size_t expected);
        void Set(std::size_t block, const MinMax& range, std::uint8_t marks);
        [[nodiscard]] std::size_t Size() const { return minimum.size(); }
    };

    class WideRow;

    /// Minima and maxima of the blocks of a detail, or the samples themselves.
    struct Blocks {
        const double* minima;
        const double* maxima;
    };
    [[nodiscard]] Blocks BlocksOf(const double* slots, std::size_t detail) const;

    void ResizeLevels(std::size_t slots, std::size_t expected_slots);
    /// Makes the blocks over the slots from `begin` to before `end` right.
    void UpdateSlots(const double* samples, std::size_t begin, std::size_t end);
    void UpdateLowest(const double* samples, std::size_t first_block, std::size_t last_block);
    void UpdateLevel(std::size_t level, std::size_t first_block, std::size_t last_block);
    template <typename Taker>
    void TakeSlots(const double* samples, std::size_t begin, std::size_t end, Taker& extent) const;
    template <typename Taker>
    void TakeFiniteSlots(const double* samples, std::size_t begin, std::size_t end,
                         Taker& extent) const;
    /// The largest block without a mark that begins at a slot and ends by `end`.
    struct CleanBlock {
        std::size_t level = 0;
        std::size_t slots = 0;  ///< 0: there is none
    };
    [[nodiscard]] CleanBlock LargestClean(std::size_t begin, std::size_t end,
                                          std::uint8_t mark) const;
    [[nodiscard]] bool SlotsHaveNaN(const double* samples, std::size_t begin,
                                    std::size_t end) const;

    std::vector<Level> m_levels;    // from the samples upwards
    std::size_t m_slots_taken = 0;  // slots that hold or held samples
    std::uint64_t m_appended = 0;   // of the ring at the last Update
    std::uint64_t m_moves = 0;
    bool m_started = false;
};

}  // namespace wavo
