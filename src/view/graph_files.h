// Graph files: which one is current, opening one and writing it.
//
// Invariant: a file that cannot be read leaves graphs, additional text and document name as they
// were, and the link to the master as it was before.
#pragma once

#include <string>

#include "view/acquisition_cycle.h"
#include "view/graph_board.h"

namespace wavo {

/// What the graph files need of the view.
class GraphFilesHost {
 public:
    virtual ~GraphFilesHost() = default;
    /// Message box with caption "ERROR".
    virtual void ShowError(const std::string& text) = 0;
    /// Frame title: document name and " - running" or " - stopped".
    virtual void ShowRunTitle() = 0;
    virtual void AddToRecentFiles(const std::string& path) = 0;
};

class GraphFiles {
 public:
    /// None of the references is owned; all outlive this object.
    GraphFiles(AcquisitionCycle& cycle, GraphBoard& board, GraphFilesHost& host)
        : m_cycle(cycle), m_board(board), m_host(host) {}

    /// Opens a graph file and shows its graphs. The master, when there is one, is left and joined
    /// again, so that the next batch finds the new graphs. A fault is shown to the user; false.
    bool Open(const std::string& path, const std::string& display_name, bool add_to_recent);

    /// Writes graphs and additional text to the current file. False when any step of that failed.
    bool Save() const;

    /// The file that Save writes; empty before one was opened.
    [[nodiscard]] const std::string& CurrentPath() const { return m_current_path; }
    void SetCurrentPath(const std::string& path) { m_current_path = path; }
    /// First part of the frame title.
    [[nodiscard]] const std::string& DocumentName() const { return m_document_name; }
    /// The line of text that belongs to the graphs, UTF-8; kept in their file.
    [[nodiscard]] const std::string& AdditionalText() const { return m_additional_text; }
    void SetAdditionalText(const std::string& text) { m_additional_text = text; }

 private:
    AcquisitionCycle& m_cycle;
    GraphBoard& m_board;
    GraphFilesHost& m_host;
    std::string m_current_path;
    std::string m_document_name = "wavo.ini";
    std::string m_additional_text;
};

/// The part of a path behind its last separator.
std::string FileNameOf(const std::string& path);

}  // namespace wavo
