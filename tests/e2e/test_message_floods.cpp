// A viewer beside processes that flood it, say nothing, or take what it needs.
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/resource.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

#include <cstring>
#include <memory>
#include <vector>

#include "expect_errors.h"
#include "platform/message_window.h"
#include "platform/posix/descriptor.h"
#include "viewer_fixture.h"

namespace wavo::testing {
namespace {

using platform::Descriptor;
using ::testing::IsEmpty;

class Flooded : public Viewer {
 protected:
    static std::unique_ptr<platform::MessageWindow> OtherWindow() {
        std::string error;
        auto window = platform::MessageWindow::Create(nullptr, &error);
        EXPECT_NE(window, nullptr) << error;
        return window;
    }
    Descriptor SilentConnection() {
        Descriptor socket(::socket(AF_UNIX, SOCK_SEQPACKET | SOCK_CLOEXEC | SOCK_NONBLOCK, 0));
        sockaddr_un address{};
        address.sun_family = AF_UNIX;
        const std::string path = qEnvironmentVariable("XDG_RUNTIME_DIR").toStdString() + "/wavo/" +
                                 std::to_string(View().Window());
        std::memcpy(address.sun_path, path.c_str(), path.size());
        if (::connect(socket.number(), reinterpret_cast<const sockaddr*>(&address),
                      sizeof address) != 0) {
            socket.Close();
        }
        return socket;
    }
};

TEST_F(Flooded, AMillionUnknownMessagesDisturbNothing) {
    DemoMaster master({"--motion", "circle"});
    Open({"X"});
    ASSERT_TRUE(WaitForLines(100));
    const auto flooder = OtherWindow();
    constexpr std::uint64_t kFlood = 1'000'000;
    std::uint64_t taken = 0;
    for (std::uint64_t i = 0; i < kFlood; ++i) {
        const auto number = static_cast<std::uint32_t>(0x530 + i % 0x1000);
        while (!flooder->Post(View().Window(), {number, i, 0})) {
            QCoreApplication::processEvents();
            flooder->Dispatch();
        }
        ++taken;
    }
    EXPECT_EQ(taken, kFlood);
    ASSERT_TRUE(WaitForLines(Cycle().TotalLines() + 500));
    const auto totals = master.End();
    ASSERT_TRUE(totals);
    EXPECT_EQ(totals->overruns, 0U);
    EXPECT_EQ(totals->batches_answered, Cycle().BatchesAnswered());
    EXPECT_THAT(TakeBoxes(), IsEmpty());
}

TEST_F(Flooded, BatchesThatNobodyAnnouncedAreEmptyAndCounted) {
    DemoMaster master({"--motion", "circle", "--lines", "1000", "--wait-viewer", "--stay"});
    Open({"X"});
    ASSERT_TRUE(WaitForLines(1000));
    const auto flooder = OtherWindow();
    for (int i = 0; i < 2000; ++i) {
        ASSERT_TRUE(flooder->Post(View().Window(), {0x52C, 1, 0}));
    }
    const std::uint64_t before = Cycle().Counters().batches_announced;
    ASSERT_TRUE(WaitFor([&] {
        flooder->Dispatch();  // what did not fit into the socket
        return Cycle().Counters().batches_announced >= before + 2000;
    }));
    const LinkCounters counters = Cycle().Counters();
    EXPECT_EQ(counters.lines_read, 1000U);
    EXPECT_EQ(counters.batches_announced, counters.batches_answered);
    EXPECT_EQ(Held("X").size(), 1000U);
}

TEST_F(Flooded, SilentConnectionsUntilDescriptorsRunOutDisturbNothing) {
    DemoMaster master({"--motion", "circle"});
    Open({"X"});
    ASSERT_TRUE(WaitForLines(100));
    rlimit before{};
    ASSERT_EQ(::getrlimit(RLIMIT_NOFILE, &before), 0);
    rlimit scarce = before;
    scarce.rlim_cur = 200;
    ASSERT_EQ(::setrlimit(RLIMIT_NOFILE, &scarce), 0);
    {
        std::vector<Descriptor> silent;
        for (int i = 0; i < 400; ++i) {
            silent.push_back(SilentConnection());
            QCoreApplication::processEvents();
        }
        // The link stands, and the values go on.
        ASSERT_TRUE(WaitForLines(Cycle().TotalLines() + 300));
    }
    ASSERT_EQ(::setrlimit(RLIMIT_NOFILE, &before), 0);
    ASSERT_TRUE(WaitForLines(Cycle().TotalLines() + 300));
    EXPECT_THAT(TakeBoxes(), IsEmpty());
}

TEST_F(Flooded, AViewerThatFindsNoDescriptorsSaysSoAndConnectsWhenThereAreSome) {
    Open({"X"});
    Close();
    rlimit before{};
    ASSERT_EQ(::getrlimit(RLIMIT_NOFILE, &before), 0);
    m_frame = std::make_unique<CMainFrame>();
    m_frame->show();
    const std::string file = WriteGraphFile({});
    const Descriptor lowest(::dup(0));
    rlimit scarce = before;
    scarce.rlim_cur = static_cast<rlim_t>(lowest.number());
    ASSERT_EQ(::setrlimit(RLIMIT_NOFILE, &scarce), 0);
    {
        const ExpectAnyErrorLog expected;
        View().OnInitialUpdate(file);
        EXPECT_EQ(View().Window(), 0U);
    }
    ASSERT_EQ(::setrlimit(RLIMIT_NOFILE, &before), 0);
    TakeBoxes();
    DemoMaster master({"--motion", "circle"});
    m_frame->Action(CommandId::kConnect)->trigger();
    EXPECT_THAT(TakeBoxes(), IsEmpty());
    ASSERT_TRUE(WaitForLines(100));
}

}  // namespace
}  // namespace wavo::testing
