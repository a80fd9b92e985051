// A value FIFO that somebody damages under a running viewer, and a master that hangs or dies at any
// moment: the viewer says so, keeps its graphs and connects again.
//
// WAVO_DYING_MASTER_CYCLES sets how often the master dies.
#include <fcntl.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>

#include <QThread>
#include <cstdlib>
#include <filesystem>
#include <random>

#include "expect_errors.h"
#include "link/wire_format.h"
#include "platform/shared_memory.h"
#include "system/other_process.h"
#include "viewer_fixture.h"

namespace wavo::testing {
namespace {

using ::testing::ElementsAre;
using ::testing::Gt;
using ::testing::IsEmpty;
using ::testing::SizeIs;

constexpr char kDamaged[] =
    "The value fifo is damaged, see the error log: Machine Data > Connect to go on";
constexpr char kGone[] =
    "The master process (Dorvane) has gone: Machine Data > Connect when it is back";
constexpr char kHung[] = "The master process (Dorvane) does not respond";
constexpr char kConnected[] = "Connected to the master process (Dorvane)";

class Damage : public Viewer {
 protected:
    std::string Message() { return m_frame->PaneText(StatusPane::kMessage).toStdString(); }
    bool WaitForMessage(const std::string& text) {
        return WaitFor([&] { return Message() == text; });
    }
    void Connect() { m_frame->Action(CommandId::kConnect)->trigger(); }
    std::string FifoName() { return kValueSegmentPrefix + std::to_string(View().Window()); }

    /// Changes the header of the viewer's FIFO, as any process could.
    void ChangeHeader(void (*change)(LineFifoHeader&)) {
        const platform::MappingHandle handle = platform::OpenSharedMemory(FifoName());
        void* const address = platform::MapSharedMemory(handle);
        ASSERT_NE(address, nullptr);
        change(*static_cast<LineFifoHeader*>(address));
        platform::UnmapSharedMemory(address, platform::SharedMemorySize(address, handle));
        platform::CloseSharedMemory(handle);
    }
    void Resize(off_t size) {
        const int file = ::shm_open(("/" + FifoName()).c_str(), O_RDWR, 0);
        ASSERT_GE(file, 0);
        EXPECT_EQ(::ftruncate(file, size), 0);
        ::close(file);
    }

