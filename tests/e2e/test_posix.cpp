// What a dead master or a blocked folder leaves behind on POSIX systems.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <QFile>
#include <QTemporaryDir>
#include <clocale>

#include "expect_errors.h"
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
};

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
