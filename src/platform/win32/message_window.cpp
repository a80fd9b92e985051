// One real window of its own, never shown and never made anew: its handle is the address that
// masters keep. It has its own window procedure, so that every message loop of the thread serves
// it, also those of Windows itself while a menu is open or a window is dragged.
#include "platform/message_window.h"

#include <windows.h>

#include <algorithm>
#include <array>
#include <deque>
#include <map>
#include <optional>
#include <utility>

#include "platform/core_window.h"
#include "platform/last_error.h"
#include "platform/win32/handle.h"
#include "platform/win32/peer_watch.h"
#include "platform/win32/termination.h"

namespace wavo::platform {

namespace {

constexpr wchar_t kClassName[] = L"WavoMessageWindow";
/// Messages that Dispatch handles before it returns.
constexpr int kMostPerDispatch = 256;
/// Unit of the system's timers.
constexpr std::int64_t kTick = 100;  // ns
/// Since Windows 10, version 1803; the compiler's headers may be older.
constexpr DWORD kHighResolution = 0x00000002;
/// The numbers that programs agree on between themselves.
constexpr UINT kFirstNumber = WM_USER;
constexpr UINT kLastNumber = WM_APP - 1;
/// Posted by us to ourselves: what was held back is to be handled now.
constexpr UINT kDeliver = WM_APP + 1;
/// How long a posted message makes room for input, painting and timers.
constexpr std::chrono::milliseconds kHoldBack{10};
constexpr std::size_t kMostHeld = 256;  // messages
constexpr UINT_PTR kPeerTimer = 1;
/// How often a sender that waits looks whether the receiver still exists.
constexpr std::chrono::milliseconds kLookAtReceiverEvery{50};

/// What PeekMessage takes for "those of the thread that are for no window".
HWND NoWindow() noexcept {
    return reinterpret_cast<HWND>(static_cast<std::intptr_t>(-1));
}

bool IsAddress(WindowHandle target) noexcept {
    const HWND window = WindowOf(target);
    return window != nullptr && window != HWND_BROADCAST && window != NoWindow();
}

/// The answers to what this thread has sent and waits for. One that comes later finds no place here
/// and is dropped.
class Answers {
 public:
    /// Where the answer to a sent message comes, as long as this object lives.
    class Place {
     public:
        Place() : m_number(++g_last) { g_awaited.emplace(m_number, std::nullopt); }
        ~Place() { g_awaited.erase(m_number); }
        Place(const Place&) = delete;
        Place& operator=(const Place&) = delete;

        [[nodiscard]] ULONG_PTR number() const { return m_number; }
        [[nodiscard]] std::optional<LRESULT> answer() const { return g_awaited.at(m_number); }

     private:
        const ULONG_PTR m_number;
    };

    /// Called by the system in the sender's thread, with the number of a place.
    static void CALLBACK Take(HWND /*receiver*/, UINT /*message*/, ULONG_PTR number,
                              LRESULT answer) {
        if (const auto place = g_awaited.find(number); place != g_awaited.end()) {
            place->second = answer;
        }
    }

