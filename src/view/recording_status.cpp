#include "view/recording_status.h"

#include <algorithm>
#include <iterator>
#include <set>
#include <vector>

namespace wavo {

std::string RecordingStatus::UnknownAxes() const {
    std::set<std::string> unknown;
    for (const WavoGraph& graph : m_session.Graphs().Graphs()) {
        std::vector<std::string> names = graph.YCoorAxName;
        if (graph.XCoorType == CoorType::kAxis) {
            names.push_back(graph.XCoorAxName);
        }
        const std::vector<std::string>& known = m_session.Values().AxisNames();
        std::ranges::copy_if(names, std::inserter(unknown, unknown.end()), [&](const auto& name) {
            return std::ranges::find(known, name) == known.end();
        });
    }
    std::string text;
    for (const std::string& name : unknown) {
        text += (text.empty() ? "Not in the recording: " : ", ") + name;
    }
    return text;
}

std::string RecordingStatus::WhatIsWrong() const {
    OpenRecording& recording = *m_session.Recording();
    const std::vector<std::string>& noticed = recording.Reader().Notices();
    if (!recording.Reader().IsFile(recording.Reader().path())) {
        return "The file was removed or replaced: this is the one that was opened";
    }
    if (!noticed.empty()) {
        return noticed.back();
    }
    std::string text = UnknownAxes();
    for (const std::string& notice : recording.Notices()) {
        text += (text.empty() ? "" : "; ") + notice;
    }
    return text;
}

void RecordingStatus::Tell() {
    OpenRecording* const recording = m_session.Recording();
    if (recording == nullptr) {
        return;
    }
    recording->RenewText();
    m_wrong = WhatIsWrong();
    m_state = recording->Source().StateText();
    m_tells_place = false;
    m_session.Values().ShowHint(m_wrong);
}

void RecordingStatus::TellNews() {
    OpenRecording* const recording = m_session.Recording();
    if (recording == nullptr) {
        return;
    }
    recording->RenewText();
    const std::string wrong = WhatIsWrong();
    const bool is_state_new =
        wrong.empty() && !m_tells_place && recording->Source().StateText() != m_state;
    if (wrong != m_wrong || is_state_new) {
        Tell();
    }
}

void RecordingStatus::TellOfPlace(const std::string& text) {
    if (m_session.Recording() == nullptr) {
        return;
    }
    m_tells_place = true;
    m_session.Values().ShowHint(text);
}

}  // namespace wavo
