#include "graph/draw/display_settings.h"

#include <QFontDatabase>
#include <QFontInfo>
#include <QFontMetricsF>
#include <QGuiApplication>
#include <algorithm>
#include <cmath>

namespace wavo {

namespace {

/// Heights beyond this are a slip of the file, not a wish.
constexpr std::int32_t kMaxFontHeight = 1000;

/// The em height of a face whose cell (ascent and descent) has the height given.
int EmHeightOfCell(QFont font, std::int32_t cell_height) {
    font.setPixelSize(kMaxFontHeight);
    const double cell = QFontMetricsF(font).ascent() + QFontMetricsF(font).descent();
    const double em = cell > 0.0 ? cell_height * (kMaxFontHeight / cell) : cell_height;
    return std::max(1, static_cast<int>(std::lround(em)));
}

}  // namespace

QFont MakeFont(const FontDescription& description) {
    QFont font = QFontDatabase::systemFont(QFontDatabase::GeneralFont);
    // Outlines are fitted to pixels as in the rest of the program.
    font.setHintingPreference(QGuiApplication::font().hintingPreference());
    if (description.face != kSystemFace) {
        font.setFamilies({QString::fromStdString(description.face)});
        const std::int32_t height = std::clamp(description.height, -kMaxFontHeight, kMaxFontHeight);
        if (height > 0) {
            font.setPixelSize(EmHeightOfCell(font, height));
        } else if (height < 0) {
            font.setPixelSize(-height);
        }
    }
    if (description.weight > 0) {
        font.setWeight(static_cast<QFont::Weight>(std::min(description.weight, 1000)));
    }
    font.setItalic(description.italic);
    font.setUnderline(description.underline);
    font.setStrikeOut(description.strike_out);
    const double natural_width = QFontMetricsF(font).averageCharWidth();
    if (description.width > 0 && natural_width > 0.0) {
        const double percent = 100.0 * description.width / natural_width;
        font.setStretch(static_cast<int>(std::clamp(percent, 1.0, 4000.0)));
    }
    return font;
}

FontDescription DescribeFont(const QFont& font) {
    FontDescription description;
    description.height = -std::max(1, QFontInfo(font).pixelSize());
    description.weight = font.weight();
    description.italic = font.italic();
    description.underline = font.underline();
    description.strike_out = font.strikeOut();
    description.face = font.family().toStdString();
    return description;
}

QColor ToQColor(ColorRef color) {
    return {static_cast<int>(color & 0xFFU), static_cast<int>((color >> 8U) & 0xFFU),
            static_cast<int>((color >> 16U) & 0xFFU)};
}

ColorRef ToColorRef(const QColor& color) {
    return static_cast<ColorRef>(color.red()) | static_cast<ColorRef>(color.green()) << 8U |
           static_cast<ColorRef>(color.blue()) << 16U;
}

}  // namespace wavo
