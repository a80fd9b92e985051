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

#include <mutex>
#include <string>

#include "ui/dialogs/view_settings.h"
#include "view/acquisition_cycle.h"
#include "view/graph_board.h"
#include "view/graph_files.h"

class QWidget;

namespace wavo {

/// What the file commands need of the view.
class FileCommandsHost {
 public:
    virtual ~FileCommandsHost() = default;
    /// The view's one settings record.
    [[nodiscard]] virtual ViewSettings& MutableSettings() = 0;
    /// Shows settings that have changed.
    virtual void ShowSettings() = 0;
    /// All graphs are gone: shows that.
    virtual void ShowNoGraphs() = 0;
    /// Frame title as given.
    virtual void ShowTitle(const std::string& title) = 0;
    /// Frame title: document name and " - running" or " - stopped".
    virtual void ShowRunTitle() = 0;
    /// What can be commanded may have changed.
    virtual void CurrentFileChanged() = 0;
    /// Tells in the status bar that a file could not be written.
    virtual void ShowWriteFault(const std::string& path) = 0;
    /// Tells in the status bar that a file was written without some axes.
    virtual void ShowAxesLeftOut(const std::string& path) = 0;
    /// Dialogs stand over it.
    [[nodiscard]] virtual QWidget* DialogParent() = 0;
};

class FileCommands {
 public:
    /// None of the references is owned; all outlive this object.
    FileCommands(GraphFiles& files, GraphBoard& board, AcquisitionCycle& cycle,
                 FileCommandsHost& host, std::recursive_mutex& value_lock)
        : m_files(files), m_board(board), m_cycle(cycle), m_host(host), m_value_lock(value_lock) {}

    /// Takes the settings of a graph file; those of a first start from one that is not there.
    void ReadSettings(const std::string& path);

    void New();
    void Open();
    void OpenRecent(const std::string& path);
    void Save();
    void SaveAs();

    /// Opening and saving under a new name need a master.
    [[nodiscard]] bool CanOpen() const { return m_cycle.IsMasterKnown(); }
    [[nodiscard]] bool CanSave() const { return !m_files.CurrentPath().empty(); }
    [[nodiscard]] bool CanSaveAs() const { return m_cycle.IsMasterKnown(); }

 private:
    void WriteSettings();
    /// Writes the graphs to the current file; a failure is shown.
    bool Write();

    GraphFiles& m_files;
    GraphBoard& m_board;
    AcquisitionCycle& m_cycle;
    FileCommandsHost& m_host;
    std::recursive_mutex& m_value_lock;
};

}  // namespace wavo
