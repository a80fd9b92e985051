// What a dead master or a blocked folder leaves behind on POSIX systems.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <sys/mman.h>

#include <QFile>
#include <QProcess>
#include <QTemporaryDir>
#include <QThread>
#include <atomic>
#include <clocale>

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

class Posix : public Viewer {
 protected:
    QAction& ConnectAction() { return *m_frame->Action(CommandId::kConnect); }

    std::string FifoName() { return kValueSegmentPrefix + std::to_string(View().Window()); }

    /// Waits, without letting the viewer do anything, until the master has announced a batch: it
    /// does so behind the first line and before the second.
    ::testing::AssertionResult WaitForAnAnnouncement() {
        for (int i = 0; i < 2000; ++i) {
            if (LinesWritten() >= 2) {
                return ::testing::AssertionSuccess();
            }
            QThread::msleep(5);
        }
        return ::testing::AssertionFailure() << "no lines in " << FifoName();
    }

 private:
    std::uint64_t LinesWritten() {
        const platform::MappingHandle handle = platform::OpenSharedMemory(FifoName());
        if (handle == 0) {
            return 0;
        }
        void* const memory = platform::MapSharedMemory(handle);
        std::uint64_t written = 0;
        if (memory != nullptr) {
            auto& header = *static_cast<LineFifoHeader*>(memory);
            written = std::atomic_ref(header.write_index).load(std::memory_order_acquire);
            platform::UnmapSharedMemory(memory, platform::SharedMemorySize(memory, handle));
        }
        platform::CloseSharedMemory(handle);
        return written;
    }
};

/// Keeps everything in this process standing until the program says that it is there.
void StartWithoutEvents(QProcess& process, const QStringList& arguments) {
    process.setProcessChannelMode(QProcess::MergedChannels);
    process.start(QStringLiteral(WAVO_DEMO_MASTER), arguments);
    QByteArray output;
    while (!output.contains("demo_master: window")) {
        ASSERT_TRUE(process.waitForReadyRead(10000)) << output.constData();
        output += process.readAll();
    }
}

TEST_F(Posix, AViewerThatCouldNotMakeItsWindowTriesAgainAtConnect) {
    const QByteArray folder = qgetenv("XDG_RUNTIME_DIR");
    const QTemporaryDir blocked;
    QFile file(blocked.filePath(QStringLiteral("wavo")));
    ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    qputenv("XDG_RUNTIME_DIR", blocked.path().toUtf8());
    const std::string text = "No messages from a master can arrive, see the error log";
    {
        const ExpectAnyErrorLog expected;
        Open({"X"});
        EXPECT_EQ(Message(), text);
        EXPECT_THAT(TakeBoxes(), IsEmpty());
        ConnectAction().trigger();
        EXPECT_THAT(TakeBoxes(), ElementsAre("ERROR: " + text));
    }
    qputenv("XDG_RUNTIME_DIR", folder);
    DemoMaster master({"--motion", "circle"});
    ConnectAction().trigger();
    EXPECT_THAT(TakeBoxes(), IsEmpty());
    ASSERT_TRUE(WaitForLines(100));
}

TEST_F(Posix, AMasterThatTookThePlaceOfTheOneThatAnnouncedABatchIsAnnouncedTo) {
    QProcess next;
    {
        DemoMaster master({"--motion", "circle"});
        Open({"X"});
        ASSERT_TRUE(WaitForAnAnnouncement());
        master.Kill();
        StartWithoutEvents(next, {"--motion", "circle", "--cycle", "0.002"});
    }
    const ExpectAnyErrorLog expected;  // the dead master's FIFO was removed
    ASSERT_TRUE(WaitForLines(300));
    EXPECT_EQ(Message(), "Connected to the master process (Dorvane)");
    EXPECT_EQ(m_frame->PaneText(StatusPane::kCycleTime), QStringLiteral("cycl. time=0.00200s"));
    EXPECT_FALSE(ConnectAction().isEnabled());
    next.terminate();
    ASSERT_TRUE(WaitFor([&next] { return next.state() == QProcess::NotRunning; }));
}

TEST_F(Posix, ALinkThatEndsWhileABoxWaitsStaysEnded) {
    DemoMaster master({"--motion", "circle"});
    Open({"X"});
    ASSERT_TRUE(WaitForAnAnnouncement());
    ASSERT_EQ(::shm_unlink(("/" + FifoName()).c_str()), 0);
    SetBoxHandler([&](const Box& box) {
        m_boxes.push_back(box.text);
        EXPECT_TRUE(master.End());
        EXPECT_TRUE(WaitForMessage("The master process (Dorvane) has ended the link"));
        return BoxAnswer::kOk;
    });
    const ExpectAnyErrorLog expected;
    ASSERT_TRUE(WaitFor([this] { return !m_boxes.empty(); }));
    EXPECT_THAT(TakeBoxes(), ElementsAre("Can not open mvales fifo"));
    EXPECT_EQ(Message(), "The master process (Dorvane) has ended the link");
    EXPECT_TRUE(ConnectAction().isEnabled());
}

TEST_F(Posix, AMasterRemovesWhatADeadOneLeftBehind) {
    Open({"X"});
    {
        DemoMaster master({"--motion", "circle"});
        ConnectAction().trigger();
        ASSERT_TRUE(WaitForLines(10));
        master.Kill();
    }
    Close();
    EXPECT_THAT(NamesInUse(), SizeIs(Gt(2U)));
    DemoMaster master({"--motion", "circle"});
    ASSERT_TRUE(master.End());
    EXPECT_THAT(NamesInUse(), IsEmpty());
}

TEST_F(Posix, AfterBothHaveEndedNothingIsLeftBehind) {
    {
        DemoMaster master({"--motion", "circle"});
        Open({"X"});
        ASSERT_TRUE(WaitForLines(100));
        EXPECT_THAT(NamesInUse(), SizeIs(Gt(3U)));
        m_frame->close();
        Close();
        ASSERT_TRUE(master.End());
    }
    EXPECT_THAT(NamesInUse(), IsEmpty());
}

TEST_F(Posix, TheLocaleIsTheUsersExceptForNumbers) {
    EXPECT_STREQ(std::setlocale(LC_NUMERIC, nullptr), "C");
    EXPECT_STREQ(std::setlocale(LC_CTYPE, nullptr), "C.UTF-8");
}

}  // namespace
}  // namespace wavo::testing
