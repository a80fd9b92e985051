// One real window of its own, never shown and never made anew: its handle is the address that
// masters keep. It has its own window procedure, so that every message loop of the thread serves
// it, also those of Windows itself while a menu is open or a window is dragged.
#include "platform/message_window.h"

#include <windows.h>

#include <algorithm>
#include <array>
#include <utility>

#include "platform/last_error.h"
#include "platform/process.h"
#include "platform/win32/handle.h"
#include "platform/win32/peer_watch.h"
#include "platform/win32/termination.h"

namespace wavo::platform {

namespace {

constexpr wchar_t kClassName[] = L"WavoMessageWindow";
/// Messages that Dispatch handles before it returns.
constexpr int kMostPerDispatch = 256;
/// Since Windows 10, version 1803; the compiler's headers may be older.
constexpr DWORD kHighResolution = 0x00000002;
/// The numbers that programs agree on between themselves.
constexpr UINT kFirstNumber = WM_USER;
constexpr UINT kLastNumber = WM_APP - 1;
constexpr UINT_PTR kPeerTimer = 1;

bool IsAddress(WindowHandle target) noexcept {
    return target != 0 && WindowOf(target) != HWND_BROADCAST;
}

/// What lives as long as a message is being handled, also when the handler destroys its window.
class WindowCore : public std::enable_shared_from_this<WindowCore> {
 public:
    explicit WindowCore(MessageWindow::Handler handler) : m_handler(std::move(handler)) {}

    bool Open(std::string* error);
    void Close();

    [[nodiscard]] HWND window() const { return m_window; }
    void SetPeerGoneHandler(MessageWindow::PeerGone handler) { m_peer_gone = std::move(handler); }
    bool Post(WindowHandle target, const Message& message);
    SendResult Send(WindowHandle target, const Message& message);
    void Dispatch();
    bool WaitAndDispatch(std::chrono::nanoseconds timeout);

 private:
    static LRESULT CALLBACK WindowProcedure(HWND window, UINT number, WPARAM w_param,
                                            LPARAM l_param);
    static ATOM RegisterClassOnce();
    LRESULT HandleMessage(UINT number, WPARAM w_param, LPARAM l_param);
    void TellOfGonePeers();
    /// Looks for the peer from time to time.
    void Watch(WindowHandle peer);
    /// Handles one queued message of this thread; false when there is none.
    static bool HandleOne(HWND window);

