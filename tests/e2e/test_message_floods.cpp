// A viewer beside processes that flood it, say nothing, or take what it needs.
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/resource.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

#include <QDeadlineTimer>
#include <algorithm>
#include <cerrno>
#include <cstring>
#include <filesystem>
#include <functional>
#include <iterator>
#include <memory>
#include <utility>
#include <vector>

#include "expect_errors.h"
#include "master_link_of.h"
#include "platform/message_window.h"
#include "platform/posix/descriptor.h"
#include "platform/posix/message_packet.h"
#include "slowness.h"
#include "soak/memory_watch.h"
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
                                 std::to_string(testing::MasterLinkOf(View()).Window());
        std::memcpy(address.sun_path, path.c_str(), path.size());
        if (::connect(socket.number(), reinterpret_cast<const sockaddr*>(&address),
                      sizeof address) != 0) {
            socket.Close();
        }
        return socket;
    }

    /// Links to a master that was started after the viewer: the only link, so that the counts of
    /// both can be compared.
    void Connect() { m_frame->Action(CommandId::kConnect)->trigger(); }

    static std::size_t OpenDescriptors() {
        const std::filesystem::directory_iterator entries("/proc/self/fd");
        return static_cast<std::size_t>(std::distance(begin(entries), end(entries)));
    }

    /// Carries out `step` with 0, 1, ... at least below `count`, each one again and again while it
    /// says that there is no room, and without a pause. Lines go on being taken and answered
    /// meanwhile, in the memory that was there: the flood lasts until they have been in each of
    /// its stretches.
    void ExpectUndisturbed(std::uint64_t count, const std::function<bool(std::uint64_t)>& step) {
        const std::string message = m_frame->PaneText(StatusPane::kMessage).toStdString();
        const LinkCounters before = Cycle().Counters();
        const std::uint64_t memory = ResidentMemory();
        std::uint64_t most_memory = memory;
        std::uint64_t turns = 0;
        std::uint64_t i = 0;
        for (std::uint64_t stretch = 1; stretch <= kStretches; ++stretch) {
            const std::uint64_t answered = Cycle().Counters().batches_answered;
            const QDeadlineTimer give_up(60000);
            while (i < count * stretch / kStretches ||
                   Cycle().Counters().batches_answered == answered) {
                while (!step(i)) {
                    ASSERT_FALSE(give_up.hasExpired()) << "no batch is answered, at " << i;
                    QCoreApplication::processEvents();
                    if (++turns % 100 == 0) {
                        most_memory = std::max(most_memory, ResidentMemory());
                    }
                }
                ASSERT_FALSE(HasFailure()) << "at " << i;
                ++i;
            }
        }
        const LinkCounters after = Cycle().Counters();
        EXPECT_GE(after.lines_read - before.lines_read, kStretches);
        EXPECT_GE(after.batches_answered - before.batches_answered, kStretches);
        ASSERT_GT(memory, 0U);
        EXPECT_LT(std::max(most_memory, ResidentMemory()) - memory, kMemory);
        EXPECT_EQ(m_frame->PaneText(StatusPane::kMessage).toStdString(), message);
    }

    /// The same with messages that somebody posts.
    void ExpectUndisturbedBy(std::uint64_t count,
                             const std::function<platform::Message(std::uint64_t)>& message) {
        const auto flooder = OtherWindow();
        ExpectUndisturbed(count, [&](std::uint64_t i) {
            flooder->Dispatch();
            return flooder->Post(testing::MasterLinkOf(View()).Window(), message(i));
        });
        ASSERT_TRUE(WaitForLines(Cycle().TotalLines() + 500));
    }

    /// What the viewer counted is what the master says at its end.
    void ExpectNothingLost(DemoMaster& master) {
        ASSERT_TRUE(WaitForLines(Cycle().TotalLines() + 300));
        const auto totals = master.End();
        ASSERT_TRUE(totals);
        const LinkCounters counters = Cycle().Counters();
        EXPECT_EQ(totals->overruns, 0U);
        EXPECT_EQ(totals->lines_sent, counters.lines_read);
        EXPECT_EQ(totals->batches_answered, counters.batches_answered);
        EXPECT_EQ(counters.batches_announced, counters.batches_answered);
        EXPECT_EQ(counters.lines_read, counters.lines_shown);
        EXPECT_THAT(TakeBoxes(), IsEmpty());
    }

    static constexpr std::uint64_t kStretches = 20;       ///< of a flood
    static constexpr std::uint64_t kFirstNumber = 0x52C;  ///< of those that a master uses
    /// What a flood may cost: the values that are shown meanwhile, and bounded queues.
    static constexpr std::uint64_t kMemory = 32'000'000ULL * kSlowness;  // bytes
};

