#include "recorder/notice/notice_board.h"

#include <algorithm>
#include <utility>

namespace wavo::recorder {

NoticeBoard::NoticeBoard(platform::WindowHandle own_window, Tell tell)
    : m_own_window(own_window), m_tell(std::move(tell)), m_publisher(own_window) {
    m_publisher.Write(m_shown);
}

void NoticeBoard::Announce() {
    for (const platform::WindowHandle window : platform::MessageWindows()) {
        if (window != m_own_window) {
            m_tell(window, kRecorderIsHere, Way::kPosted);
        }
    }
}

void NoticeBoard::Watch(platform::WindowHandle window) {
    if (m_watchers.size() < kMostWatchers && std::ranges::count(m_watchers, window) == 0 &&
        m_tell(window, kRecorderNews, Way::kPosted)) {
        m_watchers.push_back(window);
    }
}

void NoticeBoard::Show(const Notice& notice) {
    if (notice == m_shown) {
        return;
    }
    m_shown = notice;
    m_publisher.Write(notice);
    // The segment is about to go: the last news is read before.
    const Way way = notice.HasEnded() ? Way::kSent : Way::kPosted;
    // Whoever is told last may ask to watch meanwhile.
    const std::vector<platform::WindowHandle> watchers = m_watchers;
    for (const platform::WindowHandle window : watchers) {
        if (!m_tell(window, kRecorderNews, way)) {
            std::erase(m_watchers, window);
        }
    }
}

}  // namespace wavo::recorder
