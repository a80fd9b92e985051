#include "session/session.h"

#include <algorithm>

#include "session/report_texts.h"
#include "support/diagnostics.h"
#include "support/diagnostics_output.h"

namespace wavo {

Session::Session(ValueSource& source, ShownGraphs& shown, SessionObserver& observer)
    : m_source(source),
      m_computed(m_source),
      m_observer(observer),
      m_acquisition(m_computed, m_graphs, m_streams, observer, m_value_lock,
                    m_settings.Current().background),
      m_computed_axes(m_computed, m_streams, m_acquisition),
      m_files(m_acquisition, m_streams, m_graphs, m_computed, shown, observer),
      m_run(m_acquisition, m_streams, shown, m_files, observer),
      m_recordings(m_source, m_computed, m_acquisition, m_streams, m_files, m_settings, observer) {
    m_graphs.SetObserver([this](const GraphChange& change) { OnGraphChange(change); });
}

Session::~Session() {
    diagnostics::SetLogFaultHandler(nullptr);
    End();
}

void Session::ReadSettings(const std::string& graph_file) {
    _MTrace_SetLevel("default", 1);
    m_settings_unwritten = !m_settings.Read();
    SetTraceLevel();
    if (!graph_file.empty()) {  // as when it is opened
        m_files.SetCurrentPath(graph_file);
        m_settings.ReadFrom(graph_file);
    }
}

void Session::Begin(const std::string& graph_file) {
    RebuildGraphs();  // something to see until a master and a graph file are there
    m_source.SetComesBack(m_settings.AutoConnect());
    m_source.Start();
    const std::string& file = graph_file.empty() ? m_settings.File() : graph_file;
    if (!file.empty()) {
        MTRACE(1, session_texts::kReadingGraphs, file.c_str());
        m_files.Open(file, FileNameOf(file), true);
    }
    m_observer.CommandsChanged();  // there is a current file, even when it could not be read
    if (m_settings_unwritten) {
        ShowWriteFault(m_settings.ShownPath());
    }
    diagnostics::SetLogFaultHandler([this](const std::string& path) { ShowLogFault(path); });
}

void Session::OnGraphChange(const GraphChange& change) {
    if (change.silent) {
        return;
    }
    if (change.kind == GraphChange::Kind::kReplaced) {
        m_acquisition.InitialiseEditor();  // which has the graphs shown
        return;
    }
    m_files.ShowRunTitle();
    RebuildGraphs();
}

void Session::SetTraceLevel() const {
    _MTrace_SetLevel("default",
                     static_cast<unsigned>(std::max(0, m_settings.Current().trace_level)));
}

void Session::SaveSettings() {
    if (!m_settings.Save()) {
        ShowWriteFault(m_settings.ShownPath());
    }
}

void Session::ShowWriteFault(const std::string& path) {
    // Until the next news; what is known of the link is not forgotten.
    const std::string lost_log = diagnostics::LostErrorLog();
    const std::string where = lost_log.empty() ? ", see the error log" : " nor the log " + lost_log;
    m_observer.PaneTextChanged(StatusPane::kMessage, "Cannot write " + path + where);
}

void Session::ShowAxesLeftOut(const std::string& path) {
    m_observer.PaneTextChanged(StatusPane::kMessage,
                               "Axes with names that cannot stand in a file were left out of " +
                                   path + ", see the error log");
}

void Session::ShowLogFault(const std::string& path) {
    m_observer.PaneTextChanged(StatusPane::kMessage, "Cannot write the log " + path);
}

}  // namespace wavo
