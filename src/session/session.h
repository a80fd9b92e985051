// Everything of the viewer that has no window: the document and its files, the settings, the values
// and where they come from, Start and Stop.
//
// A change of the document comes out here, whoever made it, and is passed on to those whom it
// concerns.
#pragma once

#include <string>

#include "computed/computed_source.h"
#include "graph/model/graph_list.h"
#include "session/acquisition.h"
#include "session/computed_axes.h"
#include "session/graph_files.h"
#include "session/locks.h"
#include "session/recording_session.h"
#include "session/run_control.h"
#include "session/session_observer.h"
#include "session/settings_store.h"
#include "session/shown_graphs.h"
#include "session/source_switch.h"
#include "session/value_streams.h"
#include "source/value_source.h"

namespace wavo {

class Session {
 public:
    /// None of the references is owned; all outlive the session. `shown` and `observer` are not
    /// called before Begin.
    Session(ValueSource& source, ShownGraphs& shown, SessionObserver& observer);
    ~Session();
    Session(const Session&) = delete;
    Session& operator=(const Session&) = delete;

    /// Takes the settings and the trace level; those of `graph_file`, a path, when it is not empty.
    void ReadSettings(const std::string& graph_file);
    /// The first update, once the settings are shown: starts the source and opens `graph_file`,
    /// else the settings file.
    void Begin(const std::string& graph_file);
    /// The end: values that come later are ignored.
    void End() { m_source.Stop(); }

    [[nodiscard]] GraphList& Graphs() { return m_graphs; }
    [[nodiscard]] ValueStreams& Streams() { return m_streams; }
    [[nodiscard]] SettingsStore& Settings() { return m_settings; }
    [[nodiscard]] const SettingsStore& Settings() const { return m_settings; }
    [[nodiscard]] ValueSource& Source() { return m_computed; }
    /// Where live values come from, whatever is shown.
    [[nodiscard]] ValueSource& LiveSource() { return m_source.Live(); }
    [[nodiscard]] ComputedAxes& Computed() { return m_computed_axes; }
    [[nodiscard]] Acquisition& Values() { return m_acquisition; }
    [[nodiscard]] GraphFiles& Files() { return m_files; }
    [[nodiscard]] RunControl& Run() { return m_run; }
    [[nodiscard]] RecordingSession& Recordings() { return m_recordings; }
    /// The recording that is open; null for none.
    [[nodiscard]] OpenRecording* Recording() const { return m_recordings.Current(); }
    [[nodiscard]] const OrderedMutex& ValueLock() const { return m_value_lock; }

    /// Makes all graphs anew and shows them.
    void RebuildGraphs() { m_acquisition.RebuildGraphs(); }
    /// Applies the trace level of the settings.
    void SetTraceLevel() const;
    /// Saves the settings; a fault is shown in the status bar.
    void SaveSettings();
    void CommandsChanged() { m_observer.CommandsChanged(); }
    /// Tells in the status bar that a file was written without some axes.
    void ShowAxesLeftOut(const std::string& path);
    /// Tells in the status bar that a file could not be written.
    void ShowWriteFault(const std::string& path);

 private:
    void OnGraphChange(const GraphChange& change);
    void ShowLogFault(const std::string& path);

    SourceSwitch m_source;
    computed::ComputedSource m_computed;
    SessionObserver& m_observer;
    ValueMutex m_value_lock;
    SettingsStore m_settings;
    GraphList m_graphs;
    ValueStreams m_streams;
    Acquisition m_acquisition;
    ComputedAxes m_computed_axes;
    GraphFiles m_files;
    RunControl m_run;
    RecordingSession m_recordings;
    bool m_settings_unwritten = false;  // a first start could not leave its settings behind
};

}  // namespace wavo
