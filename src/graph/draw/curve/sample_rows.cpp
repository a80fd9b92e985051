#include "graph/draw/curve/sample_rows.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <limits>

#ifdef WAVO_AVX2
#include <immintrin.h>
#endif

namespace wavo {

namespace {

/// Bytes that are read at once.
constexpr std::size_t kBytesAtOnce = 32;
template <typename Row>
constexpr std::size_t kRowsAtOnce = kBytesAtOnce / sizeof(Row);

/// Room for new samples before all are moved to the front: one in so many of those held.
constexpr std::size_t kRoomOf = 16;
constexpr std::size_t kLeastRoom = 1024;

/// Plot areas up to so many rows have rows of one byte.
constexpr std::int32_t kByteRows = 256;

#ifdef WAVO_AVX2

/// Lanes of bytes or of two bytes: the least and the largest of each two, and of all.
template <typename Row>
struct Lanes;

template <>
struct Lanes<std::uint8_t> {
    WAVO_AVX2_PART static __m256i Least(__m256i a, __m256i b) { return _mm256_min_epu8(a, b); }
    WAVO_AVX2_PART static __m256i Largest(__m256i a, __m256i b) { return _mm256_max_epu8(a, b); }
    WAVO_AVX2_PART static __m128i Least(__m128i a, __m128i b) { return _mm_min_epu8(a, b); }
    WAVO_AVX2_PART static std::int32_t LeastOfAll(__m128i lanes) {
        // Of each two neighbours the lesser, as a number of two bytes.
        lanes = _mm_min_epu8(lanes, _mm_srli_epi16(lanes, 8));
        return _mm_extract_epi16(_mm_minpos_epu16(lanes), 0);
    }
};

template <>
struct Lanes<std::uint16_t> {
    WAVO_AVX2_PART static __m256i Least(__m256i a, __m256i b) { return _mm256_min_epu16(a, b); }
    WAVO_AVX2_PART static __m256i Largest(__m256i a, __m256i b) { return _mm256_max_epu16(a, b); }
    WAVO_AVX2_PART static __m128i Least(__m128i a, __m128i b) { return _mm_min_epu16(a, b); }
    WAVO_AVX2_PART static std::int32_t LeastOfAll(__m128i lanes) {
        return _mm_extract_epi16(_mm_minpos_epu16(lanes), 0);
    }
};

WAVO_AVX2_PART __m256i LoadBytes(const void* from) {
    return _mm256_loadu_si256(static_cast<const __m256i*>(from));
}

template <typename Row>
WAVO_AVX2_PART std::int32_t LeastLane(__m256i lanes) {
    return Lanes<Row>::LeastOfAll(
        Lanes<Row>::Least(_mm256_castsi256_si128(lanes), _mm256_extracti128_si256(lanes, 1)));
}

template <typename Row>
WAVO_AVX2 void FindRowsWide(const Row* rows, std::span<const std::size_t> bounds,
                            const RowsOfColumns& found) {
    constexpr std::size_t kStep = kRowsAtOnce<Row>;
    constexpr std::int32_t kMost = std::numeric_limits<Row>::max();
    // From kStep - n on: n lanes that count, then such that do not.
    alignas(kBytesAtOnce) static constexpr auto kIgnored = [] {
        std::array<Row, 2 * kStep> lanes{};
        std::fill(lanes.begin() + kStep, lanes.end(), std::numeric_limits<Row>::max());
        return lanes;
    }();
    const __m256i all = _mm256_set1_epi8(-1);
    for (std::size_t column = 0; column + 1 < bounds.size(); ++column) {
        const Row* const begin = rows + bounds[column];
        const std::size_t count = bounds[column + 1] - bounds[column];
        __m256i least = LoadBytes(begin);
        __m256i largest = least;
        if (count < kStep) {
            const __m256i ignored = LoadBytes(kIgnored.data() + kStep - count);
            largest = _mm256_andnot_si256(ignored, least);
            least = _mm256_or_si256(ignored, least);
        } else {
            for (std::size_t i = kStep; i + kStep < count; i += kStep) {
                const __m256i next = LoadBytes(begin + i);
                least = Lanes<Row>::Least(least, next);
                largest = Lanes<Row>::Largest(largest, next);
            }
            // The last ones may overlap those before: to take one twice does no harm.
            const __m256i last = LoadBytes(begin + count - kStep);
            least = Lanes<Row>::Least(least, last);
            largest = Lanes<Row>::Largest(largest, last);
        }
        found.first[column] = *begin;
        found.top[column] = LeastLane<Row>(least);
        // The largest is the least of the complements.
        found.bottom[column] = kMost - LeastLane<Row>(_mm256_xor_si256(largest, all));
    }
}

#endif

}  // namespace

template <typename Row>
void RowStore<Row>::Begin(std::uint64_t first) {
    m_begin = m_count = 0;
    m_first = first;
}

template <typename Row>
void RowStore<Row>::DropBefore(std::uint64_t first) {
    const auto dropped = static_cast<std::size_t>(first - m_first);
    m_begin += dropped;
    m_count -= dropped;
    m_first = first;
}

template <typename Row>
void RowStore<Row>::MakeRoom(std::size_t count) {
    constexpr std::size_t kReadBeyond = kRowsAtOnce<Row>;
    const std::size_t needed = m_count + count + kReadBeyond;
    if (m_begin + needed <= m_rows.size()) {
        return;
    }
    const std::size_t wanted = needed + std::max(kLeastRoom, needed / kRoomOf);
    if (m_rows.size() < wanted) {
        std::vector<Row> larger(wanted);
        std::copy_n(m_rows.data() + m_begin, m_count, larger.data());
        m_rows.swap(larger);
    } else {
        std::copy_n(m_rows.data() + m_begin, m_count, m_rows.data());
    }
    m_begin = 0;
}

template <typename Row>
void RowStore<Row>::Append(std::span<const std::int32_t> indices, std::int32_t lowest_row) {
    Row* const rows = m_rows.data() + m_begin + m_count;
    for (std::size_t i = 0; i < indices.size(); ++i) {
        rows[i] = static_cast<Row>(lowest_row - indices[i]);
    }
    m_count += indices.size();
}

template <typename Row>
void RowStore<Row>::OfColumns(std::span<const std::size_t> bounds, const RowsOfColumns& found,
                              Instructions use) const {
    const Row* const rows = m_rows.data() + m_begin;
#ifdef WAVO_AVX2
    if (use == Instructions::kWide) {
        FindRowsWide(rows, bounds, found);
        return;
    }
#endif
    (void)use;
    for (std::size_t column = 0; column + 1 < bounds.size(); ++column) {
        const auto [least, largest] =
            std::minmax_element(rows + bounds[column], rows + bounds[column + 1]);
        found.first[column] = rows[bounds[column]];
        found.top[column] = *least;
        found.bottom[column] = *largest;
    }
}

template <typename Row>
void SampleRows::Append(RowStore<Row>& rows, std::span<const double> samples,
                        const PixelEdges& edges) {
    std::array<std::int32_t, 256> indices;
    while (!samples.empty()) {
        const std::span<const double> next =
            samples.first(std::min(samples.size(), indices.size()));
        const std::uint64_t number = rows.End();
        for (std::size_t i = 0; i < next.size(); ++i) {
            if (std::isnan(next[i])) {
                m_after_nan = number + i + 1;
            }
        }
        edges.IndicesOf(next, indices.data());
        rows.Append(std::span(indices).first(next.size()), edges.Size() - 1);
        samples = samples.subspan(next.size());
    }
}

template <typename Row>
void SampleRows::Follow(RowStore<Row>& rows, std::uint64_t first, const SampleRing::Parts& samples,
                        const PixelEdges& edges) {
    const std::size_t count = samples.first.size() + samples.second.size();
    if (first < rows.First() || first > rows.End() || first + count < rows.End()) {
        rows.Begin(first);
    }
    rows.DropBefore(first);
    const auto known = static_cast<std::size_t>(rows.End() - first);
    rows.MakeRoom(count - known);
    const std::size_t known_in_first = std::min(known, samples.first.size());
    Append(rows, samples.first.subspan(known_in_first), edges);
    Append(rows, samples.second.subspan(known - known_in_first), edges);
}

bool SampleRows::Follow(std::uint64_t first, const SampleRing::Parts& samples,
                        const PixelEdges& edges) {
    m_bytes = edges.Size() <= kByteRows;
    if (m_bytes) {
        Follow(m_byte_rows, first, samples, edges);
    } else {
        Follow(m_word_rows, first, samples, edges);
    }
    return m_after_nan <= first;
}

void SampleRows::OfColumns(std::span<const std::size_t> bounds, const RowsOfColumns& found,
                           Instructions use) const {
    if (m_bytes) {
        m_byte_rows.OfColumns(bounds, found, use);
    } else {
        m_word_rows.OfColumns(bounds, found, use);
    }
}

}  // namespace wavo
