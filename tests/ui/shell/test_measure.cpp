// The measurements in the main window: menu, keyboard, and what is remembered.
#include <gtest/gtest.h>

#include <QApplication>
#include <QSettings>
#include <QTemporaryDir>
#include <QTest>

#include "real_prompts.h"
#include "ui/panes/measurements_pane.h"
#include "ui/panes/pane_dock.h"
#include "ui/shell/main_frame.h"
#include "view/wavo_view.h"

namespace wavo {
namespace {

class MeasureInFrame : public ::testing::Test {
 protected:
    QTemporaryDir m_folder;
    QSettings m_settings{m_folder.filePath(QStringLiteral("app.ini")), QSettings::IniFormat};
};

TEST_F(MeasureInFrame, IsClosedAtTheFirstStartAndOpenedByItsKey) {
    CMainFrame frame(testing::RealPrompts(), &m_settings);
    frame.show();
    frame.activateWindow();
    ASSERT_TRUE(QTest::qWaitForWindowActive(&frame));
    EXPECT_FALSE(frame.Measure().Dock().IsOpen());
    EXPECT_FALSE(frame.Action(CommandId::kMeasurements)->isChecked());
    EXPECT_FALSE(frame.Action(CommandId::kHideMeasurements)->isEnabled());
    QTest::keyClick(&frame.View(), Qt::Key_M, Qt::ControlModifier);
    EXPECT_TRUE(frame.Measure().Dock().IsOpen());
    EXPECT_TRUE(frame.View().Cursors().IsShown());
    EXPECT_TRUE(frame.Action(CommandId::kMeasurements)->isChecked());
    frame.Action(CommandId::kHideMeasurements)->trigger();
    EXPECT_TRUE(frame.Measure().Dock().HidesAtEdge());
    EXPECT_TRUE(frame.Action(CommandId::kHideMeasurements)->isChecked());
    frame.Measure().Dock().toggleViewAction()->trigger();
    EXPECT_FALSE(frame.View().Cursors().IsShown()) << "as the menu of bars hides it";
}

TEST_F(MeasureInFrame, IsWhereItWasAtTheLastEnd) {
    for (const bool hides : {false, true}) {
        SCOPED_TRACE(hides);
        {
            CMainFrame frame(testing::RealPrompts(), &m_settings);
            frame.show();
            frame.Measure().Dock().show();
            frame.addDockWidget(Qt::RightDockWidgetArea, &frame.Measure().Dock());
            frame.Measure().Dock().SetAutoHide(hides);
            frame.Measure().Pane().ShowColumn(MeasureColumn::kSlope, hides);
            frame.close();
        }
        CMainFrame frame(testing::RealPrompts(), &m_settings);
        frame.show();
        EXPECT_TRUE(frame.Measure().Dock().IsOpen());
        EXPECT_EQ(frame.dockWidgetArea(&frame.Measure().Dock()), Qt::RightDockWidgetArea);
        EXPECT_EQ(frame.Measure().Dock().HidesAtEdge(), hides);
        EXPECT_EQ(frame.Measure().Pane().isVisible(), !hides);
        EXPECT_EQ(frame.Measure().Pane().IsColumnShown(MeasureColumn::kSlope), hides);
        EXPECT_TRUE(frame.View().Cursors().IsShown());
        frame.Measure().Dock().close();
        frame.close();
    }
    CMainFrame frame(testing::RealPrompts(), &m_settings);
    EXPECT_FALSE(frame.Measure().Dock().IsOpen());
}

TEST_F(MeasureInFrame, TheSpectrumIsOpenedByItsKeyAndRemembered) {
    for (const bool hides : {false, true}) {
        SCOPED_TRACE(hides);
        {
            CMainFrame frame(testing::RealPrompts(), &m_settings);
            frame.show();
            frame.activateWindow();
            ASSERT_TRUE(QTest::qWaitForWindowActive(&frame));
            PaneDock& dock = frame.Measure().Spectrum().Dock();
            if (!hides) {
                EXPECT_FALSE(dock.IsOpen()) << "at the first start";
                EXPECT_FALSE(frame.Action(CommandId::kHideSpectrum)->isEnabled());
                QTest::keyClick(&frame.View(), Qt::Key_M, Qt::ControlModifier | Qt::ShiftModifier);
            }
            EXPECT_TRUE(dock.IsOpen());
            EXPECT_TRUE(frame.Action(CommandId::kSpectrum)->isChecked());
            EXPECT_FALSE(frame.Measure().Dock().IsOpen()) << "each for itself";
            frame.addDockWidget(Qt::LeftDockWidgetArea, &dock);
            dock.SetAutoHide(hides);
            frame.close();
        }
        CMainFrame frame(testing::RealPrompts(), &m_settings);
        frame.show();
        PaneDock& dock = frame.Measure().Spectrum().Dock();
        EXPECT_TRUE(dock.IsOpen());
        EXPECT_EQ(frame.dockWidgetArea(&dock), Qt::LeftDockWidgetArea);
        EXPECT_EQ(dock.HidesAtEdge(), hides);
        EXPECT_EQ(frame.Action(CommandId::kHideSpectrum)->isChecked(), hides);
        frame.close();
    }
}

TEST_F(MeasureInFrame, F6GoesToThePaneOrToItsStrip) {
    CMainFrame frame(testing::RealPrompts(), &m_settings);
    frame.show();
    frame.activateWindow();
    ASSERT_TRUE(QTest::qWaitForWindowActive(&frame));
    frame.Measure().Dock().show();
    QCoreApplication::processEvents();
    const auto reaches = [&] {
        frame.View().setFocus();
        for (int i = 0; i < 12; ++i) {
            frame.Action(CommandId::kNextPane)->trigger();
            if (frame.Measure().Dock().isAncestorOf(QApplication::focusWidget())) {
                return true;
            }
        }
        return false;
    };
    EXPECT_TRUE(reaches());
    frame.Measure().Dock().SetAutoHide(true);
    QCoreApplication::processEvents();
    ASSERT_TRUE(reaches());
    QTest::keyClick(QApplication::focusWidget(), Qt::Key_Space);
    EXPECT_TRUE(frame.Measure().Dock().IsOut());
    EXPECT_TRUE(frame.Measure().Pane().isAncestorOf(QApplication::focusWidget()));
    QTest::keyClick(QApplication::focusWidget(), Qt::Key_Escape);
    EXPECT_EQ(QApplication::focusWidget(), &frame.View());
}

}  // namespace
}  // namespace wavo