 private:
    static thread_local ULONG_PTR g_last;
    static thread_local std::map<ULONG_PTR, std::optional<LRESULT>> g_awaited;
};

thread_local ULONG_PTR Answers::g_last = 0;
thread_local std::map<ULONG_PTR, std::optional<LRESULT>> Answers::g_awaited;

/// Set while a message is on its way to a window of this same thread, which gets it directly.
thread_local bool g_sent_directly = false;
/// Depth of our own loops in this thread; what they handle is not held back.
thread_local int g_own_loops = 0;

bool IsOfThisThread(HWND window) noexcept {
    return ::GetWindowThreadProcessId(window, nullptr) == ::GetCurrentThreadId();
}

/// Handles what is sent to this thread, until the deadline at most or something was. What was
/// posted stays where it is.
void ServeSends(std::chrono::steady_clock::time_point deadline) {
    using std::chrono::milliseconds;
    const auto left = std::chrono::ceil<milliseconds>(deadline - std::chrono::steady_clock::now());
    const milliseconds wait = std::clamp(left, milliseconds::zero(), kLookAtReceiverEvery);
    ::MsgWaitForMultipleObjectsEx(0, nullptr, static_cast<DWORD>(wait.count()), QS_SENDMESSAGE,
                                  MWMO_INPUTAVAILABLE);
    MSG message{};
    ::PeekMessageW(&message, nullptr, 0, 0, PM_NOREMOVE | PM_QS_SENDMESSAGE);
}

/// What lives as long as a message is being handled, also when the handler destroys its window.
class WindowCore : public std::enable_shared_from_this<WindowCore> {
 public:
    explicit WindowCore(MessageWindow::Handler handler) : m_handler(std::move(handler)) {}

    bool Open(std::string* error, MessageNumbers from_anyone);
    void Close();

    [[nodiscard]] WindowHandle handle() const { return NumberOf(m_window); }
    /// The system's own message loops call the window procedure.
    [[nodiscard]] static int PollDescriptor() { return -1; }
    void SetPeerGoneHandler(MessageWindow::PeerGone handler) { m_peer_gone = std::move(handler); }
    /// Nothing but messages can come.
    static void SetPeerRefusedHandler(const MessageWindow::PeerRefused& /*handler*/) {}
    bool Post(WindowHandle target, const Message& message);
    SendResult Send(WindowHandle target, const Message& message);
    void Dispatch();
    bool WaitAndDispatch(std::chrono::nanoseconds timeout);

 private:
    class OwnLoop {
     public:
        OwnLoop() { ++g_own_loops; }
        ~OwnLoop() { --g_own_loops; }
        OwnLoop(const OwnLoop&) = delete;
        OwnLoop& operator=(const OwnLoop&) = delete;
    };

    static LRESULT CALLBACK WindowProcedure(HWND window, UINT number, WPARAM w_param,
                                            LPARAM l_param);
    static ATOM RegisterClassOnce();
    LRESULT OnMessage(const Message& message);
    LRESULT Handle(const Message& message);
    /// Whether a message that was posted has to make room for what the user waits for.
    [[nodiscard]] static bool HasToWait() noexcept;
    void HoldBack(const Message& message);
    /// Sees to it that Deliver is called soon.
    void ArmDelivery();
    void Deliver();
    static void CALLBACK OnHeldLongEnough(PTP_CALLBACK_INSTANCE instance, void* window,
                                          PTP_TIMER timer);
    void TellOfGonePeers();
    /// Looks for the peer from time to time.
    void Watch(WindowHandle peer);
    /// Handles one queued message of this thread; false when there is none.
    static bool HandleOne(HWND window);
    /// Until something has come, or the time is over.
    void Wait(std::chrono::nanoseconds timeout);

