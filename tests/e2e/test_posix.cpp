// What a dead master or a blocked folder leaves behind on POSIX systems.
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/mman.h>
#include <sys/socket.h>
#include <sys/un.h>

#include <QDirIterator>
#include <QFile>
#include <QProcess>
#include <QTemporaryDir>
#include <QThread>
#include <atomic>
#include <clocale>
#include <cstring>

#include "expect_errors.h"
#include "link/master_info.h"
#include "link/wire_format.h"
#include "master_link_of.h"
#include "platform/posix/descriptor.h"
#include "platform/posix/message_packet.h"
#include "platform/shared_memory.h"
#include "system/other_process.h"
#include "ui/shell/demo_player.h"
#include "view/message_pump.h"
#include "viewer_fixture.h"

namespace wavo::testing {
namespace {

using ::testing::ElementsAre;
using ::testing::Gt;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using ::testing::SizeIs;

class Posix : public Viewer {
 protected:
    QAction& ConnectAction() { return *m_frame->Action(CommandId::kConnect); }

    /// A connection to the viewer as the one of the master that it knows.
    platform::Descriptor ConnectionAsMaster() {
        const std::string path = qEnvironmentVariable("XDG_RUNTIME_DIR").toStdString() + "/wavo/" +
                                 std::to_string(testing::MasterLinkOf(View()).Window());
        platform::Descriptor socket(::socket(AF_UNIX, SOCK_SEQPACKET | SOCK_CLOEXEC, 0));
        sockaddr_un address{};
        address.sun_family = AF_UNIX;
        std::memcpy(address.sun_path, path.c_str(), path.size());
        EXPECT_EQ(
            ::connect(socket.number(), reinterpret_cast<const sockaddr*>(&address), sizeof address),
            0);
        const Expected<std::optional<MasterInfo>> master = ReadMasterInfo(MessagePump());
        EXPECT_TRUE(master && *master);
        const platform::MessagePacket hello{.w_param =
                                                master && *master ? (*master)->master_window : 0};
        EXPECT_EQ(::send(socket.number(), &hello, sizeof hello, MSG_NOSIGNAL), 40);
        return socket;
    }

    std::string FifoName() {
        return kValueSegmentPrefix + std::to_string(testing::MasterLinkOf(View()).Window());
    }

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
    m_prompts.box = [&](QWidget*, const Box& box) {
        m_boxes.push_back(box.text);
        EXPECT_TRUE(master.End());
        EXPECT_TRUE(WaitForMessage("The master process (Dorvane) has ended the link"));
        return BoxAnswer::kOk;
    };
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

TEST_F(Posix, AMasterThatWritesWhatIsNoMessageIsNotConnectedUntilConnect) {
    DemoMaster master({"--motion", "circle"});
    Open({"X"});
    ASSERT_TRUE(WaitForLines(100));
    const platform::Descriptor socket = ConnectionAsMaster();
    ASSERT_EQ(::send(socket.number(), "garbage", 7, MSG_NOSIGNAL), 7);
    {
        const ExpectAnyErrorLog expected;
        ASSERT_TRUE(
            WaitForMessage("The master process (Dorvane) wrote what is no message, see the "
                           "error log: Machine Data > Connect to go on"));
        EXPECT_TRUE(expected.Saw(
            "AcquisitionCycle::OnPeerRefused(): the master's connection was closed, it wrote a "
            "packet that is not 40 bytes long"));
    }
    EXPECT_THAT(TakeBoxes(), IsEmpty());
    const std::uint64_t before = Cycle().TotalLines();
    ASSERT_TRUE(ConnectAction().isEnabled());
    ConnectAction().trigger();
    ASSERT_TRUE(WaitForLines(before + 300));
    EXPECT_EQ(Message(), "Connected to the master process (Dorvane)");
}

TEST_F(Posix, TheLocaleIsTheUsersExceptForNumbers) {
    EXPECT_STREQ(std::setlocale(LC_NUMERIC, nullptr), "C");
    EXPECT_STREQ(std::setlocale(LC_CTYPE, nullptr), "C.UTF-8");
}

/// The program on a machine without a display.
class WithoutADisplay : public ::testing::Test {
 protected:
    WithoutADisplay() {
        QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
        for (const char* const name : {"QT_QPA_PLATFORM", "DISPLAY", "WAYLAND_DISPLAY"}) {
            environment.remove(QString::fromLatin1(name));
        }
        environment.insert(QStringLiteral("XDG_STATE_HOME"), m_state.path());
        m_process.setProcessEnvironment(environment);
    }
    /// Ended normally and left no record of a crash.
    int Run(const QStringList& arguments) {
        m_process.start(QStringLiteral(WAVO_VIEWER), arguments);
        EXPECT_TRUE(m_process.waitForFinished(30000));
        EXPECT_EQ(m_process.exitStatus(), QProcess::NormalExit);
        QDirIterator files(m_state.path(), QDir::Files, QDirIterator::Subdirectories);
        EXPECT_FALSE(files.hasNext()) << files.next().toStdString();
        return m_process.exitCode();
    }
    std::string Output() { return m_process.readAllStandardOutput().toStdString(); }
    std::string Errors() { return m_process.readAllStandardError().toStdString(); }

