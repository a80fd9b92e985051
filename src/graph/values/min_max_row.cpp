// The extremes of a whole row of columns, with wide instructions where the processor has them.
#include <algorithm>
#include <array>

#include "graph/values/min_max_pyramid.h"

#ifdef WAVO_AVX2
#include <immintrin.h>
#endif

namespace wavo {

namespace {

#ifdef WAVO_AVX2

/// Columns up to this many samples are read sample by sample: quicker than looking for blocks.
constexpr std::size_t kReadAll = 100;

/// Columns from one whose memory is asked for to the one that is worked on.
constexpr std::size_t kAhead = 8;

/// Numbers in a vector.
constexpr std::size_t kLanes = 4;

/// Minima and maxima in the making, two vectors of each: none waits for the one before it. NaN
/// leaves them as they are, since the comparison behind each step takes its second operand then.
struct WideExtent {
    __m256d least[2];
    __m256d largest[2];
};

WAVO_AVX2_PART WideExtent Nothing() {
    const __m256d infinity = _mm256_set1_pd(std::numeric_limits<double>::infinity());
    const __m256d below = _mm256_set1_pd(-std::numeric_limits<double>::infinity());
    return {{infinity, infinity}, {below, below}};
}

template <int kSide>
WAVO_AVX2_PART void Take(WideExtent& extent, __m256d minima, __m256d maxima) {
    extent.least[kSide] = _mm256_min_pd(minima, extent.least[kSide]);
    extent.largest[kSide] = _mm256_max_pd(maxima, extent.largest[kSide]);
}

template <int kSide>
WAVO_AVX2_PART void TakeFour(WideExtent& extent, const double* minima, const double* maxima) {
    Take<kSide>(extent, _mm256_loadu_pd(minima), _mm256_loadu_pd(maxima));
}

WAVO_AVX2_PART void TakeEight(WideExtent& extent, const double* samples) {
    TakeFour<0>(extent, samples, samples);
    TakeFour<1>(extent, samples + kLanes, samples + kLanes);
}

/// Takes `count` minima and as many maxima. To take one twice does no harm: the last four may
/// overlap those before.
WAVO_AVX2_PART void TakeAll(WideExtent& extent, const double* minima, const double* maxima,
                            std::size_t count) {
    if (count < kLanes) {
        for (std::size_t i = 0; i < count; ++i) {
            Take<0>(extent, _mm256_broadcast_sd(minima + i), _mm256_broadcast_sd(maxima + i));
        }
        return;
    }
    std::size_t i = 0;
    for (; i + 2 * kLanes <= count; i += 2 * kLanes) {
        TakeFour<0>(extent, minima + i, maxima + i);
        TakeFour<1>(extent, minima + i + kLanes, maxima + i + kLanes);
    }
    if (i + kLanes < count) {
        TakeFour<0>(extent, minima + i, maxima + i);
    }
    TakeFour<1>(extent, minima + count - kLanes, maxima + count - kLanes);
}

WAVO_AVX2_PART void Store(const WideExtent& extent, double* minimum, double* maximum) {
    const __m256d least = _mm256_min_pd(extent.least[0], extent.least[1]);
    const __m256d largest = _mm256_max_pd(extent.largest[0], extent.largest[1]);
    const __m128d low = _mm_min_pd(_mm256_castpd256_pd128(least), _mm256_extractf128_pd(least, 1));
    const __m128d high =
        _mm_max_pd(_mm256_castpd256_pd128(largest), _mm256_extractf128_pd(largest, 1));
    _mm_store_sd(minimum, _mm_min_sd(low, _mm_unpackhi_pd(low, low)));
    _mm_store_sd(maximum, _mm_max_sd(high, _mm_unpackhi_pd(high, high)));
}

/// Columns of which the longest has `longest` samples, between 8 and kReadAll. Most have as many or
/// one less, and take the same way.
WAVO_AVX2 void ReadColumns(const double* samples, std::span<const std::size_t> bounds,
                           std::size_t longest, const RowExtremes& found) {
    constexpr std::size_t kStep = 2 * kLanes;
    const std::size_t before_last = (longest - 1) / kStep * kStep;
    for (std::size_t column = 0; column + 1 < bounds.size(); ++column) {
        const double* const begin = samples + bounds[column];
        const std::size_t count = bounds[column + 1] - bounds[column];
        found.first[column] = *begin;
        WideExtent extent = Nothing();
        if (count + 1 >= longest && count >= kStep) {
            for (std::size_t i = 0; i < before_last; i += kStep) {
                TakeEight(extent, begin + i);
            }
            TakeEight(extent, begin + count - kStep);
        } else {
            TakeAll(extent, begin, begin, count);
        }
        Store(extent, found.minimum + column, found.maximum + column);
    }
}

#endif

}  // namespace

#ifdef WAVO_AVX2

/// Columns of more samples, border by border: the block that a border cuts is read once for the
/// columns on both of its sides.
class MinMaxPyramid::WideRow {
 public:
    WideRow(const MinMaxPyramid& pyramid, const double* samples)
        : m_levels(pyramid.m_levels), m_taken(pyramid.m_slots_taken), m_samples(samples) {}

