#include "session/graph_files.h"

#include <algorithm>
#include <utility>

#include "computed/computed_ini_data.h"
#include "graph/model/graph_ini_data.h"
#include "platform/file.h"
#include "platform/folders.h"
#include "session/report_texts.h"
#include "session/value_streams.h"
#include "support/diagnostics.h"
#include "support/kept_file.h"

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
        m_observer.ShowError(session_texts::FileMissingBox(path));
        return false;
    }
    SetCurrentPath(path);
    m_acquisition.Source().Hold();
    std::vector<WavoGraph> graphs;
    std::string additional_text;
    std::string error = store.LastErrorText();
    const bool read = readable && CreateGraphsFromIniData(store, graphs, error, additional_text,
                                                          m_acquisition.CycleTime());
    if (read) {
        m_additional_text = std::move(additional_text);
        // Without a master the buffers stay.
        m_streams.BeginAnew(m_computed.Define(computed::TakeComputedAxes(store)));
        m_graphs.Replace(std::move(graphs));
        m_document_name = display_name;
        ShowRunTitle();
        if (add_to_recent) {
            m_observer.FileOpened(path);
        }
        m_not_read.erase(path);
    } else {
        m_not_read.insert(path);
        MErrTrace_Dump();
        m_observer.ShowError(session_texts::NotReadBox(path, error));
    }
    m_acquisition.Source().GoOn();
    return read;
}

bool GraphFiles::OpenText(const std::string& text, const std::string& display_name) {
    MIniData store;
    std::vector<WavoGraph> graphs;
    std::string additional_text;
    std::string error;
    const bool readable = store.SetContent(text);
    error = store.LastErrorText();
    if (!readable || !CreateGraphsFromIniData(store, graphs, error, additional_text,
                                              m_acquisition.CycleTime())) {
        MErrTrace_Dump();
        m_observer.ShowError(session_texts::NotReadBox(display_name, error));
        return false;
    }
    BringBack({std::move(graphs),
               computed::TakeComputedAxes(store),
               std::move(additional_text),
               {},
               display_name,
               true});
    ShowRunTitle();
    m_acquisition.Source().GoOn();
    return true;
}

GraphFiles::Kept GraphFiles::Keep() const {
    return {m_graphs.Graphs(), m_computed.Definitions(), m_additional_text,
            m_current_path,    m_document_name,          m_is_unnamed};
}

void GraphFiles::BringBack(const Kept& kept) {
    m_additional_text = kept.additional_text;
    m_current_path = kept.current_path;
    m_document_name = kept.document_name;
    m_is_unnamed = kept.is_unnamed;
    m_computed.Define(kept.computed);
    m_graphs.Replace(kept.graphs);
}

Expected<std::size_t> GraphFiles::Save() {
    MIniData store(MIniData::kSaveFlush | MIniData::kSaveSafe);
    std::size_t axes_left_out = 0;
    if (store.Open(m_current_path) && Put(store, &axes_left_out) && KeepUnread() && store.Save()) {
        return axes_left_out;
    }
    MErrTrace_Dump();
    return Fault{session_texts::kNotSavedBox};
}

bool GraphFiles::WriteCopy(const std::string& path) const {
    MIniData store;
    return store.Open(path) && Put(store) && store.Save();
}

bool GraphFiles::Put(MIniData& store, std::size_t* axes_left_out) const {
    return GetGraphAsIniData(store, GraphsToStore(), m_additional_text, axes_left_out) &&
           computed::PutComputedAxes(store, m_computed.Definitions());
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
    std::vector<WavoGraph> graphs = m_graphs.Graphs();
    for (WavoGraph& graph : graphs) {
        if (const WavoGraph* const shown = m_shown.Shown(graph.GraphNumber)) {
            TakeShownBounds(*shown, graph);
        }
    }
    return graphs;
}

void GraphFiles::New() {
    ShowTitle("new");
    m_additional_text.clear();
    m_computed.Define({});
    m_graphs.Replace({});
    m_acquisition.RebuildGraphs();
}

void GraphFiles::ShowRunTitle() {
    const char* const state = m_acquisition.IsRunning() ? " - running" : " - stopped";
    ShowTitle(m_recording_name.empty() ? m_document_name + state : m_document_name);
}

void GraphFiles::ShowTitle(const std::string& title) {
    m_observer.TitleChanged(m_recording_name.empty() ? title : m_recording_name + " - " + title);
}

}  // namespace wavo
