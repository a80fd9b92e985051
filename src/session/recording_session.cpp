#include "session/recording_session.h"

#include <utility>

#include "session/acquisition.h"
#include "session/settings_store.h"
#include "session/value_streams.h"

namespace wavo {

void RecordingSession::Show(std::unique_ptr<OpenRecording> recording, const std::string& name) {
    if (m_recording == nullptr) {
        SetLiveAside();
    }
    // The graphs refer to the former one until they are made anew.
    const std::shared_ptr<OpenRecording> former = std::exchange(m_recording, std::move(recording));
    m_recording->SetComputed(m_computed);
    m_files.SetRecordingName(name);
    m_observer.RunStateChanged(false);
    m_source.Show(m_recording->Source());
    AddGraphIfNone();
    m_files.ShowRunTitle();
    m_observer.CommandsChanged();
}

void RecordingSession::SetLiveAside() {
    m_was_linked = m_source.IsPresent();
    m_before = m_files.Keep();
    m_settings.Keep();
    m_observer.LiveGraphsLeave();
    m_streams.SetAside();
}

void RecordingSession::Close() {
    if (m_recording == nullptr) {
        return;
    }
    const std::shared_ptr<OpenRecording> former = std::exchange(m_recording, nullptr);
    m_files.SetRecordingName({});
    m_source.ShowLive();
    m_settings.BringBack();
    m_streams.BringBack();
    m_observer.LiveGraphsComeBack();
    m_files.BringBack(std::exchange(m_before, {}));
    m_acquisition.TakeUp();
    if (m_was_linked || m_settings.AutoConnect()) {
        m_source.TakeUp();
    }
    m_files.ShowRunTitle();
    m_observer.RunStateChanged(m_acquisition.IsRunning());
}

void RecordingSession::AddGraphIfNone() {
    if (m_recording != nullptr) {
        m_acquisition.AddGraphIfNone(Acquisition::DefaultScale::kAutomatic);
    }
}

}  // namespace wavo