    /// kCut: the levels, that of the samples included, whose blocks are looked into at the borders.
    /// Every column of at least kLeast samples has a whole block of the level above them.
    template <int kCut>
    WAVO_AVX2 void Find(std::span<const std::size_t> bounds, const RowExtremes& found) const {
        WideExtent after = Nothing();  // what lies between a border and the next block
        bool after_known = false;
        for (std::size_t column = 0; column + 1 < bounds.size(); ++column) {
            if (column + kAhead < bounds.size()) {
                Fetch<kCut>(bounds[column + kAhead]);
            }
            const std::size_t begin = bounds[column];
            const std::size_t end = bounds[column + 1];
            found.first[column] = m_samples[begin];
            if (end - begin < kLeast<kCut> || !IsInside<kCut>(begin) || !IsInside<kCut>(end)) {
                FindColumn(begin, end, found.minimum + column, found.maximum + column);
                after_known = false;
                continue;
            }
            if (!after_known) {
                WideExtent before = Nothing();
                after = Nothing();
                TakeBorder<kCut>(before, after, begin);
            }
            WideExtent extent = after;
            after = Nothing();
            TakeBorder<kCut>(extent, after, end);
            after_known = true;
            TakeMiddle<kCut>(extent, begin, end);
            Store(extent, found.minimum + column, found.maximum + column);
        }
    }

    static constexpr std::size_t kLeastForOne = 2 * kFanOut - 1;
    static constexpr std::size_t kLeastForTwo = 2 * kFanOut * kFanOut - 1;

 private:
    template <int kCut>
    static constexpr std::size_t kLeast = kCut == 1 ? kLeastForOne : kLeastForTwo;

    /// Ignored lanes of a block of which the first s count are loaded from kFanOut - s on.
    static const double* KeepBefore(std::size_t s) {
        alignas(32) static const std::array<std::int64_t, 2 * kFanOut> lanes = Lanes(0, -1);
        return reinterpret_cast<const double*>(lanes.data()) + kFanOut - s;
    }
    /// The same of a block of which those from s on count.
    static const double* KeepFrom(std::size_t s) {
        alignas(32) static const std::array<std::int64_t, 2 * kFanOut> lanes = Lanes(-1, 0);
        return reinterpret_cast<const double*>(lanes.data()) + kFanOut - s;
    }
    static constexpr std::array<std::int64_t, 2 * kFanOut> Lanes(std::int64_t first,
                                                                 std::int64_t second) {
        std::array<std::int64_t, 2 * kFanOut> lanes{};
        for (std::size_t i = 0; i < lanes.size(); ++i) {
            lanes[i] = i < kFanOut ? first : second;
        }
        return lanes;
    }

