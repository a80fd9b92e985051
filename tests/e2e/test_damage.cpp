// A value FIFO that somebody damages under a running viewer, and a master that dies at any moment:
// the viewer says so, keeps its graphs and connects again.
//
// WAVO_DYING_MASTER_CYCLES sets how often the master dies.
#include <fcntl.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>

#include <QThread>
#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <random>

#include "expect_errors.h"
#include "heartbeat.h"
#include "link/wire_format.h"
#include "master_link_of.h"
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
    void Connect() { m_frame->Action(CommandId::kConnect)->trigger(); }
    std::string FifoName() {
        return kValueSegmentPrefix + std::to_string(testing::MasterLinkOf(View()).Window());
    }

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
        EXPECT_FALSE(testing::MasterLinkOf(View()).IsReaderOpen());
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
    EXPECT_TRUE(
        expected.Saw("ReadMasterInfo(): MachineTools_InfoData refused: the segment is too small"));
}

TEST_F(Damage, ConnectWhileTheMasterHangsFreezesNothing) {
    DemoMaster master({"--motion", "circle", "--limits", "X=-12:34:5:6"});
    Open({"X"});
    const ExpectAnyErrorLog expected;
    ASSERT_TRUE(WaitForLines(300));
    QThread::msleep(100);  // a batch is announced
    master.Freeze();
    Resize(0);
    Heartbeat heart;
    ASSERT_TRUE(WaitForMessage(kDamaged)) << Message();
    TakeBoxes();
    ASSERT_TRUE(m_frame->Action(CommandId::kConnect)->isEnabled());
    Connect();
    EXPECT_EQ(Message(), kHung);
    QTest::qWait(300);
    heart.ExpectNoFreeze();
    heart.ExpectOneWait();
    master.Thaw();
    ASSERT_TRUE(WaitForLines(Cycle().TotalLines() + 300));
    EXPECT_EQ(Message(), kConnected);
    EXPECT_THAT(TakeBoxes(), IsEmpty());
}

TEST_F(Damage, ASaveThatFailsIsToldInTheStatusBarAndTheValuesGoOn) {
    DemoMaster master({"--motion", "circle"});
    Open({"X"});
    ASSERT_TRUE(WaitForLines(200));
    const std::string file = View().Work().Files().CurrentPath();
    ASSERT_TRUE(m_folder.remove());
    const ExpectAnyErrorLog expected;
    View().Commands().Execute(CommandId::kSave);
    EXPECT_THAT(TakeBoxes(), ElementsAre("ERROR: Failed to create ini. data file"));
    EXPECT_TRUE(expected.Saw("FileCommands::Write(): failed to save '" + file + "'"));
    EXPECT_EQ(Message(), "Cannot write " + file + ", see the error log");
    ASSERT_TRUE(WaitForLines(Cycle().TotalLines() + 300));
    EXPECT_THAT(View().Work().Graphs().Graphs(), SizeIs(1));
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

/// Mappings of segments that masters make: lines of /proc/self/maps with their names.
std::size_t MappedSegments() {
    std::ifstream maps("/proc/self/maps");
    EXPECT_TRUE(maps);
    std::size_t count = 0;
    for (std::string line; std::getline(maps, line);) {
        for (const char* const name :
             {kInfoSegmentName, kValueSegmentPrefix, kCapabilitySegmentPrefix}) {
            count += line.find(std::string("/dev/shm/") + name) != std::string::npos ? 1 : 0;
        }
    }
    return count;
}

/// What a process holds of the system.
struct Holdings {
    std::size_t descriptors = OpenDescriptors();
    std::size_t mappings = MappedSegments();
    std::size_t names = NamesInUse().size();  ///< those that the dead master left behind too
};

class DyingMaster : public Damage {
 protected:
    /// One life: connects, sees the curve of this master move, kills it.
    void LiveAndDie(std::mt19937& random) {
        DemoMaster master({"--motion", "circle", "--limits", "X=-12:34:5:6", "--speed",
                           random() % 2 == 0 ? "cycle" : "full"});
        Connect();
        EXPECT_THAT(TakeBoxes(), IsEmpty());
        const std::uint64_t before = Cycle().TotalLines();
        ASSERT_TRUE(WaitForLines(before + 50 + random() % 200));
        EXPECT_TRUE(View().Work().Source().Limits().FindAxis("X"));
        const std::vector<double> held = Held("X");
        ASSERT_THAT(held, SizeIs(Gt(0U)));
        EXPECT_LE(held.size(), Cycle().TotalLines() - before) << "nothing of the life before";
        EXPECT_NE(*std::min_element(held.begin(), held.end()),
                  *std::max_element(held.begin(), held.end()));
        EXPECT_GT(MappedSegments(), 0U);
        ASSERT_TRUE(WaitForLines(Cycle().TotalLines() + 20));
        EXPECT_NE(Held("X"), held) << "the curve moves";
        // Somewhere in the midst of whatever the two are doing.
        QThread::usleep(random() % 20000);
        QTest::qWait(static_cast<int>(random() % 3));
        master.Kill();
        ASSERT_TRUE(WaitForMessage(kGone));
        EXPECT_FALSE(testing::MasterLinkOf(View()).IsReaderOpen());
        EXPECT_TRUE(m_frame->Action(CommandId::kConnect)->isEnabled());
    }
};

TEST_F(DyingMaster, LeavesAViewerThatConnectsToTheNextOneAndNothingElse) {
    std::mt19937 random(20);
    Open({"X", "Y"});
    View().Work().Source().SetComesBack(false);  // curves would go on
    EXPECT_EQ(MappedSegments(), 0U);
    Holdings allowed;
    const int cycles = CyclesOfThisRun();
    for (int i = 0; i < cycles && !HasFatalFailure(); ++i) {
        SCOPED_TRACE(i);
        LiveAndDie(random);
        const Holdings now;
        EXPECT_EQ(now.mappings, 0U);
        if (i < 2) {  // everything is there once
            allowed = now;
        }
        EXPECT_LE(now.descriptors, allowed.descriptors);
        EXPECT_LE(now.names, allowed.names) << ::testing::PrintToString(NamesInUse());
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
        EXPECT_EQ(MappedSegments(), 0U);
        ASSERT_TRUE(master.End());
    }
    EXPECT_THAT(NamesInUse(), IsEmpty());
}

}  // namespace
}  // namespace wavo::testing
