// All windows of the program, for tests that look at each control of each of them.
#pragma once

#include <QDialog>
#include <QSettings>
#include <QTemporaryDir>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "ui/dialogs/export_part.h"
#include "ui/shell/main_frame.h"

namespace wavo::testing {

/// Folders of the user that go with the test; afterwards those from before are back.
class FoldersOfTest {
 public:
    FoldersOfTest();
    ~FoldersOfTest();
    FoldersOfTest(const FoldersOfTest&) = delete;
    FoldersOfTest& operator=(const FoldersOfTest&) = delete;

    [[nodiscard]] QString File(const char* name) const {
        return m_folder.filePath(QLatin1String(name));
    }

 private:
    const QTemporaryDir m_folder;
    std::vector<QByteArray> m_before;
};

/// The frame with strip, bars and two graphs, one over time with a trigger, one over an axis.
class WholeFrame {
 public:
    WholeFrame();

    /// Shows one pane and no other; what has none (0) shows none.
    void ShowPane(CommandId command);
    /// Opens a recording: the bar below the graphs is shown.
    void OpenRecording();
    [[nodiscard]] static std::vector<CommandId> Panes();

    CMainFrame& operator*() { return *m_frame; }
    CMainFrame* operator->() { return m_frame.get(); }

 private:
    const FoldersOfTest m_folders;
    QSettings m_settings;
    std::unique_ptr<CMainFrame> m_frame;
};

/// A dialog with something in each of its fields.
struct NamedDialog {
    const char* name;
    std::function<std::unique_ptr<QDialog>()> make;
};

/// Every dialog of the program's own.
const std::vector<NamedDialog>& AllDialogs();

/// Texts as a user sees them: "QPushButton control_1027".
std::string NameOfWidget(const QWidget& widget);

}  // namespace wavo::testing
