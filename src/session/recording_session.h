// The recording that is looked at in place of the live values: opening it and leaving it again.
//
// Invariants:
// 1. While one is open the live source is left; it is taken up when it is closed.
// 2. Closing brings back all that was seen before the first one was opened: graphs with what they
//    hold, their zooms and run states, the additional text, names and settings. Settings that the
//    user has saved meanwhile stay.
#pragma once

#include <memory>
#include <string>

#include "session/graph_files.h"
#include "session/open_recording.h"
#include "session/session_observer.h"
#include "session/source_switch.h"

namespace wavo {

class Acquisition;
class SettingsStore;
class ValueStreams;

class RecordingSession {
 public:
    /// None of the references is owned; all outlive this object.
    RecordingSession(SourceSwitch& source, const computed::ComputedSource& computed,
                     Acquisition& acquisition, ValueStreams& streams, GraphFiles& files,
                     SettingsStore& settings, SessionObserver& observer)
        : m_source(source),
          m_computed(computed),
          m_acquisition(acquisition),
          m_streams(streams),
          m_files(files),
          m_settings(settings),
          m_observer(observer) {}

    /// Shows a recording in place of the live values or of another recording. The graphs stay;
    /// without any there is a default one. `name` stands in the title.
    void Show(std::unique_ptr<OpenRecording> recording, const std::string& name);
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
    void SetLiveAside();

    SourceSwitch& m_source;
    const computed::ComputedSource& m_computed;
    Acquisition& m_acquisition;
    ValueStreams& m_streams;
    GraphFiles& m_files;
    SettingsStore& m_settings;
    SessionObserver& m_observer;

    std::shared_ptr<OpenRecording> m_recording;
    GraphFiles::Kept m_before;
    bool m_was_linked = false;  // before the recording was opened
};

}  // namespace wavo