TEST_F(Flooded, AMillionUnknownMessagesDisturbNothing) {
    Open({"X"});
    DemoMaster master({"--motion", "circle"});
    Connect();
    ASSERT_TRUE(WaitForLines(100));
    ExpectUndisturbedBy(1'000'000, [](std::uint64_t i) {
        // Below and above the four numbers that a master uses.
        const std::uint64_t number = i % 2 == 0 ? 0x530 + i % 0x1000 : i % kFirstNumber;
        return platform::Message{static_cast<std::uint32_t>(number), i, 0};
    });
    ExpectNothingLost(master);
}

TEST_F(Flooded, AMillionNoticesOfNewCapabilitiesAskTheMasterForNothing) {
    Open({"X"});
    DemoMaster master({"--motion", "circle", "--limits", "X=-12:34:5:6"});
    Connect();
    ASSERT_TRUE(WaitForLines(100));
    AxisLimitsSource& limits = View().Work().Source().Limits();
    ASSERT_TRUE(limits.FindAxis("X"));
    ExpectUndisturbedBy(1'000'000, [](std::uint64_t i) {
        return platform::Message{0x52F, i, static_cast<std::int64_t>(~i)};
    });
    const auto found = limits.FindAxis("X");
    ASSERT_TRUE(found);
    EXPECT_EQ(found->lower_limit, -12.0);
    EXPECT_EQ(found->upper_limit, 34.0);
    ExpectNothingLost(master);
}

TEST_F(Flooded, AMillionNoticesOfUnknownKindsAreNoBatches) {
    Open({"X"});
    DemoMaster master({"--motion", "circle"});
    Connect();
    ASSERT_TRUE(WaitForLines(100));
    ExpectUndisturbedBy(1'000'000, [](std::uint64_t i) {
        constexpr std::uint64_t kUnknown[] = {0, 3, ~std::uint64_t{0}, std::uint64_t{1} << 32U | 1};
        return platform::Message{0x52C, i % 5 < 4 ? kUnknown[i % 5] : 3 + i, 0};
    });
    ExpectNothingLost(master);
}

TEST_F(Flooded, PacketsOfWrongSizesEndTheirConnectionsAndDisturbNothing) {
    Open({"X"});
    DemoMaster master({"--motion", "circle"});
    Connect();
    ASSERT_TRUE(WaitForLines(100));
    const std::size_t descriptors = OpenDescriptors();
    std::vector<Descriptor> open;
    ExpectUndisturbed(100'000, [&](std::uint64_t i) {
        Descriptor socket = SilentConnection();
        if (!socket) {
            return false;  // the viewer has not come to those before
        }
        std::byte packet[100] = {};
        const platform::MessagePacket hello{.w_param = 4711};
        std::memcpy(packet, &hello, sizeof hello);
        if (i % 2 == 0) {  // as the second packet of its connection
            ::send(socket.number(), packet, sizeof hello, MSG_NOSIGNAL);
        }
        const std::size_t size = i % sizeof packet;
        ::send(socket.number(), packet, size == sizeof hello ? size + 1 : size, MSG_NOSIGNAL);
        open.push_back(std::move(socket));
        if (open.size() < 50) {
            return true;
        }
        // Our ends stay open: it is the viewer that closes.
        const QDeadlineTimer give_up(60000);
        for (const Descriptor& end : open) {
            char byte = 0;
            while (::recv(end.number(), &byte, 1, MSG_DONTWAIT) < 0 && errno == EAGAIN) {
                QCoreApplication::processEvents();
                if (give_up.hasExpired()) {
                    ADD_FAILURE() << "still open at " << i;
                    break;
                }
            }
        }
        open.clear();
        return true;
    });
    open.clear();
    EXPECT_TRUE(WaitFor([&] { return OpenDescriptors() <= descriptors; })) << OpenDescriptors();
    ExpectNothingLost(master);
}

TEST_F(Flooded, BatchesThatNobodyAnnouncedAreEmptyAndCounted) {
    DemoMaster master({"--motion", "circle", "--lines", "1000", "--wait-viewer", "--stay"});
    Open({"X"});
    ASSERT_TRUE(WaitForLines(1000));
    const auto flooder = OtherWindow();
    for (int i = 0; i < 2000; ++i) {
        ASSERT_TRUE(flooder->Post(testing::MasterLinkOf(View()).Window(), {0x52C, 1, 0}));
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
    m_frame = std::make_unique<CMainFrame>(m_prompts);
    m_frame->show();
    const std::string file = WriteGraphFile({});
    const Descriptor lowest(::dup(0));
    rlimit scarce = before;
    scarce.rlim_cur = static_cast<rlim_t>(lowest.number());
    ASSERT_EQ(::setrlimit(RLIMIT_NOFILE, &scarce), 0);
    {
        const ExpectAnyErrorLog expected;
        View().OnInitialUpdate(file);
        EXPECT_EQ(testing::MasterLinkOf(View()).Window(), 0U);
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
