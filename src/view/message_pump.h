// The viewer's message window inside the program's event loop, and its channel to the master.
#pragma once

#include <memory>

#include "link/master_channel.h"
#include "platform/message_window.h"

class QSocketNotifier;

namespace wavo {

class MessagePump : public MasterChannel {
 public:
    MessagePump();
    ~MessagePump() override;

    bool Open(MasterMessages& messages) override;
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
