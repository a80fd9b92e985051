#include "view/message_pump.h"

#include <QObject>
#include <QSocketNotifier>
#include <utility>

#include "support/diagnostics.h"

namespace wavo {

MessagePump::MessagePump() = default;
MessagePump::~MessagePump() = default;

bool MessagePump::Open(platform::MessageWindow::Handler handler,
                       platform::MessageWindow::PeerGone peer_gone,
                       platform::MessageWindow::PeerRefused peer_refused) {
    std::string error;
    m_window = platform::MessageWindow::Create(std::move(handler), &error);
    if (m_window == nullptr) {
        MERRLOG("MessagePump::Open(): no message window: %s", error.c_str());
        return false;
    }
    m_window->SetPeerGoneHandler(std::move(peer_gone));
    m_window->SetPeerRefusedHandler(std::move(peer_refused));
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
