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
#include <QRect>
#include <QRgb>
#include <cstddef>
#include <cstdint>
#include <vector>

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

    /// A pixel of the picture, and how opaque the curve is there.
    struct Spot {
        std::int32_t x = 0;
        std::int32_t y = 0;
        Level level = 0;
    };

    /// Begins to draw in an area of the picture, pixels. REQUIRES: `area` is not empty and what was
    /// drawn before has been blended.
    void Begin(const QRect& area);

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

    /// A square of `side` pixels around the spot, which has one pixel more to the left and above
    /// when the side is even.
    void Square(const Spot& centre, std::int32_t side);

    /// Lays a colour on the picture through the mask and empties the mask. REQUIRES: `picture` has
    /// the format RGB32 and contains the area.
    void BlendInto(QImage& picture, QRgb color);

 private:
    static bool Near(std::int32_t a, std::int32_t b) noexcept {
        const std::int64_t distance = std::int64_t{a} - b;
        return distance >= -1 && distance <= 1;
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
        m_levels[row * m_stride + column] = Byte(spot.level);
    }
    [[nodiscard]] bool Misses(const Spot& from, const Spot& to) const noexcept;
    void LongLine(const Spot& from, const Spot& to);

    // The area; left and top as unsigned numbers, for which differences are defined throughout.
    std::uint32_t m_left = 0;
    std::uint32_t m_top = 0;
    std::uint32_t m_width = 0;
    std::uint32_t m_height = 0;
    std::size_t m_stride = 0;  ///< bytes from row to row, a multiple of 8
    std::vector<std::uint8_t> m_levels;
};

}  // namespace wavo
