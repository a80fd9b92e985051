// The keyboard on its way through the panes of the frame.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <QAction>
#include <QTest>
#include <QToolBar>
#include <QToolButton>
#include <cmath>

#include "real_prompts.h"
#include "seen_contrast.h"
#include "ui/bars/commands.h"
#include "ui/controls/controls.h"
#include "ui/graph_editor/editor_controls.h"
#include "ui/shell/looks.h"
#include "ui/shell/main_frame.h"
#include "view/wavo_view.h"

namespace wavo {
namespace {

/// The pixels that differ between two pictures so much that an eye sees it.
int ClearlyDifferent(const QImage& a, const QImage& b) {
    int different = 0;
    for (int y = 0; y < a.height(); ++y) {
        for (int x = 0; x < a.width(); ++x) {
            different += SeenContrast(a.pixelColor(x, y), b.pixelColor(x, y)) >= 3.0 ? 1 : 0;
        }
    }
    return different;
}

class Keyboard : public ::testing::Test {
 protected:
    Keyboard() {
        BarSetup one_bar = DefaultBarSetup();
        one_bar.bars.resize(1);
        m_frame.SetBars(one_bar);
        m_frame.resize(1366, 768);
        m_frame.show();
        m_frame.activateWindow();
        EXPECT_TRUE(QTest::qWaitForWindowActive(&m_frame));
        m_frame.View().setFocus();
    }
    QWidget& Focus() {
        QWidget* const focus = m_frame.focusWidget();
        EXPECT_NE(focus, nullptr);
        return focus == nullptr ? m_frame : *focus;
    }
    void Press(int key, Qt::KeyboardModifiers modifiers = {}) {
        QTest::keyClick(&Focus(), static_cast<Qt::Key>(key), modifiers);
        QCoreApplication::processEvents();
    }
    /// The command of the button that has the keyboard; 0 when no button of a command has it.
    int FocusedCommand() {
        const auto* const button = qobject_cast<QToolButton*>(&Focus());
        for (const Command& command : Commands()) {
            if (button != nullptr && button->defaultAction() == m_frame.Action(command.id)) {
                return static_cast<int>(command.id);
            }
        }
        return 0;
    }
    QWidget& Button(CommandId id) {
        return *m_frame.findChild<QToolBar*>(QStringLiteral("tool_bar_Standard"))
                    ->widgetForAction(m_frame.Action(id));
    }

