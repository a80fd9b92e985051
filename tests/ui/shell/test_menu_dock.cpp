// The menu bar as a bar that is dragged.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <QApplication>
#include <QContextMenuEvent>
#include <QMenu>
#include <QMenuBar>
#include <QSettings>
#include <QTemporaryDir>
#include <QTest>
#include <QTimer>
#include <QToolButton>
#include <memory>

#include "real_prompts.h"
#include "ui/shell/main_frame.h"
#include "view/wavo_view.h"

namespace wavo {
namespace {

using ::testing::ElementsAre;

class Dock : public ::testing::Test {
 protected:
    Dock() {
        m_frame.show();
        m_frame.activateWindow();
        EXPECT_TRUE(QTest::qWaitForWindowActive(&m_frame));
    }
    MenuDock& Bar() { return *m_frame.findChild<MenuDock*>(QStringLiteral("menu_bar")); }
    QMenu& Menu(int index) { return *m_frame.menuBar()->actions()[index]->menu(); }
    std::vector<std::string> ShownButtons() {
        std::vector<std::string> texts;
        for (const auto* const button : Bar().findChildren<QToolButton*>()) {
            if (button->isVisible() && button->menu() != nullptr && !button->text().isEmpty()) {
                texts.push_back(button->text().toStdString());
            }
        }
        return texts;
    }
    /// Alt and the letter open the menu, which is closed again. A button opens its menu in an event
    /// loop of its own.
    void ExpectLetterOpens(Qt::Key letter, int menu) {
        // The menu before may have become active after it was closed.
        m_frame.activateWindow();
        ASSERT_TRUE(QTest::qWaitForWindowActive(&m_frame));
        bool was_open = false;
        QTimer timer;
        QObject::connect(&timer, &QTimer::timeout, &m_frame, [&] {
            was_open = was_open || Menu(menu).isVisible();
            if (QWidget* const popup = QApplication::activePopupWidget()) {
                popup->close();
            }
        });
        timer.start(50);
        QTest::keyClick(m_frame.windowHandle(), letter, Qt::AltModifier);
        EXPECT_TRUE(QTest::qWaitFor([&] { return was_open; }, 2000)) << menu;
        EXPECT_TRUE(QTest::qWaitFor([] { return QApplication::activePopupWidget() == nullptr; }));
    }

