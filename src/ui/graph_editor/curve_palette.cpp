#include "ui/graph_editor/curve_palette.h"

#include <algorithm>

#include "graph/draw/display_settings.h"
#include "graph/draw/frame/colors.h"

namespace wavo {

namespace {

/// Least contrast of the first colour, and of all others.
constexpr double kFirstContrast = 4.5;
constexpr double kLeastContrast = 2.5;

constexpr ColorRef FromRgb(std::uint32_t rgb) {
    return (rgb & 0xFF) << 16 | (rgb & 0xFF00) | (rgb >> 16 & 0xFF);
}

// Found by a search for the twelve colours whose closest pair lies farthest apart, seen normally
// and without each of the three kinds of cones.
constexpr std::array<ColorRef, 12> kColors = {
    FromRgb(0xE69900), FromRgb(0x33FF66), FromRgb(0xFF33FF), FromRgb(0x6600FF),
    FromRgb(0xFFFFFF), FromRgb(0xB33300), FromRgb(0x66B399), FromRgb(0xFFB3FF),
    FromRgb(0x33664D), FromRgb(0x99B366), FromRgb(0x804D99), FromRgb(0xB3FFB3),
};

double ColorContrast(ColorRef a, ColorRef b) {
    return Contrast(ToQColor(a), ToQColor(b));
}

}  // namespace

std::span<const ColorRef, 12> CurveColors() {
    return kColors;
}

ColorRef FirstCurveColor(ColorRef background) {
    const auto stands_out = [background](ColorRef color) {
        return ColorContrast(color, background) >= kFirstContrast;
    };
    const auto found = std::find_if(kColors.begin(), kColors.end(), stands_out);
    if (found != kColors.end()) {
        return *found;
    }
    return *std::max_element(kColors.begin(), kColors.end(), [background](ColorRef a, ColorRef b) {
        return ColorContrast(a, background) < ColorContrast(b, background);
    });
}

ColorRef NextCurveColor(ColorRef color, ColorRef background, std::span<const ColorRef> used) {
    const auto place = std::find(kColors.begin(), kColors.end(), color);
    const std::size_t start =
        place == kColors.end() ? 0 : static_cast<std::size_t>(place - kColors.begin()) + 1;
    const ColorRef* visible = nullptr;
    for (std::size_t i = 0; i < kColors.size(); ++i) {
        const ColorRef& candidate = kColors[(start + i) % kColors.size()];
        if (ColorContrast(candidate, background) < kLeastContrast) {
            continue;
        }
        if (std::find(used.begin(), used.end(), candidate) == used.end()) {
            return candidate;
        }
        visible = visible == nullptr ? &candidate : visible;
    }
    return visible == nullptr ? FirstCurveColor(background) : *visible;
}

}  // namespace wavo
