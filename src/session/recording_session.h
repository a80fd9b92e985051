// The recording that is looked at in place of the live values: opening it and leaving it again.
//
// Invariants:
// 1. While one is open the live source is left; it is taken up when it is closed.
// 2. Closing brings back the graphs, the additional text and the names of before the first one was
//    opened.
#pragma once

#include <memory>
#include <string>

#include "session/graph_files.h"
#include "session/open_recording.h"
#include "session/session_observer.h"
#include "session/source_switch.h"
#include "support/fault.h"

namespace wavo {

class Acquisition;
class SettingsStore;

class RecordingSession {
 public:
    /// None of the references is owned; all outlive this object.
    RecordingSession(SourceSwitch& source, const computed::ComputedSource& computed,
                     Acquisition& acquisition, GraphFiles& files, const SettingsStore& settings,
                     SessionObserver& observer)
        : m_source(source),
          m_computed(computed),
          m_acquisition(acquisition),
          m_files(files),
          m_settings(settings),
          m_observer(observer) {}

    /// Shows a recording in place of the live values or of another recording. The graphs stay;
    /// without any there is a default one. `name` stands in the title. A fault leaves all as it
    /// was.
    MaybeFault Open(RecordingToOpen recording, const std::string& name);
    /// Shows the live values again. Nothing when no recording is open.
    void Close();
    /// The one that is open; null for none.
    [[nodiscard]] OpenRecording* Current() const { return m_recording.get(); }
    /// The same for work that goes on with it when it is closed meanwhile.
    [[nodiscard]] std::shared_ptr<OpenRecording> Share() const { return m_recording; }
    /// Without graphs makes a default one, as the next batch does while values come live. Nothing
    /// when no recording is open.
    void AddGraphIfNone();

 private:
    SourceSwitch& m_source;
    const computed::ComputedSource& m_computed;
    Acquisition& m_acquisition;
    GraphFiles& m_files;
    const SettingsStore& m_settings;
    SessionObserver& m_observer;

    std::shared_ptr<OpenRecording> m_recording;
    GraphFiles::Kept m_before;
    bool m_was_linked = false;  // before the recording was opened
};

}  // namespace wavo