    QTemporaryDir m_state;
    QProcess m_process;
};

TEST_F(WithoutADisplay, TheProgramSaysInOneLineWhatItLacks) {
    EXPECT_EQ(Run({}), 1);
    EXPECT_EQ(Errors(), "wavo: no display: neither DISPLAY nor WAYLAND_DISPLAY is set\n");
    EXPECT_EQ(Run({"-platform", "nonsense"}), 1);
    EXPECT_EQ(Errors(), "wavo: no window system: cannot use \"nonsense\"\n");
}

TEST_F(WithoutADisplay, TheProgramStillSaysWhatItIsAskedFor) {
    EXPECT_EQ(Run({"--version"}), 0);
    EXPECT_EQ(Output(), "Wavo " WAVO_VERSION "\n");
    EXPECT_EQ(Run({"--help"}), 0);
    EXPECT_THAT(Output(), HasSubstr("--screenshot"));
    EXPECT_EQ(Errors(), "");
}

TEST_F(WithoutADisplay, WrongArgumentsAreRefusedAllTheSame) {
    EXPECT_EQ(Run({"--after-lines", "many"}), 2);
    EXPECT_EQ(Errors(), "wavo: --after-lines needs a number\n");
    EXPECT_EQ(Run({"--zoom"}), 2);
    EXPECT_EQ(Errors(), "wavo: Unknown option 'zoom'.\n");
}

/// A program that says these lines and then waits.
QString ProgramThatSays(const QTemporaryDir& folder, const char* lines) {
    const QString path = folder.filePath(QStringLiteral("says"));
    QFile file(path);
    EXPECT_TRUE(file.open(QIODevice::WriteOnly));
    file.write("#!/bin/sh\ncat <<END\n");
    file.write(lines);
    file.write("\nEND\n");
    file.close();
    EXPECT_TRUE(file.setPermissions(QFile::ReadOwner | QFile::ExeOwner));
    return path;
}

TEST(PosixDemoPlayer, ReadsOnToWhatTheMasterSays) {
    const QTemporaryDir folder;
    const char window[] = "demo_master: window 17";
    const std::pair<std::string, QString> cases[] = {
        {window, {}},
        {std::string("a library: cannot find a font\n") + window, {}},
        {"a library: cannot find a font\ndemo_master: another master is there\nso long",
         QStringLiteral("another master is there")},
        {"not found", QStringLiteral("not found")},
        {"", QStringLiteral("demo_master does not say that it publishes")},
    };
    for (const auto& [says, expected] : cases) {
        QFile::remove(folder.filePath(QStringLiteral("says")));
        DemoPlayer player({ProgramThatSays(folder, says.c_str()), QStringLiteral("a recording"),
                           QStringLiteral("graphs")});
        EXPECT_EQ(player.Start().toStdString(), expected.toStdString()) << says;
    }
}

}  // namespace
}  // namespace wavo::testing