    /// All blocks that are looked into at a border lie within what was taken in.
    template <int kCut>
    WAVO_AVX2_PART bool IsInside(std::size_t border) const {
        return (border / kFanOut + 1) * kFanOut <= m_taken &&
               (kCut == 1 || (border / kFanOut / kFanOut + 1) * kFanOut <= m_levels[0].Size());
    }

    template <int kCut>
    WAVO_AVX2_PART void TakeBorder(WideExtent& before, WideExtent& after,
                                   std::size_t border) const {
        const std::size_t block = border / kFanOut;
        const std::size_t cut = border % kFanOut;
        const double* const samples = m_samples + block * kFanOut;
        TakeCut(before, after, samples, samples, cut, cut);
        if constexpr (kCut > 1) {
            const std::size_t above = block / kFanOut * kFanOut;
            TakeCut(before, after, m_levels[0].minimum.data() + above,
                    m_levels[0].maximum.data() + above, block - above,
                    block - above + (cut != 0 ? 1 : 0));
        }
    }

    /// Takes the first `end` entries of a block to one side and those from `begin` on to the other.
    /// An entry with all bits set is NaN, which leaves an extent as it is.
    WAVO_AVX2_PART static void TakeCut(WideExtent& before, WideExtent& after, const double* minima,
                                       const double* maxima, std::size_t end, std::size_t begin) {
        TakeCutFours<0>(before, after, minima, maxima, KeepBefore(end), KeepFrom(begin));
        TakeCutFours<1>(before, after, minima + kLanes, maxima + kLanes, KeepBefore(end) + kLanes,
                        KeepFrom(begin) + kLanes);
        constexpr std::size_t kHalf = 2 * kLanes;
        TakeCutFours<0>(before, after, minima + kHalf, maxima + kHalf, KeepBefore(end) + kHalf,
                        KeepFrom(begin) + kHalf);
        TakeCutFours<1>(before, after, minima + kHalf + kLanes, maxima + kHalf + kLanes,
                        KeepBefore(end) + kHalf + kLanes, KeepFrom(begin) + kHalf + kLanes);
    }
    template <int kSide>
    WAVO_AVX2_PART static void TakeCutFours(WideExtent& before, WideExtent& after,
                                            const double* minima, const double* maxima,
                                            const double* not_before, const double* not_after) {
        const __m256d least = _mm256_loadu_pd(minima);
        const __m256d largest = _mm256_loadu_pd(maxima);
        const __m256d ignored_before = _mm256_loadu_pd(not_before);
        const __m256d ignored_after = _mm256_loadu_pd(not_after);
        Take<kSide>(before, _mm256_or_pd(least, ignored_before),
                    _mm256_or_pd(largest, ignored_before));
        Take<kSide>(after, _mm256_or_pd(least, ignored_after),
                    _mm256_or_pd(largest, ignored_after));
    }

    /// The whole blocks of a column.
    template <int kCut>
    WAVO_AVX2_PART void TakeMiddle(WideExtent& extent, std::size_t begin, std::size_t end) const {
        constexpr std::size_t kBlock = kCut == 1 ? kFanOut : kFanOut * kFanOut;
        const Level& level = m_levels[kCut - 1];
        const std::size_t first = (begin + kBlock - 1) / kBlock;
        const std::size_t count = end / kBlock - first;
        const double* const minima = level.minimum.data() + first;
        const double* const maxima = level.maximum.data() + first;
        if (count <= kLanes && first + kLanes <= level.Size()) {
            const __m256d ignored = _mm256_loadu_pd(KeepBefore(count));
            Take<0>(extent, _mm256_or_pd(_mm256_loadu_pd(minima), ignored),
                    _mm256_or_pd(_mm256_loadu_pd(maxima), ignored));
        } else {
            TakeAll(extent, minima, maxima, count);
        }
    }

