// Colours as numbers, the way they stand in files.
#pragma once

#include <cstdint>

namespace wavo {

/// Colour as 0x00BBGGRR.
using ColorRef = std::uint32_t;
/// The bits of a colour; the top byte means nothing.
inline constexpr ColorRef kColorMask = 0x00FFFFFF;

/// The complement of a colour in each of its three colour bytes; the top byte is 0.
constexpr ColorRef ComplementColor(ColorRef colour) noexcept {
    return ~colour & kColorMask;
}

}  // namespace wavo
