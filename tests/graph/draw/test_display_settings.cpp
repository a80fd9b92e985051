#include "graph/draw/display_settings.h"

#include <gtest/gtest.h>

#include <QFontDatabase>
#include <QFontInfo>
#include <QFontMetricsF>
#include <limits>

namespace wavo {
namespace {

FontDescription Sans(std::int32_t height) {
    FontDescription description;
    description.face = "DejaVu Sans";
    description.height = height;
    return description;
}

TEST(DisplaySettings, Defaults) {
    const GraphDisplaySettings settings;
    EXPECT_EQ(settings.background, 0U);
    EXPECT_EQ(settings.font.height, 8);
    EXPECT_EQ(settings.font.weight, 400);
    EXPECT_EQ(settings.font.pitch_and_family, 0x20);
    EXPECT_EQ(settings.font.face, "System");
    EXPECT_EQ(settings.font.width, 0);
    EXPECT_FALSE(settings.font.italic);
}

TEST(DisplaySettings, SystemFaceIsTheInterfaceFontAtItsNaturalSize) {
    const QFont interface_font = QFontDatabase::systemFont(QFontDatabase::GeneralFont);
    for (const std::int32_t height : {8, 40, -40}) {
        FontDescription description;
        description.height = height;
        const QFont font = MakeFont(description);
        EXPECT_EQ(font.families(), interface_font.families());
        EXPECT_EQ(QFontMetricsF(font).height(), QFontMetricsF(interface_font).height());
    }
}

TEST(DisplaySettings, PositiveHeightIsTheCell) {
    for (const std::int32_t height : {12, 20, 48}) {
        const QFontMetricsF metrics(MakeFont(Sans(height)));
        EXPECT_NEAR(metrics.ascent() + metrics.descent(), height, 1.5) << height;
    }
}

TEST(DisplaySettings, NegativeHeightIsTheEm) {
    EXPECT_EQ(MakeFont(Sans(-20)).pixelSize(), 20);
    EXPECT_LT(MakeFont(Sans(20)).pixelSize(), 20);
}

TEST(DisplaySettings, StyleIsTakenOver) {
    FontDescription description = Sans(16);
    description.weight = 700;
    description.italic = true;
    description.underline = true;
    description.strike_out = true;
    const QFont font = MakeFont(description);
    EXPECT_TRUE(font.bold());
    EXPECT_TRUE(font.italic());
    EXPECT_TRUE(font.underline());
    EXPECT_TRUE(font.strikeOut());
}

TEST(DisplaySettings, WidthStretchesTheCharacters) {
    FontDescription wide = Sans(-20);
    wide.width = 30;
    EXPECT_GT(MakeFont(wide).stretch(), 100);
}

TEST(DisplaySettings, WildNumbersGiveAUsableFont) {
    for (const std::int32_t number :
         {std::numeric_limits<std::int32_t>::min(), std::numeric_limits<std::int32_t>::max(), 0}) {
        FontDescription description = Sans(number);
        description.weight = number;
        description.width = number;
        const QFont font = MakeFont(description);
        EXPECT_NE(font.pixelSize(), 0);
        EXPECT_LE(font.pixelSize(), 1000);
    }
}

TEST(DisplaySettings, ColorsHaveRedInTheLowByte) {
    EXPECT_EQ(ToQColor(0x00563412), QColor(0x12, 0x34, 0x56));
    EXPECT_EQ(ToQColor(0xFF000000), QColor(0, 0, 0));
}

TEST(DisplaySettings, ColorsLoseNothingButTheirOpacity) {
    EXPECT_EQ(ToColorRef(QColor(0x12, 0x34, 0x56)), 0x00563412U);
    EXPECT_EQ(ToColorRef(QColor(255, 0, 0, 17)), 0x000000FFU);
}

TEST(DisplaySettings, TheDescriptionOfAFontMakesItAgain) {
    QFont font(QStringLiteral("DejaVu Sans"));
    font.setPixelSize(17);
    font.setWeight(QFont::Bold);
    font.setItalic(true);
    font.setUnderline(true);
    font.setStrikeOut(true);
    const FontDescription description = DescribeFont(font);
    FontDescription expected = Sans(-17);
    expected.weight = 700;
    expected.italic = true;
    expected.underline = true;
    expected.strike_out = true;
    EXPECT_EQ(description, expected);
    EXPECT_EQ(DescribeFont(MakeFont(description)), description);
}

TEST(DisplaySettings, AFontInPointsIsDescribedInPixels) {
    QFont font(QStringLiteral("DejaVu Sans"));
    font.setPointSize(30);
    EXPECT_EQ(DescribeFont(font).height, -QFontInfo(font).pixelSize());
    EXPECT_LT(DescribeFont(font).height, -1);
}

}  // namespace
}  // namespace wavo
