#include "graph/draw/span_pixels.h"

namespace wavo {

namespace {

/// A mask instead of a branch: whole blocks are done in a few vector operations.
inline std::uint32_t PixelOf(std::uint32_t under, std::int16_t top, std::int16_t bottom,
                             std::int16_t row, std::uint32_t color) {
    const std::uint32_t mask = 0U - static_cast<std::uint32_t>(static_cast<int>(top <= row) &
                                                               static_cast<int>(row <= bottom));
    return (color & mask) | (under & ~mask);
}

}  // namespace

void PaintSpanRow(std::uint32_t* pixels, const std::uint32_t* under, const std::int16_t* top,
                  const std::int16_t* bottom, int count, int row, std::uint32_t color) {
    const auto row16 = static_cast<std::int16_t>(row);
    if (count == kBlockColumns) {
        std::uint32_t block[kBlockColumns];
        for (int i = 0; i < kBlockColumns; ++i) {
            block[i] = PixelOf(under[i], top[i], bottom[i], row16, color);
        }
        for (int i = 0; i < kBlockColumns; ++i) {
            pixels[i] = block[i];
        }
        return;
    }
    for (int i = 0; i < count; ++i) {
        pixels[i] = PixelOf(under[i], top[i], bottom[i], row16, color);
    }
}

}  // namespace wavo
