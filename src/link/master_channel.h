// How the viewer talks to the master: posted and sent messages with the viewer's own window.
#pragma once

#include "link/master_messages.h"
#include "platform/message_window.h"

namespace wavo {

/// Who gets what masters say.
class MasterMessages {
 public:
    virtual ~MasterMessages() = default;
    /// Handles a message of the master and returns its result.
    virtual std::int64_t OnMessage(const platform::Message& message) = 0;
    /// A window that the viewer has talked to has vanished without a word.
    virtual void OnPeerGone(platform::WindowHandle window) = 0;
    /// A window that the viewer has talked to wrote what is no message, as `why` tells.
    virtual void OnPeerRefused(platform::WindowHandle window, const char* why) = 0;
};

class MasterChannel {
 public:
    virtual ~MasterChannel() = default;

    /// Makes the viewer's window, unless it is there; `messages` (not owned, outlives the channel)
    /// gets what comes. False on failure; the reason goes to the error log.
    virtual bool Open(MasterMessages& messages) = 0;

    /// The viewer's own window; lParam of every message, and the number in its segment names.
    [[nodiscard]] virtual platform::WindowHandle OwnWindow() const = 0;

    /// Posts to `master` with lParam = OwnWindow(). False when there is no such window.
    virtual bool Post(platform::WindowHandle master, ToMaster number, std::uint64_t w_param) = 0;

    /// Sends to `master` with lParam = OwnWindow() and waits for its answer.
    virtual platform::SendStatus Send(platform::WindowHandle master, ToMaster number,
                                      std::uint64_t w_param) = 0;

    /// Whether the master left a message without an answer and was not heard of since: sending it
    /// another one would only cost time.
    [[nodiscard]] virtual bool IsSilent() const { return false; }

    /// Whether the window still exists.
    [[nodiscard]] virtual bool Exists(platform::WindowHandle master) const = 0;
};

}  // namespace wavo
