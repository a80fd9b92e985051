// The first place of a window on small and on large screens.
#include <gtest/gtest.h>

#include <QScreen>
#include <QTest>
#include <QWidget>
#include <QWindow>

#include "ui/shell/screen_fit.h"

namespace wavo {
namespace {

constexpr QSize kWanted{1366, 768};
constexpr QMargins kFrame{1, 24, 1, 5};

struct Screen {
    const char* name;
    QRect room;      ///< its free area, device-independent pixels
    QSize expected;  ///< of the window inside its frame
};

class EveryScreen : public ::testing::TestWithParam<Screen> {};

TEST_P(EveryScreen, HasRoomForTheWholeFrame) {
    const Screen& screen = GetParam();
    for (const QPoint place : {QPoint(0, 0), QPoint(-50, -50), QPoint(5000, 5000)}) {
        const QRect window = FitFrame(place, kWanted, kFrame, screen.room);
        EXPECT_EQ(window.size(), screen.expected);
        EXPECT_TRUE(screen.room.contains(window.marginsAdded(kFrame)));
    }
}

INSTANTIATE_TEST_SUITE_P(
    Screens, EveryScreen,
    ::testing::Values(Screen{"Smallest", {0, 0, 1366, 768}, {1364, 739}},
                      Screen{"SmallestWithAPanel", {0, 28, 1366, 740}, {1364, 711}},
                      Screen{"Full", {0, 0, 1920, 1080}, {1366, 768}},
                      Screen{"FullAt150", {0, 0, 1280, 720}, {1278, 691}},
                      Screen{"FullAt200", {0, 0, 960, 540}, {958, 511}},
                      Screen{"SecondOne", {1920, 40, 1366, 728}, {1364, 699}}),
    [](const auto& info) { return std::string(info.param.name); });

TEST(ScreenFit, LeavesAPlaceThatFits) {
    EXPECT_EQ(FitFrame({200, 100}, kWanted, kFrame, {0, 0, 1920, 1080}),
              QRect(QPoint(200, 100), kWanted));
}

TEST(ScreenFit, TakesTheFrameThatTheWindowHas) {
    QWidget window;
    window.resize(5000, 5000);
    FitIntoScreen(window);
    EXPECT_LT(window.height(), window.screen()->availableGeometry().height());
    window.show();
    ASSERT_TRUE(QTest::qWaitForWindowExposed(&window));
    QCoreApplication::processEvents();
    EXPECT_FALSE(window.windowHandle()->frameMargins().isNull());
    EXPECT_EQ(window.frameGeometry(), window.screen()->availableGeometry());
    // Afterwards the user does as he likes.
    window.resize(6000, 6000);
    QCoreApplication::processEvents();
    EXPECT_EQ(window.size(), QSize(6000, 6000));
}

TEST(ScreenFit, LeavesAMaximisedWindowToTheWindowSystem) {
    QWidget window;
    window.resize(300, 200);
    window.setWindowState(Qt::WindowMaximized);
    FitIntoScreen(window);
    window.show();
    ASSERT_TRUE(QTest::qWaitForWindowExposed(&window));
    QCoreApplication::processEvents();
    EXPECT_TRUE(window.isMaximized());
}

}  // namespace
}  // namespace wavo
