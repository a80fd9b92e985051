// Runs the golden tests, or with --update makes the reference images anew.
#include <gtest/gtest.h>

#include <QApplication>
#include <QFont>
#include <algorithm>
#include <cstdio>
#include <cstring>

#include "expect_errors.h"
#include "golden/golden.h"
#include "golden/scenes.h"

namespace wavo::testing {
namespace {

/// Number of references that could not be brought up to date.
int Update() {
    int failures = 0;
    const auto count = [&failures](bool done, const QString& name) {
        if (!done) {
            std::fprintf(stderr, "cannot update %s\n", qPrintable(name));
            ++failures;
        }
    };
    const std::vector<Scene> scenes = AllScenes();
    for (const Scene& scene : scenes) {
        count(WriteReference(scene.name, scene.paint()), scene.name);
    }
    for (const QString& name : ReferenceNames()) {
        if (std::none_of(scenes.begin(), scenes.end(),
                         [&name](const Scene& scene) { return name == scene.name; })) {
            count(RemoveReference(name), name);
        }
    }
    return failures;
}

/// The pictures must not depend on the machine: neither on its fonts nor on its screen.
void ShutOutTheMachine() {
    qputenv("QT_QPA_PLATFORM", "offscreen");
    qputenv("FONTCONFIG_FILE", WAVO_GOLDEN_FONTS);
    qputenv("QT_QPA_FONTDIR", WAVO_GOLDEN_FONT_FOLDER);  // where there is no fontconfig
    for (const char* name : {"FONTCONFIG_PATH", "FONTCONFIG_SYSROOT", "QT_FONT_DPI",
                             "QT_SCALE_FACTOR", "QT_SCREEN_SCALE_FACTORS"}) {
        qunsetenv(name);
    }
}

}  // namespace
}  // namespace wavo::testing

int main(int argc, char** argv) {
    wavo::testing::ShutOutTheMachine();
    const QApplication application(argc, argv);
    // Where fontconfig does not say so.
    QFont font;
    font.setHintingPreference(QFont::PreferNoHinting);
    QApplication::setFont(font);
    if (argc == 2 && std::strcmp(argv[1], "--update") == 0) {
        return wavo::testing::Update() == 0 ? 0 : 1;
    }
    ::testing::InitGoogleTest(&argc, argv);
    wavo::testing::InstallReportListener();
    return RUN_ALL_TESTS();
}