    const MessageWindow::Handler m_handler;
    MessageWindow::PeerGone m_peer_gone;
    HWND m_window = nullptr;
    std::uint64_t m_handled = 0;  // messages
    PeerWatch m_peers;
    platform::Handle m_timer;
    /// Posted messages that wait for input and painting, in their order.
    std::deque<Message> m_held;
    PTP_TIMER m_delivery = nullptr;
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

bool WindowCore::Open(std::string* error, MessageNumbers from_anyone) {
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
    // Also from programs that run with fewer rights than this one.
    for (std::uint32_t number = from_anyone.first; number <= from_anyone.last; ++number) {
        ::ChangeWindowMessageFilterEx(m_window, number, MSGFLT_ALLOW, nullptr);
    }
    return true;
}

void WindowCore::Close() {
    if (m_delivery != nullptr) {
        ::SetThreadpoolTimer(m_delivery, nullptr, 0, 0);
        ::WaitForThreadpoolTimerCallbacks(m_delivery, TRUE);
        ::CloseThreadpoolTimer(std::exchange(m_delivery, nullptr));
    }
    m_held.clear();
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
        return keep->OnMessage({number, w_param, l_param});
    }
    if (core != nullptr && number == kDeliver) {
        const std::shared_ptr<WindowCore> keep = core->shared_from_this();
        keep->Deliver();
        return 0;
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

LRESULT WindowCore::OnMessage(const Message& message) {
    if (std::exchange(g_sent_directly, false) || ::InSendMessage() != 0) {
        return Handle(message);
    }
    if (m_held.empty() && (g_own_loops > 0 || !HasToWait())) {
        return Handle(message);
    }
    HoldBack(message);  // behind those that wait already
    if (g_own_loops > 0 || m_held.size() >= kMostHeld) {
        Deliver();
    }
    return 0;
}

LRESULT WindowCore::Handle(const Message& message) {
    ++m_handled;
    return m_handler ? m_handler(message) : 0;
}

// The system hands out what was posted before it looks for input, for what is to be painted and for
// timers. A master that has its next message ready whenever one was handled would leave nothing to
// the user. What it posts therefore makes room for a moment, once: the delivery is posted again, by
// a timer that runs outside of this thread, so that endless input does not hold up the master.

bool WindowCore::HasToWait() noexcept {
    return HIWORD(::GetQueueStatus(QS_INPUT | QS_PAINT | QS_TIMER)) != 0;
}

void WindowCore::HoldBack(const Message& message) {
    m_held.push_back(message);
    if (m_held.size() == 1) {
        ArmDelivery();
    }
}

void WindowCore::ArmDelivery() {
    if (m_delivery == nullptr) {
        m_delivery = ::CreateThreadpoolTimer(&WindowCore::OnHeldLongEnough, m_window, nullptr);
    }
    if (m_delivery == nullptr) {  // out of memory: at once, rather than never
        ::PostMessageW(m_window, kDeliver, 0, 0);
        return;
    }
    ULARGE_INTEGER due{};
    due.QuadPart = static_cast<ULONGLONG>(
        -std::chrono::duration_cast<std::chrono::nanoseconds>(kHoldBack).count() / kTick);
    FILETIME relative{due.LowPart, due.HighPart};
    ::SetThreadpoolTimer(m_delivery, &relative, 0, 0);
}

void CALLBACK WindowCore::OnHeldLongEnough(PTP_CALLBACK_INSTANCE /*instance*/, void* window,
                                           PTP_TIMER /*timer*/) {
    ::PostMessageW(static_cast<HWND>(window), kDeliver, 0, 0);
}

void WindowCore::Deliver() {
    for (std::size_t count = m_held.size(); count > 0 && !m_held.empty(); --count) {
        const Message message = m_held.front();
        m_held.pop_front();
        if (!m_held.empty()) {
            ArmDelivery();  // should the handler not return for long
        }
        Handle(message);
    }
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
    const auto deadline = std::chrono::steady_clock::now() + MessageWindow::kSendTimeout;
    const HWND receiver = WindowOf(target);
    const Answers::Place place;
    // Always queued and never taken back, also when the receiver has not looked for messages for
    // long. A window of this thread is called, and has answered, before this returns.
    g_sent_directly = IsOfThisThread(receiver);
    const BOOL queued = ::SendMessageCallbackW(receiver, message.number, message.w_param,
                                               message.l_param, &Answers::Take, place.number());
    const int error = LastError();
    g_sent_directly = false;
    if (queued == 0) {
        const bool out_of_reach = error == ERROR_ACCESS_DENIED || !WindowExists(target);
        SetLastError(error);
        return {out_of_reach ? SendStatus::kGone : SendStatus::kNoAnswer, 0};
    }
    for (bool more = true; more && !place.answer();) {
        // Looked at before: what it has answered, and then ended, is there to be taken.
        const auto now = std::chrono::steady_clock::now();
        more = WindowExists(target) && now < deadline;
        ServeSends(more ? deadline : now);
    }
    const std::optional<LRESULT> answer = place.answer();
    // The system answers 0 in the place of a receiver that has ended.
    if (answer && (*answer != 0 || WindowExists(target))) {
        return {SendStatus::kDone, static_cast<std::int64_t>(*answer)};
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
    const OwnLoop loop;
    Deliver();
    for (int i = 0; i < kMostPerDispatch && m_window != nullptr && HandleOne(m_window); ++i) {
    }
    for (int i = 0; i < kMostPerDispatch && HandleOne(NoWindow()); ++i) {
    }
}

bool WindowCore::WaitAndDispatch(std::chrono::nanoseconds timeout) {
    const OwnLoop loop;
    const std::uint64_t handled_before = m_handled;
    if (!m_held.empty()) {
        Deliver();
        timeout = {};
    }
    Wait(timeout);
    // What was sent is handled by looking for what was posted.
    for (int i = 0; i < kMostPerDispatch && m_window != nullptr && HandleOne(nullptr); ++i) {
    }
    return m_handled != handled_before;
}

void WindowCore::Wait(std::chrono::nanoseconds timeout) {
    if (!m_timer) {
        // Ordinary timers tick no finer than the system's clock, some 15 ms.
        m_timer = platform::Handle(
            ::CreateWaitableTimerExW(nullptr, nullptr, kHighResolution, TIMER_ALL_ACCESS));
        if (!m_timer) {
            m_timer =
                platform::Handle(::CreateWaitableTimerExW(nullptr, nullptr, 0, TIMER_ALL_ACCESS));
        }
    }
    std::array<HANDLE, 2> waits{};
    DWORD count = 0;
    DWORD milliseconds = INFINITE;
    LARGE_INTEGER due{};
    due.QuadPart = -std::max<std::int64_t>(timeout.count() / kTick, 0);
    if (m_timer && ::SetWaitableTimer(m_timer.get(), &due, 0, nullptr, nullptr, FALSE) != 0) {
        waits[count++] = m_timer.get();
    } else {
        milliseconds = static_cast<DWORD>(
            std::clamp<std::int64_t>(timeout.count() / 1'000'000, 0, INFINITE - 1));
    }
    if (const HANDLE termination = TerminationEvent(); termination != nullptr) {
        waits[count++] = termination;
    }
    ::MsgWaitForMultipleObjectsEx(count, waits.data(), milliseconds, QS_ALLINPUT,
                                  MWMO_INPUTAVAILABLE);
}

}  // namespace

std::unique_ptr<MessageWindow> MessageWindow::Create(Handler handler, std::string* error,
                                                     MessageNumbers from_anyone) {
    auto core = std::make_shared<WindowCore>(std::move(handler));
    if (!core->Open(error, from_anyone)) {
        return nullptr;
    }
    return std::make_unique<CoreWindow<WindowCore>>(std::move(core));
}

std::vector<WindowHandle> MessageWindows() {
    // Each search begins behind the window found before, and fails when that one has gone
    // meanwhile: then all is looked for again, some times.
    std::vector<WindowHandle> found;
    for (int tries = 0; tries < 5; ++tries) {
        found.clear();
        ::SetLastError(ERROR_SUCCESS);
        HWND window = nullptr;
        while ((window = ::FindWindowExW(HWND_MESSAGE, window, kClassName, nullptr)) != nullptr) {
            found.push_back(NumberOf(window));
        }
        if (LastError() != ERROR_INVALID_WINDOW_HANDLE) {
            break;
        }
    }
    return found;
}

bool WindowExists(WindowHandle handle) {
    return IsAddress(handle) && ::IsWindow(WindowOf(handle)) != 0;
}

}  // namespace wavo::platform
