// The view as target of commands: which can be used now, and what each does.
#pragma once

#include <functional>
#include <string>
#include <utility>

#include "view/command_target.h"
#include "view/file_commands.h"

class QWidget;

namespace wavo {

class CAxSelect;
class GraphPrinter;
class GraphScreen;

class ViewCommands final : public CommandTarget {
 public:
    /// None of the references is owned; all outlive this object. Dialogs stand over `parent`.
    ViewCommands(Session& session, GraphScreen& screen, CAxSelect& editor, GraphPrinter& printer,
                 const Prompts& prompts, QWidget& parent);

    // CommandTarget
    [[nodiscard]] bool IsEnabled(CommandId id) const override;
    void Execute(CommandId id) override;

    /// Where the commands of the recent files find them: the path of the newest for 0, of the one
    /// before for 1; empty when there is none.
    using RecentFileList = std::function<std::string(int index)>;
    void SetRecentFiles(RecentFileList recent_files) { m_recent_files = std::move(recent_files); }

    /// Lets the user edit the settings. With OK they are written to the settings file and shown at
    /// once.
    void EditProperties();
    /// Lets the user edit the text below the graphs. With OK it is shown at once; it goes into the
    /// file with the graphs.
    void EditAdditionalText();
    /// Lets the user edit the computed axes. With OK they are computed at once; they go into the
    /// file with the graphs.
    void EditComputedAxes();
    /// Shows the graph editor above the graphs.
    void ShowGraphEditor();

 private:
    /// Path of a command of the recent files; empty when there is none.
    [[nodiscard]] std::string RecentFile(CommandId id) const;

    Session& m_session;
    GraphScreen& m_screen;
    CAxSelect& m_editor;
    GraphPrinter& m_printer;
    const Prompts& m_prompts;
    QWidget& m_parent;
    FileCommands m_files;
    RecentFileList m_recent_files;
};

}  // namespace wavo
