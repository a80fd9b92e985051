// Message windows of two processes.
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <csignal>
#include <cstdint>
#include <memory>
#include <vector>

#include "child_process.h"
#include "platform/message_window.h"
#include "window_fixture.h"

namespace wavo::platform {

using std::chrono::milliseconds;
using std::chrono::nanoseconds;
using std::chrono::seconds;
using testing::ChildProcess;
using ::testing::ElementsAre;
using testing::NumberPipe;

namespace {

// Messages that the other process understands.
constexpr std::uint32_t kEcho = 1;         // result: l_param
constexpr std::uint32_t kSendBack = 2;     // sends kEcho to l_param, result of that plus 1
constexpr std::uint32_t kDie = 3;          // ends without an answer
constexpr std::uint32_t kQuit = 4;         // ends the loop
constexpr std::uint32_t kCount = 5;        // counts; result: the count so far
constexpr std::uint32_t kRecurse = 6;      // sends kRecurse to l_param with w_param - 1
constexpr std::uint32_t kPostAndSend = 7;  // posts 11 and 12, then sends 13, to l_param

/// A process with one window that understands the messages above.
class Echo {
 public:
    explicit Echo(NumberPipe* pipe) {
        std::string error;
        m_window = MessageWindow::Create([this](const Message& m) { return Handle(m); }, &error);
        pipe->Put(m_window->handle());
    }

    int Run() {
        while (!m_quit) {
            m_window->WaitAndDispatch(seconds(100));
        }
        return 0;
    }

 private:
    std::int64_t Handle(const Message& message) {
        const auto peer = static_cast<WindowHandle>(message.l_param);
        const auto own = static_cast<std::int64_t>(m_window->handle());
        switch (message.number) {
            case kEcho:
                return message.l_param;
            case kSendBack: {
                const SendResult result = m_window->Send(peer, {kEcho, 0, 500});
                return result.status == SendStatus::kDone ? result.result + 1 : -1;
            }
            case kDie:
                ::_exit(3);
            case kQuit:
                m_quit = true;
                return 0;
            case kCount:
                return static_cast<std::int64_t>(++m_count);
            case kRecurse: {
                if (message.w_param == 0) {
                    return 0;
                }
                const SendResult result =
                    m_window->Send(peer, {kRecurse, message.w_param - 1, own});
                return result.status == SendStatus::kDone ? result.result + 1 : -1000;
            }
            case kPostAndSend:
                m_window->Post(peer, {11});
                m_window->Post(peer, {12});
                m_window->Send(peer, {13});
                return 0;
            default:
                return -1;
        }
    }

    std::unique_ptr<MessageWindow> m_window;
    bool m_quit = false;
    std::uint64_t m_count = 0;
};

int RunEcho(NumberPipe& pipe) {
    return Echo(&pipe).Run();
}

class TwoProcessTest : public testing::WindowTest {
 protected:
    void StartEcho() {
        m_child = std::make_unique<ChildProcess>(&RunEcho);
        m_peer = m_child->pipe().Get();
    }

    void QuitEcho(MessageWindow* window) {
        EXPECT_EQ(window->Send(m_peer, {kQuit}).status, SendStatus::kDone);
        EXPECT_EQ(m_child->Wait(), 0);
    }

