// A message window over the core that a system has for it.
#pragma once

#include <memory>
#include <utility>

#include "platform/message_window.h"

namespace wavo::platform {

/// Owns the core; keeps it over each call, because a handler may destroy this object.
template <typename Core>
class CoreWindow final : public MessageWindow {
 public:
    explicit CoreWindow(std::shared_ptr<Core> core) : m_core(std::move(core)) {}
    ~CoreWindow() override { m_core->Close(); }
    CoreWindow(const CoreWindow&) = delete;
    CoreWindow& operator=(const CoreWindow&) = delete;

    [[nodiscard]] WindowHandle handle() const override { return m_core->handle(); }

    void SetPeerGoneHandler(PeerGone handler) override {
        m_core->SetPeerGoneHandler(std::move(handler));
    }
    void SetPeerRefusedHandler(PeerRefused handler) override {
        m_core->SetPeerRefusedHandler(std::move(handler));
    }

    bool Post(WindowHandle target, const Message& message) override {
        return m_core->Post(target, message);
    }

    SendResult Send(WindowHandle target, const Message& message) override {
        const std::shared_ptr<Core> core = m_core;
        return core->Send(target, message);
    }

    [[nodiscard]] int PollDescriptor() const override { return m_core->PollDescriptor(); }

    void Dispatch() override {
        const std::shared_ptr<Core> core = m_core;
        core->Dispatch();
    }

    bool WaitAndDispatch(std::chrono::nanoseconds timeout) override {
        const std::shared_ptr<Core> core = m_core;
        return core->WaitAndDispatch(timeout);
    }

 private:
    const std::shared_ptr<Core> m_core;
};

}  // namespace wavo::platform