    CMainFrame m_frame{testing::RealPrompts()};
};

TEST_F(Keyboard, ComesToEveryBar) {
    m_frame.SetBars(DefaultBarSetup());
    QCoreApplication::processEvents();  // the buttons are shown
    Press(Qt::Key_F6);
    EXPECT_EQ(FocusedCommand(), 57607);
    Press(Qt::Key_F6);
    EXPECT_EQ(FocusedCommand(), 32760);
    Press(Qt::Key_F6);
    EXPECT_EQ(&Focus(), &m_frame.View());
}

TEST_F(Keyboard, GoesThroughThePanesAndBackWithF6) {
    m_frame.View().Commands().ShowGraphEditor();
    const QWidget& graph_number = *FindControl<QWidget>(
        m_frame.View().Editor(), static_cast<int>(EditorControl::kGraphNumber));
    Press(Qt::Key_F6);
    EXPECT_TRUE(&Focus() == &graph_number || graph_number.isAncestorOf(&Focus()))
        << Focus().objectName().toStdString();
    Press(Qt::Key_F6);
    EXPECT_NE(qobject_cast<QToolBar*>(Focus().parentWidget()), nullptr);
    Press(Qt::Key_F6);
    EXPECT_EQ(&Focus(), &m_frame.View());
    Press(Qt::Key_F6, Qt::ShiftModifier);
    EXPECT_NE(qobject_cast<QToolBar*>(Focus().parentWidget()), nullptr);
    Press(Qt::Key_F6, Qt::ShiftModifier);
    Press(Qt::Key_F6, Qt::ShiftModifier);
    EXPECT_EQ(&Focus(), &m_frame.View());
}

TEST_F(Keyboard, ComesOnABarFirstToWhatHarmsNobody) {
    Press(Qt::Key_F6);
    EXPECT_EQ(FocusedCommand(), 57607);  // without a master there is no Open
    BarSetup bars = m_frame.Bars();
    bars.bars[0].items = {57600, 57603, 32777, 57664};
    m_frame.SetBars(bars);
    QCoreApplication::processEvents();  // the buttons are shown
    m_frame.View().setFocus();
    Press(Qt::Key_F6);
    EXPECT_EQ(FocusedCommand(), 57664);
    bars.bars[0].items = {57600, 57603, 32777};
    m_frame.SetBars(bars);
    QCoreApplication::processEvents();  // the buttons are shown
    m_frame.View().setFocus();
    Press(Qt::Key_F6);
    EXPECT_EQ(Focus().objectName(), "customize_button");
}

TEST_F(Keyboard, ComesToTheFirstButtonOfABarWhereAllDoTheirWorkAtOnce) {
    BarSetup bars = m_frame.Bars();
    bars.bars.push_back({QStringLiteral("Mine"), {32779, 57600, 32777}});
    m_frame.SetBars(bars);
    QCoreApplication::processEvents();  // the buttons are shown
    Press(Qt::Key_F6);
    Press(Qt::Key_F6);
    EXPECT_EQ(FocusedCommand(), 57600);  // Start cannot be used while it runs
}

TEST_F(Keyboard, GoesFromButtonToButtonWithTheArrows) {
    Press(Qt::Key_F6);
    Press(Qt::Key_Right);
    EXPECT_EQ(FocusedCommand(), 32773);
    Press(Qt::Key_Down);
    EXPECT_EQ(FocusedCommand(), 32777);
    Press(Qt::Key_Left);
    Press(Qt::Key_Up);
    EXPECT_EQ(FocusedCommand(), 57607);
    Press(Qt::Key_Home);
    EXPECT_EQ(FocusedCommand(), 57600);
    Press(Qt::Key_Left);
    EXPECT_EQ(Focus().objectName(), "customize_button");
    Press(Qt::Key_Home);
    Press(Qt::Key_End);
    EXPECT_EQ(Focus().objectName(), "customize_button");
    Press(Qt::Key_Right);
    EXPECT_EQ(FocusedCommand(), 57600);
    Press(Qt::Key_Escape);
    EXPECT_EQ(&Focus(), &m_frame.View());
}

TEST_F(Keyboard, UsesTheButtonThatItIsOnWithSpace) {
    Press(Qt::Key_F6);
    Press(Qt::Key_Right);
    Press(Qt::Key_Right);
    ASSERT_EQ(FocusedCommand(), 32777);
    Press(Qt::Key_Space);
    EXPECT_TRUE(m_frame.Action(CommandId::kStart)->isEnabled());
}

TEST_F(Keyboard, ShowsInEveryLookWhereItIs) {
    m_frame.View().Commands().ShowGraphEditor();
    for (const Look& look : Looks()) {
        m_frame.Action(look.id)->trigger();
        QCoreApplication::processEvents();
        std::vector<QWidget*> seen;
        for (int pane = 0; pane < 3; ++pane) {
            const QImage before = m_frame.grab().toImage();
            Press(Qt::Key_F6);
            seen.push_back(&Focus());
            const QRect place(Focus().mapTo(&m_frame, QPoint(0, 0)), Focus().size());
            EXPECT_GE(ClearlyDifferent(before.copy(place), m_frame.grab().toImage().copy(place)),
                      (place.width() + place.height()) / 2)
                << static_cast<int>(look.id) << " " << Focus().metaObject()->className();
        }
        EXPECT_EQ(seen.back(), &m_frame.View());
    }
    ApplyLook(FindLook(static_cast<int>(kDefaultLook)));
}

TEST_F(Keyboard, IsNotMarkedInTheViewWhereTheMouseHasBroughtIt) {
    const QImage before = m_frame.View().grab().toImage();
    Press(Qt::Key_F6);
    Press(Qt::Key_F6);
    EXPECT_NE(m_frame.View().grab().toImage(), before);
    QTest::mouseClick(&m_frame.View(), Qt::LeftButton);
    EXPECT_EQ(m_frame.View().grab().toImage(), before);
}

}  // namespace
}  // namespace wavo
