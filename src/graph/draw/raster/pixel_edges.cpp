#include "graph/draw/raster/pixel_edges.h"

#include <algorithm>
#include <bit>
#include <cmath>
#include <limits>

#include "graph/draw/raster/segment_edges.h"

#ifdef WAVO_AVX2
#include <immintrin.h>
#endif

namespace wavo {

namespace {

constexpr double kInfinity = std::numeric_limits<double>::infinity();

/// Numbers in the order of the doubles, one apart for neighbours.
std::int64_t KeyOf(double value) {
    const auto bits = std::bit_cast<std::int64_t>(value);
    return bits >= 0 ? bits : std::numeric_limits<std::int64_t>::min() - bits;
}

double FromKey(std::int64_t key) {
    return std::bit_cast<double>(key >= 0 ? key : std::numeric_limits<std::int64_t>::min() - key);
}

/// The least value for which `reached` holds, which holds for all above it; `guess` is near it.
/// NaN when it holds nowhere.
template <typename Reached>
double LeastValue(double guess, Reached reached) {
    const std::int64_t least = KeyOf(-kInfinity);
    const std::int64_t most = KeyOf(kInfinity);
    std::int64_t below = least;  // not reached here
    std::int64_t above = most;   // reached here, or nowhere
    if (std::isfinite(guess)) {
        // Outward from the guess in steps that double, until the edge lies between.
        std::int64_t key = KeyOf(guess);
        const bool inside = reached(guess);
        (inside ? above : below) = key;
        for (std::int64_t distance = 1; distance < (std::int64_t{1} << 60); distance *= 2) {
            if (inside ? key < least + distance : key > most - distance) {
                break;
            }
            key += inside ? -distance : distance;
            const bool holds = reached(FromKey(key));
            (holds ? above : below) = key;
            if (holds != inside) {
                break;
            }
        }
    }
    while (above > below && above - 1 > below) {
        const std::int64_t middle =
            below +
            static_cast<std::int64_t>(
                (static_cast<std::uint64_t>(above) - static_cast<std::uint64_t>(below)) / 2);
        (reached(FromKey(middle)) ? above : below) = middle;
    }
    return above != most || reached(kInfinity) ? FromKey(above)
                                               : std::numeric_limits<double>::quiet_NaN();
}

/// The value where the scale lines reach a place between pixels.
double ValueAt(const ScaleLines& lines, Coordinate coordinate, double pixel) {
    for (std::size_t k = 0; k + 1 < lines.size(); ++k) {
        const double from = coordinate == Coordinate::kX ? lines[k].x1 : lines[k].y1;
        const double to = coordinate == Coordinate::kX ? lines[k + 1].x1 : lines[k + 1].y1;
        if (from != to && (pixel - from) * (pixel - to) <= 0.0) {
            return lines[k].value +
                   (lines[k + 1].value - lines[k].value) * ((pixel - from) / (to - from));
        }
    }
    return lines.empty() ? 0.0 : lines.back().value;
}

/// The first step at or after a time, at most `most`.
std::uint64_t StepAt(double time, double step, std::uint64_t most) {
    const auto reached = [&](std::uint64_t k) { return static_cast<double>(k) * step >= time; };
    std::uint64_t k = ToCount(std::ceil(time / step), most);
    for (int tried = 0; tried < 4 && k > 0 && reached(k - 1); ++tried) {
        --k;
    }
    for (int tried = 0; tried < 4 && k < most && !reached(k); ++tried) {
        ++k;
    }
    const bool right = (k == most || reached(k)) && (k == 0 || !reached(k - 1));
    if (right) {
        return k;
    }
    std::uint64_t below = 0;
    std::uint64_t above = most;
    while (below < above) {
        const std::uint64_t middle = below + (above - below) / 2;
        if (reached(middle)) {
            above = middle;
        } else {
            below = middle + 1;
        }
    }
    return above;
}

}  // namespace

void PixelEdges::Find(const AxisMapping& mapping, Coordinate coordinate, std::int32_t first,
                      std::int32_t pixels, Instructions use) {
    const ScaleLines& lines = mapping.Lines();
    const std::int32_t direction = coordinate == Coordinate::kX ? 1 : -1;
    m_size = pixels;
    m_edges.assign(static_cast<std::size_t>(pixels) + 1, std::numeric_limits<double>::quiet_NaN());
    m_edges.front() = -kInfinity;
    if (use == Instructions::kWide) {
        FindWithinSegments(lines, coordinate, first);
    }
    for (std::int32_t index = 1; index < pixels; ++index) {
        double& edge = m_edges[static_cast<std::size_t>(index)];
        if (!std::isnan(edge)) {
            continue;
        }
        // Pixels are truncated: a row begins where the one below it ends.
        const std::int32_t pixel = first + direction * index;
        const double border = direction > 0 ? pixel : pixel + 1.0;
        edge = LeastValue(ValueAt(lines, coordinate, border), [&](double value) {
            return (mapping.MapForced(value) - first) * direction >= index;
        });
    }
    m_last = pixels - 1;
    m_origin = lines.empty() ? 0.0 : lines.front().value;
    const double span = lines.empty() ? 0.0 : lines.back().value - m_origin;
    const double scale = static_cast<double>(pixels - 1) / span;
    const bool even = std::isfinite(scale) && std::isfinite(span);
    m_pixels_per_unit = even ? scale : 0.0;
    // Without an estimate the search goes up from the first pixel: there may be edges that no
    // value reaches, and from above them it would find no way down.
    m_offset = even && direction < 0 ? 1.0 : 0.0;
    FindOffset();
}

void PixelEdges::FindWithinSegments(const ScaleLines& lines, Coordinate coordinate,
                                    std::int32_t first) {
    const bool is_x = coordinate == Coordinate::kX;
    const auto falls_back = [is_x](const ScaleLine& line, const ScaleLine& next) {
        return !(line.value <= next.value && (is_x ? line.x1 <= next.x1 : line.y1 >= next.y1));
    };
    if (std::adjacent_find(lines.begin(), lines.end(), falls_back) != lines.end()) {
        return;
    }
    for (std::size_t k = 0; k + 1 < lines.size(); ++k) {
        const MappedSegment segment(lines[k], lines[k + 1], coordinate);
        const double distance = segment.to - segment.from;
        if (!(segment.lower < segment.upper) || !std::isfinite(segment.whole * distance)) {
            continue;
        }
        // Borders from the first to before the end; below 1 numbers are not truncated downwards.
        const auto least = static_cast<std::int32_t>(std::max(segment.from + 1.0, 1.0));
        const auto end = static_cast<std::int32_t>(segment.to);
        const auto index_of = [first, is_x](std::int32_t border) {
            return is_x ? border - first : first + 1 - border;
        };
        const std::int32_t from = std::max(1, index_of(is_x ? least : end - 1));
        const std::int32_t to = std::min(m_size, index_of(is_x ? end : least - 1));
        if (from < to) {
            const double border = is_x ? first + from : first + 1 - from;
            FindSegmentEdges(segment, border, is_x ? 1.0 : -1.0,
                             std::span(m_edges).subspan(static_cast<std::size_t>(from),
                                                        static_cast<std::size_t>(to - from)));
        }
    }
}

void PixelEdges::FindOffset() {
    m_right_or_below = false;
    if (m_pixels_per_unit <= 0.0) {
        return;
    }
    double least = kInfinity;
    double most = -kInfinity;
    for (std::int32_t index = 1; index < m_size; ++index) {
        const double off = index - (Edge(index) - m_origin) * m_pixels_per_unit;
        least = off < least ? off : least;
        most = off > most ? off : most;
    }
    const double offset = m_offset;
    m_offset = m_size > 1 ? (least + most - 1.0) / 2.0 : 0.0;
    // An estimate does not fall as the value grows: what holds at both ends of an index holds for
    // all of its values. One at the edge that is below the index is there before the edge, too.
    bool is_right_or_below = std::isfinite(m_offset);
    for (std::int32_t index = 1; index < m_size; ++index) {
        const double estimate = Estimate(Edge(index));
        is_right_or_below &= (estimate >= index - 1) & (estimate < index);
    }
    m_right_or_below = is_right_or_below;
    if (!m_right_or_below) {
        m_offset = offset;
    }
}

void PixelEdges::IndicesOf(std::span<const double> values, std::int32_t* indices,
                           Instructions use) const {
    std::size_t done = 0;
#ifdef WAVO_AVX2
    if (use == Instructions::kWide && m_right_or_below) {
        done = IndicesOfFours(values, indices);
    }
#endif
    (void)use;
    for (std::size_t i = done; i < values.size(); ++i) {
        indices[i] = static_cast<std::int32_t>(Estimate(values[i]));
    }
    if (m_right_or_below) {
        for (std::size_t i = done; i < values.size(); ++i) {
            indices[i] += static_cast<std::int32_t>(values[i] >= Edge(indices[i] + 1));
        }
        return;
    }
    for (std::size_t i = done; i < values.size(); ++i) {
        indices[i] = Settle(indices[i], values[i]);
    }
}

#ifdef WAVO_AVX2
WAVO_AVX2 std::size_t PixelEdges::IndicesOfFours(std::span<const double> values,
                                                 std::int32_t* indices) const {
    const __m256d origin = _mm256_set1_pd(m_origin);
    const __m256d scale = _mm256_set1_pd(m_pixels_per_unit);
    const __m256d offset = _mm256_set1_pd(m_offset);
    const __m256d last = _mm256_set1_pd(m_last);
    const __m256d all = _mm256_castsi256_pd(_mm256_set1_epi64x(-1));
    const double* const next = m_edges.data() + 1;
    std::size_t i = 0;
    for (; i + 4 <= values.size(); i += 4) {
        const __m256d value = _mm256_loadu_pd(values.data() + i);
        __m256d estimate = _mm256_mul_pd(_mm256_sub_pd(value, origin), scale);
        estimate = _mm256_add_pd(estimate, offset);
        // The second operand where the first is NaN.
        estimate = _mm256_min_pd(_mm256_max_pd(estimate, _mm256_setzero_pd()), last);
        const __m128i index = _mm256_cvttpd_epi32(estimate);
        const __m256d edge =
            _mm256_mask_i32gather_pd(_mm256_setzero_pd(), next, index, all, sizeof(double));
        const __m256 above = _mm256_castpd_ps(_mm256_cmp_pd(value, edge, _CMP_GE_OQ));
        // The lower half of each mask, -1 or 0, as the numbers of four bytes that it is too.
        const __m128 mask =
            _mm_shuffle_ps(_mm256_castps256_ps128(above), _mm256_extractf128_ps(above, 1), 0x88);
        _mm_storeu_si128(reinterpret_cast<__m128i*>(indices + i),
                         _mm_sub_epi32(index, _mm_castps_si128(mask)));
    }
    return i;
}
#endif

void StepColumns::Find(const PixelEdges& columns, double step, std::uint64_t most) {
    m_first.assign(static_cast<std::size_t>(columns.Size()) + 1, most);
    m_first[0] = 0;
    for (std::int32_t column = 1; column < columns.Size(); ++column) {
        m_first[static_cast<std::size_t>(column)] = StepAt(columns.Edge(column), step, most);
    }
}

void SumColumns::Follow(const PixelEdges& columns, double step, std::uint64_t size) {
    if (size < m_size) {
        Restart();
    }
    m_first.resize(static_cast<std::size_t>(columns.Size()) + 1);
    for (; m_size < size; ++m_size) {
        while (m_column + 1 < columns.Size() && m_time >= columns.Edge(m_column + 1)) {
            ++m_column;
            m_first[static_cast<std::size_t>(m_column)] = m_size;
        }
        m_time += step;
    }
    for (std::size_t column = static_cast<std::size_t>(m_column) + 1; column < m_first.size();
         ++column) {
        m_first[column] = size;
    }
}

}  // namespace wavo
