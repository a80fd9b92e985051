#include "graph/draw/frame/colors.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>

namespace wavo {
namespace {

TEST(Colors, ContrastRunsFromOneToTwentyOne) {
    EXPECT_NEAR(Contrast(Qt::black, Qt::white), 21.0, 0.01);
    EXPECT_NEAR(Contrast(Qt::white, Qt::black), 21.0, 0.01);
    EXPECT_DOUBLE_EQ(Contrast(Qt::red, Qt::red), 1.0);
}

TEST(Colors, AColorThatReadsWellIsKept) {
    EXPECT_EQ(Readable(QColor(255, 255, 0), Qt::black), QColor(255, 255, 0));
    EXPECT_EQ(Readable(QColor(0, 0, 160), Qt::white), QColor(0, 0, 160));
}

TEST(Colors, AColorThatIsDarkenedGetsPurer) {
    const QColor grey(128, 128, 128);
    const double contrast = FrameColors(grey).hue_contrast;
    const QColor pale_blue(64, 160, 255);
    const QColor dark_blue = Readable(pale_blue, grey, contrast);
    EXPECT_GE(Contrast(dark_blue, grey), contrast);
    EXPECT_GT(dark_blue.hsvSaturation(), pale_blue.hsvSaturation());
    EXPECT_NEAR(dark_blue.hsvHue(), pale_blue.hsvHue(), 6);
    const QColor dark_grey = Readable(QColor(150, 150, 150), grey, contrast);
    EXPECT_EQ(dark_grey.hsvSaturation(), 0);
}

TEST(Colors, TextsHaveContrastOnEveryBackground) {
    for (int red = 0; red <= 255; red += 51) {
        for (int green = 0; green <= 255; green += 51) {
            for (int blue = 0; blue <= 255; blue += 51) {
                const QColor background(red, green, blue);
                const FrameColors colors(background);
                const auto name = background.name().toStdString();
                EXPECT_GE(Contrast(colors.text, background), kTextContrast) << name;
                for (const QColor& curve :
                     {background, QColor(255, 0, 0), QColor(0, 0, 255), QColor(255, 255, 0)}) {
                    const QColor label = ShownColor(curve, background, kTextContrast);
                    EXPECT_GE(Contrast(label, background), kTextContrast) << name;
                    const QColor shown = ShownColor(curve, background, kCurveContrast);
                    EXPECT_GE(Contrast(shown, background), kCurveContrast) << name;
                }
                EXPECT_GE(Contrast(colors.waiting, background), kTextContrast) << name;
                EXPECT_GE(Contrast(colors.stopped, background), kTextContrast) << name;
                EXPECT_GE(Contrast(colors.running, background), kTextContrast) << name;
            }
        }
    }
}

TEST(Colors, AShownColorIsTheUsersWhereItHasContrast) {
    EXPECT_EQ(ShownColor(QColor(255, 255, 0), Qt::black, kCurveContrast), QColor(255, 255, 0));
    EXPECT_EQ(ShownColor(QColor(160, 160, 255), Qt::white, kCurveContrast), QColor(160, 160, 255));
}

TEST(Colors, AShownColorHasTheLeastChangeOfLightnessAndTheSameHue) {
    for (const QColor& background :
         {QColor(Qt::white), QColor(Qt::black), QColor(119, 119, 119), QColor(0, 96, 160)}) {
        for (int hue = 0; hue < 360; hue += 30) {
            for (const int lightness : {10, 60, 128, 200, 245}) {
                const QColor color = QColor::fromHsl(hue, 200, lightness).toRgb();
                for (const double contrast : {kCurveContrast, kTextContrast}) {
                    const QColor shown = ShownColor(color, background, contrast);
                    ASSERT_GE(Contrast(shown, background), contrast);
                    const int change = std::abs(shown.lightness() - color.lightness());
                    if (shown.lightness() > 40 && shown.lightness() < 215) {
                        const int turned = std::abs(shown.hslHue() - color.hslHue());
                        EXPECT_LE(std::min(turned, 360 - turned), 6) << color.name().toStdString();
                    }
                    // Nothing that is nearer would do.
                    for (const int way : {-1, 1}) {
                        const int nearer = color.lightness() + way * (change - 2);
                        if (change > 2 && nearer >= 0 && nearer <= 255) {
                            EXPECT_LT(Contrast(QColor::fromHsl(color.hslHue(),
                                                               color.hslSaturation(), nearer),
                                               background),
                                      contrast + 0.05)
                                << color.name().toStdString();
                        }
                    }
                }
            }
        }
    }
}

TEST(Colors, AGreyStaysAGrey) {
    const QColor shown = ShownColor(Qt::white, Qt::white, kCurveContrast);
    EXPECT_EQ(shown.hslSaturation(), 0);
    EXPECT_GE(Contrast(shown, Qt::white), kCurveContrast);
    EXPECT_LT(Contrast(shown, Qt::white), kCurveContrast + 0.1);
}

TEST(Colors, ScaleLinesAreDimmerThanTheFrameAndTheTexts) {
    for (const QColor& background : {QColor(Qt::black), QColor(Qt::white), QColor(20, 40, 90)}) {
        const FrameColors colors(background);
        EXPECT_GT(Contrast(colors.scale_line, background), 1.1);
        EXPECT_LT(Contrast(colors.scale_line, background), Contrast(colors.frame, background));
        EXPECT_LT(Contrast(colors.frame, background), Contrast(colors.text, background));
    }
}

TEST(Colors, GuidingCirclesAreColouredAndStandOutFromTheScaleLines) {
    for (int grey = 0; grey <= 255; grey += 15) {
        const QColor background(grey, grey, grey);
        const FrameColors colors(background);
        for (const QColor& circle : {colors.circle, colors.other_circle}) {
            EXPECT_GT(Contrast(circle, background), Contrast(colors.scale_line, background))
                << grey;
            EXPECT_GT(Contrast(circle, background), 2.0) << grey;
            EXPECT_GT(circle.hsvSaturation(), 40) << grey;
        }
        EXPECT_GT(colors.circle.blue(), colors.other_circle.blue()) << grey;
    }
}

}  // namespace
}  // namespace wavo
