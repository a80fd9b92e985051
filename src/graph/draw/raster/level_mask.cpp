#include "graph/draw/raster/level_mask.h"

#include <algorithm>
#include <cstdlib>
#include <cstring>

namespace wavo {

namespace {

/// Bytes of the mask that are looked at in one go.
constexpr std::size_t kWord = sizeof(std::uint64_t);

/// Pixels by which a place that is half way between two pixels goes to the second; more than the
/// numbers are inexact, so that a line looks the same whatever part of it is drawn.
constexpr double kTie = 1e-8;

/// A line seen along its longer side: `along` goes by one from pixel to pixel, `across` follows.
/// Coordinates count from the corner of the area.
struct Walk {
    Walk(std::int64_t from_along, std::int64_t from_across, std::int64_t to_along,
         std::int64_t to_across)
        : along(from_along),
          direction(to_along < from_along ? -1 : 1),
          length(std::abs(to_along - from_along)),
          across(static_cast<double>(from_across) + 0.5 + kTie),
          slope(static_cast<double>(to_across - from_across) / static_cast<double>(length)) {}

    /// The pixel across the line after a number of steps, before it is cut to a whole number.
    [[nodiscard]] double Across(std::int64_t step) const {
        return across + slope * static_cast<double>(step);
    }

    /// Restricts first and last to the steps inside an area of these sizes; first > last when there
    /// are none.
    void Clip(std::int64_t along_size, std::int64_t across_size) {
        first = std::max<std::int64_t>(0, direction > 0 ? -along : along - (along_size - 1));
        last = std::min(length, direction > 0 ? along_size - 1 - along : along);
        const auto outside = [this, across_size](std::int64_t step) {
            const double pixel = Across(step);
            return pixel < 0.0 || pixel >= static_cast<double>(across_size);
        };
        while (first <= last && outside(first)) {
            ++first;
        }
        while (first <= last && outside(last)) {
            --last;
        }
    }

    std::int64_t along;
    std::int64_t direction;
    std::int64_t length;
    double across;  ///< with half a pixel, so that cutting it rounds
    double slope;
    std::int64_t first = 0;
    std::int64_t last = -1;
};

}  // namespace

void LevelMask::Begin(const QRect& area) {
    m_left = static_cast<std::uint32_t>(area.left());
    m_top = static_cast<std::uint32_t>(area.top());
    m_width = static_cast<std::uint32_t>(area.width());
    m_height = static_cast<std::uint32_t>(area.height());
    m_stride = (std::size_t{m_width} + kWord - 1) / kWord * kWord;
    if (m_levels.size() < m_stride * m_height) {
        m_levels.resize(m_stride * m_height);
    }
}

bool LevelMask::Misses(const Spot& from, const Spot& to) const noexcept {
    const auto left = static_cast<std::int32_t>(m_left);
    const auto top = static_cast<std::int32_t>(m_top);
    const std::int64_t right = std::int64_t{left} + m_width - 1;
    const std::int64_t bottom = std::int64_t{top} + m_height - 1;
    return std::max(from.x, to.x) < left || std::min(from.x, to.x) > right ||
           std::max(from.y, to.y) < top || std::min(from.y, to.y) > bottom;
}

void LevelMask::LongLine(const Spot& from, const Spot& to) {
    if (Misses(from, to)) {
        return;
    }
    const std::int64_t left = static_cast<std::int32_t>(m_left);
    const std::int64_t top = static_cast<std::int32_t>(m_top);
    const std::int64_t from_x = from.x - left;
    const std::int64_t from_y = from.y - top;
    const std::int64_t to_x = to.x - left;
    const std::int64_t to_y = to.y - top;
    const bool steep = std::abs(to_y - from_y) > std::abs(to_x - from_x);
    Walk walk = steep ? Walk(from_y, from_x, to_y, to_x) : Walk(from_x, from_y, to_x, to_y);
    walk.Clip(steep ? m_height : m_width, steep ? m_width : m_height);

    const auto stride = static_cast<std::int64_t>(m_stride);
    const std::int64_t along_stride = steep ? stride : 1;
    const std::int64_t across_stride = steep ? 1 : stride;
    const double level_slope =
        (static_cast<double>(to.level) - from.level) / static_cast<double>(walk.length);
    auto level = static_cast<Level>(from.level + level_slope * static_cast<double>(walk.first));
    const auto level_step = static_cast<Level>(level_slope);
    std::uint8_t* const levels = m_levels.data();
    std::int64_t offset = (walk.along + walk.direction * walk.first) * along_stride;
    for (std::int64_t i = walk.first; i <= walk.last; ++i) {
        levels[offset + static_cast<std::int64_t>(walk.Across(i)) * across_stride] = Byte(level);
        offset += walk.direction * along_stride;
        level += level_step;
    }
}

void LevelMask::Square(const Spot& centre, std::int32_t side) {
    const std::int64_t x = std::int64_t{centre.x} - side / 2 - static_cast<std::int32_t>(m_left);
    const std::int64_t y = std::int64_t{centre.y} - side / 2 - static_cast<std::int32_t>(m_top);
    const std::int64_t first_column = std::max<std::int64_t>(x, 0);
    const std::int64_t end_column = std::min<std::int64_t>(x + side, m_width);
    const std::int64_t first_row = std::max<std::int64_t>(y, 0);
    const std::int64_t end_row = std::min<std::int64_t>(y + side, m_height);
    if (first_column >= end_column) {
        return;
    }
    const auto columns = static_cast<std::size_t>(end_column - first_column);
    for (std::int64_t row = first_row; row < end_row; ++row) {
        std::uint8_t* const start = m_levels.data() + static_cast<std::size_t>(row) * m_stride +
                                    static_cast<std::size_t>(first_column);
        std::fill_n(start, columns, Byte(centre.level));
    }
}

void LevelMask::BlendInto(QImage& picture, QRgb color) {
    const auto left = static_cast<std::int32_t>(m_left);
    const auto top = static_cast<std::int32_t>(m_top);
    std::uint8_t* levels = m_levels.data();
    for (std::uint32_t row = 0; row < m_height; ++row, levels += m_stride) {
        auto* const pixels =
            reinterpret_cast<QRgb*>(picture.scanLine(top + static_cast<int>(row))) + left;
        for (std::size_t column = 0; column < m_stride; column += kWord) {
            std::uint64_t word = 0;
            std::memcpy(&word, levels + column, kWord);
            if (word == 0) {
                continue;
            }
            for (std::size_t i = column; i < column + kWord; ++i) {
                if (levels[i] != 0) {
                    pixels[i] = BlendPixel(pixels[i], color, levels[i]);
                }
            }
            std::memset(levels + column, 0, kWord);
        }
    }
}

}  // namespace wavo
