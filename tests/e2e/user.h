// What a user does to the program with mouse and keyboard while its event loop goes on.
#pragma once

#include <QPointer>
#include <QTimer>
#include <QWidget>
#include <functional>
#include <string>
#include <vector>

class QDialog;
class QMenu;

namespace wavo::testing {

/// A menu of the menu bar, by its text.
QMenu& MenuOf(const QWidget& menu_bar, const char* text);

/// Opens the menu with a click on its title and clicks on the item.
void ClickItem(const QWidget& menu_bar, const char* menu, const char* item);

/// Presses a key in a window, as the platform hands it over.
void Press(QWidget& window, Qt::Key key, Qt::KeyboardModifiers modifiers = {});

/// Types a path into the file dialog and leaves it with Enter.
void EnterPath(QDialog& dialog, const QString& path);

/// Works on the windows that open one over the other while a command is carried out. Each step is
/// done once to the window that is new on top; the last window is watched until `goes_on` is true,
/// then all windows are closed.
class User : public QObject {
 public:
    using Step = std::function<void(QWidget& top)>;

    /// Begins to look for windows.
    void Begin(std::vector<Step> steps, std::function<bool()> goes_on = {});

    /// The steps are done, and the last window was seen to go on.
    [[nodiscard]] bool IsDone() const { return m_steps.empty() && m_has_gone_on; }
    /// The type of the last window.
    [[nodiscard]] const std::string& LastSeen() const { return m_last_seen; }

 private:
    void Look();

    std::vector<Step> m_steps;
    std::function<bool()> m_goes_on;
    // The next window may stand in memory where one stood that is gone.
    QPointer<QWidget> m_top;
    QPointer<QWidget> m_worked_on;  // by a step that has not come back yet
    std::string m_last_seen;
    bool m_watching = false;
    bool m_has_gone_on = false;
    int m_looks = 0;
};

}  // namespace wavo::testing
