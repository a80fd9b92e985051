// A recorder's side: who watches it, and telling them.
#pragma once

#include <functional>
#include <vector>

#include "recorder/notice/notice_segment.h"

namespace wavo::recorder {

class NoticeBoard {
 public:
    /// How messages leave the recorder's window: posted, or sent and waited for.
    enum class Way { kPosted, kSent };
    /// False when the receiver is gone.
    using Tell = std::function<bool(platform::WindowHandle, std::uint32_t number, Way way)>;

    NoticeBoard(platform::WindowHandle own_window, Tell tell);

    /// Tells all windows of the user that the recorder is there.
    void Announce();

    /// From now on this window is told of news. More than kMostWatchers are not listened to.
    void Watch(platform::WindowHandle window);
    static constexpr std::size_t kMostWatchers = 64;

    /// Shows the notice, when it differs from what is shown, and tells who watches.
    void Show(const Notice& notice);

 private:
    const platform::WindowHandle m_own_window;
    const Tell m_tell;
    NoticePublisher m_publisher;
    Notice m_shown;
    std::vector<platform::WindowHandle> m_watchers;
};

}  // namespace wavo::recorder
