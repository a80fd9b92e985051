// Everything without a mouse: each control by Tab, arrows and F6, each command by its key or
// through the menus.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <QAbstractButton>
#include <QAbstractItemView>
#include <QAbstractSlider>
#include <QAbstractSpinBox>
#include <QApplication>
#include <QButtonGroup>
#include <QComboBox>
#include <QLineEdit>
#include <QMenu>
#include <QMenuBar>
#include <QRadioButton>
#include <QScrollBar>
#include <QTabBar>
#include <QTest>
#include <QToolBar>
#include <QToolButton>
#include <set>
#include <string>
#include <vector>

#include "all_windows.h"
#include "ui/bars/commands.h"
#include "ui/controls/color_field.h"
#include "view/navigator.h"
#include "view/wavo_view.h"

namespace wavo {
namespace {

using testing::AllDialogs;
using ::testing::IsEmpty;
using testing::NamedDialog;
using testing::NameOfWidget;
using testing::WholeFrame;

constexpr int kMostSteps = 400;

/// A part of one of the toolkit's controls, which is used through that.
bool IsPartOfAControl(const QWidget& widget) {
    if (widget.objectName().startsWith(QStringLiteral("qt_")) ||
        qobject_cast<const QScrollBar*>(&widget) != nullptr) {
        return true;
    }
    for (const QWidget* above = widget.parentWidget(); above != nullptr;
         above = above->parentWidget()) {
        if (qobject_cast<const QComboBox*>(above) != nullptr ||
            qobject_cast<const QAbstractSpinBox*>(above) != nullptr ||
            qobject_cast<const QTabBar*>(above) != nullptr ||
            qobject_cast<const QAbstractItemView*>(above) != nullptr ||
            qobject_cast<const QMenuBar*>(above) != nullptr) {
            return true;
        }
    }
    return false;
}

bool IsControl(const QWidget& widget) {
    const bool is_control = qobject_cast<const QAbstractButton*>(&widget) != nullptr ||
                            qobject_cast<const QComboBox*>(&widget) != nullptr ||
                            qobject_cast<const QLineEdit*>(&widget) != nullptr ||
                            qobject_cast<const QAbstractSpinBox*>(&widget) != nullptr ||
                            qobject_cast<const QAbstractSlider*>(&widget) != nullptr ||
                            qobject_cast<const QTabBar*>(&widget) != nullptr ||
                            qobject_cast<const QAbstractItemView*>(&widget) != nullptr ||
                            dynamic_cast<const ColorField*>(&widget) != nullptr ||
                            dynamic_cast<const Navigator*>(&widget) != nullptr ||
                            dynamic_cast<const CWavoView*>(&widget) != nullptr;
    return is_control && widget.isVisible() && widget.isEnabled() && !IsPartOfAControl(widget);
}

std::set<QWidget*> ControlsOf(QWidget& window) {
    std::set<QWidget*> controls;
    for (QWidget* const widget : window.findChildren<QWidget*>()) {
        if (widget->window() == &window && IsControl(*widget)) {
            controls.insert(widget);
        }
    }
    return controls;
}

QWidget* FocusIn(QWidget& window) {
    QWidget* const focus = window.focusWidget();
    return focus != nullptr && focus->focusProxy() != nullptr ? focus->focusProxy() : focus;
}

/// Presses a key again and again and collects who has the keyboard, until that was all seen.
void PressThrough(QWidget& window, int key, std::set<QWidget*>& reached) {
    std::set<QWidget*> seen;
    for (int step = 0; step < kMostSteps; ++step) {
        QWidget* const focus = FocusIn(window);
        if (focus == nullptr || !seen.insert(focus).second) {
            break;
        }
        reached.insert(focus);
        QTest::keyClick(focus, static_cast<Qt::Key>(key));
        QApplication::processEvents();
    }
}

/// Those that Tab leads to.
std::set<QWidget*> ReachedByTab(QWidget& window) {
    std::set<QWidget*> reached;
    PressThrough(window, Qt::Key_Tab, reached);
    return reached;
}

/// Those that Tab leads to, and what the arrows lead to from there: they choose, too.
std::set<QWidget*> ReachedIn(QWidget& window) {
    std::set<QWidget*> reached = ReachedByTab(window);
    const auto is_radio = [](const QWidget* widget) {
        return qobject_cast<const QRadioButton*>(widget) != nullptr;
    };
    for (std::size_t known = 0; known != reached.size();) {
        known = reached.size();
        for (QWidget* const widget : std::set<QWidget*>(reached)) {
            for (const int key : {Qt::Key_Down, Qt::Key_Right, Qt::Key_Up, Qt::Key_Left}) {
                if (is_radio(widget) && widget->isEnabled()) {
                    widget->setFocus(Qt::TabFocusReason);
                    PressThrough(window, key, reached);
                }
            }
        }
    }
    reached.merge(ReachedByTab(window));  // what the last choice has made usable
    return reached;
}

std::vector<std::string> NotReached(const std::set<QWidget*>& controls,
                                    const std::set<QWidget*>& reached) {
    std::vector<std::string> names;
    for (QWidget* const control : controls) {
        if (reached.count(control) == 0) {
            names.push_back(NameOfWidget(*control));
        }
    }
    return names;
}

class EveryDialog : public ::testing::TestWithParam<NamedDialog> {};

TEST_P(EveryDialog, IsUsedWithoutAMouse) {
    const std::unique_ptr<QDialog> dialog = GetParam().make();
    dialog->show();
    dialog->activateWindow();
    ASSERT_TRUE(QTest::qWaitForWindowActive(dialog.get()));
    ASSERT_NE(FocusIn(*dialog), nullptr) << "the keyboard is nowhere at first";
    const std::set<QWidget*> reached = ReachedIn(*dialog);
    EXPECT_FALSE(ControlsOf(*dialog).empty());
    EXPECT_THAT(NotReached(ControlsOf(*dialog), reached), IsEmpty());
}

INSTANTIATE_TEST_SUITE_P(Keyboard, EveryDialog, ::testing::ValuesIn(AllDialogs()),
                         [](const auto& info) { return std::string(info.param.name); });

class FrameByKeyboard : public ::testing::Test {
 protected:
    FrameByKeyboard() {
        m_frame->activateWindow();
        EXPECT_TRUE(QTest::qWaitForWindowActive(&*m_frame));
        m_frame->View().setFocus();
    }
    /// Panes by F6, what is in them by Tab, buttons of bars by the arrows.
    std::set<QWidget*> Reached() {
        std::set<QWidget*> reached;
        std::set<QWidget*> seen;
        m_frame->View().setFocus();
        for (int pane = 0; pane < 20; ++pane) {
            QTest::keyClick(FocusIn(*m_frame), Qt::Key_F6);
            QApplication::processEvents();
            QWidget* const first = FocusIn(*m_frame);
            if (first == nullptr || !seen.insert(first).second) {
                break;
            }
            if (qobject_cast<QToolBar*>(first->parentWidget()) != nullptr) {
                PressThrough(*m_frame, Qt::Key_Right, reached);
            } else {
                reached.merge(ReachedByTab(*m_frame));
            }
            first->setFocus(Qt::TabFocusReason);
        }
        return reached;
    }
    std::vector<std::string> NotReachedNow() {
        std::set<QWidget*> reached = Reached();
        for (QWidget* const widget : std::set<QWidget*>(reached)) {
            // The arrows lead on from there; they would edit the graph.
            const auto* const radio = qobject_cast<QRadioButton*>(widget);
            if (radio != nullptr && radio->group() != nullptr) {
                for (QAbstractButton* const other : radio->group()->buttons()) {
                    reached.insert(other);
                }
            }
        }
        return NotReached(ControlsOf(*m_frame), reached);
    }

