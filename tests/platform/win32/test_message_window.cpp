// Message windows of Windows: real ones, between threads and as another program's code meets them.
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <windows.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <functional>
#include <memory>
#include <string>
#include <thread>
#include <vector>

#include "platform/message_window.h"
#include "platform/process.h"

namespace wavo::platform {
namespace {

using std::chrono::milliseconds;
using std::chrono::seconds;
using std::chrono::steady_clock;
using ::testing::ElementsAre;

constexpr std::uint32_t kFirst = WM_USER + 300;

std::unique_ptr<MessageWindow> Make(MessageWindow::Handler handler) {
    std::string error;
    auto window = MessageWindow::Create(std::move(handler), &error);
    EXPECT_NE(window, nullptr) << error;
    return window;
}

std::unique_ptr<MessageWindow> MakeNoting(std::vector<Message>* seen) {
    return Make([seen](const Message& message) {
        seen->push_back(message);
        return std::int64_t{0};
    });
}

HWND WindowOf(WindowHandle handle) {
    return reinterpret_cast<HWND>(static_cast<std::uintptr_t>(handle));
}

HWND WindowOf(const MessageWindow& window) {
    return WindowOf(window.handle());
}

/// A window in a thread of its own, served until the object goes.
class ServedWindow {
 public:
    explicit ServedWindow(MessageWindow::Handler handler)
        : m_thread([this, handler = std::move(handler)] {
              const auto window = Make(handler);
              m_handle = window->handle();
              while (!m_ended) {
                  window->WaitAndDispatch(milliseconds(20));
              }
          }) {
        while (m_handle == 0) {
            std::this_thread::yield();
        }
    }
    ~ServedWindow() { End(); }
    ServedWindow(const ServedWindow&) = delete;
    ServedWindow& operator=(const ServedWindow&) = delete;

    [[nodiscard]] WindowHandle handle() const { return m_handle; }
    void End() {
        m_ended = true;
        if (m_thread.joinable()) {
            m_thread.join();
        }
    }

