// The viewer's own message window as a channel to the master. Who has an event loop, or runs one of
// his own, derives from it and serves the window there.
#pragma once

#include <cstdint>
#include <memory>
#include <string>

#include "link/master_channel.h"
#include "platform/message_window.h"

namespace wavo {

class WindowChannel : public MasterChannel {
 public:
    bool Open(MasterMessages& messages) override;
    [[nodiscard]] platform::WindowHandle OwnWindow() const override;
    bool Post(platform::WindowHandle master, ToMaster number, std::uint64_t w_param) override;
    /// An answer that does not come in time goes to the error trace.
    platform::SendStatus Send(platform::WindowHandle master, ToMaster number,
                              std::uint64_t w_param) override;
    [[nodiscard]] bool Exists(platform::WindowHandle master) const override;

    /// Posts any other message to a window; its lParam is the own window. False when it was not
    /// taken.
    bool Tell(platform::WindowHandle window, std::uint32_t number);

    /// Why Open failed.
    [[nodiscard]] const std::string& Error() const { return m_error; }

 protected:
    /// Null before Open.
    [[nodiscard]] platform::MessageWindow* Window() { return m_window.get(); }

 private:
    [[nodiscard]] platform::Message MessageTo(ToMaster number, std::uint64_t w_param) const;

    std::unique_ptr<platform::MessageWindow> m_window;
    std::string m_error;
};

}  // namespace wavo
