// A window that one process floods while another one wants answers.
#include <gtest/gtest.h>

#include <chrono>
#include <cstdint>
#include <string>

#include "child_process.h"
#include "platform/message_window.h"
#include "window_fixture.h"

namespace wavo::platform {

using std::chrono::milliseconds;
using std::chrono::seconds;
using testing::ChildProcess;
using testing::NumberPipe;

namespace {

using MessageFlood = testing::WindowTest;

TEST_F(MessageFlood, OfAMillionArrivesWholeAndLeavesRoomForOthers) {
    constexpr std::uint64_t kFlood = 1'000'000;
    constexpr std::uint32_t kFlooded = 1;
    constexpr std::uint32_t kHonest = 2;
    std::uint64_t flooded = 0;
    std::uint64_t honest = 0;
    const auto window = Make([&](const Message& message) {
        ++(message.number == kHonest ? honest : flooded);
        return std::int64_t{message.number};
    });
    const WindowHandle target = window->handle();
    ChildProcess flooder([target](NumberPipe&) -> int {
        std::string error;
        const auto own = MessageWindow::Create(nullptr, &error);
        for (std::uint64_t i = 0; i < kFlood; ++i) {
            while (!own->Post(target, {kFlooded, i})) {
                own->WaitAndDispatch(milliseconds(10));
            }
        }
        for (;;) {
            own->WaitAndDispatch(seconds(1));
        }
    });
    // Meanwhile another process sends, and is answered each time.
    ChildProcess sender([target](NumberPipe& pipe) {
        std::string error;
        const auto own = MessageWindow::Create(nullptr, &error);
        std::uint64_t answered = 0;
        for (int i = 0; i < 100; ++i) {
            answered += own->Send(target, {kHonest}).status == SendStatus::kDone ? 1 : 0;
        }
        pipe.Put(answered);
        return 0;
    });
    while (flooded < kFlood || honest < 100) {
        ASSERT_TRUE(window->WaitAndDispatch(seconds(60)));
    }
    EXPECT_EQ(sender.pipe().Get(), 100U);
    EXPECT_EQ(flooded, kFlood);
    EXPECT_EQ(sender.Wait(), 0);
}

}  // namespace

}  // namespace wavo::platform
