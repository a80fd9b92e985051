#include "graph/draw/raster/span_pixels.h"

#include <algorithm>
#include <cstring>

#ifdef WAVO_AVX2
#include <immintrin.h>
#endif

namespace wavo {

namespace {

// Eight columns at once.
constexpr int kLanes = 8;
using Rows = std::int16_t __attribute__((vector_size(2 * kLanes)));
using Pixels = std::int32_t __attribute__((vector_size(4 * kLanes)));

template <typename Count>
BlockRows FindRows(const std::int16_t* top, const std::int16_t* bottom, Count count) {
    std::int16_t first = top[0];
    std::int16_t last = bottom[0];
    std::int16_t full_top = top[0];
    std::int16_t full_bottom = bottom[0];
    int pixels = 0;
    for (int i = 0; i < count; ++i) {
        full_top = std::max(full_top, top[i]);
        full_bottom = std::min(full_bottom, bottom[i]);
        first = std::min(first, top[i]);
        last = std::max(last, bottom[i]);
        pixels += std::max(0, bottom[i] - top[i] + 1);
    }
    return {first, last, pixels, full_top, full_bottom};
}

bool IsIn(const StackedSpans& curve, int row) {
    return curve.first_row <= row && row <= curve.last_row;
}

/// One row of a stack from a column on.
void PaintStackRow(const PixelColumns& columns, int row, int first,
                   std::span<const StackedSpans> curves) {
    const std::uint32_t* under = columns.Under(row);
    std::uint32_t* const pixels = columns.Row(row);
    for (const StackedSpans& curve : curves) {
        if (IsIn(curve, row)) {
            PaintSpanRow(pixels + first, under + first, curve.top + first, curve.bottom + first,
                         columns.count - first, row, curve.color);
            under = pixels;
        }
    }
    if (under != pixels) {
        std::copy(under + first, under + columns.count, pixels + first);
    }
}

#ifdef WAVO_AVX2

/// Sixteen pixels.
struct WidePixels {
    __m256i left;
    __m256i right;
};

WAVO_AVX2_PART WidePixels Over(WidePixels under, __m256i row, __m256i top, __m256i bottom,
                               __m256i color) {
    const __m256i outside =
        _mm256_or_si256(_mm256_cmpgt_epi16(top, row), _mm256_cmpgt_epi16(row, bottom));
    const __m256i left = _mm256_cvtepi16_epi32(_mm256_castsi256_si128(outside));
    const __m256i right = _mm256_cvtepi16_epi32(_mm256_extracti128_si256(outside, 1));
    return {_mm256_blendv_epi8(color, under.left, left),
            _mm256_blendv_epi8(color, under.right, right)};
}

WAVO_AVX2_PART __m256i Load(const void* from) {
    return _mm256_loadu_si256(static_cast<const __m256i*>(from));
}

WAVO_AVX2_PART WidePixels LoadPixels(const std::uint32_t* from) {
    return {Load(from), Load(from + kLanes)};
}

WAVO_AVX2_PART void StorePixels(const WidePixels& pixels, std::uint32_t* to) {
    _mm256_storeu_si256(reinterpret_cast<__m256i*>(to), pixels.left);
    _mm256_storeu_si256(reinterpret_cast<__m256i*>(to + kLanes), pixels.right);
}

/// Curves that all cover the rows, in one block.
template <int kCurves>
WAVO_AVX2 void PaintBlockWide(const PixelColumns& columns, int first_row, int last_row,
                              const StackedSpans* const* curves) {
    __m256i top[kCurves];
    __m256i bottom[kCurves];
    __m256i color[kCurves];
    for (int i = 0; i < kCurves; ++i) {
        top[i] = Load(curves[i]->top);
        bottom[i] = Load(curves[i]->bottom);
        color[i] = _mm256_set1_epi32(static_cast<std::int32_t>(curves[i]->color));
    }
    std::uint32_t* pixels = columns.Row(first_row);
    for (int row = first_row; row <= last_row; ++row, pixels += columns.stride) {
        const __m256i row16 = _mm256_set1_epi16(static_cast<std::int16_t>(row));
        WidePixels result = LoadPixels(columns.Under(row));
        for (int i = 0; i < kCurves; ++i) {
            result = Over(result, row16, top[i], bottom[i], color[i]);
        }
        StorePixels(result, pixels);
    }
}

/// Whole blocks; returns the column after them.
WAVO_AVX2 int PaintStackWide(const PixelColumns& columns, int row,
                             std::span<const StackedSpans> curves) {
    const __m256i row16 = _mm256_set1_epi16(static_cast<std::int16_t>(row));
    const std::uint32_t* const under = columns.Under(row);
    std::uint32_t* const pixels = columns.Row(row);
    int column = 0;
    for (; column + kBlockColumns <= columns.count; column += kBlockColumns) {
        WidePixels result = LoadPixels(under + column);
        for (const StackedSpans& curve : curves) {
            if (IsIn(curve, row)) {
                result = Over(result, row16, Load(curve.top + column), Load(curve.bottom + column),
                              _mm256_set1_epi32(static_cast<std::int32_t>(curve.color)));
            }
        }
        StorePixels(result, pixels + column);
    }
    return column;
}

/// The rows of a block; those that the same curves cover at once.
void PaintBlockRows(const PixelColumns& columns, int first_row, int last_row,
                    std::span<const StackedSpans> curves) {
    constexpr std::size_t kMost = 3;
    for (int row = first_row; row <= last_row;) {
        const StackedSpans* covering[kMost];
        std::size_t count = 0;
        int end = last_row + 1;
        for (const StackedSpans& curve : curves) {
            if (IsIn(curve, row)) {
                if (count < kMost) {
                    covering[count] = &curve;
                }
                ++count;
                end = std::min(end, curve.last_row + 1);
            } else if (curve.first_row > row) {
                end = std::min(end, curve.first_row);
            }
        }
        switch (count) {
            case 1:
                PaintBlockWide<1>(columns, row, end - 1, covering);
                break;
            case 2:
                PaintBlockWide<2>(columns, row, end - 1, covering);
                break;
            case 3:
                PaintBlockWide<3>(columns, row, end - 1, covering);
                break;
            default:
                for (int one = row; one < end; ++one) {
                    PaintStackWide(columns, one, curves);
                }
                break;
        }
        row = end;
    }
}

#endif

}  // namespace

void PaintStack(const PixelColumns& columns, int first_row, int last_row,
                std::span<const StackedSpans> curves, Instructions use) {
#ifdef WAVO_AVX2
    if (use == Instructions::kWide && columns.count == kBlockColumns) {
        PaintBlockRows(columns, first_row, last_row, curves);
        return;
    }
#endif
    for (int row = first_row; row <= last_row; ++row) {
        int done = 0;
#ifdef WAVO_AVX2
        if (use == Instructions::kWide) {
            done = PaintStackWide(columns, row, curves);
        }
#endif
        if (done < columns.count) {
            PaintStackRow(columns, row, done, curves);
        }
    }
    (void)use;
}

BlockRows FindBlockRows(const std::int16_t* top, const std::int16_t* bottom, int count) {
    // A number known to the compiler becomes a few vector operations.
    return count == kBlockColumns
               ? FindRows(top, bottom, std::integral_constant<int, kBlockColumns>())
               : FindRows(top, bottom, count);
}

void PaintSpanRow(std::uint32_t* pixels, const std::uint32_t* under, const std::int16_t* top,
                  const std::int16_t* bottom, int count, int row, std::uint32_t color) {
    const auto row16 = static_cast<std::int16_t>(row);
    int i = 0;
    for (; i + kLanes <= count; i += kLanes) {
        Rows first;
        Rows last;
        Pixels below;
        std::memcpy(&first, top + i, sizeof(first));
        std::memcpy(&last, bottom + i, sizeof(last));
        std::memcpy(&below, under + i, sizeof(below));
        const Rows covered = (first <= row16) & (row16 <= last);
        const Pixels mask = __builtin_convertvector(covered, Pixels);
        const Pixels result = (mask & static_cast<std::int32_t>(color)) | (~mask & below);
        std::memcpy(pixels + i, &result, sizeof(result));
    }
    for (; i < count; ++i) {
        pixels[i] = top[i] <= row16 && row16 <= bottom[i] ? color : under[i];
    }
}

}  // namespace wavo
