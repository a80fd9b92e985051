#include "ui/recording/recorder_watch.h"

#include <algorithm>
#include <functional>
#include <iterator>
#include <optional>
#include <utility>

namespace wavo {

using recorder::Notice;
using recorder::RecorderState;

RecorderWatch::RecorderWatch(std::function<void()> changed,
                             std::function<void(const SeenRecorder&)> ended)
    : m_changed(std::move(changed)), m_ended(std::move(ended)) {}

RecorderWatch::~RecorderWatch() = default;

bool RecorderWatch::Open() {
    if (!m_pump.Open(*this)) {
        return false;
    }
    for (const platform::WindowHandle window : platform::MessageWindows()) {
        if (window != Window()) {
            Add(window);
        }
    }
    std::ranges::stable_sort(m_entries, std::greater<>(),
                             [](const Entry& entry) { return entry.seen.notice.seconds; });
    m_changed();
    return true;
}

std::vector<SeenRecorder> RecorderWatch::Running() const {
    std::vector<SeenRecorder> running;
    std::ranges::transform(m_entries, std::back_inserter(running), &Entry::seen);
    return running;
}

void RecorderWatch::Finish(platform::WindowHandle recorder) {
    m_pump.Tell(recorder, static_cast<std::uint32_t>(FromMaster::kQuit));
}

std::vector<RecorderWatch::Entry>::iterator RecorderWatch::Find(platform::WindowHandle window) {
    return std::ranges::find(m_entries, window,
                             [](const Entry& entry) { return entry.seen.window; });
}

bool RecorderWatch::Add(platform::WindowHandle window) {
    if (m_entries.size() >= kMost || !m_pump.Exists(window)) {
        return false;
    }
    recorder::NoticeReader reader(window);
    const std::optional<Notice> notice = reader.Read();
    if (!notice) {
        return false;
    }
    m_entries.push_back({{window, *notice}, std::move(reader)});
    // Its end is noticed from now on, whether it asks for more or not.
    m_pump.Tell(window, recorder::kWatchRecorder);
    m_changed();
    return true;
}

std::int64_t RecorderWatch::OnMessage(const platform::Message& message) {
    const auto window = static_cast<platform::WindowHandle>(message.l_param);
    switch (message.number) {
        case recorder::kRecorderIsHere:
        case recorder::kRecorderNews:
            TakeNews(window);
            return 1;
        default:
            return 0;  // masters tell everybody that they are there
    }
}

void RecorderWatch::TakeNews(platform::WindowHandle window) {
    if (Find(window) == m_entries.end() && !Add(window)) {
        return;
    }
    const auto place = Find(window);
    if (place == m_entries.end()) {
        return;
    }
    if (const std::optional<Notice> notice = place->reader.Read()) {
        place->seen.notice = *notice;
    }
    if (place->seen.notice.HasEnded()) {
        End(place);
    } else {
        m_changed();
    }
}

void RecorderWatch::OnPeerGone(platform::WindowHandle window) {
    const auto place = Find(window);
    if (place == m_entries.end()) {
        return;
    }
    // Its last news may not have come any more.
    if (const std::optional<Notice> notice = place->reader.Read()) {
        place->seen.notice = *notice;
    }
    Notice& notice = place->seen.notice;
    if (!notice.HasEnded()) {
        notice.state = RecorderState::kFailed;
        notice.reason = "wavo_record has gone; what it had written can be opened";
    }
    End(place);
}

void RecorderWatch::OnPeerRefused(platform::WindowHandle window, const char* /*why*/) {
    OnPeerGone(window);
}

void RecorderWatch::End(std::vector<Entry>::iterator place) {
    const SeenRecorder ended = place->seen;
    m_entries.erase(place);
    m_changed();
    m_ended(ended);
}

}  // namespace wavo
