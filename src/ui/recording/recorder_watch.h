// The recorders that run on this machine, as the viewer sees them.
//
// A recorder is a program of its own. The viewer finds those that run when it begins, is told of
// others when they begin, and then of each news; see recorder/notice/notice.h.
#pragma once

#include <functional>
#include <vector>

#include "recorder/notice/notice_segment.h"
#include "view/message_pump.h"

namespace wavo {

struct SeenRecorder {
    platform::WindowHandle window = 0;
    recorder::Notice notice;
};

class RecorderWatch final : private MasterMessages {
 public:
    /// `changed`: Running() gives something else. `ended`: a recorder has ended, and how; one that
    /// vanished without a word has failed. Called from the event loop.
    RecorderWatch(std::function<void()> changed, std::function<void(const SeenRecorder&)> ended);
    ~RecorderWatch() override;
    RecorderWatch(const RecorderWatch&) = delete;
    RecorderWatch& operator=(const RecorderWatch&) = delete;

    /// Makes the window and looks for recorders. False when there can be none.
    bool Open();

    /// Those that run, the longest first.
    [[nodiscard]] std::vector<SeenRecorder> Running() const;

    /// Tells a recorder to finish its files and to end.
    void Finish(platform::WindowHandle recorder);

    /// The window that recorders tell; 0 before Open.
    [[nodiscard]] platform::WindowHandle Window() const { return m_pump.OwnWindow(); }

    /// More recorders than these are not looked at.
    static constexpr std::size_t kMost = 32;

 private:
    struct Entry {
        SeenRecorder seen;
        recorder::NoticeReader reader;
    };

    // MasterMessages
    std::int64_t OnMessage(const platform::Message& message) override;
    void OnPeerGone(platform::WindowHandle window) override;
    void OnPeerRefused(platform::WindowHandle window, const char* why) override;

    /// Takes up a recorder that is not known yet; false when it is none.
    bool Add(platform::WindowHandle window);
    void TakeNews(platform::WindowHandle window);
    void End(std::vector<Entry>::iterator place);
    std::vector<Entry>::iterator Find(platform::WindowHandle window);

    const std::function<void()> m_changed;
    const std::function<void(const SeenRecorder&)> m_ended;
    std::vector<Entry> m_entries;
    MessagePump m_pump;
};

}  // namespace wavo
