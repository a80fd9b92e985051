#include "view/graph_files.h"

#include <utility>
#include <vector>

#include "graph/model/graph_ini_data.h"
#include "platform/folders.h"
#include "support/diagnostics.h"
#include "support/mini_data.h"

namespace wavo {

std::string FileNameOf(const std::string& path) {
    const std::string native = platform::NativePath(path);
    return native.substr(native.rfind(platform::PathSeparator()) + 1);
}

bool GraphFiles::Open(const std::string& path, const std::string& display_name,
                      bool add_to_recent) {
    MIniData store;
    const bool readable = store.Open(path);
    if (store.HasNoFileContent()) {
        m_host.ShowError("file " + path + " not exist !");
        return false;
    }
    m_current_path = path;
    m_cycle.LeaveMaster();
    std::vector<WavoGraph> graphs;
    std::string additional_text;
    std::string error = store.LastErrorText();
    const bool read = readable && CreateGraphsFromIniData(store, graphs, error, additional_text,
                                                          m_cycle.CycleTime());
    if (read) {
        m_board.Graphs() = std::move(graphs);
        m_additional_text = std::move(additional_text);
        m_cycle.InitialiseEditor();
        m_document_name = display_name;
        m_host.ShowRunTitle();
        if (add_to_recent) {
            m_host.AddToRecentFiles(path);
        }
    } else {
        MErrTrace_Dump();
        m_host.ShowError("failed to read " + path + ".\n" + error);
    }
    m_cycle.JoinMaster();
    return read;
}

bool GraphFiles::Save() const {
    MIniData store(MIniData::kSaveFlush | MIniData::kSaveSafe);
    const bool saved = store.Open(m_current_path) &&
                       GetGraphAsIniData(store, m_board.Graphs(), m_additional_text) &&
                       store.Save();
    if (!saved) {
        MErrTrace_Dump();
    }
    return saved;
}

}  // namespace wavo
