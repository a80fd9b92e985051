#include "view/message_pump.h"

#include <QObject>
#include <QSocketNotifier>
#include <string>

#include "support/diagnostics.h"

namespace wavo {

MessagePump::MessagePump() = default;
MessagePump::~MessagePump() = default;

bool MessagePump::Open(MasterMessages& messages) {
    if (m_window != nullptr) {
        return true;
    }
    std::string error;
    m_window = platform::MessageWindow::Create(
        [&messages](const platform::Message& message) { return messages.OnMessage(message); },
        &error, kLinkNumbers);
    if (m_window == nullptr) {
        MERRLOG("MessagePump::Open(): no message window: %s", error.c_str());
        return false;
    }
    m_window->SetPeerGoneHandler(
        [&messages](platform::WindowHandle window) { messages.OnPeerGone(window); });
    m_window->SetPeerRefusedHandler([&messages](platform::WindowHandle window, const char* why) {
        messages.OnPeerRefused(window, why);
    });
    if (const int descriptor = m_window->PollDescriptor(); descriptor >= 0) {
        m_notifier = std::make_unique<QSocketNotifier>(descriptor, QSocketNotifier::Read);
        QObject::connect(m_notifier.get(), &QSocketNotifier::activated, m_notifier.get(),
                         [this] { m_window->Dispatch(); });
    }
    return true;
}

platform::WindowHandle MessagePump::OwnWindow() const {
    return m_window == nullptr ? 0 : m_window->handle();
}

platform::Message MessagePump::MessageTo(ToMaster number, std::uint64_t w_param) const {
    return {static_cast<std::uint32_t>(number), w_param, static_cast<std::int64_t>(OwnWindow())};
}

bool MessagePump::Post(platform::WindowHandle master, ToMaster number, std::uint64_t w_param) {
    return m_window != nullptr && m_window->Post(master, MessageTo(number, w_param));
}

platform::SendStatus MessagePump::Send(platform::WindowHandle master, ToMaster number,
                                       std::uint64_t w_param) {
    if (m_window == nullptr) {
        return platform::SendStatus::kGone;
    }
    const platform::SendStatus status = m_window->Send(master, MessageTo(number, w_param)).status;
    if (status == platform::SendStatus::kNoAnswer) {
        MERRTRACE("MessagePump::Send(): no answer to message 0x%X in time",
                  static_cast<unsigned>(number));
    }
    return status;
}

bool MessagePump::Exists(platform::WindowHandle master) const {
    return platform::WindowExists(master);
}

}  // namespace wavo
