// A font by the fields that are kept in a settings file.
#pragma once

#include <cstdint>
#include <string>

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

}  // namespace wavo
