#include "session/recording_session.h"

#include <utility>

#include "session/acquisition.h"
#include "session/settings_store.h"

namespace wavo {

MaybeFault RecordingSession::Open(RecordingToOpen recording, const std::string& name) {
    auto opened = OpenRecording::Open(std::move(recording));
    if (!opened) {
        return opened.Why();
    }
    if (m_recording == nullptr) {
        m_before = m_files.Keep();
        m_was_linked = m_source.IsPresent();
    }
    // The graphs refer to the former one until they are made anew.
    const std::shared_ptr<OpenRecording> former = std::exchange(m_recording, std::move(*opened));
    m_recording->SetComputed(m_computed);
    m_files.SetRecordingName(name);
    m_observer.RunStateChanged(false);
    m_source.Show(m_recording->Source());
    AddGraphIfNone();
    m_files.ShowRunTitle();
    m_observer.CommandsChanged();
    return std::nullopt;
}

void RecordingSession::Close() {
    if (m_recording == nullptr) {
        return;
    }
    const std::shared_ptr<OpenRecording> former = std::exchange(m_recording, nullptr);
    m_files.SetRecordingName({});
    m_files.BringBack(std::exchange(m_before, {}));
    m_source.ShowLive(m_was_linked || m_settings.AutoConnect());
    m_files.ShowRunTitle();
    m_observer.RunStateChanged(m_acquisition.IsRunning());
}

void RecordingSession::AddGraphIfNone() {
    if (m_recording != nullptr) {
        m_acquisition.AddGraphIfNone();
    }
}

}  // namespace wavo
