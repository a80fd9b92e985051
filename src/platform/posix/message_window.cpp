#include "platform/message_window.h"

#include <sys/stat.h>

#include <cerrno>
#include <utility>

#include "platform/posix/message_packet.h"
#include "platform/posix/window_core.h"
#include "platform/posix/window_folder.h"

namespace wavo::platform {

namespace {

/// Owns the core; keeps it over each call, because a handler may destroy this object.
class SocketWindow final : public MessageWindow {
 public:
    explicit SocketWindow(std::shared_ptr<WindowCore> core) : m_core(std::move(core)) {}
    ~SocketWindow() override { m_core->Close(); }
    SocketWindow(const SocketWindow&) = delete;
    SocketWindow& operator=(const SocketWindow&) = delete;

    [[nodiscard]] WindowHandle handle() const override { return m_core->handle(); }

    void SetPeerGoneHandler(PeerGone handler) override {
        m_core->SetPeerGoneHandler(std::move(handler));
    }

    bool Post(WindowHandle target, const Message& message) override {
        return m_core->Post(target, message);
    }

    SendResult Send(WindowHandle target, const Message& message) override {
        const std::shared_ptr<WindowCore> core = m_core;
        return core->Send(target, message);
    }

    [[nodiscard]] int PollDescriptor() const override { return m_core->PollDescriptor(); }

    void Dispatch() override {
        const std::shared_ptr<WindowCore> core = m_core;
        core->Dispatch();
    }

    bool WaitAndDispatch(std::chrono::nanoseconds timeout) override {
        const std::shared_ptr<WindowCore> core = m_core;
        return core->WaitAndDispatch(timeout);
    }

 private:
    const std::shared_ptr<WindowCore> m_core;
};

}  // namespace

std::unique_ptr<MessageWindow> MessageWindow::Create(Handler handler, std::string* error) {
    std::string reason;
    auto core = std::make_shared<WindowCore>(std::move(handler));
    if (!core->Open(&reason)) {
        if (error != nullptr) {
            *error = reason;
        }
        return nullptr;
    }
    return std::make_unique<SocketWindow>(std::move(core));
}

bool WindowExists(WindowHandle handle) {
    if (handle == 0 || handle > kLargestWindowHandle) {
        return false;
    }
    if (LivesInProcess(handle)) {
        return true;
    }
    std::string error;
    const std::string folder = WindowFolder(&error);
    if (folder.empty()) {
        return false;
    }
    // The owner sees a connection that says nothing and goes.
    if (ConnectToWindow(folder, handle)) {
        return true;
    }
    if (errno == EMFILE || errno == ENFILE || errno == ENOMEM || errno == ENOBUFS) {
        // Nothing left to ask with: the name is the best that is known.
        struct stat info {};
        return ::lstat((folder + "/" + std::to_string(handle)).c_str(), &info) == 0 &&
               S_ISSOCK(info.st_mode);
    }
    return errno == EAGAIN;
}

}  // namespace wavo::platform
