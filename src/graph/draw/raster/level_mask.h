// Opacity of the pixels of an area, one byte each. A curve is drawn into the mask first, oldest
// part first, and the mask is then laid on the picture once: where the curve crosses itself the
// newer part stands alone, and what is behind the curve shines through wherever it has faded.
//
// Invariants:
// 1. What is drawn later replaces what was drawn earlier; nothing adds up.
// 2. Nothing outside the area is ever written, whatever the coordinates.
// 3. Between BlendInto and the next drawing all bytes are 0, so that Begin need not clear.
#pragma once

#include <QImage>
#include <QPoint>
#include <QRect>
#include <QRgb>
#include <array>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <span>
#include <vector>

#include "graph/draw/raster/dash_pattern.h"
#include "graph/draw/raster/mapping.h"
#include "graph/draw/raster/pixel_runs.h"
#include "graph/draw/raster/span_pixels.h"
#include "support/processor.h"

namespace wavo {

/// `over` laid on `under` with an opacity of 0 to 255; 0 gives `under`, 255 `over`, both exactly.
inline QRgb BlendPixel(QRgb under, QRgb over, std::uint32_t opacity) noexcept {
    constexpr std::uint32_t kRedBlue = 0x00FF00FF;
    constexpr std::uint32_t kGreen = 0x0000FF00;
    const std::uint32_t rest = 255 - opacity;
    // Rounded division by 255 of each component; two of them fit into one number.
    std::uint32_t red_blue =
        (under & kRedBlue) * rest + (over & kRedBlue) * opacity + std::uint32_t{0x00800080};
    red_blue = ((red_blue + ((red_blue >> 8U) & kRedBlue)) >> 8U) & kRedBlue;
    std::uint32_t green =
        ((under & kGreen) >> 8U) * rest + ((over & kGreen) >> 8U) * opacity + std::uint32_t{0x80};
    green = (green + (green >> 8U)) & kGreen;
    return 0xFF000000U | red_blue | green;
}

class LevelMask {
 public:
    /// Opacity with 16 binary places: 0 to kOpaque.
    using Level = std::int32_t;
    static constexpr Level kOpaque = 255 * 65536;

    /// A pixel of the picture.
    struct Place {
        std::int32_t x;  ///< kGap: there is none
        std::int32_t y;
    };
    static constexpr std::int32_t kGap = std::numeric_limits<std::int32_t>::min();

    /// A pixel of the picture, and how opaque the curve is there.
    struct Spot {
        std::int32_t x = 0;
        std::int32_t y = 0;
        Level level = 0;
    };

    /// Begins to draw in an area of the picture, pixels. REQUIRES: `area` is not empty and what was
    /// drawn before has been blended.
    void Begin(const QRect& area);

    /// Begins to draw in an area of a picture at once, without a mask: each pixel becomes that of
    /// the background with the colour laid on it. Shows the same as the mask where nothing but the
    /// background is under the curve. `target` begins at the top left of the area; it stays until
    /// the next Begin. REQUIRES: no points are drawn, and nothing is blended then.
    void BeginOn(const QRect& area, const PixelColumns& target, QRgb color);

    void Pixel(const Spot& spot) {
        if (Inside(spot)) {
            Set(spot);
        }
    }

    /// A line one pixel wide without holes, both ends included; the opacity goes evenly from that
    /// of the one end to that of the other.
    void Line(const Spot& from, const Spot& to) {
        if (Near(from.x, to.x) && Near(from.y, to.y)) {
            Pixel(from);
            Pixel(to);
        } else {
            LongLine(from, to);
        }
    }

    /// Lines from each place to the next one, but to and from gaps; `levels` are as many. A place
    /// that is farther left than kGap + 1 is outside of every area.
    void Lines(std::span<const Place> places, const Level* levels);

    /// A square of `side` pixels around the spot, which has one pixel more to the left and above
    /// when the side is even.
    void Square(const Spot& centre, std::int32_t side);

    /// Takes away what was drawn in columns (`along` x) or rows (y) that are in a gap; `origin` is
    /// the pixel of the picture where the pattern begins. REQUIRES: Begin.
    void Cut(const DashPattern& pattern, Coordinate along, const QPoint& origin);

    /// Lays a colour on the picture through the mask and empties the mask. Adds the pixels that it
    /// has changed to `touched`, and some beside them, but none outside the area. REQUIRES:
    /// `picture` has the format RGB32 and contains the area.
    void BlendInto(QImage& picture, QRgb color, PixelRuns* touched = nullptr,
                   Instructions use = BestInstructions());

 private:
    static bool Near(std::int32_t a, std::int32_t b) noexcept {
        const std::int64_t distance = std::int64_t{a} - b;
        return distance >= -1 && distance <= 1;
    }
    static bool AreNear(const Place& a, const Place& b) noexcept {
        return Near(a.x, b.x) && Near(a.y, b.y);
    }
    static std::uint8_t Byte(Level level) noexcept {
        return static_cast<std::uint8_t>((level + 0x8000) >> 16);
    }
    [[nodiscard]] bool Inside(const Spot& spot) const noexcept {
        // As unsigned numbers, what lies before the area is larger than any size.
        return static_cast<std::uint32_t>(spot.x) - m_left < m_width &&
               static_cast<std::uint32_t>(spot.y) - m_top < m_height;
    }
    void Set(const Spot& spot) noexcept {
        const std::size_t column = static_cast<std::uint32_t>(spot.x) - m_left;
        const std::size_t row = static_cast<std::uint32_t>(spot.y) - m_top;
        Set(column, row, Byte(spot.level));
    }
    void Set(std::size_t column, std::size_t row, std::uint8_t level) noexcept {
        if (!m_direct) {
            m_levels[row * m_stride + column] = level;
            return;
        }
        const int target_row = m_target.top_row + static_cast<int>(row);
        const QRgb under = m_target.Under(target_row)[column];
        m_target.Row(target_row)[column] =
            under == m_often ? m_over_often[level] : BlendPixel(under, m_color, level);
    }
    void BeginArea(const QRect& area);
    [[nodiscard]] bool Misses(const Spot& from, const Spot& to) const noexcept;
    void LongLine(const Spot& from, const Spot& to);
    /// Pixels from place `first` on while each is near the one before; returns the first that is
    /// not.
    template <bool kDirect>
    [[nodiscard]] std::size_t NearPlaces(std::span<const Place> places, const Level* levels,
                                         std::size_t first);
    // The same for places that are all inside while they are near each other.
    [[nodiscard]] std::size_t NearPlacesOnMask(std::span<const Place> places, const Level* levels,
                                               std::size_t first);
    [[nodiscard]] std::size_t NearPlacesOnPicture(std::span<const Place> places,
                                                  const Level* levels, std::size_t first);
    /// Places from one inside on that are inside while they are near each other; 0 for one outside.
    [[nodiscard]] std::size_t Margin(const Place& place) const noexcept;

    // The area; left and top as unsigned numbers, for which differences are defined throughout.
    std::uint32_t m_left = 0;
    std::uint32_t m_top = 0;
    std::uint32_t m_width = 0;
    std::uint32_t m_height = 0;
    std::size_t m_stride = 0;  ///< bytes from row to row, a multiple of 8
    std::vector<std::uint8_t> m_levels;

    bool m_direct = false;
    PixelColumns m_target{};
    QRgb m_color = 0;
    QRgb m_often = 0;                      ///< a colour of the background
    int m_often_row = 0;                   ///< a row, as the target counts, where it is
    std::array<QRgb, 256> m_over_often{};  ///< with the curve's colour laid on it, by level
};

}  // namespace wavo