    QTemporaryDir m_folder;
    QSettings m_settings{m_folder.filePath(QStringLiteral("app.ini")), QSettings::IniFormat};
    CMainFrame m_frame{testing::RealPrompts(), &m_settings};
};

TEST_F(Dock, MayStandOnEachSideAndFloat) {
    EXPECT_EQ(Bar().allowedAreas(), Qt::AllToolBarAreas);
    EXPECT_TRUE(Bar().isMovable());
    EXPECT_TRUE(Bar().isFloatable());
    EXPECT_EQ(m_frame.toolBarArea(&Bar()), Qt::TopToolBarArea);
    EXPECT_FALSE(m_frame.menuBar()->isNativeMenuBar());
}

TEST_F(Dock, StandsAboveTheToolBarAtFirst) {
    const auto* const standard = m_frame.findChild<QToolBar*>(QStringLiteral("tool_bar_Standard"));
    EXPECT_LT(Bar().geometry().bottom(), standard->geometry().top());
    EXPECT_GE(m_frame.menuBar()->width(), m_frame.menuBar()->sizeHint().width());
    EXPECT_THAT(ShownButtons(), ElementsAre());
}

TEST_F(Dock, ShowsItsMenusBelowEachOtherOnASide) {
    m_frame.addToolBar(Qt::LeftToolBarArea, &Bar());
    QCoreApplication::processEvents();
    EXPECT_FALSE(m_frame.menuBar()->isVisible());
    EXPECT_THAT(ShownButtons(), ElementsAre("&File", "&View", "&Machine Data", "&Run control",
                                            "Rec&ording", "Meas&ure", "&Help"));
    EXPECT_LT(Bar().width(), 200);
    m_frame.addToolBar(Qt::BottomToolBarArea, &Bar());
    QCoreApplication::processEvents();
    EXPECT_TRUE(m_frame.menuBar()->isVisible());
    EXPECT_THAT(ShownButtons(), ElementsAre());
}

TEST_F(Dock, OpensAMenuByItsLetterWhereverItIs) {
    ExpectLetterOpens(Qt::Key_F, 0);
    ExpectLetterOpens(Qt::Key_H, 6);
    ExpectLetterOpens(Qt::Key_U, 5);
    ExpectLetterOpens(Qt::Key_O, 4);
    m_frame.addToolBar(Qt::RightToolBarArea, &Bar());
    QCoreApplication::processEvents();
    ExpectLetterOpens(Qt::Key_V, 1);
    ExpectLetterOpens(Qt::Key_M, 2);
    m_frame.addToolBar(Qt::TopToolBarArea, &Bar());
    QCoreApplication::processEvents();
    ExpectLetterOpens(Qt::Key_R, 3);
}

TEST_F(Dock, OpensAMenuByItsLetterWhileItFloats) {
    Bar().setWindowFlags(Qt::Tool | Qt::FramelessWindowHint);
    Q_EMIT Bar().topLevelChanged(true);
    Bar().show();
    m_frame.activateWindow();
    ASSERT_TRUE(QTest::qWaitForWindowActive(&m_frame));
    ASSERT_TRUE(Bar().isFloating());
    ExpectLetterOpens(Qt::Key_F, 0);
    ExpectLetterOpens(Qt::Key_M, 2);
}

TEST_F(Dock, ShowsAllCommandsOfAShortMenuOnASideToo) {
    BarSetup bars = m_frame.Bars();
    bars.full_menus = false;
    m_frame.SetBars(bars);
    m_frame.addToolBar(Qt::LeftToolBarArea, &Bar());
    QCoreApplication::processEvents();
    QMenu& file = Menu(0);
    const auto* const save_as = m_frame.Action(CommandId::kSaveAs);
    file.popup(QPoint(0, 0));
    ASSERT_EQ(file.actions().back()->text(), "Show all commands");
    EXPECT_FALSE(file.actions().contains(save_as));
    file.close();
    // The buttons open their menus in event loops of their own.
    bool was_complete = false;
    QTimer::singleShot(200, &m_frame, [&] {
        was_complete = file.isVisible() && file.actions().contains(save_as);
        file.close();
    });
    file.actions().back()->trigger();
    EXPECT_TRUE(QTest::qWaitFor([&] { return was_complete; }));
}

TEST_F(Dock, IsNotHiddenAndNotAPaneOfItsOwn) {
    const std::unique_ptr<QMenu> menu(m_frame.createPopupMenu());
    EXPECT_FALSE(menu->actions().contains(Bar().toggleViewAction()));
    EXPECT_FALSE(Bar().toggleViewAction()->isEnabled());
    m_frame.View().setFocus();
    for (int i = 0; i < 4; ++i) {
        QTest::keyClick(&m_frame, Qt::Key_F6);
        EXPECT_FALSE(Bar().isAncestorOf(m_frame.focusWidget()));
    }
}

TEST_F(Dock, OffersTheBarsAtARightClick) {
    const QPoint place(Bar().width() - 3, Bar().height() / 2);
    QContextMenuEvent click(QContextMenuEvent::Mouse, place, Bar().mapToGlobal(place));
    QCoreApplication::sendEvent(&Bar(), &click);
    auto* const menu = qobject_cast<QMenu*>(QApplication::activePopupWidget());
    ASSERT_NE(menu, nullptr);
    EXPECT_EQ(menu->actions().back()->text(), "Customize...");
    menu->close();
}

TEST_F(Dock, IsFoundWhereItWasLeft) {
    m_frame.addToolBar(Qt::RightToolBarArea, &Bar());
    m_frame.close();
    CMainFrame again(testing::RealPrompts(), &m_settings);
    again.show();
    QCoreApplication::processEvents();
    auto& bar = *again.findChild<MenuDock*>(QStringLiteral("menu_bar"));
    EXPECT_EQ(again.toolBarArea(&bar), Qt::RightToolBarArea);
    EXPECT_FALSE(again.menuBar()->isVisible());
    EXPECT_TRUE(bar.isVisible());
}

TEST_F(Dock, TheToolBarEndsInAButtonThatCustomizes) {
    auto* const button = m_frame.findChild<QToolButton*>(QStringLiteral("customize_button"));
    ASSERT_NE(button, nullptr);
    EXPECT_TRUE(button->isVisible());
    EXPECT_EQ(button->parentWidget()->objectName(), "tool_bar_Standard");
    EXPECT_EQ(button->menu()->actions(), QList<QAction*>{m_frame.Action(CommandId::kCustomize)});
    EXPECT_EQ(m_frame.Action(CommandId::kCustomize)->text(), "Customize...");
    m_frame.SetBars(m_frame.Bars());
    QCoreApplication::processEvents();
    EXPECT_TRUE(button->isVisible());
}

}  // namespace
}  // namespace wavo