    std::unique_ptr<ChildProcess> m_child;
    WindowHandle m_peer = 0;
};

TEST_F(TwoProcessTest, ASentMessageComesBackWithItsResult) {
    StartEcho();
    const auto window = Make(nullptr);
    EXPECT_TRUE(WindowExists(m_peer));
    for (std::int64_t i = 0; i < 1000; ++i) {
        const SendResult result = window->Send(m_peer, {kEcho, 0, -i});
        ASSERT_EQ(result.status, SendStatus::kDone);
        ASSERT_EQ(result.result, -i);
    }
    QuitEcho(window.get());
    EXPECT_FALSE(WindowExists(m_peer));
}

TEST_F(TwoProcessTest, TheReceiverMaySendBackWhileItHandles) {
    StartEcho();
    int echoes = 0;
    const auto window = Make([&](const Message& message) {
        ++echoes;
        return message.l_param;
    });
    const SendResult result =
        window->Send(m_peer, {kSendBack, 0, static_cast<std::int64_t>(window->handle())});
    EXPECT_EQ(result.status, SendStatus::kDone);
    EXPECT_EQ(result.result, 501);
    EXPECT_EQ(echoes, 1);
    QuitEcho(window.get());
}

TEST_F(TwoProcessTest, SendsNestDeeplyBothWays) {
    StartEcho();
    std::unique_ptr<MessageWindow> window;
    window = Make([&](const Message& message) {
        const SendResult result = window->Send(
            m_peer, {kRecurse, message.w_param - 1, static_cast<std::int64_t>(window->handle())});
        return result.status == SendStatus::kDone ? result.result + 1 : -1000;
    });
    const SendResult result =
        window->Send(m_peer, {kRecurse, 40, static_cast<std::int64_t>(window->handle())});
    EXPECT_EQ(result.status, SendStatus::kDone);
    EXPECT_EQ(result.result, 40);
    QuitEcho(window.get());
}

TEST_F(TwoProcessTest, WhileASendWaitsSentMessagesAreHandledAndPostedOnesWait) {
    StartEcho();
    std::vector<std::uint32_t> seen;
    const auto window = Make([&](const Message& message) {
        seen.push_back(message.number);
        return std::int64_t{0};
    });
    EXPECT_EQ(
        window->Send(m_peer, {kPostAndSend, 0, static_cast<std::int64_t>(window->handle())}).status,
        SendStatus::kDone);
    EXPECT_THAT(seen, ElementsAre(13)) << "the sent one overtakes the posted ones";
    EXPECT_TRUE(IsReadable(window->PollDescriptor()));
    window->Dispatch();
    EXPECT_THAT(seen, ElementsAre(13, 11, 12));
    EXPECT_FALSE(IsReadable(window->PollDescriptor()));
    QuitEcho(window.get());
}

TEST_F(TwoProcessTest, ASentMessageOvertakesPostedOnesThatWait) {
    constexpr std::uint64_t kPosted = 100;
    std::unique_ptr<MessageWindow> window;
    SendResult result;
    // Where another program had the processor too long, the time to answer is over: once more.
    for (int i = 0; i < 20 && result.status != SendStatus::kDone; ++i) {
        m_child.reset();
        StartEcho();
        window = Make(nullptr);
        m_child->Stop();
        for (std::uint64_t message = 0; message < kPosted; ++message) {
            ASSERT_TRUE(window->Post(m_peer, {kCount}));
        }
        // Sent into the stopped process: it answers when it goes on.
        ChildProcess waker([this](NumberPipe&) {
            ::usleep(100000);
            m_child->Continue();
            return 0;
        });
        result = window->Send(m_peer, {kCount});
    }
    ASSERT_EQ(result.status, SendStatus::kDone);
    EXPECT_EQ(result.result, 1);
    while (window->Send(m_peer, {kCount}).result < static_cast<std::int64_t>(kPosted)) {
    }
    QuitEcho(window.get());
}

TEST_F(TwoProcessTest, AHungPeerGivesNoAnswerAndItsLateReplyIsDropped) {
    StartEcho();
    const auto window = Make(nullptr);
    ASSERT_EQ(window->Send(m_peer, {kEcho, 0, 1}).status, SendStatus::kDone);
    m_child->Stop();
    const auto start = std::chrono::steady_clock::now();
    EXPECT_EQ(window->Send(m_peer, {kEcho, 0, 2}).status, SendStatus::kNoAnswer);
    EXPECT_GE(std::chrono::steady_clock::now() - start, MessageWindow::kSendTimeout);
    EXPECT_TRUE(WindowExists(m_peer)) << "a hung window is still there";
    m_child->Continue();
    for (std::int64_t i = 3; i < 10; ++i) {
        const SendResult result = window->Send(m_peer, {kEcho, 0, i});
        ASSERT_EQ(result.status, SendStatus::kDone);
        EXPECT_EQ(result.result, i);
    }
    QuitEcho(window.get());
}

TEST_F(TwoProcessTest, AReplyThatCameWhileAHandlerTookTheTimeIsTaken) {
    StartEcho();
    // The echo answers only after it has sent to us, and we take longer than a Send may.
    const auto window = Make([](const Message&) {
        ::usleep(1000000);
        return std::int64_t{0};
    });
    ChildProcess second(&RunEcho);
    const WindowHandle third_party = second.pipe().Get();
    ASSERT_EQ(window->Send(third_party, {kEcho}).status, SendStatus::kDone);
    // Stopped, so that its answer comes while our handler runs.
    m_child->Stop();
    ChildProcess director([&](NumberPipe&) {
        std::string error;
        const auto own = MessageWindow::Create(nullptr, &error);
        ::usleep(100000);
        own->Post(third_party, {kPostAndSend, 0, static_cast<std::int64_t>(window->handle())});
        ::usleep(300000);
        m_child->Continue();
        return 0;
    });
    const SendResult result = window->Send(m_peer, {kEcho, 0, 77});
    EXPECT_EQ(result.status, SendStatus::kDone);
    EXPECT_EQ(result.result, 77);
    second.Signal(SIGKILL);
    QuitEcho(window.get());
}

TEST_F(TwoProcessTest, AForkedProcessSendsToItsParentsWindowAsToAnyOther) {
    int handled = 0;
    const auto window = Make([&](const Message& message) {
        ++handled;
        return message.l_param;
    });
    ChildProcess child([&](NumberPipe&) {
        std::string error;
        const auto own = MessageWindow::Create(nullptr, &error);
        const SendResult result = own->Send(window->handle(), {1, 0, 5});
        return result.status == SendStatus::kDone && result.result == 5 ? 0 : 1;
    });
    while (handled == 0) {
        ASSERT_TRUE(window->WaitAndDispatch(seconds(60)));
    }
    EXPECT_EQ(child.Wait(), 0);
}

TEST_F(TwoProcessTest, APeerThatNeverAcceptedGivesNoAnswer) {
    StartEcho();
    m_child->Stop();
    const auto window = Make(nullptr);
    EXPECT_EQ(window->Send(m_peer, {kEcho, 0, 2}).status, SendStatus::kNoAnswer);
    m_child->Continue();
    QuitEcho(window.get());
}

TEST_F(TwoProcessTest, APeerThatDiesEndsASend) {
    StartEcho();
    const auto window = Make(nullptr);
    std::vector<WindowHandle> gone;
    window->SetPeerGoneHandler([&](WindowHandle handle) { gone.push_back(handle); });
    EXPECT_EQ(window->Send(m_peer, {kDie}).status, SendStatus::kGone);
    EXPECT_TRUE(gone.empty());
    window->Dispatch();
    EXPECT_THAT(gone, ElementsAre(m_peer));
    EXPECT_EQ(WEXITSTATUS(m_child->Wait()), 3);
    EXPECT_FALSE(WindowExists(m_peer));
    EXPECT_EQ(window->Send(m_peer, {kEcho}).status, SendStatus::kGone);
    EXPECT_FALSE(window->Post(m_peer, {kEcho}));
}

TEST_F(TwoProcessTest, AStoppedPeerThatIsKilledEndsASendAtOnce) {
    StartEcho();
    const auto window = Make(nullptr);
    ASSERT_EQ(window->Send(m_peer, {kEcho}).status, SendStatus::kDone);
    m_child->Stop();
    ChildProcess killer([this](NumberPipe&) {
        ::usleep(100000);
        m_child->Signal(SIGKILL);
        return 0;
    });
    EXPECT_EQ(window->Send(m_peer, {kEcho}).status, SendStatus::kGone);
}

TEST_F(TwoProcessTest, TheEndOfThePeersProcessIsToldThroughTheDescriptor) {
    StartEcho();
    const auto window = Make(nullptr);
    std::vector<WindowHandle> gone;
    window->SetPeerGoneHandler([&](WindowHandle handle) { gone.push_back(handle); });
    ASSERT_TRUE(window->Post(m_peer, {kEcho}));
    EXPECT_FALSE(IsReadable(window->PollDescriptor()));
    m_child->Signal(SIGKILL);
    EXPECT_TRUE(IsReadable(window->PollDescriptor(), 60000));
    window->Dispatch();
    EXPECT_THAT(gone, ElementsAre(m_peer));
    window->Dispatch();
    EXPECT_THAT(gone, ElementsAre(m_peer));
}

TEST_F(TwoProcessTest, PostingToAStoppedPeerNeverBlocksAndFailsWhenTheQueueIsFull) {
    StartEcho();
    const auto window = Make(nullptr);
    m_child->Stop();
    std::int64_t taken = 0;
    while (taken < 100000 && window->Post(m_peer, {kCount})) {
        ++taken;
    }
    EXPECT_GE(taken, 10000);
    EXPECT_LT(taken, 100000);
    EXPECT_FALSE(window->Post(m_peer, {kCount}));
    EXPECT_FALSE(IsReadable(window->PollDescriptor())) << "nothing to do while it is stopped";

    // A Send finds no room either, and is not left behind for later.
    EXPECT_EQ(window->Send(m_peer, {kDie}).status, SendStatus::kNoAnswer);

    m_child->Continue();
    std::int64_t count = 0;
    for (std::int64_t sends = 1; count < taken + sends; ++sends) {
        window->WaitAndDispatch(milliseconds(1));
        const SendResult result = window->Send(m_peer, {kCount});
        ASSERT_EQ(result.status, SendStatus::kDone) << "it must not have got the message to die";
        count = result.result;
        if (count == taken + sends) {
            break;
        }
        ASSERT_LT(count, taken + sends);
    }
    EXPECT_GT(count, taken);
    EXPECT_TRUE(window->Post(m_peer, {kCount}));
    QuitEcho(window.get());
}

TEST_F(TwoProcessTest, AFloodOfPostsArrivesCompleteAndInOrder) {
    constexpr std::uint64_t kFlood = 100000;
    std::uint64_t next = 0;
    bool in_order = true;
    const auto window = Make([&](const Message& message) {
        in_order = in_order && message.w_param == next;
        ++next;
        return std::int64_t{0};
    });
    const WindowHandle target = window->handle();
    ChildProcess sender([target](NumberPipe&) -> int {
        std::string error;
        const auto own = MessageWindow::Create(nullptr, &error);
        for (std::uint64_t i = 0; i < kFlood; ++i) {
            while (!own->Post(target, {1, i})) {
                own->WaitAndDispatch(milliseconds(10));
            }
        }
        for (;;) {  // what is still queued here leaves in Dispatch
            own->WaitAndDispatch(seconds(1));
        }
    });
    while (next < kFlood) {
        ASSERT_TRUE(window->WaitAndDispatch(seconds(60)));
    }
    EXPECT_EQ(next, kFlood);
    EXPECT_TRUE(in_order);
}

TEST_F(TwoProcessTest, TheSocketOfAKilledProcessIsSweptByTheNextWindow) {
    StartEcho();
    m_child->Signal(SIGKILL);
    m_child->Wait();
    EXPECT_THAT(NamesInFolder(), ElementsAre(std::to_string(m_peer)));
    EXPECT_FALSE(WindowExists(m_peer));
    const auto window = Make(nullptr);
    EXPECT_THAT(NamesInFolder(), ElementsAre(std::to_string(window->handle())));
}

TEST_F(TwoProcessTest, AskingWhetherAWindowExistsDoesNotDisturbIt) {
    StartEcho();
    const auto window = Make(nullptr);
    for (int i = 0; i < 1000; ++i) {
        ASSERT_TRUE(WindowExists(m_peer));
    }
    EXPECT_EQ(window->Send(m_peer, {kEcho, 0, 6}).result, 6);
    QuitEcho(window.get());
}

TEST_F(TwoProcessTest, AWindowWithoutDescriptorsTurnsConnectionsAwayInsteadOfSpinning) {
    ChildProcess poor([](NumberPipe& pipe) {
        std::string error;
        const auto window = MessageWindow::Create(nullptr, &error);
        const int lowest = ::dup(0);
        ::close(lowest);
        rlimit limit{};
        ::getrlimit(RLIMIT_NOFILE, &limit);
        limit.rlim_cur = static_cast<rlim_t>(lowest);
        ::setrlimit(RLIMIT_NOFILE, &limit);
        pipe.Put(window->handle());
        pipe.Get();
        window->Dispatch();
        // Nothing may be left that keeps the descriptor readable.
        int quiet = 0;
        for (int i = 0; i < 10; ++i) {
            quiet += IsReadable(window->PollDescriptor()) ? 0 : 1;
            window->Dispatch();
        }
        limit.rlim_cur = limit.rlim_max;
        ::setrlimit(RLIMIT_NOFILE, &limit);
        pipe.Put(static_cast<std::uint64_t>(quiet));
        pipe.Get();
        window->WaitAndDispatch(seconds(60));
        return 0;
    });
    const WindowHandle target = poor.pipe().Get();
    const auto window = Make(nullptr);
    std::vector<WindowHandle> gone;
    window->SetPeerGoneHandler([&](WindowHandle handle) { gone.push_back(handle); });
    ASSERT_TRUE(window->Post(target, {1}));
    poor.pipe().Put(1);
    EXPECT_GE(poor.pipe().Get(), 9U);
    EXPECT_TRUE(IsReadable(window->PollDescriptor(), 60000));
    window->Dispatch();
    EXPECT_THAT(gone, ElementsAre(target));
    // With descriptors again it takes connections again.
    poor.pipe().Put(1);
    EXPECT_EQ(window->Send(target, {1}).status, SendStatus::kDone);
    EXPECT_EQ(poor.Wait(), 0);
}

TEST_F(TwoProcessTest, SignalsDoNotDisturbASendAndEndAWait) {
    StartEcho();
    const auto window = Make(nullptr);
    struct sigaction interrupting {};
    interrupting.sa_handler = [](int) {};
    struct sigaction before {};
    ASSERT_EQ(::sigaction(SIGUSR1, &interrupting, &before), 0);
    const pid_t own = ::getpid();
    ChildProcess nagger([own](NumberPipe&) {
        for (int i = 0; i < 2000; ++i) {
            ::kill(own, SIGUSR1);
            ::usleep(100);
        }
        return 0;
    });
    for (std::int64_t i = 0; i < 3000; ++i) {
        const SendResult result = window->Send(m_peer, {kEcho, 0, i});
        ASSERT_EQ(result.status, SendStatus::kDone);
        ASSERT_EQ(result.result, i);
    }
    nagger.Wait();
    ChildProcess once([own](NumberPipe&) -> int {
        for (;;) {
            ::usleep(50000);
            ::kill(own, SIGUSR1);
        }
    });
    EXPECT_FALSE(window->WaitAndDispatch(seconds(100000)));
    QuitEcho(window.get());
    once.Signal(SIGKILL);
    once.Wait();
    ::sigaction(SIGUSR1, &before, nullptr);
}

}  // namespace

}  // namespace wavo::platform
