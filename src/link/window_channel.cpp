#include "link/window_channel.h"

#include "support/diagnostics.h"

namespace wavo {

bool WindowChannel::Open(MasterMessages& messages) {
    if (m_window != nullptr) {
        return true;
    }
    m_window = platform::MessageWindow::Create(
        [&messages](const platform::Message& message) { return messages.OnMessage(message); },
        &m_error, kLinkNumbers);
    if (m_window == nullptr) {
        return false;
    }
    m_window->SetPeerGoneHandler(
        [&messages](platform::WindowHandle window) { messages.OnPeerGone(window); });
    m_window->SetPeerRefusedHandler([&messages](platform::WindowHandle window, const char* why) {
        messages.OnPeerRefused(window, why);
    });
    return true;
}

platform::WindowHandle WindowChannel::OwnWindow() const {
    return m_window == nullptr ? 0 : m_window->handle();
}

platform::Message WindowChannel::MessageTo(ToMaster number, std::uint64_t w_param) const {
    return {static_cast<std::uint32_t>(number), w_param, static_cast<std::int64_t>(OwnWindow())};
}

bool WindowChannel::Post(platform::WindowHandle master, ToMaster number, std::uint64_t w_param) {
    return m_window != nullptr && m_window->Post(master, MessageTo(number, w_param));
}

platform::SendStatus WindowChannel::Send(platform::WindowHandle master, ToMaster number,
                                         std::uint64_t w_param) {
    if (m_window == nullptr) {
        return platform::SendStatus::kGone;
    }
    const platform::SendStatus status = m_window->Send(master, MessageTo(number, w_param)).status;
    if (status == platform::SendStatus::kNoAnswer) {
        MERRTRACE("WindowChannel::Send(): no answer to message 0x%X in time",
                  static_cast<unsigned>(number));
    }
    return status;
}

bool WindowChannel::Tell(platform::WindowHandle window, std::uint32_t number) {
    return m_window != nullptr &&
           m_window->Post(window, {number, 0, static_cast<std::int64_t>(OwnWindow())});
}

bool WindowChannel::Exists(platform::WindowHandle master) const {
    return platform::WindowExists(master);
}

}  // namespace wavo
