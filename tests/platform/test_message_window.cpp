// Message windows of one process.
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <csignal>
#include <cstddef>
#include <memory>
#include <thread>
#include <vector>

#include "platform/message_window.h"
#include "window_fixture.h"

namespace wavo::platform {

using std::chrono::milliseconds;
using std::chrono::nanoseconds;
using std::chrono::seconds;
using ::testing::ElementsAre;

namespace {

class MessageWindowTest : public testing::WindowTest {
 protected:
    /// A window that notes the numbers of its messages.
    std::unique_ptr<MessageWindow> MakeNoting(std::vector<std::uint32_t>* numbers) {
        return Make([numbers](const Message& message) {
            numbers->push_back(message.number);
            return std::int64_t{0};
        });
    }

    static int LowestFreeDescriptor() {
        const int descriptor = ::dup(0);
        ::close(descriptor);
        return descriptor;
    }
};

TEST_F(MessageWindowTest, HandlesArePositiveBelowTwoToThe31AndUnique) {
    std::vector<std::unique_ptr<MessageWindow>> windows;
    for (int i = 0; i < 50; ++i) {
        windows.push_back(Make(nullptr));
        EXPECT_GT(windows.back()->handle(), 0U);
        EXPECT_LT(windows.back()->handle(), 1U << 31);
        for (int k = 0; k < i; ++k) {
            EXPECT_NE(windows[static_cast<std::size_t>(k)]->handle(), windows.back()->handle());
        }
    }
}

TEST_F(MessageWindowTest, AllWindowsOfTheUserAreFound) {
    EXPECT_THAT(MessageWindows(), ::testing::IsEmpty());
    const auto first = Make(nullptr);
    auto second = Make(nullptr);
    EXPECT_THAT(MessageWindows(),
                ::testing::UnorderedElementsAre(first->handle(), second->handle()));
    second.reset();
    EXPECT_THAT(MessageWindows(), ElementsAre(first->handle()));
}

TEST_F(MessageWindowTest, ExistsFromCreationToDestruction) {
    auto window = Make(nullptr);
    const WindowHandle handle = window->handle();
    EXPECT_TRUE(WindowExists(handle));
    EXPECT_THAT(NamesInFolder(), ElementsAre(std::to_string(handle)));
    window.reset();
    EXPECT_FALSE(WindowExists(handle));
    EXPECT_TRUE(NamesInFolder().empty());
    EXPECT_FALSE(WindowExists(0));
    EXPECT_FALSE(WindowExists(std::uint64_t{1} << 31));
    EXPECT_FALSE(WindowExists(~std::uint64_t{0}));
}

TEST_F(MessageWindowTest, PostedMessagesComeThroughDispatchWithAllTheirBits) {
    std::vector<Message> seen;
    const auto sender = Make(nullptr);
    const auto receiver = Make([&](const Message& message) {
        seen.push_back(message);
        return std::int64_t{0};
    });
    const Message message{0xFFFFFFFF, 0xFEDCBA9876543210, -0x7EDCBA9876543210};
    EXPECT_FALSE(IsReadable(receiver->PollDescriptor()));
    EXPECT_TRUE(sender->Post(receiver->handle(), message));
    EXPECT_TRUE(seen.empty());
    EXPECT_TRUE(IsReadable(receiver->PollDescriptor()));
    receiver->Dispatch();
    EXPECT_THAT(seen, ElementsAre(message));
    EXPECT_FALSE(IsReadable(receiver->PollDescriptor()));
}

TEST_F(MessageWindowTest, AWindowCanPostToItself) {
    std::vector<std::uint32_t> seen;
    const auto window = MakeNoting(&seen);
    EXPECT_TRUE(window->Post(window->handle(), {1}));
    EXPECT_TRUE(window->Post(window->handle(), {2}));
    EXPECT_TRUE(seen.empty());
    window->Dispatch();
    EXPECT_THAT(seen, ElementsAre(1, 2));
}

TEST_F(MessageWindowTest, PostsOfOneSenderArriveInOrderAlsoBeyondTheSocketsRoom) {
    constexpr std::uint32_t kCount = 5000;
    std::vector<std::uint32_t> seen;
    const auto receiver = MakeNoting(&seen);
    const auto sender = Make(nullptr);
    for (std::uint32_t i = 0; i < kCount; ++i) {
        ASSERT_TRUE(sender->Post(receiver->handle(), {i}));
    }
    while (seen.size() < kCount) {
        ASSERT_TRUE(IsReadable(receiver->PollDescriptor()) || IsReadable(sender->PollDescriptor()));
        sender->Dispatch();
        receiver->Dispatch();
    }
    for (std::uint32_t i = 0; i < kCount; ++i) {
        ASSERT_EQ(seen[i], i);
    }
    EXPECT_FALSE(IsReadable(receiver->PollDescriptor()));
    EXPECT_FALSE(IsReadable(sender->PollDescriptor()));
}

TEST_F(MessageWindowTest, ASentMessageToAWindowOfTheThreadIsHandledAtOnce) {
    const auto receiver = Make([](const Message& message) { return message.l_param * 2; });
    const auto sender = Make(nullptr);
    const SendResult result = sender->Send(receiver->handle(), {1, 0, -21});
    EXPECT_EQ(result.status, SendStatus::kDone);
    EXPECT_EQ(result.result, -42);
    const SendResult own = receiver->Send(receiver->handle(), {1, 0, 4});
    EXPECT_EQ(own.status, SendStatus::kDone);
    EXPECT_EQ(own.result, 8);
}

TEST_F(MessageWindowTest, ASentMessageOvertakesAPostedOne) {
    std::vector<std::uint32_t> seen;
    const auto receiver = MakeNoting(&seen);
    const auto sender = Make(nullptr);
    sender->Post(receiver->handle(), {1});
    sender->Send(receiver->handle(), {2});
    receiver->Dispatch();
    EXPECT_THAT(seen, ElementsAre(2, 1));
}

TEST_F(MessageWindowTest, SendBetweenThreadsWaitsForTheOtherOne) {
    std::atomic<WindowHandle> handle{0};
    std::thread other([&] {
        bool done = false;
        const auto receiver = Make([&](const Message& message) {
            done = message.number == 9;
            return message.l_param + 1;
        });
        handle = receiver->handle();
        while (!done) {
            receiver->WaitAndDispatch(seconds(1));
        }
    });
    while (handle == 0) {
        std::this_thread::yield();
    }
    const auto sender = Make(nullptr);
    for (std::int64_t i = 0; i < 100; ++i) {
        const SendResult result = sender->Send(handle, {1, 0, i});
        ASSERT_EQ(result.status, SendStatus::kDone);
        ASSERT_EQ(result.result, i + 1);
    }
    sender->Post(handle, {9});
    other.join();
}

TEST_F(MessageWindowTest, NothingGoesToAWindowThatIsNotThere) {
    const auto window = Make(nullptr);
    for (const WindowHandle handle :
         {WindowHandle{0}, WindowHandle{1}, WindowHandle{1} << 31, ~WindowHandle{0}}) {
        EXPECT_FALSE(window->Post(handle, {1}));
        EXPECT_EQ(window->Send(handle, {1}).status, SendStatus::kGone);
    }
}

TEST_F(MessageWindowTest, ThePeersEndIsToldOnceAndFromDispatch) {
    std::vector<WindowHandle> gone;
    const auto window = Make(nullptr);
    window->SetPeerGoneHandler([&](WindowHandle handle) { gone.push_back(handle); });
    auto peer = Make(nullptr);
    auto other = Make(nullptr);
    const WindowHandle handle = peer->handle();
    window->Post(handle, {1});
    window->Post(other->handle(), {1});
    peer.reset();
    EXPECT_FALSE(window->Post(handle, {2}));
    EXPECT_FALSE(window->Post(handle, {3}));
    EXPECT_EQ(window->Send(handle, {4}).status, SendStatus::kGone);
    EXPECT_TRUE(gone.empty());
    EXPECT_TRUE(IsReadable(window->PollDescriptor()));
    window->Dispatch();
    EXPECT_THAT(gone, ElementsAre(handle));
    window->Dispatch();
    EXPECT_THAT(gone, ElementsAre(handle));
    EXPECT_FALSE(IsReadable(window->PollDescriptor()));
}

TEST_F(MessageWindowTest, ThePeersEndIsNoticedWithoutWritingToIt) {
    std::vector<WindowHandle> gone;
    auto peer = Make(nullptr);
    const auto window = Make(nullptr);
    window->SetPeerGoneHandler([&](WindowHandle handle) { gone.push_back(handle); });
    const WindowHandle handle = peer->handle();
    window->Send(handle, {1});
    EXPECT_FALSE(IsReadable(window->PollDescriptor()));
    peer.reset();
    EXPECT_TRUE(IsReadable(window->PollDescriptor()));
    EXPECT_TRUE(window->WaitAndDispatch(seconds(10)));
    EXPECT_THAT(gone, ElementsAre(handle));
}

TEST_F(MessageWindowTest, APeersLastWordsComeBeforeItsEnd) {
    constexpr std::uint32_t kCount = 200;
    std::vector<std::uint32_t> seen;
    std::size_t seen_at_end = 0;
    const auto window = MakeNoting(&seen);
    window->SetPeerGoneHandler([&](WindowHandle) { seen_at_end = seen.size(); });
    auto peer = Make(nullptr);
    window->Post(peer->handle(), {1});
    for (std::uint32_t i = 0; i < kCount; ++i) {
        ASSERT_TRUE(peer->Post(window->handle(), {i}));
    }
    peer.reset();
    while (window->WaitAndDispatch(nanoseconds(0))) {
    }
    EXPECT_EQ(seen.size(), kCount);
    EXPECT_EQ(seen_at_end, kCount);
}

TEST_F(MessageWindowTest, DispatchIsBoundedAndLeavesTheDescriptorReadable) {
    std::vector<std::uint32_t> seen;
    const auto window = MakeNoting(&seen);
    for (std::uint32_t i = 0; i < 200; ++i) {
        window->Post(window->handle(), {i});
    }
    window->Dispatch();
    EXPECT_GT(seen.size(), 0U);
    EXPECT_LT(seen.size(), 200U);
    EXPECT_TRUE(IsReadable(window->PollDescriptor()));
    while (IsReadable(window->PollDescriptor())) {
        window->Dispatch();
    }
    EXPECT_EQ(seen.size(), 200U);
}

TEST_F(MessageWindowTest, AFloodOfOneSenderLeavesAnotherItsTurn) {
    constexpr std::uint32_t kFlooded = 1;
    constexpr std::uint32_t kHonest = 2;
    constexpr std::size_t kQueued = 20'000;  // more than a window takes in of one sender
    std::vector<std::uint32_t> seen;
    const auto window = MakeNoting(&seen);
    const auto flooder = Make(nullptr);
    const auto honest = Make(nullptr);
    const auto flood = [&] {
        flooder->Dispatch();
        while (flooder->Post(window->handle(), {kFlooded})) {
        }
    };
    flood();
    for (std::size_t i = 0; i < 20; ++i) {
        ASSERT_TRUE(honest->Post(window->handle(), {kHonest}));
        const std::size_t before = seen.size();
        while (std::find(seen.begin() + static_cast<std::ptrdiff_t>(before), seen.end(), kHonest) ==
               seen.end()) {
            ASSERT_LT(seen.size() - before, kQueued) << i;
            window->Dispatch();
            flood();
        }
    }
}

TEST_F(MessageWindowTest, DispatchReturnsBehindAHandlerThatTookLong) {
    int handled = 0;
    const auto window = Make([&handled](const Message&) {
        ++handled;
        std::this_thread::sleep_for(milliseconds(150));
        return std::int64_t{0};
    });
    for (int i = 0; i < 3; ++i) {
        ASSERT_TRUE(window->Post(window->handle(), {1}));
    }
    window->Dispatch();
    EXPECT_EQ(handled, 1);
    EXPECT_TRUE(IsReadable(window->PollDescriptor()));
    window->Dispatch();
    EXPECT_EQ(handled, 2);
}

TEST_F(MessageWindowTest, AHandlerMayDispatchAndTheOrderOfBeginningIsKept) {
    std::vector<std::uint32_t> begun;
    std::unique_ptr<MessageWindow> window;
    bool readable_inside = false;
    window = Make([&](const Message& message) {
        begun.push_back(message.number);
        if (message.number == 1) {
            readable_inside = IsReadable(window->PollDescriptor());
            window->Dispatch();
            begun.push_back(100);
        }
        return std::int64_t{0};
    });
    for (std::uint32_t i = 1; i <= 4; ++i) {
        window->Post(window->handle(), {i});
    }
    window->Dispatch();
    EXPECT_TRUE(readable_inside) << "a nested event loop must see that messages wait";
    EXPECT_THAT(begun, ElementsAre(1, 2, 3, 4, 100));
}

TEST_F(MessageWindowTest, AHandlerMayPostToItsOwnWindowForEver) {
    int handled = 0;
    std::unique_ptr<MessageWindow> window;
    window = Make([&](const Message& message) {
        ++handled;
        window->Post(window->handle(), message);
        return std::int64_t{0};
    });
    window->Post(window->handle(), {1});
    window->Dispatch();
    EXPECT_GT(handled, 0);
    EXPECT_LE(handled, 64);
}

TEST_F(MessageWindowTest, AHandlerMayDestroyItsWindow) {
    int handled = 0;
    std::unique_ptr<MessageWindow> window;
    const auto destroy = [&](const Message&) {
        ++handled;
        window.reset();
        return std::int64_t{7};
    };
    const auto sender = Make(nullptr);

    window = Make(destroy);
    sender->Post(window->handle(), {1});
    sender->Post(window->handle(), {2});
    window->Dispatch();
    EXPECT_EQ(window, nullptr);
    EXPECT_EQ(handled, 1);

    window = Make(destroy);
    const SendResult result = sender->Send(window->handle(), {1});
    EXPECT_EQ(result.status, SendStatus::kDone);
    EXPECT_EQ(result.result, 7);
    EXPECT_EQ(window, nullptr);

    window = Make(destroy);
    window->Post(window->handle(), {1});
    EXPECT_TRUE(window->WaitAndDispatch(seconds(10)));
    EXPECT_EQ(window, nullptr);
}

TEST_F(MessageWindowTest, ThePeerGoneHandlerMayDestroyTheWindowOrReplaceItself) {
    std::unique_ptr<MessageWindow> window = Make(nullptr);
    window->SetPeerGoneHandler(
        [&](WindowHandle) { window->SetPeerGoneHandler([&](WindowHandle) { window.reset(); }); });
    for (int i = 0; i < 2; ++i) {
        auto peer = Make(nullptr);
        window->Post(peer->handle(), {1});
        peer.reset();
        ASSERT_NE(window, nullptr);
        window->Dispatch();
    }
    EXPECT_EQ(window, nullptr);
}

TEST_F(MessageWindowTest, AHandlerMayDestroyThePeerThatSendsToIt) {
    std::unique_ptr<MessageWindow> peer = Make(nullptr);
    int handled = 0;
    const auto window = Make([&](const Message&) {
        ++handled;
        peer.reset();
        return std::int64_t{0};
    });
    for (std::uint32_t i = 0; i < 3; ++i) {
        peer->Post(window->handle(), {i});
    }
    window->Dispatch();
    while (window->WaitAndDispatch(nanoseconds(0))) {
    }
    EXPECT_EQ(handled, 3);
}

TEST_F(MessageWindowTest, WaitingEndsWithoutAMessageWhenTheTimeIsOver) {
    const auto window = Make(nullptr);
    EXPECT_FALSE(window->WaitAndDispatch(nanoseconds(0)));
    EXPECT_FALSE(window->WaitAndDispatch(nanoseconds(-5)));
    const auto start = std::chrono::steady_clock::now();
    EXPECT_FALSE(window->WaitAndDispatch(std::chrono::microseconds(2300)));
    EXPECT_GE(std::chrono::steady_clock::now() - start, std::chrono::microseconds(2300));
}

TEST_F(MessageWindowTest, WaitingForEverEndsWithAMessage) {
    std::vector<std::uint32_t> seen;
    const auto window = MakeNoting(&seen);
    window->Post(window->handle(), {5});
    EXPECT_TRUE(window->WaitAndDispatch(nanoseconds::max()));
    EXPECT_THAT(seen, ElementsAre(5));
}

TEST_F(MessageWindowTest, AWindowThatIsDestroyedInAForkedProcessGoesOnInItsOwn) {
    std::vector<std::uint32_t> seen;
    auto window = MakeNoting(&seen);
    const auto sender = Make(nullptr);
    sender->Post(window->handle(), {1});
    window->Dispatch();
    const pid_t child = ::fork();
    if (child == 0) {
        window.reset();
        ::_exit(0);
    }
    int status = 0;
    ::waitpid(child, &status, 0);
    EXPECT_TRUE(sender->Post(window->handle(), {2}));
    window->Dispatch();
    EXPECT_THAT(seen, ElementsAre(1, 2));
    EXPECT_TRUE(WindowExists(window->handle()));
    EXPECT_EQ(NamesInFolder().size(), 2U);
}

TEST_F(MessageWindowTest, NoDescriptorStaysOpen) {
    const int before = LowestFreeDescriptor();
    for (int i = 0; i < 20; ++i) {
        const auto first = Make(nullptr);
        auto second = Make(nullptr);
        first->Post(second->handle(), {1});
        second->Post(first->handle(), {1});
        WindowExists(first->handle());
        first->Dispatch();
        second.reset();
        first->Dispatch();
        first->Post(12345, {1});
    }
    EXPECT_EQ(LowestFreeDescriptor(), before);
}

}  // namespace

}  // namespace wavo::platform
