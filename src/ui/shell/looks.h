// The looks of the application: colours, and how bars are painted.
//
// Invariants:
// 1. Every look sets every colour that a control uses; nothing is left to the desktop's theme.
// 2. Texts show on what they stand on: a test holds the contrast of every pair.
// 3. Bars and windows of a look are both light or both dark, so that icons show on either.
#pragma once

#include <QPalette>
#include <span>

#include "view/command_ids.h"

namespace wavo {

inline constexpr CommandId kDefaultLook = CommandId::kLookStudio;

enum class BarPainting {
    kRaised,    ///< as the classic style paints them
    kFlat,      ///< one colour
    kGradient,  ///< from top to bottom
    kGlass,     ///< two gradients that meet in the middle
};

struct Look {
    CommandId id;
    const char* style;  ///< the toolkit's style below
    BarPainting bars;
    // 0xRRGGBB each.
    QRgb window, base, text, button, highlight, highlighted_text;
    QRgb bar_top, bar_bottom, bar_text;
    QRgb hot_top, hot_bottom, hot_border, hot_text;  ///< below the pointer
};

/// All looks, by number.
std::span<const Look> Looks();

/// The look with a number; the default one for a number that is none.
const Look& FindLook(int number);

/// All colours of a look.
QPalette LookPalette(const Look& look);

/// Colours of texts that stand on bars.
QPalette BarPalette(const Look& look);

/// Gives the whole application a look. Shows the wait cursor meanwhile.
void ApplyLook(const Look& look);

}  // namespace wavo
