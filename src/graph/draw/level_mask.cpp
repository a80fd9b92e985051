#include "graph/draw/level_mask.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <cstring>

namespace wavo {

namespace {

/// Bytes of the mask that are looked at in one go.
constexpr std::size_t kWord = sizeof(std::uint64_t);

/// Binary places of a coordinate across a line. 33 bits before the point still fit.
constexpr int kPlaces = 24;
constexpr double kUnit = static_cast<double>(std::int64_t{1} << kPlaces);

/// A line seen along its longer side: `along` goes by one from pixel to pixel, `across` follows.
/// Coordinates count from the corner of the area.
struct Walk {
    Walk(std::int64_t from_along, std::int64_t from_across, std::int64_t to_along,
         std::int64_t to_across)
        : along(from_along),
          direction(to_along < from_along ? -1 : 1),
          length(std::abs(to_along - from_along)),
          across(from_across),
          slope(static_cast<double>(to_across - from_across) / static_cast<double>(length)) {}

    /// Steps that lie in 0 to size - 1 along the line; empty when first > last.
    void ClipAlong(std::int64_t size) {
        first = std::max<std::int64_t>(0, direction > 0 ? -along : along - (size - 1));
        last = std::min(length, direction > 0 ? size - 1 - along : along);
    }

    /// Takes off the steps at both ends that lie outside 0 to size - 1 across the line.
    void ClipAcross(std::int64_t size) {
        place = static_cast<std::int64_t>(std::floor(
            (static_cast<double>(across) + slope * static_cast<double>(first) + 0.5) * kUnit));
        step = static_cast<std::int64_t>(slope * kUnit);
        std::int64_t end = place + step * (last - first);
        while (first <= last &&
               static_cast<std::uint64_t>(place >> kPlaces) >= static_cast<std::uint64_t>(size)) {
            ++first;
            place += step;
        }
        while (first <= last &&
               static_cast<std::uint64_t>(end >> kPlaces) >= static_cast<std::uint64_t>(size)) {
            --last;
            end -= step;
        }
    }

    std::int64_t along;
    std::int64_t direction;
    std::int64_t length;
    std::int64_t across;
    double slope;
    std::int64_t first = 0;  ///< step of the first pixel to draw
    std::int64_t last = -1;
    std::int64_t place = 0;  ///< across at `first`, with kPlaces binary places, rounding included
    std::int64_t step = 0;
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
    walk.ClipAlong(steep ? m_height : m_width);
    walk.ClipAcross(steep ? m_width : m_height);

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
        levels[offset + (walk.place >> kPlaces) * across_stride] = Byte(level);
        offset += walk.direction * along_stride;
        walk.place += walk.step;
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
