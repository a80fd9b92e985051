#include <gtest/gtest.h>

#include <string>

#include "golden/golden.h"
#include "golden/scenes.h"

namespace wavo::testing {
namespace {

class GuidePicture : public ::testing::TestWithParam<Scene> {};

TEST_P(GuidePicture, ShowsWhatTheProgramShows) {
    EXPECT_TRUE(MatchesReference(GetParam().name, GetParam().paint()));
}

INSTANTIATE_TEST_SUITE_P(Scenes, GuidePicture, ::testing::ValuesIn(AllScenes()),
                         [](const auto& scene) { return std::string(scene.param.name); });

TEST(GuidePictures, EachBelongsToOneScene) {
    QStringList scenes;
    for (const Scene& scene : AllScenes()) {
        scenes.push_back(scene.name);
    }
    scenes.sort();
    EXPECT_EQ(ReferenceNames().join(' ').toStdString(), scenes.join(' ').toStdString());
}

}  // namespace
}  // namespace wavo::testing
