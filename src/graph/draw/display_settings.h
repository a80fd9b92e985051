// How graphs look as far as the user decides it: background, font, number of scale lines.
#pragma once

#include <QColor>
#include <QFont>
#include <cstdint>
#include <string>

#include "graph/model/wavo_graph.h"

namespace wavo {

/// The face that stands for the platform's own interface font.
inline constexpr char kSystemFace[] = "System";

/// A font by the fields that the settings keep.
struct FontDescription {
    std::int32_t height = 8;  ///< pixels; > 0 cell height, < 0 em height, 0 natural
    std::int32_t width = 0;   ///< mean width of a character, pixels; 0 natural
    std::int32_t escapement = 0;
    std::int32_t orientation = 0;
    std::int32_t weight = 400;  ///< 0 natural, 400 normal, 700 bold, at most 1000
    bool italic = false;
    bool underline = false;
    bool strike_out = false;
    std::uint8_t character_set = 0;
    std::uint8_t output_precision = 0;
    std::uint8_t clip_precision = 0;
    std::uint8_t quality = 0;
    std::uint8_t pitch_and_family = 0x20;
    std::string face = kSystemFace;

    friend bool operator==(const FontDescription&, const FontDescription&) = default;
};

struct GraphDisplaySettings {
    ColorRef background = 0;
    FontDescription font;
    std::int32_t scale_lines_x = 5;
    std::int32_t scale_lines_y = 3;

    friend bool operator==(const GraphDisplaySettings&, const GraphDisplaySettings&) = default;
};

/// The font of a description. The face "System" is the platform's own interface font at its
/// natural size; every other face is used at the height given. Needs a QGuiApplication.
QFont MakeFont(const FontDescription& description);

/// The description that makes this font again, as far as the fields can say it: the first family,
/// the em height in whole pixels, weight and style.
FontDescription DescribeFont(const QFont& font);

/// The opaque colour of the lower three bytes.
QColor ToQColor(ColorRef color);

/// The three colour bytes of a colour; how opaque it is is lost.
ColorRef ToColorRef(const QColor& color);

}  // namespace wavo