 private:
    std::atomic<WindowHandle> m_handle{0};
    std::atomic<bool> m_ended{false};
    std::thread m_thread;
};

TEST(MessageWindow, IsARealWindowFromCreationToDestruction) {
    auto window = Make(nullptr);
    const WindowHandle handle = window->handle();
    EXPECT_TRUE(WindowExists(handle));
    EXPECT_NE(::IsWindow(WindowOf(*window)), 0);
    EXPECT_EQ(window->PollDescriptor(), -1);
    ::SendMessageW(WindowOf(*window), WM_CLOSE, 0, 0);
    EXPECT_TRUE(WindowExists(handle)) << "others cannot close it";
    window.reset();
    EXPECT_FALSE(WindowExists(handle));
    EXPECT_FALSE(WindowExists(0));
    EXPECT_FALSE(WindowExists(0xFFFF)) << "that would be all windows";
}

TEST(MessageWindow, PostedMessagesComeInOrderWithAllTheirBits) {
    std::vector<Message> seen;
    const auto receiver = MakeNoting(&seen);
    const auto sender = Make(nullptr);
    const Message first{kFirst, 0xFEDCBA9876543210, -0x7EDCBA9876543210};
    const Message second{WM_USER, 1, 2};
    EXPECT_TRUE(sender->Post(receiver->handle(), first));
    EXPECT_TRUE(sender->Post(receiver->handle(), second));
    EXPECT_TRUE(seen.empty());
    receiver->Dispatch();
    EXPECT_THAT(seen, ElementsAre(first, second));
}

TEST(MessageWindow, AnyMessageLoopServesIt) {
    std::vector<Message> seen;
    const auto window = MakeNoting(&seen);
    ::PostMessageW(WindowOf(*window), kFirst, 1, 2);
    MSG message{};
    while (::PeekMessageW(&message, nullptr, 0, 0, PM_REMOVE) != 0) {
        ::DispatchMessageW(&message);
    }
    EXPECT_THAT(seen, ElementsAre(Message{kFirst, 1, 2}));
}

TEST(MessageWindow, NumbersOfTheSystemAreNotHandedOut) {
    std::vector<Message> seen;
    const auto window = MakeNoting(&seen);
    for (const UINT number :
         {static_cast<UINT>(WM_NULL), static_cast<UINT>(WM_TIMER), static_cast<UINT>(WM_USER - 1),
          static_cast<UINT>(WM_APP), static_cast<UINT>(0xC123)}) {
        ::SendMessageW(WindowOf(*window), number, 0, 0);
    }
    EXPECT_TRUE(seen.empty());
}

TEST(MessageWindow, OneWithoutAHandlerAnswersZero) {
    const auto silent = Make(nullptr);
    const auto sender = Make(nullptr);
    const SendResult result = sender->Send(silent->handle(), {kFirst, 1, 2});
    EXPECT_EQ(result.status, SendStatus::kDone);
    EXPECT_EQ(result.result, 0);
}

TEST(MessageWindow, ASentMessageIsAnsweredAndOvertakesAPostedOne) {
    std::vector<std::uint32_t> seen;
    const auto receiver = Make([&](const Message& message) {
        seen.push_back(message.number);
        return message.l_param * 2;
    });
    const auto sender = Make(nullptr);
    sender->Post(receiver->handle(), {kFirst});
    const SendResult result = sender->Send(receiver->handle(), {kFirst + 1, 0, -21});
    EXPECT_EQ(result.status, SendStatus::kDone);
    EXPECT_EQ(result.result, -42);
    receiver->Dispatch();
    EXPECT_THAT(seen, ElementsAre(kFirst + 1, kFirst));
}

TEST(MessageWindow, WhileASendWaitsWhatIsSentToUsIsHandledAndWhatIsPostedWaits) {
    std::vector<std::uint32_t> seen;
    const auto ours = Make([&](const Message& message) {
        seen.push_back(message.number);
        return std::int64_t{7};
    });
    const HWND our_window = WindowOf(*ours);
    std::atomic<LRESULT> answer{0};
    const ServedWindow other([&](const Message&) {
        ::PostMessageW(our_window, kFirst + 1, 0, 0);
        answer = ::SendMessageW(our_window, kFirst + 2, 0, 0);
        return std::int64_t{1};
    });
    EXPECT_EQ(ours->Send(other.handle(), {kFirst}).status, SendStatus::kDone);
    EXPECT_EQ(answer, 7);
    EXPECT_THAT(seen, ElementsAre(kFirst + 2));
    ours->Dispatch();
    EXPECT_THAT(seen, ElementsAre(kFirst + 2, kFirst + 1));
}

TEST(MessageWindow, AReceiverThatDoesNotAnswerIsLeftAfterTheTimeout) {
    std::atomic<bool> release{false};
    const ServedWindow other([&](const Message&) {
        while (!release) {
            std::this_thread::sleep_for(milliseconds(5));
        }
        return std::int64_t{1};
    });
    const auto ours = Make(nullptr);
    const auto begin = steady_clock::now();
    EXPECT_EQ(ours->Send(other.handle(), {kFirst}).status, SendStatus::kNoAnswer);
    EXPECT_GE(steady_clock::now() - begin, MessageWindow::kSendTimeout - milliseconds(50));
    release = true;
}

TEST(MessageWindow, WhatWasNotAnsweredInTimeIsStillHandledOnceAndItsAnswerDropped) {
    std::atomic<bool> release{false};
    std::atomic<int> handled{0};
    const ServedWindow other([&](const Message& message) {
        while (!release) {
            std::this_thread::sleep_for(milliseconds(5));
        }
        ++handled;
        return message.l_param;
    });
    // The receiver handles this one, and does not come to the other.
    ::PostMessageW(WindowOf(other.handle()), kFirst, 0, 1);
    const auto ours = Make(nullptr);
    EXPECT_EQ(ours->Send(other.handle(), {kFirst, 0, 2}).status, SendStatus::kNoAnswer);
    EXPECT_EQ(handled, 0);
    release = true;
    const SendResult next = ours->Send(other.handle(), {kFirst, 0, 3});
    EXPECT_EQ(next.status, SendStatus::kDone);
    EXPECT_EQ(next.result, 3);
    const auto give_up = steady_clock::now() + seconds(60);
    while (handled < 3 && steady_clock::now() < give_up) {
        ours->WaitAndDispatch(milliseconds(10));
    }
    EXPECT_EQ(handled, 3);
    ours->WaitAndDispatch(milliseconds(50));
    EXPECT_EQ(handled, 3);
}

TEST(MessageWindow, AnswersOfSendsWithinSendsFindTheirPlace) {
    std::vector<std::int64_t> results;
    WindowHandle inner_receiver = 0;
    std::unique_ptr<MessageWindow> ours;
    ours = Make([&](const Message& message) {
        results.push_back(ours->Send(inner_receiver, {kFirst, 0, message.l_param}).result);
        return message.l_param + 100;
    });
    const ServedWindow inner([](const Message& message) { return message.l_param * 10; });
    inner_receiver = inner.handle();
    const HWND our_window = WindowOf(*ours);
    const ServedWindow outer([our_window](const Message& message) {
        return ::SendMessageW(our_window, kFirst, 0, message.l_param + 1);
    });
    const SendResult result = ours->Send(outer.handle(), {kFirst, 0, 5});
    EXPECT_EQ(result.status, SendStatus::kDone);
    EXPECT_EQ(result.result, 106);
    EXPECT_THAT(results, ElementsAre(60));
}

TEST(MessageWindow, TheAnswerOfAReceiverThatThenEndsCounts) {
    const auto ours = Make(nullptr);
    for (int i = 0; i < 50; ++i) {
        std::atomic<bool> ended{false};
        std::atomic<WindowHandle> handle{0};
        std::thread other([&] {
            const auto window = Make([&](const Message&) {
                ended = true;
                return std::int64_t{7};
            });
            handle = window->handle();
            while (!ended) {
                window->WaitAndDispatch(milliseconds(20));
            }
        });
        while (handle == 0) {
            std::this_thread::yield();
        }
        const SendResult result = ours->Send(handle, {kFirst});
        other.join();
        EXPECT_EQ(result.status, SendStatus::kDone);
        EXPECT_EQ(result.result, 7);
    }
}

TEST(MessageWindow, WhatIsGoneIsSaidToBe) {
    const auto ours = Make(nullptr);
    auto other = Make(nullptr);
    const WindowHandle handle = other->handle();
    other.reset();
    EXPECT_EQ(ours->Send(handle, {kFirst}).status, SendStatus::kGone);
    EXPECT_FALSE(ours->Post(handle, {kFirst}));
    for (const WindowHandle nobody :
         {WindowHandle{0}, WindowHandle{0xFFFF}, ~WindowHandle{0}, WindowHandle{0xFFFFFFFF}}) {
        EXPECT_EQ(ours->Send(nobody, {kFirst}).status, SendStatus::kGone);
        EXPECT_FALSE(ours->Post(nobody, {kFirst}));
    }
}

TEST(MessageWindow, AWindowThatVanishedIsToldOnceFromTheMessageLoop) {
    std::vector<WindowHandle> gone;
    const auto ours = Make(nullptr);
    ours->SetPeerGoneHandler([&](WindowHandle window) { gone.push_back(window); });
    auto other = Make([](const Message&) { return std::int64_t{0}; });
    const WindowHandle handle = other->handle();
    EXPECT_TRUE(ours->Post(handle, {kFirst}));
    other.reset();
    EXPECT_FALSE(ours->Post(handle, {kFirst}));
    EXPECT_TRUE(gone.empty()) << "not in the midst of a call";
    const auto serve = [&](milliseconds time, auto is_done) {
        const auto end = steady_clock::now() + time;
        while (!is_done() && steady_clock::now() < end) {
            ours->WaitAndDispatch(milliseconds(10));
        }
    };
    serve(milliseconds(60'000), [&] { return !gone.empty(); });
    EXPECT_THAT(gone, ElementsAre(handle));
    EXPECT_FALSE(ours->Post(handle, {kFirst}));
    serve(milliseconds(500), [] { return false; });
    EXPECT_THAT(gone, ElementsAre(handle));
}

/// A program with a window; it is ended from outside.
class OtherProgram {
 public:
    OtherProgram() {
        wchar_t command[] = L"notepad.exe";
        STARTUPINFOW start{};
        start.cb = sizeof start;
        EXPECT_NE(::CreateProcessW(nullptr, command, nullptr, nullptr, FALSE, 0, nullptr, nullptr,
                                   &start, &m_process),
                  0);
        ::WaitForInputIdle(m_process.hProcess, 20000);
    }
    ~OtherProgram() {
        Kill();
        ::CloseHandle(m_process.hThread);
        ::CloseHandle(m_process.hProcess);
    }
    OtherProgram(const OtherProgram&) = delete;
    OtherProgram& operator=(const OtherProgram&) = delete;

    /// Stops it: it handles nothing any more.
    void Freeze() { ::SuspendThread(m_process.hThread); }
    void Kill() {
        ::TerminateProcess(m_process.hProcess, 1);
        ::WaitForSingleObject(m_process.hProcess, 20000);
    }
    /// Waits until it has a window. Returns one.
    [[nodiscard]] WindowHandle WaitForWindow() const {
        const auto give_up = steady_clock::now() + seconds(60);
        WindowHandle window = Window();
        while (window == 0 && steady_clock::now() < give_up) {
            std::this_thread::sleep_for(milliseconds(20));
            window = Window();
        }
        return window;
    }

 private:
    /// One of its windows; 0 as long as there is none.
    [[nodiscard]] WindowHandle Window() const {
        struct Search {
            DWORD process;
            HWND found;
        } search{m_process.dwProcessId, nullptr};
        ::EnumWindows(
            [](HWND window, LPARAM data) -> BOOL {
                auto* const wanted = reinterpret_cast<Search*>(data);
                DWORD process = 0;
                ::GetWindowThreadProcessId(window, &process);
                wanted->found = process == wanted->process ? window : nullptr;
                return wanted->found == nullptr ? TRUE : FALSE;
            },
            reinterpret_cast<LPARAM>(&search));
        return static_cast<WindowHandle>(reinterpret_cast<std::uintptr_t>(search.found));
    }

    PROCESS_INFORMATION m_process{};
};

TEST(MessageWindow, TheEndOfAnotherProcessIsToldWithoutASend) {
    std::vector<WindowHandle> gone;
    const auto ours = Make(nullptr);
    ours->SetPeerGoneHandler([&](WindowHandle window) { gone.push_back(window); });
    OtherProgram program;
    const WindowHandle handle = program.WaitForWindow();
    ASSERT_TRUE(ours->Post(handle, {kFirst}));
    ours->WaitAndDispatch(milliseconds(50));
    EXPECT_TRUE(gone.empty());
    program.Kill();
    const auto give_up = steady_clock::now() + seconds(60);
    while (gone.empty() && steady_clock::now() < give_up) {
        ours->WaitAndDispatch(milliseconds(100));
    }
    EXPECT_THAT(gone, ElementsAre(handle));
}

TEST(MessageWindow, TheEndOfAProcessThatHangsEndsTheWaitForItsAnswer) {
    const auto ours = Make(nullptr);
    bool in_time = false;
    // Another program may have had the processor over all that time: one of many tries counts.
    for (int i = 0; i < 20 && !in_time; ++i) {
        OtherProgram program;
        const WindowHandle handle = program.WaitForWindow();
        ASSERT_NE(handle, 0U);
        program.Freeze();
        std::thread killer([&program] {
            std::this_thread::sleep_for(milliseconds(100));
            program.Kill();
        });
        const auto begin = steady_clock::now();
        const SendStatus status = ours->Send(handle, {kFirst}).status;
        in_time = status == SendStatus::kGone &&
                  steady_clock::now() - begin < MessageWindow::kSendTimeout;
        killer.join();
    }
    EXPECT_TRUE(in_time);
}

/// Serves the messages of this thread as any program's loop does, until the time is over or
/// `is_done`.
void RunLoop(
    milliseconds time, const std::function<bool()>& is_done = [] { return false; }) {
    const auto end = steady_clock::now() + time;
    while (!is_done() && steady_clock::now() < end) {
        ::MsgWaitForMultipleObjectsEx(0, nullptr, 10, QS_ALLINPUT, MWMO_INPUTAVAILABLE);
        MSG message{};
        if (::PeekMessageW(&message, nullptr, 0, 0, PM_REMOVE) != 0) {
            ::DispatchMessageW(&message);
        }
    }
}

/// A window that has its next message whenever it has handled one, and needs some time for each.
std::unique_ptr<MessageWindow> MakeBusy(std::vector<std::int64_t>* handled) {
    auto target = std::make_shared<HWND>();
    auto window = Make([handled, target](const Message& message) {
        handled->push_back(message.l_param);
        ::PostMessageW(*target, kFirst, 0, message.l_param + 1);
        std::this_thread::sleep_for(milliseconds(2));
        return std::int64_t{0};
    });
    *target = WindowOf(*window);
    ::PostMessageW(*target, kFirst, 0, 0);
    return window;
}

/// A turn that has not come by then never does.
constexpr milliseconds kAtMost{60'000};

/// A timer of this thread; counts how often its turn came.
class Ticks {
 public:
    explicit Ticks(UINT interval, milliseconds work = {})
        : m_timer(::SetTimer(nullptr, 0, interval, &OnTick)) {
        g_count = 0;
        g_work = work;
    }
    ~Ticks() { ::KillTimer(nullptr, m_timer); }
    Ticks(const Ticks&) = delete;
    Ticks& operator=(const Ticks&) = delete;

    [[nodiscard]] int count() const { return g_count; }

 private:
    static void CALLBACK OnTick(HWND /*none*/, UINT /*number*/, UINT_PTR /*timer*/,
                                DWORD /*time*/) {
        ++g_count;
        std::this_thread::sleep_for(g_work);
    }
    static inline int g_count = 0;
    static inline milliseconds g_work{};
    const UINT_PTR m_timer;
};

TEST(MessageWindow, WhatIsPostedWithoutPauseLeavesTimersTheirTurn) {
    std::vector<std::int64_t> handled;
    const auto window = MakeBusy(&handled);
    const Ticks ticks(50);
    RunLoop(kAtMost, [&] { return ticks.count() >= 5 && handled.size() >= 50; });
    EXPECT_GE(ticks.count(), 5);
    EXPECT_GE(handled.size(), 50U);
    EXPECT_TRUE(std::is_sorted(handled.begin(), handled.end()));
}

TEST(MessageWindow, TimersThatAreAlwaysDueLeaveWhatIsPostedItsTurn) {
    std::vector<std::int64_t> handled;
    const auto window = MakeBusy(&handled);
    const Ticks ticks(USER_TIMER_MINIMUM, milliseconds(20));
    RunLoop(kAtMost, [&] { return ticks.count() >= 5 && handled.size() >= 5; });
    EXPECT_GE(ticks.count(), 5);
    EXPECT_GE(handled.size(), 5U);
}

TEST(MessageWindow, WhatIsHeldBackKeepsItsOrderAndEndsWithItsWindow) {
    std::vector<Message> seen;
    auto window = MakeNoting(&seen);
    const HWND handle = WindowOf(*window);
    const Ticks ticks(USER_TIMER_MINIMUM);
    constexpr int kCount = 600;
    for (int i = 0; i < kCount; ++i) {
        ::PostMessageW(handle, kFirst, 0, i);
    }
    std::this_thread::sleep_for(milliseconds(50));  // the timer is due
    RunLoop(kAtMost, [&] { return seen.size() >= static_cast<std::size_t>(kCount); });
    ASSERT_EQ(seen.size(), static_cast<std::size_t>(kCount));
    for (int i = 0; i < kCount; ++i) {
        EXPECT_EQ(seen[static_cast<std::size_t>(i)].l_param, i);
    }
    ::PostMessageW(handle, kFirst, 0, 0);
    std::this_thread::sleep_for(milliseconds(50));
    MSG message{};
    ASSERT_NE(::PeekMessageW(&message, handle, 0, 0, PM_REMOVE), 0);
    ::DispatchMessageW(&message);
    window.reset();
    RunLoop(milliseconds(50));
    EXPECT_EQ(seen.size(), static_cast<std::size_t>(kCount));
}

TEST(MessageWindow, AWindowMayBeDestroyedByItsHandler) {
    std::unique_ptr<MessageWindow> window;
    window = Make([&](const Message&) {
        window.reset();
        return std::int64_t{5};
    });
    const HWND handle = WindowOf(*window);
    EXPECT_EQ(::SendMessageW(handle, kFirst, 0, 0), 5);
    EXPECT_EQ(window, nullptr);
    EXPECT_EQ(::IsWindow(handle), 0);
}

TEST(MessageWindow, WaitingReturnsWithAMessageOrAfterTheTime) {
    std::vector<Message> seen;
    const auto window = MakeNoting(&seen);
    EXPECT_FALSE(window->WaitAndDispatch(milliseconds(1)));
    EXPECT_FALSE(window->WaitAndDispatch(milliseconds(0)));
    window->Post(window->handle(), {kFirst});
    EXPECT_TRUE(window->WaitAndDispatch(seconds(60)));
    EXPECT_EQ(seen.size(), 1U);
    // Sent by another thread.
    const HWND handle = WindowOf(*window);
    std::thread sender([handle] { ::SendMessageW(handle, kFirst + 1, 0, 0); });
    EXPECT_TRUE(window->WaitAndDispatch(seconds(60)));
    sender.join();
    EXPECT_EQ(seen.size(), 2U);
}

TEST(MessageWindow, AskingItsThreadToEndEndsAWait) {
    const auto window = Make(nullptr);
    EXPECT_EQ(WatchTerminationRequests(), -1);
    EXPECT_FALSE(TerminationRequested());
    ::PostThreadMessageW(::GetCurrentThreadId(), WM_CLOSE, 0, 0);
    EXPECT_FALSE(window->WaitAndDispatch(seconds(60)));
    EXPECT_TRUE(TerminationRequested());
    // Dispatch looks out for it too, and ends the next wait.
    window->WaitAndDispatch(milliseconds(1));
    ::PostThreadMessageW(::GetCurrentThreadId(), WM_CLOSE, 0, 0);
    window->Dispatch();
    MSG message{};
    EXPECT_EQ(::PeekMessageW(&message, nullptr, 0, 0, PM_REMOVE), 0);
    EXPECT_FALSE(window->WaitAndDispatch(seconds(60)));
}

}  // namespace
}  // namespace wavo::platform