    /// Any column.
    WAVO_AVX2 __attribute__((noinline)) void FindColumn(std::size_t begin, std::size_t end,
                                                        double* minimum, double* maximum) const {
        WideExtent extent = Nothing();
        TakeColumn(extent, begin, end);
        Store(extent, minimum, maximum);
    }
    WAVO_AVX2_PART void TakeColumn(WideExtent& extent, std::size_t begin, std::size_t end) const {
        std::size_t first = (begin + kFanOut - 1) / kFanOut;
        std::size_t last = end / kFanOut;
        if (first >= last) {
            TakeAll(extent, m_samples + begin, m_samples + begin, end - begin);
            return;
        }
        TakeAll(extent, m_samples + begin, m_samples + begin, first * kFanOut - begin);
        TakeAll(extent, m_samples + last * kFanOut, m_samples + last * kFanOut,
                end - last * kFanOut);
        for (std::size_t level = 0;; ++level) {
            const double* const minima = m_levels[level].minimum.data();
            const double* const maxima = m_levels[level].maximum.data();
            const std::size_t next_first = (first + kFanOut - 1) / kFanOut;
            const std::size_t next_last = last / kFanOut;
            if (next_first >= next_last || level + 1 == m_levels.size()) {
                TakeAll(extent, minima + first, maxima + first, last - first);
                return;
            }
            const std::size_t edge = next_last * kFanOut;
            TakeAll(extent, minima + first, maxima + first, next_first * kFanOut - first);
            TakeAll(extent, minima + edge, maxima + edge, last - edge);
            first = next_first;
            last = next_last;
        }
    }

    /// Asks for the memory of the blocks that a border cuts.
    template <int kCut>
    WAVO_AVX2_PART void Fetch(std::size_t border) const {
        if (!IsInside<kCut>(border)) {
            return;
        }
        const std::size_t block = border / kFanOut;
        FetchBlock(m_samples + block * kFanOut);
        if constexpr (kCut > 1) {
            const std::size_t above = block / kFanOut * kFanOut;
            FetchBlock(m_levels[0].minimum.data() + above);
            FetchBlock(m_levels[0].maximum.data() + above);
        }
    }
    WAVO_AVX2_PART static void FetchBlock(const double* from) {
        constexpr std::size_t kLine = 64 / sizeof(double);
        _mm_prefetch(reinterpret_cast<const char*>(from), _MM_HINT_T0);
        _mm_prefetch(reinterpret_cast<const char*>(from + kLine), _MM_HINT_T0);
        _mm_prefetch(reinterpret_cast<const char*>(from + kFanOut - 1), _MM_HINT_T0);
    }

    const std::vector<Level>& m_levels;
    std::size_t m_taken;
    const double* m_samples;
};

#endif

void MinMaxPyramid::OfRow(const double* slots, std::span<const std::size_t> bounds,
                          const RowExtremes& found, Instructions use) const {
    const std::size_t columns = bounds.empty() ? 0 : bounds.size() - 1;
#ifdef WAVO_AVX2
    if (use == Instructions::kWide && columns != 0) {
        std::size_t longest = 0;
        for (std::size_t column = 0; column < columns; ++column) {
            longest = std::max(longest, bounds[column + 1] - bounds[column]);
        }
        if (longest <= kReadAll) {
            ReadColumns(slots, bounds, std::max(longest, 2 * kLanes), found);
        } else if (longest < WideRow::kLeastForTwo || m_levels.size() < 2) {
            WideRow(*this, slots).Find<1>(bounds, found);
        } else {
            WideRow(*this, slots).Find<2>(bounds, found);
        }
        return;
    }
#endif
    (void)use;
    for (std::size_t column = 0; column < columns; ++column) {
        const MinMax range = OfSlots(slots, bounds[column], bounds[column + 1]);
        found.first[column] = slots[bounds[column]];
        found.minimum[column] = range.minimum;
        found.maximum[column] = range.maximum;
    }
}

}  // namespace wavo
