// Colours for new curves: twelve that differ for users who see colours in any way, taken in turn.
#pragma once

#include <span>

#include "support/color_ref.h"

namespace wavo {

/// In the order in which they are taken.
std::span<const ColorRef, 12> CurveColors();

/// The first colour that stands out from a background.
ColorRef FirstCurveColor(ColorRef background);

/// The colour of the palette that follows `color` (the first one when that is none of them),
/// passing over those that the background swallows and, as long as there are others, those in
/// `used`.
ColorRef NextCurveColor(ColorRef color, ColorRef background, std::span<const ColorRef> used);

}  // namespace wavo