    /// The link has ended, the graphs are there, and Connect brings lines again.
    void ExpectToldAndCured() {
        ASSERT_TRUE(WaitForMessage(kDamaged));
        EXPECT_THAT(TakeBoxes(),
                    ElementsAre("ERROR: Prg.error, input buffer for axis values to small"));
        EXPECT_FALSE(Cycle().IsReaderOpen());
        EXPECT_THAT(Held("X"), SizeIs(Gt(100U)));
        const std::uint64_t before = Cycle().TotalLines();
        Connect();
        ASSERT_TRUE(WaitForLines(before + 300));
        EXPECT_EQ(Message(), kConnected);
        EXPECT_THAT(TakeBoxes(), IsEmpty());
    }
};

TEST_F(Damage, AFifoThatIsCutToAnySizeEndsTheLinkAndConnectGoesOn) {
    DemoMaster master({"--motion", "circle"});
    Open({"X"});
    for (const off_t size : {0, 1, 64, 4096, 100000}) {
        SCOPED_TRACE(size);
        ASSERT_TRUE(WaitForLines(Cycle().TotalLines() + 200));
        const ExpectAnyErrorLog expected;
        Resize(size);
        ExpectToldAndCured();
        EXPECT_TRUE(expected.Saw("AxValueReader::Read(): value fifo " + FifoName() +
                                 " has changed its size"));
    }
    EXPECT_TRUE(master.IsRunning());
    EXPECT_EQ(Cycle().Counters().links_broken, 5U);
}

TEST_F(Damage, AFifoThatIsRemovedOrReplacedEndsTheLinkAndConnectGoesOn) {
    DemoMaster master({"--motion", "circle"});
    Open({"X"});
    for (const bool replaced : {false, true}) {
        ASSERT_TRUE(WaitForLines(Cycle().TotalLines() + 200));
        const ExpectAnyErrorLog expected;
        platform::SharedSegment other;
        if (replaced) {
            other = platform::SharedSegment::Create(FifoName(), 1 << 20);
        } else {
            ASSERT_EQ(::shm_unlink(("/" + FifoName()).c_str()), 0);
        }
        ExpectToldAndCured();
        EXPECT_TRUE(expected.Saw("AxValueReader::Read(): value fifo " + FifoName() +
                                 " was removed or replaced"));
    }
}

TEST_F(Damage, AHeaderThatIsRewrittenEndsTheLinkAndConnectGoesOn) {
    DemoMaster master({"--motion", "circle"});
    Open({"X"});
    for (void (*change)(LineFifoHeader&) :
         {+[](LineFifoHeader& header) { header.line_size = 8; },
          +[](LineFifoHeader& header) { header.line_count = 7; },
          +[](LineFifoHeader& header) {
              header.read_index = (header.read_index + header.line_count - 1) % header.line_count;
          },
          +[](LineFifoHeader& header) { header.line_size = ~std::uint64_t{0}; }}) {
        ASSERT_TRUE(WaitForLines(Cycle().TotalLines() + 200));
        const ExpectAnyErrorLog expected;
        ChangeHeader(change);
        ExpectToldAndCured();
        EXPECT_TRUE(expected.Saw("AxValueReader::Read(): the header of value fifo " + FifoName() +
                                 " is damaged"));
    }
}

TEST_F(Damage, AnInfoBlockThatIsCutIsRefused) {
    DemoMaster master({"--motion", "circle"});
    const int file = ::shm_open("/MachineTools_InfoData", O_RDWR, 0);
    ASSERT_GE(file, 0);
    ASSERT_EQ(::ftruncate(file, 100), 0);
    ::close(file);
    const ExpectAnyErrorLog expected;
    Open({"X"});
    EXPECT_EQ(Message(), "The master's info block is not valid, see the error log");
}

TEST_F(Damage, AHungMasterIsToldByALookupAndAskedAgainWhenItIsBack) {
    DemoMaster master({"--motion", "circle", "--limits", "X=-12:34:5:6"});
    Open({"X"});
    ASSERT_TRUE(WaitForLines(200));
    AxisLimitsSource& limits = View().Capabilities();
    ASSERT_TRUE(limits.FindAxis("X"));
    master.Freeze();
    for (int i = 0; i < 50; ++i) {
        const auto found = limits.FindAxis("X");
        ASSERT_TRUE(found);
        EXPECT_EQ(found->upper_limit, 34.0);
    }
    EXPECT_EQ(Message(), kHung);
    EXPECT_TRUE(Cycle().IsMasterKnown());
    master.Thaw();
    ASSERT_TRUE(WaitForLines(Cycle().TotalLines() + 500));
    EXPECT_EQ(Message(), kConnected);
    ASSERT_TRUE(limits.FindAxis("X"));
    EXPECT_THAT(TakeBoxes(), IsEmpty());
}

TEST_F(Damage, AViewerClosesAtOnceWhileTheMasterHangs) {
    DemoMaster master({"--motion", "circle"});
    Open({"X"});
    ASSERT_TRUE(WaitForLines(200));
    QThread::msleep(50);
    master.Freeze();
    ASSERT_TRUE(WaitForMessage(kHung));
    Close();
    master.Thaw();
    // Whether it reads the viewer's last words or misses its window first.
    ASSERT_TRUE(WaitFor([&] {
        return master.Output().contains(QStringLiteral("disconnected")) ||
               master.Output().contains(QStringLiteral(" gone: "));
    }));
}

TEST_F(Damage, ASaveThatFailsIsToldInTheStatusBarAndTheValuesGoOn) {
    DemoMaster master({"--motion", "circle"});
    Open({"X"});
    ASSERT_TRUE(WaitForLines(200));
    const std::string file = View().Files().CurrentPath();
    ASSERT_TRUE(m_folder.remove());
    const ExpectAnyErrorLog expected;
    View().Execute(CommandId::kSave);
    EXPECT_THAT(TakeBoxes(), ElementsAre("ERROR: Failed to create ini. data file"));
    EXPECT_TRUE(expected.Saw("FileCommands::Write(): failed to save '" + file + "'"));
    EXPECT_EQ(Message(), "Cannot write " + file + ", see the error log");
    ASSERT_TRUE(WaitForLines(Cycle().TotalLines() + 300));
    EXPECT_THAT(View().Board().Graphs(), SizeIs(1));
}

// ---- a master that dies ----

int CyclesOfThisRun() {
    const char* const wanted = std::getenv("WAVO_DYING_MASTER_CYCLES");
    return wanted == nullptr ? 20 : std::atoi(wanted);
}

std::size_t OpenDescriptors() {
    std::size_t count = 0;
    for ([[maybe_unused]] const auto& entry :
         std::filesystem::directory_iterator("/proc/self/fd")) {
        ++count;
    }
    return count;
}

class DyingMaster : public Damage {
 protected:
    /// One life: connects, shows at least some lines of every second master, kills it.
    void LiveAndDie(std::mt19937& random, int number) {
        DemoMaster master({"--motion", "circle", "--speed", random() % 2 == 0 ? "cycle" : "full"});
        Connect();
        EXPECT_THAT(TakeBoxes(), IsEmpty());
        const std::uint64_t before = Cycle().TotalLines();
        if (number % 2 == 0) {
            ASSERT_TRUE(WaitForLines(before + 50 + random() % 300));
            EXPECT_THAT(Held("X"), SizeIs(Gt(0U)));
        }
        // Somewhere in the midst of whatever the two are doing.
        QThread::usleep(random() % 20000);
        QTest::qWait(static_cast<int>(random() % 3));
        master.Kill();
        ASSERT_TRUE(WaitForMessage(kGone));
        EXPECT_FALSE(Cycle().IsReaderOpen());
        EXPECT_TRUE(m_frame->Action(CommandId::kConnect)->isEnabled());
    }
};

TEST_F(DyingMaster, LeavesAViewerThatConnectsToTheNextOneAndNothingElse) {
    std::mt19937 random(20);
    Open({"X", "Y"});
    std::size_t descriptors = 0;
    const int cycles = CyclesOfThisRun();
    for (int i = 0; i < cycles && !HasFatalFailure(); ++i) {
        SCOPED_TRACE(i);
        LiveAndDie(random, i);
        if (i == 1) {
            descriptors = OpenDescriptors();
        }
        EXPECT_LE(OpenDescriptors(), std::max<std::size_t>(descriptors, i < 2 ? 1000 : 0));
    }
    {
        DemoMaster master({"--motion", "circle"});
        Connect();
        ASSERT_TRUE(WaitForLines(Cycle().TotalLines() + 300));
        EXPECT_THAT(Held("X"), SizeIs(Gt(200U)));
        EXPECT_EQ(Message(), kConnected);
        const LinkCounters counters = Cycle().Counters();
        EXPECT_EQ(counters.lines_read, counters.lines_shown);
        EXPECT_EQ(counters.lines_thrown_away, 0U);
        EXPECT_EQ(counters.overruns, 0U);
        m_frame->close();
        Close();
        ASSERT_TRUE(master.End());
    }
    EXPECT_THAT(NamesInUse(), IsEmpty());
}

}  // namespace
}  // namespace wavo::testing
