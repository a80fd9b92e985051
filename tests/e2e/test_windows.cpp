// What only Windows has: loops of its own while a menu is open, and a screen to look at.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <QDir>
#include <QGuiApplication>
#include <QImage>
#include <QPixmap>
#include <QProcess>
#include <QScreen>
#include <QSignalSpy>
#include <QTimer>
#include <set>

#include "viewer_fixture.h"

// Last: it gives names of ours a second meaning.
#include <windows.h>

namespace wavo::testing {
namespace {

using ::testing::IsEmpty;

class Windows : public Viewer {
 protected:
    [[nodiscard]] HWND FrameWindow() const { return reinterpret_cast<HWND>(m_frame->winId()); }

    static bool IsMenuOpen() {
        GUITHREADINFO info{};
        info.cbSize = sizeof info;
        return ::GetGUIThreadInfo(::GetCurrentThreadId(), &info) != 0 &&
               (info.flags & GUI_INMENUMODE) != 0;
    }

    static bool HasColours(const QImage& image, const std::set<QRgb>& wanted) {
        std::set<QRgb> missing = wanted;
        for (int y = 0; y < image.height(); ++y) {
            for (int x = 0; x < image.width(); ++x) {
                missing.erase(image.pixel(x, y));
            }
        }
        return missing.empty();
    }
};

TEST_F(Windows, LinesAreTakenAndAnsweredWhileAMenuOfTheSystemIsOpen) {
    DemoMaster master({"--motion", "circle"});
    Open({"X"});
    ASSERT_TRUE(WaitForLines(200));
    std::uint64_t first = 0;
    std::uint64_t last = 0;
    QObject::connect(&View().News(), &ViewNews::BatchShown, m_frame.get(), [&](quint64 total) {
        if (!IsMenuOpen()) {
            return;
        }
        first = first == 0 ? total : first;
        last = total;
        if (last >= first + 300) {
            ::SendMessageW(FrameWindow(), WM_CANCELMODE, 0, 0);
        }
    });
    // The system's own loop runs inside this wait, until the menu is closed.
    ::PostMessageW(FrameWindow(), WM_SYSCOMMAND, SC_KEYMENU, ' ');
    ASSERT_TRUE(WaitFor([&] { return first != 0 && last >= first + 300; }));
    EXPECT_THAT(TakeBoxes(), IsEmpty());
    const auto totals = master.End();
    ASSERT_TRUE(totals);
    EXPECT_EQ(totals->batches_answered, Cycle().Counters().batches_answered);
    EXPECT_EQ(totals->overruns, 0U);
}

TEST_F(Windows, TheMastersQuitClosesAMenuOfTheSystem) {
    DemoMaster master({"--motion", "circle", "--fault", "quit", "--fault-after", "1000"});
    Open({"X"});
    bool menu_was_open = false;
    QObject::connect(&View().News(), &ViewNews::BatchShown, m_frame.get(),
                     [&] { menu_was_open = menu_was_open || IsMenuOpen(); });
    QSignalSpy quit(&View().News(), &ViewNews::QuitRequested);
    bool gave_up = false;
    QTimer::singleShot(20000, m_frame.get(), [&] {
        gave_up = true;
        ::SendMessageW(FrameWindow(), WM_CANCELMODE, 0, 0);
    });
    ASSERT_TRUE(WaitForLines(100));
    ::PostMessageW(FrameWindow(), WM_SYSCOMMAND, SC_KEYMENU, ' ');
    EXPECT_TRUE(WaitFor([&] { return quit.count() == 1; }));
    EXPECT_TRUE(menu_was_open);
    EXPECT_FALSE(gave_up);
    EXPECT_FALSE(IsMenuOpen());
}

TEST_F(Windows, ThePictureOfTheScreenShowsTheViewerWithMovingCurves) {
    DemoMaster master({"--recording", RecordingPath("circle_xy_r50"), "--loop", "0"});
    QProcess viewer;
    viewer.setProcessChannelMode(QProcess::ForwardedChannels);
    viewer.start(QStringLiteral(WAVO_VIEWER),
                 {QStringLiteral(WAVO_RECORDINGS "/../graphs/circle.ini")});
    ASSERT_TRUE(viewer.waitForStarted());
    ASSERT_TRUE(QTest::qWaitFor(
        [&] { return master.Output().contains(QStringLiteral("connected")); }, 60000));
    QTest::qWait(8000);  // most of a time range, for a full picture
    const auto screen = [] {
        return QGuiApplication::primaryScreen()->grabWindow(0).toImage().convertToFormat(
            QImage::Format_RGB32);
    };
    QImage first = screen();
    // One curve of each graph of the file.
    EXPECT_TRUE(QTest::qWaitFor(
        [&] {
            first = screen();
            return HasColours(first, {qRgb(255, 96, 96), qRgb(96, 230, 112), qRgb(255, 200, 64)});
        },
        60000));
    EXPECT_TRUE(QTest::qWaitFor([&] { return screen() != first; }, 60000)) << "the curves move";
    viewer.terminate();
    EXPECT_TRUE(viewer.waitForFinished(20000));
    EXPECT_EQ(viewer.exitCode(), 0);

    QDir().mkpath(QStringLiteral(WAVO_SCREENSHOTS));
    EXPECT_TRUE(first.save(QStringLiteral(WAVO_SCREENSHOTS "/windows.png")));
}

}  // namespace
}  // namespace wavo::testing
