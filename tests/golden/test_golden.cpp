#include "golden/golden.h"

#include <gtest/gtest.h>

#include <QFont>
#include <QFontDatabase>
#include <QFontInfo>
#include <QFontMetricsF>
#include <cmath>
#include <ostream>
#include <string>

#include "golden/scenes.h"
#include "graph/draw/display_settings.h"

namespace wavo::testing {

/// How a failure names its scene; not static, so that it is found.
void PrintTo(const Scene& scene, std::ostream* out);
void PrintTo(const Scene& scene, std::ostream* out) {
    *out << scene.name;
}

namespace {

class Golden : public ::testing::TestWithParam<Scene> {};

TEST_P(Golden, LooksAsItsReference) {
    EXPECT_TRUE(MatchesReference(GetParam().name, GetParam().paint()));
}

INSTANTIATE_TEST_SUITE_P(Scenes, Golden, ::testing::ValuesIn(AllScenes()),
                         [](const auto& scene) { return std::string(scene.param.name); });

TEST(GoldenReferences, EachBelongsToOneScene) {
    QStringList scenes;
    for (const Scene& scene : AllScenes()) {
        scenes.push_back(scene.name);
    }
    scenes.sort();
    EXPECT_EQ(ReferenceNames().join(' ').toStdString(), scenes.join(' ').toStdString());
}

TEST(GoldenReferences, AMissingOneFails) {
    const ::testing::AssertionResult result =
        MatchesReference("no-such-scene", QImage(4, 4, QImage::Format_RGB32));
    EXPECT_FALSE(result);
    EXPECT_NE(std::string(result.message()).find("there is no reference image"), std::string::npos)
        << result.message();
}

TEST(GoldenReferences, OnePixelOfAnotherColourFails) {
    const Scene scene = AllScenes().front();
    QImage picture = scene.paint();
    ASSERT_TRUE(MatchesReference(scene.name, picture));
    picture.setPixel(20, 30, picture.pixel(20, 30) ^ 1U);
    const ::testing::AssertionResult result = MatchesReference(scene.name, picture);
    EXPECT_FALSE(result);
    EXPECT_NE(std::string(result.message())
                  .find("differs from its reference in 1 pixels, all within 1x1 at (20, 30)"),
              std::string::npos)
        << result.message();
}

TEST(GoldenReferences, AnotherSizeFails) {
    const ::testing::AssertionResult result =
        MatchesReference(AllScenes().front().name, QImage(4, 5, QImage::Format_RGB32));
    EXPECT_FALSE(result);
    EXPECT_NE(std::string(result.message()).find(" is 4x5, its reference "), std::string::npos)
        << result.message();
}

TEST(GoldenFont, IsTheOnlyOneAndNotHinted) {
    // The other names are what Qt calls any font.
    const QStringList aliases{"Monospace", "Sans Serif", "Serif"};
    for (const QString& family : QFontDatabase::families()) {
        EXPECT_TRUE(family == "DejaVu Sans" || aliases.contains(family)) << family.toStdString();
    }
    const QFont font = MakeFont(Looks().settings.font);
    EXPECT_EQ(QFontInfo(font).family(), "DejaVu Sans");
    EXPECT_EQ(font.pixelSize(), 12);
    QFont not_hinted = font;
    not_hinted.setHintingPreference(QFont::PreferNoHinting);
    const QString text = "Y: WaveForm=(-100.0 ... 100.0)";
    EXPECT_EQ(QFontMetricsF(font).horizontalAdvance(text),
              QFontMetricsF(not_hinted).horizontalAdvance(text));
    // An outline that is fitted to pixels has advances of whole pixels.
    EXPECT_NE(QFontMetricsF(font).horizontalAdvance('W'),
              std::round(QFontMetricsF(font).horizontalAdvance('W')));
}

}  // namespace
}  // namespace wavo::testing
