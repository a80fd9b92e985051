// Context help: opens the manual at the place that tells of what has the keyboard.
//
// The window has a command for it. In dialogs and menus, where its shortcut does not reach, the key
// itself is taken.
#pragma once

#include <QObject>
#include <QString>

class QWidget;

namespace wavo {

struct Prompts;

/// The folder of the manual: what the packages install, or ./package --docs has made beside the
/// build; empty where there is none.
QString ManualFolder();

class ContextHelp : public QObject {
 public:
    /// `frame` owns the help and has the command; `prompts` outlives it.
    ContextHelp(QWidget& frame, const Prompts& prompts);

    /// Opens the manual where it tells of what has the keyboard.
    void Open();

    /// Reads the manual in another folder; tests do.
    void SetFolder(const QString& folder) { m_folder = folder; }

 protected:
    bool eventFilter(QObject* watched, QEvent* event) override;

 private:
    void OpenFor(QWidget& widget);

    QWidget& m_frame;
    const Prompts& m_prompts;
    QString m_folder;
};

}  // namespace wavo
