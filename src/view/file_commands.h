// The commands for graph files: new, open, save, save as, and the files opened before.
//
// A graph file holds the view's settings besides. Whoever saves values takes how to do so from the
// one settings record, so that what a file says holds as soon as it was read.
//
// Invariants:
// 1. New keeps the current file and the document name: saving then writes the old file.
// 2. Open reads the settings before the graphs, as the start with a graph file does, a recent file
//    after them. None ever creates a file that is not there.
// 3. A file that could not be written is told to the user, in the error log, the status bar and a
//    box; the settings are saved all the same with Save As. Axes that could not be put into it are
//    told in the error log and the status bar.
#pragma once

#include <string>

#include "session/session.h"
#include "ui/prompts.h"

namespace wavo {

class FileCommands {
 public:
    /// `session` and `prompts` are not owned and outlive this object. `parent`: the widget that
    /// dialogs stand over.
    FileCommands(Session& session, const Prompts& prompts, QWidget* parent)
        : m_session(session), m_prompts(prompts), m_parent(parent) {}

    void New();
    void Open();
    void OpenRecent(const std::string& path);
    /// Asks for a name where there is none yet.
    void Save();
    void SaveAs();

    /// Opening and saving under a new name need a master, or a recording.
    [[nodiscard]] bool CanOpen() const { return m_session.Source().IsPresent(); }
    [[nodiscard]] bool CanSave() const {
        return !m_session.Files().CurrentPath().empty() || m_session.Files().IsUnnamed();
    }
    [[nodiscard]] bool CanSaveAs() const { return m_session.Source().IsPresent(); }

 private:
    void WriteSettings();
    /// Writes the graphs to the current file; a failure is shown.
    bool Write();

    Session& m_session;
    const Prompts& m_prompts;
    QWidget* const m_parent;
};

}  // namespace wavo