    WholeFrame m_frame;
};

TEST_F(FrameByKeyboard, StripAndBarsAreReached) {
    EXPECT_GT(ControlsOf(*m_frame).size(), 20U);
    EXPECT_THAT(NotReachedNow(), IsEmpty());
    m_frame->View().Zooms().Select(2);  // other controls can be used for it
    QApplication::processEvents();
    EXPECT_THAT(NotReachedNow(), IsEmpty());
}

TEST_F(FrameByKeyboard, EveryPaneIsReachedWithAllThatIsInIt) {
    for (const CommandId pane : WholeFrame::Panes()) {
        m_frame.ShowPane(pane);
        EXPECT_THAT(NotReachedNow(), IsEmpty()) << static_cast<int>(pane);
    }
}

TEST_F(FrameByKeyboard, TheBarOfARecordingIsReached) {
    m_frame.OpenRecording();
    EXPECT_THAT(NotReachedNow(), IsEmpty());
}

/// Walks an open menu with the arrows, and what opens from it.
void WalkMenu(QMenu& menu, std::set<const QAction*>& reached) {
    std::set<const QAction*> seen;
    for (int step = 0; step < kMostSteps; ++step) {
        QTest::keyClick(&menu, Qt::Key_Down);
        const QAction* const active = menu.activeAction();
        if (active == nullptr || !seen.insert(active).second) {
            break;
        }
        reached.insert(active);
        if (active->menu() != nullptr) {
            QTest::keyClick(&menu, Qt::Key_Right);
            QApplication::processEvents();
            if (active->menu()->isVisible()) {
                WalkMenu(*active->menu(), reached);
                active->menu()->close();
                menu.setActiveAction(const_cast<QAction*>(active));  // NOLINT: it is the menu's
            }
        }
    }
}

TEST_F(FrameByKeyboard, EveryCommandHasItsKeyOrIsReachedInAMenu) {
    BarSetup bars = m_frame->Bars();
    bars.full_menus = true;
    m_frame->SetBars(bars);
    for (const Command& command : Commands()) {
        m_frame->Action(command.id)->setEnabled(true);
    }
    std::set<const QAction*> reached;
    for (QAction* const top : m_frame->menuBar()->actions()) {
        const QString text = top->text();
        const int letter = text.indexOf(u'&');
        ASSERT_GE(letter, 0) << text.toStdString();
        QTest::keyClick(&m_frame->View(), text.at(letter + 1).toLatin1(), Qt::AltModifier);
        QApplication::processEvents();
        ASSERT_TRUE(top->menu()->isVisible()) << text.toStdString();
        WalkMenu(*top->menu(), reached);
        top->menu()->close();
        QApplication::processEvents();
    }
    std::vector<std::string> missing;
    for (const Command& command : Commands()) {
        const QAction* const action = m_frame->Action(command.id);
        const bool is_menu = command.id == CommandId::kToolBars;
        if (!is_menu && reached.count(action) == 0 && action->shortcut().isEmpty() &&
            action->isVisible()) {
            missing.emplace_back(command.object_name);
        }
    }
    EXPECT_THAT(missing, IsEmpty());
    EXPECT_GT(reached.size(), 40U);
}

}  // namespace
}  // namespace wavo
