// Buttons of bars that open menus.
#include <gtest/gtest.h>

#include <QApplication>
#include <QMenu>
#include <QTest>
#include <QTimer>
#include <QToolBar>
#include <QToolButton>
#include <functional>

#include "real_prompts.h"
#include "ui/shell/main_frame.h"
#include "view/wavo_view.h"

namespace wavo {
namespace {

QImage Picture(QWidget& widget) {
    return widget.grab().toImage();
}

/// Does `step` as soon as `widget` gives one, in whatever event loop runs then.
void When(const std::function<QWidget*()>& widget, const std::function<void(QWidget&)>& step) {
    QTimer::singleShot(0, qApp, [widget, step] {
        if (QWidget* const found = widget(); found != nullptr) {
            step(*found);
        } else {
            When(widget, step);
        }
    });
}

TEST(CustomizeArrow, IsNotLitAnyMoreWhenItsDialogIsShownAndClosed) {
    CMainFrame frame(testing::RealPrompts());
    frame.show();
    frame.activateWindow();
    ASSERT_TRUE(QTest::qWaitForWindowActive(&frame));
    auto* const button = frame.findChild<QToolButton*>(QStringLiteral("customize_button"));
    const QImage before = Picture(*button);
    bool was_shown = false;
    // The way of a user: to the arrow, into its menu, to the dialog.
    When(&QApplication::activePopupWidget, [&](QWidget& popup) {
        When(&QApplication::activeModalWidget, [&](QWidget& dialog) {
            EXPECT_EQ(Picture(*button), before);
            was_shown = true;
            dialog.close();
        });
        auto& menu = static_cast<QMenu&>(popup);
        QTest::mouseClick(&menu, Qt::LeftButton, {},
                          menu.actionGeometry(menu.actions().front()).center());
    });
    button->setAttribute(Qt::WA_UnderMouse);
    QTest::mouseClick(button, Qt::LeftButton);
    EXPECT_TRUE(was_shown);
    EXPECT_EQ(Picture(*button), before);
}

TEST(CustomizeArrow, TakesLittleRoomOnABarThatLiesOrStands) {
    CMainFrame frame(testing::RealPrompts());
    frame.resize(700, 700);
    frame.show();
    auto* const bar = frame.findChild<QToolBar*>(QStringLiteral("tool_bar_Standard"));
    const auto* const button = frame.findChild<QToolButton*>(QStringLiteral("customize_button"));
    QCoreApplication::processEvents();
    EXPECT_EQ(button->width(), 16);
    EXPECT_GE(button->height(), 24);
    frame.addToolBar(Qt::LeftToolBarArea, bar);
    QCoreApplication::processEvents();
    EXPECT_EQ(button->height(), 16);
    EXPECT_GE(button->width(), 24);
}

TEST(CustomizeArrow, DoesNotGetTheKeyboardWhenTheGraphEditorIsClosed) {
    CMainFrame frame(testing::RealPrompts());
    frame.show();
    frame.activateWindow();
    ASSERT_TRUE(QTest::qWaitForWindowActive(&frame));
    frame.View().Commands().ShowGraphEditor();
    QTest::keyClick(&frame, Qt::Key_F6);
    ASSERT_TRUE(frame.View().Editor().isAncestorOf(frame.focusWidget()));
    frame.View().Editor().hide();
    EXPECT_EQ(frame.focusWidget(), &frame.View());
}

}  // namespace
}  // namespace wavo
