#include "graph/draw/raster/segment_edges.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <limits>

#ifdef WAVO_AVX2
#include <immintrin.h>
#endif

namespace wavo {

MappedSegment::MappedSegment(const ScaleLine& lower_line, const ScaleLine& upper_line,
                             Coordinate coordinate)
    : lower(lower_line.value),
      upper(upper_line.value),
      from(coordinate == Coordinate::kX ? lower_line.x1 : upper_line.y1),
      to(coordinate == Coordinate::kX ? upper_line.x1 : lower_line.y1),
      origin(coordinate == Coordinate::kX ? lower : upper),
      whole(coordinate == Coordinate::kX ? upper - lower : lower - upper) {}

#ifdef WAVO_AVX2

namespace {

constexpr std::size_t kLanes = 4;
/// Vectors that are worked on side by side: none waits for the division of another.
constexpr std::size_t kVectors = 4;

/// By how much a value that is computed for a border may miss the edge: rounding of the value, and
/// of the pixel of a value, some times over.
double MostError(const MappedSegment& segment) {
    constexpr double kRounding = std::numeric_limits<double>::epsilon();
    const double distance = std::abs(segment.to - segment.from);
    const double pixel = std::max(std::abs(segment.from), std::abs(segment.to)) + 1.0;
    const double value = std::max(std::abs(segment.lower), std::abs(segment.upper));
    return kRounding * (std::abs(segment.whole) * (6.0 + pixel / distance) + value);
}

/// Numbers in the order of the doubles, one apart for neighbours; and back again.
WAVO_AVX2_PART __m256i KeysOf(__m256i bits) {
    const __m256i least = _mm256_set1_epi64x(std::numeric_limits<std::int64_t>::min());
    const __m256i is_negative = _mm256_cmpgt_epi64(_mm256_setzero_si256(), bits);
    return _mm256_blendv_epi8(bits, _mm256_sub_epi64(least, bits), is_negative);
}

WAVO_AVX2_PART __m256d FromKeys(__m256i keys) {
    return _mm256_castsi256_pd(KeysOf(keys));
}

/// Which values lie beyond their borders. The operations are those of the mapping, one by one.
template <bool kRising>
WAVO_AVX2_PART __m256d LieBeyond(const MappedSegment& segment, __m256d values, __m256d borders) {
    const __m256d from = _mm256_set1_pd(segment.from);
    const __m256d part = _mm256_sub_pd(values, _mm256_set1_pd(segment.origin));
    const __m256d product = _mm256_mul_pd(_mm256_set1_pd(segment.to - segment.from), part);
    const __m256d pixel =
        _mm256_add_pd(_mm256_div_pd(product, _mm256_set1_pd(segment.whole)), from);
    return kRising ? _mm256_cmp_pd(pixel, borders, _CMP_GE_OQ)
                   : _mm256_cmp_pd(pixel, borders, _CMP_LT_OQ);
}

/// The edges at kVectors x kLanes borders.
template <bool kRising>
WAVO_AVX2 void FindSome(const MappedSegment& segment, double first, double error, double* edges) {
    constexpr double kStep = kRising ? 1.0 : -1.0;
    const __m256d lower = _mm256_set1_pd(segment.lower);
    const __m256d upper = _mm256_set1_pd(segment.upper);
    const __m256d most_error = _mm256_set1_pd(error);
    const __m256d value_per_pixel = _mm256_set1_pd(segment.whole / (segment.to - segment.from));
    __m256d borders[kVectors];
    __m256d is_found[kVectors];
    __m256i below[kVectors];  // keys of values that do not lie beyond
    __m256i above[kVectors];  // keys of values that do
    for (std::size_t i = 0; i < kVectors; ++i) {
        const __m256d index = _mm256_add_pd(_mm256_set1_pd(static_cast<double>(i * kLanes)),
                                            _mm256_setr_pd(0.0, 1.0, 2.0, 3.0));
        borders[i] =
            _mm256_add_pd(_mm256_set1_pd(first), _mm256_mul_pd(_mm256_set1_pd(kStep), index));
        const __m256d guess = _mm256_add_pd(
            _mm256_mul_pd(_mm256_sub_pd(borders[i], _mm256_set1_pd(segment.from)), value_per_pixel),
            _mm256_set1_pd(segment.origin));
        const __m256d least = _mm256_sub_pd(guess, most_error);
        const __m256d most = _mm256_add_pd(guess, most_error);
        const __m256d is_inside = _mm256_and_pd(_mm256_cmp_pd(least, lower, _CMP_GT_OQ),
                                                _mm256_cmp_pd(most, upper, _CMP_LE_OQ));
        is_found[i] = _mm256_andnot_pd(
            LieBeyond<kRising>(segment, least, borders[i]),
            _mm256_and_pd(is_inside, LieBeyond<kRising>(segment, most, borders[i])));
        below[i] = KeysOf(_mm256_castpd_si256(least));
        above[i] = KeysOf(_mm256_castpd_si256(most));
    }
    for (bool is_done = false; !is_done;) {
        __m256i same = _mm256_set1_epi64x(-1);
        for (std::size_t i = 0; i < kVectors; ++i) {
            const __m256i half = _mm256_srli_epi64(_mm256_sub_epi64(above[i], below[i]), 1);
            const __m256i middle = _mm256_add_epi64(below[i], half);
            same = _mm256_and_si256(same, _mm256_cmpeq_epi64(middle, below[i]));
            const __m256i beyond =
                _mm256_castpd_si256(LieBeyond<kRising>(segment, FromKeys(middle), borders[i]));
            // What lies between neighbours is the lower one, which does not lie beyond.
            below[i] = _mm256_blendv_epi8(middle, below[i], beyond);
            above[i] = _mm256_blendv_epi8(above[i], middle, beyond);
        }
        is_done = _mm256_movemask_epi8(same) == -1;
    }
    const __m256d nothing = _mm256_set1_pd(std::numeric_limits<double>::quiet_NaN());
    for (std::size_t i = 0; i < kVectors; ++i) {
        _mm256_storeu_pd(edges + i * kLanes,
                         _mm256_blendv_pd(nothing, FromKeys(above[i]), is_found[i]));
    }
}

}  // namespace

void FindSegmentEdges(const MappedSegment& segment, double first, double step,
                      std::span<double> edges) {
    constexpr std::size_t kSome = kVectors * kLanes;
    const double error = MostError(segment);
    for (std::size_t i = 0; i < edges.size(); i += kSome) {
        const double border = first + step * static_cast<double>(i);
        double found[kSome];
        if (step > 0.0) {
            FindSome<true>(segment, border, error, found);
        } else {
            FindSome<false>(segment, border, error, found);
        }
        std::copy_n(found, std::min(kSome, edges.size() - i),
                    edges.begin() + static_cast<std::ptrdiff_t>(i));
    }
}

#else

void FindSegmentEdges(const MappedSegment& /*segment*/, double /*first*/, double /*step*/,
                      std::span<double> edges) {
    std::fill(edges.begin(), edges.end(), std::numeric_limits<double>::quiet_NaN());
}

#endif

}  // namespace wavo
