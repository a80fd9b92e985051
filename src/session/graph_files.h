// Graph files: which one is current, opening one and writing it.
//
// Invariants:
// 1. A file that cannot be read leaves graphs, additional text and document name as they were, and
//    the link to the master as it was before.
// 2. What is written can be read. Bounds that are no range are written as the graph is shown: the
//    view is told of bounds only once they are one.
// 3. A file whose reading failed is kept beside the one that replaces it, once for each failed
//    reading.
#pragma once

#include <cstddef>
#include <set>
#include <string>
#include <vector>

#include "computed/computed_source.h"
#include "graph/model/graph_list.h"
#include "session/acquisition.h"
#include "session/session_observer.h"
#include "session/shown_graphs.h"
#include "support/fault.h"
#include "support/mini_data.h"

namespace wavo {

class GraphFiles {
 public:
    /// None of the references is owned; all outlive this object.
    GraphFiles(Acquisition& acquisition, ValueStreams& streams, GraphList& graphs,
               computed::ComputedSource& computed, const ShownGraphs& shown,
               SessionObserver& observer)
        : m_acquisition(acquisition),
          m_streams(streams),
          m_graphs(graphs),
          m_computed(computed),
          m_shown(shown),
          m_observer(observer) {}

    /// Without graphs, computed axes and text. The current file and the document name stay: saving
    /// writes the old file.
    void New();

    /// Opens a graph file and shows its graphs. The master, when there is one, is left and joined
    /// again, so that the next batch finds the new graphs. A fault is shown to the user; false.
    bool Open(const std::string& path, const std::string& display_name, bool add_to_recent);

    /// Shows graphs, computed axes and additional text of the text of a graph file that is on no
    /// disk; the current file is then none, until a name is given to it. A fault is shown to the
    /// user; false.
    bool OpenText(const std::string& text, const std::string& display_name);

    /// Graphs, computed axes, additional text and names, to come back to.
    struct Kept {
        std::vector<WavoGraph> graphs;
        std::vector<computed::ComputedAxis> computed;
        std::string additional_text;
        std::string current_path;
        std::string document_name;
        bool is_unnamed = false;
    };
    [[nodiscard]] Kept Keep() const;
    void BringBack(const Kept& kept);

    /// Writes graphs, computed axes and additional text to the current file. Any step of that may
    /// fail; a file that has to be kept and cannot is not replaced. Returns the number of axes with
    /// names that cannot stand in a file, each an error-log entry.
    Expected<std::size_t> Save();

    /// Writes graphs, computed axes and additional text to another file, made anew; the current one
    /// stays. False when it could not be written.
    bool WriteCopy(const std::string& path) const;

    /// What the current file held is kept already: a save need not do that any more.
    void NoteKept() { m_not_read.erase(m_current_path); }

    /// The file that Save writes; empty before one was opened.
    [[nodiscard]] const std::string& CurrentPath() const { return m_current_path; }
    void SetCurrentPath(const std::string& path) {
        m_current_path = path;
        m_is_unnamed = false;
    }
    /// What is shown belongs to no file yet: whoever saves it asks for a name.
    [[nodiscard]] bool IsUnnamed() const { return m_is_unnamed; }
    /// First part of the frame title.
    [[nodiscard]] const std::string& DocumentName() const { return m_document_name; }
    /// Frame title: document name and " - running" or " - stopped"; while a recording is shown its
    /// name and the document name.
    void ShowRunTitle();
    /// Another title, behind the name of the recording that is shown.
    void ShowTitle(const std::string& title);
    /// The recording that is shown; empty for none.
    void SetRecordingName(const std::string& name) { m_recording_name = name; }
    /// The line of text that belongs to the graphs, UTF-8; kept in their file.
    [[nodiscard]] const std::string& AdditionalText() const { return m_additional_text; }
    void SetAdditionalText(const std::string& text) { m_additional_text = text; }

 private:
    /// Puts into a store what a graph file holds.
    bool Put(MIniData& store, std::size_t* axes_left_out = nullptr) const;
    /// Keeps the current file if its last reading failed. False when it has to be kept and cannot.
    bool KeepUnread();
    /// The graphs with bounds that can be read back.
    [[nodiscard]] std::vector<WavoGraph> GraphsToStore() const;

    Acquisition& m_acquisition;
    ValueStreams& m_streams;
    GraphList& m_graphs;
    computed::ComputedSource& m_computed;
    const ShownGraphs& m_shown;
    SessionObserver& m_observer;
    std::string m_current_path;
    std::string m_document_name = "wavo.ini";
    std::string m_recording_name;
    bool m_is_unnamed = false;
    std::string m_additional_text;
    std::set<std::string> m_not_read;  // files whose last reading failed and that were not kept yet
};

/// The part of a path behind its last separator.
std::string FileNameOf(const std::string& path);

}  // namespace wavo
