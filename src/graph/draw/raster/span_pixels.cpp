#include "graph/draw/raster/span_pixels.h"

#include <algorithm>
#include <cstring>

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

}  // namespace

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
