#include "view/graph_files.h"

#include <algorithm>
#include <utility>

#include "graph/model/graph_ini_data.h"
#include "platform/file.h"
#include "platform/folders.h"
#include "support/diagnostics.h"
#include "support/mini_data.h"
#include "view/kept_file.h"

namespace wavo {

namespace {

bool IsNoRange(const ScaleDefinition& scale) {
    return scale.ScaleType == ScaleTypeCode::kAxis && scale.ScaleAx == ScaleAxCode::kManual &&
           !(scale.Maximum > scale.Minimum);
}

void TakeBounds(const ScaleDefinition& shown, ScaleDefinition& scale) {
    if (IsNoRange(scale)) {
        scale.Minimum = shown.Minimum;
        scale.Maximum = shown.Maximum;
    }
}

/// The bounds of `graph` that are no range become those of `shown`, the same graph on the screen,
/// whose axes may be others already.
void TakeShownBounds(const WavoGraph& shown, WavoGraph& graph) {
    if (shown.XCoorType == graph.XCoorType) {
        TakeBounds(shown.XScale, graph.XScale);
    }
    const std::size_t axes = std::min(graph.YCoorAxName.size(), graph.YScales.size());
    for (std::size_t i = 0; i < axes; ++i) {
        const auto is_same = [&](std::size_t other) {
            return other < shown.YCoorAxName.size() && other < shown.YScales.size() &&
                   shown.YCoorAxName[other] == graph.YCoorAxName[i] &&
                   i < graph.YCoorAxDerivation.size() &&
                   shown.YCoorAxDerivation[other] == graph.YCoorAxDerivation[i];
        };
        std::size_t other = is_same(i) ? i : 0;
        while (other < shown.YCoorAxName.size() && !is_same(other)) {
            ++other;
        }
        if (is_same(other)) {
            TakeBounds(shown.YScales[other], graph.YScales[i]);
        }
    }
}

}  // namespace

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
        m_not_read.erase(path);
    } else {
        m_not_read.insert(path);
        MErrTrace_Dump();
        m_host.ShowError("failed to read " + path + ".\n" + error);
    }
    m_cycle.JoinMaster();
    return read;
}

GraphFiles::Saved GraphFiles::Save() {
    Saved saved;
    MIniData store(MIniData::kSaveFlush | MIniData::kSaveSafe);
    saved.succeeded =
        store.Open(m_current_path) &&
        GetGraphAsIniData(store, GraphsToStore(), m_additional_text, &saved.axes_left_out) &&
        KeepUnread() && store.Save();
    if (!saved.succeeded) {
        MErrTrace_Dump();
    }
    return saved;
}

bool GraphFiles::KeepUnread() {
    const auto unread = m_not_read.find(m_current_path);
    if (unread == m_not_read.end()) {
        return true;
    }
    if (platform::Files().Exists(m_current_path) && !KeepFile(m_current_path)) {
        return false;
    }
    m_not_read.erase(unread);
    return true;
}

std::vector<WavoGraph> GraphFiles::GraphsToStore() const {
    std::vector<WavoGraph> graphs = m_board.Graphs();
    for (WavoGraph& graph : graphs) {
        const auto& drawers = m_board.Drawers();
        const auto drawer = std::find_if(drawers.begin(), drawers.end(), [&](const auto& shown) {
            return shown->Graph().GraphNumber == graph.GraphNumber;
        });
        if (drawer != drawers.end()) {
            TakeShownBounds((*drawer)->Graph(), graph);
        }
    }
    return graphs;
}

}  // namespace wavo
