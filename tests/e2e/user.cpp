#include "user.h"

#include <gtest/gtest.h>

#include <QApplication>
#include <QDialog>
#include <QLineEdit>
#include <QListView>
#include <QMenu>
#include <QMenuBar>
#include <QTest>
#include <QWindow>
#include <utility>

#include "platform/system_dialogs.h"

namespace wavo::testing {

namespace {

constexpr int kLookEvery = 10;   // milliseconds
constexpr int kMostLooks = 500;  // then whatever is open is closed

QAction& ActionOf(const QWidget& bar_or_menu, const char* text) {
    for (QAction* const action : bar_or_menu.actions()) {
        if (action->isVisible() && action->text() == QLatin1String(text)) {
            return *action;
        }
    }
    qFatal("no item %s", text);
}

QWidget* TopWindow() {
    QWidget* const popup = QApplication::activePopupWidget();
    return popup != nullptr ? popup : QApplication::activeModalWidget();
}

void Close(QWidget& top) {
    if (top.testAttribute(Qt::WA_DontShowOnScreen)) {
        platform::CancelSystemDialogs();  // the system shows it
    } else {
        top.close();
    }
}

}  // namespace

QMenu& MenuOf(const QWidget& menu_bar, const char* text) {
    return *ActionOf(menu_bar, text).menu();
}

void ClickItem(const QWidget& menu_bar, const char* menu, const char* item) {
    auto& bar = const_cast<QMenuBar&>(static_cast<const QMenuBar&>(menu_bar));
    QAction& title = ActionOf(bar, menu);
    QTest::mouseClick(&bar, Qt::LeftButton, {}, bar.actionGeometry(&title).center());
    QMenu& opened = *title.menu();
    ASSERT_TRUE(opened.isVisible()) << menu;
    QAction& action = ActionOf(opened, item);
    ASSERT_TRUE(action.isEnabled()) << item;
    QTest::mouseClick(&opened, Qt::LeftButton, {}, opened.actionGeometry(&action).center());
}

void Press(QWidget& window, Qt::Key key, Qt::KeyboardModifiers modifiers) {
    window.activateWindow();  // there is no window manager that does it when a menu has closed
    ASSERT_TRUE(QTest::qWaitForWindowActive(&window));
    QTest::keyClick(window.windowHandle(), key, modifiers);
}

void EnterPath(QDialog& dialog, const QString& path) {
    auto* const edit = dialog.findChild<QLineEdit*>(QStringLiteral("fileNameEdit"));
    ASSERT_NE(edit, nullptr);
    // Without a window manager the dialog may lack the keyboard: typed keys would be lost.
    dialog.findChild<QListView*>(QStringLiteral("listView"))->clearSelection();
    edit->setText(path);
    QTest::keyClick(edit, Qt::Key_Return);
}

void User::Begin(std::vector<Step> steps, std::function<bool()> goes_on) {
    m_steps = std::move(steps);
    m_goes_on = std::move(goes_on);
    m_top.clear();
    m_worked_on.clear();
    m_watching = m_has_gone_on = false;
    m_looks = 0;
    QTimer::singleShot(kLookEvery, this, &User::Look);
}

void User::Look() {
    QWidget* const top = TopWindow();
    if (m_has_gone_on && top == nullptr) {
        return;
    }
    // A step may open a window and stay in its event loop.
    QTimer::singleShot(kLookEvery, this, &User::Look);
    if (top != nullptr && top == m_worked_on) {
        return;
    }
    if (top != nullptr && top != m_top && top->isVisible() && !m_watching) {
        m_top = top;
        m_last_seen = top->metaObject()->className();
        if (!m_steps.empty()) {
            const Step step = m_steps.front();
            m_steps.erase(m_steps.begin());
            const QPointer<QWidget> below = std::exchange(m_worked_on, top);
            step(*top);
            m_worked_on = below;
            return;
        }
    }
    m_watching = m_watching || (m_steps.empty() && top != nullptr && top == m_top);
    const bool gives_up = ++m_looks > kMostLooks;
    if (!m_has_gone_on && m_watching && top != nullptr && (!m_goes_on || m_goes_on())) {
        m_has_gone_on = true;
    }
    if ((m_has_gone_on || gives_up) && top != nullptr) {
        Close(*top);
    }
}

}  // namespace wavo::testing