    const MessageWindow::Handler m_handler;
    MessageWindow::PeerGone m_peer_gone;
    HWND m_window = nullptr;
    std::uint64_t m_handled = 0;  // messages
    PeerWatch m_peers;
    Handle m_timer;
};

ATOM WindowCore::RegisterClassOnce() {
    static const ATOM atom = [] {
        WNDCLASSEXW window_class{};
        window_class.cbSize = sizeof window_class;
        window_class.lpfnWndProc = &WindowCore::WindowProcedure;
        window_class.hInstance = ::GetModuleHandleW(nullptr);
        window_class.lpszClassName = kClassName;
        return ::RegisterClassExW(&window_class);
    }();
    return atom;
}

bool WindowCore::Open(std::string* error) {
    if (RegisterClassOnce() != 0) {
        m_window = ::CreateWindowExW(0, kClassName, L"Wavo", 0, 0, 0, 0, 0, HWND_MESSAGE, nullptr,
                                     ::GetModuleHandleW(nullptr), nullptr);
    }
    if (m_window == nullptr) {
        if (error != nullptr) {
            *error = "CreateWindowEx() failed: " + ErrorText(LastError());
        }
        return false;
    }
    ::SetWindowLongPtrW(m_window, GWLP_USERDATA, reinterpret_cast<LONG_PTR>(this));
    return true;
}

void WindowCore::Close() {
    if (m_window != nullptr) {
        ::SetWindowLongPtrW(m_window, GWLP_USERDATA, 0);
        ::DestroyWindow(std::exchange(m_window, nullptr));
    }
}

LRESULT CALLBACK WindowCore::WindowProcedure(HWND window, UINT number, WPARAM w_param,
                                             LPARAM l_param) {
    auto* const core = reinterpret_cast<WindowCore*>(::GetWindowLongPtrW(window, GWLP_USERDATA));
    if (core != nullptr && number >= kFirstNumber && number <= kLastNumber) {
        const std::shared_ptr<WindowCore> keep = core->shared_from_this();
        return keep->HandleMessage(number, w_param, l_param);
    }
    if (core != nullptr && number == WM_TIMER && w_param == kPeerTimer) {
        const std::shared_ptr<WindowCore> keep = core->shared_from_this();
        keep->TellOfGonePeers();
        return 0;
    }
    if (number == WM_CLOSE) {
        return 0;  // nobody but its owner closes this window
    }
    return ::DefWindowProcW(window, number, w_param, l_param);
}

LRESULT WindowCore::HandleMessage(UINT number, WPARAM w_param, LPARAM l_param) {
    ++m_handled;
    return m_handler({number, w_param, l_param});
}

void WindowCore::TellOfGonePeers() {
    for (const WindowHandle gone : m_peers.TakeGone()) {
        if (m_peer_gone && m_window != nullptr) {
            m_peer_gone(gone);
        }
    }
    if (m_peers.IsEmpty() && m_window != nullptr) {
        ::KillTimer(m_window, kPeerTimer);
    }
}

void WindowCore::Watch(WindowHandle peer) {
    if (m_peers.IsEmpty()) {
        ::SetTimer(m_window, kPeerTimer, kLookAtPeersEvery.count(), nullptr);
    }
    m_peers.Add(peer);
}

bool WindowCore::Post(WindowHandle target, const Message& message) {
    if (!IsAddress(target)) {
        ::SetLastError(ERROR_INVALID_WINDOW_HANDLE);
        return false;
    }
    if (::PostMessageW(WindowOf(target), message.number, message.w_param, message.l_param) == 0) {
        return false;
    }
    Watch(target);
    return true;
}

SendResult WindowCore::Send(WindowHandle target, const Message& message) {
    if (!WindowExists(target)) {
        return {SendStatus::kGone, 0};
    }
    Watch(target);
    DWORD_PTR result = 0;
    ::SetLastError(ERROR_SUCCESS);
    // While it waits, the system hands us what is sent to us.
    if (::SendMessageTimeoutW(WindowOf(target), message.number, message.w_param, message.l_param,
                              SMTO_NORMAL | SMTO_ABORTIFHUNG | SMTO_ERRORONEXIT,
                              static_cast<UINT>(MessageWindow::kSendTimeout.count()),
                              &result) != 0) {
        return {SendStatus::kDone, static_cast<std::int64_t>(result)};
    }
    return {WindowExists(target) ? SendStatus::kNoAnswer : SendStatus::kGone, 0};
}

bool WindowCore::HandleOne(HWND window) {
    MSG message{};
    if (::PeekMessageW(&message, window, 0, 0, PM_REMOVE) == 0) {
        return false;
    }
    if (message.hwnd == nullptr && (message.message == WM_CLOSE || message.message == WM_QUIT)) {
        RequestTermination();  // what other programs post to ask a thread to end
        return true;
    }
    ::DispatchMessageW(&message);
    return true;
}

void WindowCore::Dispatch() {
    for (int i = 0; i < kMostPerDispatch && m_window != nullptr && HandleOne(m_window); ++i) {
    }
}

bool WindowCore::WaitAndDispatch(std::chrono::nanoseconds timeout) {
    constexpr std::int64_t kTick = 100;  // ns
    if (!m_timer) {
        // Ordinary timers tick no finer than the system's clock, some 15 ms.
        m_timer =
            Handle(::CreateWaitableTimerExW(nullptr, nullptr, kHighResolution, TIMER_ALL_ACCESS));
        if (!m_timer) {
            m_timer = Handle(::CreateWaitableTimerExW(nullptr, nullptr, 0, TIMER_ALL_ACCESS));
        }
    }
    LARGE_INTEGER due{};
    due.QuadPart = -std::max<std::int64_t>(timeout.count() / kTick, 0);
    ::SetWaitableTimer(m_timer.get(), &due, 0, nullptr, nullptr, FALSE);
    const std::array<HANDLE, 2> waits{m_timer.get(), TerminationEvent()};
    ::MsgWaitForMultipleObjectsEx(waits[1] == nullptr ? 1 : 2, waits.data(), INFINITE, QS_ALLINPUT,
                                  MWMO_INPUTAVAILABLE);
    // What was sent is handled by looking for what was posted.
    const std::uint64_t handled_before = m_handled;
    for (int i = 0; i < kMostPerDispatch && m_window != nullptr && HandleOne(nullptr); ++i) {
    }
    return m_handled != handled_before;
}

class Win32Window final : public MessageWindow {
 public:
    explicit Win32Window(std::shared_ptr<WindowCore> core) : m_core(std::move(core)) {}
    ~Win32Window() override { m_core->Close(); }
    Win32Window(const Win32Window&) = delete;
    Win32Window& operator=(const Win32Window&) = delete;

    [[nodiscard]] WindowHandle handle() const override { return NumberOf(m_core->window()); }

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

    [[nodiscard]] int PollDescriptor() const override { return -1; }

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
    auto core = std::make_shared<WindowCore>(std::move(handler));
    if (!core->Open(error)) {
        return nullptr;
    }
    return std::make_unique<Win32Window>(std::move(core));
}

bool WindowExists(WindowHandle handle) {
    return IsAddress(handle) && ::IsWindow(WindowOf(handle)) != 0;
}

}  // namespace wavo::platform
