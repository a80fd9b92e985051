// How the viewer talks to the master: posted and sent messages with the viewer's own window.
#pragma once

#include "link/master_messages.h"
#include "platform/message_window.h"

namespace wavo {

class MasterChannel {
 public:
    virtual ~MasterChannel() = default;

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
