// The viewer's message window inside the program's event loop, and its channel to the master.
#pragma once

#include <functional>
#include <memory>
#include <string>

#include "link/master_channel.h"
#include "platform/message_window.h"

class QSocketNotifier;

namespace wavo {

class MessagePump : public MasterChannel {
 public:
    MessagePump();
    ~MessagePump() override;

    /// Makes the window and watches it. `handler` gets the messages, `peer_gone` the windows that
    /// vanished, `peer_refused` those that wrote what is no message. False on failure; the reason
    /// goes to the error log.
    bool Open(platform::MessageWindow::Handler handler, platform::MessageWindow::PeerGone peer_gone,
              platform::MessageWindow::PeerRefused peer_refused = nullptr);

    [[nodiscard]] platform::WindowHandle OwnWindow() const override;
    bool Post(platform::WindowHandle master, ToMaster number, std::uint64_t w_param) override;
    /// An answer that does not come in time goes to the error trace.
    platform::SendStatus Send(platform::WindowHandle master, ToMaster number,
                              std::uint64_t w_param) override;
    [[nodiscard]] bool Exists(platform::WindowHandle master) const override;

 private:
    [[nodiscard]] platform::Message MessageTo(ToMaster number, std::uint64_t w_param) const;

    std::unique_ptr<platform::MessageWindow> m_window;
    std::unique_ptr<QSocketNotifier> m_notifier;  // null where the system calls the handler
};

}  // namespace wavo
