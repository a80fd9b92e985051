// Recorders as the viewer sees and starts them: here the other side is a window of this process.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <QSettings>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QTest>
#include <QTimer>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "link/master_messages.h"
#include "recorder/notice/notice_board.h"
#include "ui/prompts.h"
#include "ui/recording/recording_control.h"
#include "ui/recording/recording_pane.h"

namespace wavo {
namespace {

using recorder::Notice;
using recorder::RecorderState;
using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;

/// A recorder without lines: what it tells is up to the test.
class FakeRecorder {
 public:
    FakeRecorder() {
        std::string error;
        m_window = platform::MessageWindow::Create(
            [this](const platform::Message& message) { return Take(message); }, &error);
        EXPECT_NE(m_window, nullptr) << error;
        m_board = std::make_unique<recorder::NoticeBoard>(
            m_window->handle(), [this](platform::WindowHandle window, std::uint32_t number,
                                       recorder::NoticeBoard::Way /*way*/) {
                const auto own = static_cast<std::int64_t>(m_window->handle());
                return m_window->Post(window, {number, 0, own});
            });
        notice.state = RecorderState::kRecords;
        notice.file = "/data/night.mcap";
        notice.seconds = 83.0;
        notice.bytes = 181'200'000;
        notice.lines = 332'000;
    }

    void Announce() { m_board->Announce(); }
    void Show() { m_board->Show(notice); }
    void Serve() { m_window->Dispatch(); }
    /// Its window is gone, as that of a program that was killed.
    void Vanish() { m_window.reset(); }
    [[nodiscard]] platform::WindowHandle Window() const { return m_window->handle(); }

    Notice notice;
    int told_to_quit = 0;

 private:
    std::int64_t Take(const platform::Message& message) {
        if (message.number == recorder::kWatchRecorder) {
            m_board->Watch(static_cast<platform::WindowHandle>(message.l_param));
        }
        told_to_quit += message.number == static_cast<std::uint32_t>(FromMaster::kQuit) ? 1 : 0;
        return 1;
    }

    std::unique_ptr<platform::MessageWindow> m_window;
    std::unique_ptr<recorder::NoticeBoard> m_board;
};

class Recording : public ::testing::Test {
 protected:
    Recording() {
        m_bar.resize(400, 30);
        m_pane.resize(300, 24);
        m_bar.show();
        m_prompts.save_file = [this](QWidget*, const FileQuestion& question) {
            m_asked.push_back(question);
            return std::optional<QString>();
        };
        m_prompts.box = [this](QWidget*, const Box& box) {
            m_errors.push_back(box.caption + ": " + box.text);
            return BoxAnswer::kOk;
        };
        m_prompts.choose_several = [this](QWidget*, const SeveralQuestion& question) {
            m_rows = question.rows;
            return m_chosen;
        };
        m_control = std::make_unique<RecordingControl>(m_bar, m_prompts, m_pane, &m_settings,
                                                       [](const std::string&) { return false; });
    }
    static bool WaitFor(const std::function<bool()>& done) { return QTest::qWaitFor(done, 20000); }
    bool WaitForText(const QString& text) {
        return WaitFor([&] {
            Serve();
            return m_pane.isVisible() && m_pane.text() == text;
        });
    }
    void Serve() {
        for (FakeRecorder* const recorder : m_recorders) {
            recorder->Serve();
        }
    }

    QTemporaryDir m_folder;
    QSettings m_settings{m_folder.filePath(QStringLiteral("app.ini")), QSettings::IniFormat};
    std::vector<FakeRecorder*> m_recorders;  // to be served
    QWidget m_bar;
    RecordingPane m_pane{&m_bar};
    Prompts m_prompts;
    std::vector<FileQuestion> m_asked;
    std::vector<std::string> m_errors;
    QStringList m_rows;
    std::vector<int> m_chosen;
    std::unique_ptr<RecordingControl> m_control;
};

TEST_F(Recording, WithoutARecorderThereIsNothingToStopAndNoPane) {
    m_control->Open();
    EXPECT_TRUE(m_control->IsEnabled(CommandId::kRecord));
    EXPECT_FALSE(m_control->IsEnabled(CommandId::kStopRecording));
    EXPECT_TRUE(m_pane.isHidden());
}

TEST_F(Recording, ARecorderThatRunsAlreadyIsShown) {
    FakeRecorder one;
    m_recorders = {&one};
    one.Show();
    m_control->Open();
    EXPECT_TRUE(m_pane.isVisible());
    EXPECT_EQ(m_pane.text(), "00:01:23  181.2 MB");
    EXPECT_EQ(m_pane.toolTip(), "/data/night.mcap: 332000 lines, 0 lost");
    EXPECT_EQ(m_pane.accessibleName(), "Recording: 00:01:23  181.2 MB");
    EXPECT_TRUE(m_control->IsEnabled(CommandId::kStopRecording));
}

TEST_F(Recording, OneThatBeginsLaterIsShownAndItsNewsFollowed) {
    m_control->Open();
    const QSignalSpy changed(m_control.get(), &RecordingControl::CommandsChanged);
    FakeRecorder one;
    m_recorders = {&one};
    one.notice.state = RecorderState::kWaitsForMaster;
    one.Show();
    one.Announce();
    ASSERT_TRUE(WaitForText(QStringLiteral("waiting for the master")));
    one.notice.state = RecorderState::kWaitsForTrigger;
    one.Show();
    ASSERT_TRUE(WaitForText(QStringLiteral("waiting for the trigger")));
    one.notice.state = RecorderState::kRecords;
    one.notice.lost = 12;
    one.Show();
    ASSERT_TRUE(WaitForText(QStringLiteral("00:01:23  181.2 MB  12 lost")));
    EXPECT_EQ(changed.count(), 1);
    one.notice.state = RecorderState::kEnded;
    one.Show();
    ASSERT_TRUE(WaitForText(QStringLiteral("recorded, 12 lost"))) << "losses are not forgotten";
    EXPECT_EQ(changed.count(), 2);
    EXPECT_FALSE(m_control->IsEnabled(CommandId::kStopRecording));
    QTest::mouseClick(&m_pane, Qt::LeftButton);
    EXPECT_TRUE(m_pane.isHidden());
    EXPECT_THAT(m_errors, IsEmpty()) << "it was none of ours";
}

TEST_F(Recording, OneThatEndsWellLeavesNothing) {
    FakeRecorder one;
    m_recorders = {&one};
    one.Show();
    m_control->Open();
    Serve();
    one.notice.state = RecorderState::kEnded;
    one.Show();
    ASSERT_TRUE(WaitFor([this] { return m_pane.isHidden(); }));
}

TEST_F(Recording, OneThatIsKilledIsMissed) {
    auto one = std::make_unique<FakeRecorder>();
    one->Show();
    m_control->Open();
    one->Vanish();
    ASSERT_TRUE(WaitForText(QStringLiteral("recording failed")));
    EXPECT_EQ(m_pane.toolTip(),
              "/data/night.mcap: wavo_record has gone; what it had written can be opened");
    EXPECT_FALSE(m_control->IsEnabled(CommandId::kStopRecording));
}

TEST_F(Recording, AFailureIsToldBesideOthersThatRunUntilItIsClickedOrAnotherBegins) {
    FakeRecorder one;
    auto two = std::make_unique<FakeRecorder>();
    m_recorders = {&one};
    one.Show();
    two->Show();
    m_control->Open();
    two->Vanish();
    ASSERT_TRUE(WaitForText(QStringLiteral("00:01:23  181.2 MB recording failed")));
    one.notice.seconds += 1.0;
    one.Show();
    ASSERT_TRUE(WaitForText(QStringLiteral("00:01:24  181.2 MB recording failed")));
    QTest::mouseClick(&m_pane, Qt::LeftButton);
    EXPECT_EQ(m_pane.text(), "00:01:24  181.2 MB");
    FakeRecorder three;
    m_recorders.push_back(&three);
    three.Show();
    three.Announce();
    ASSERT_TRUE(WaitForText(QStringLiteral("00:01:24  181.2 MB (+1)")));
    three.notice.state = RecorderState::kFailed;
    three.Show();
    ASSERT_TRUE(WaitForText(QStringLiteral("00:01:24  181.2 MB recording failed")));
    FakeRecorder four;
    m_recorders.push_back(&four);
    four.Show();
    four.Announce();
    ASSERT_TRUE(WaitForText(QStringLiteral("00:01:24  181.2 MB (+1)")));
}

TEST_F(Recording, WhatAKilledOneLeftBehindIsNoRecorder) {
    const auto nobody = std::make_unique<FakeRecorder>();
    nobody->Show();
    nobody->Vanish();  // its segment stays
    m_control->Open();
    EXPECT_THAT(m_control->Watch().Running(), IsEmpty());
}

TEST_F(Recording, TheOnlyOneIsStoppedWithoutAQuestion) {
    FakeRecorder one;
    m_recorders = {&one};
    one.Show();
    m_control->Open();
    m_control->Execute(CommandId::kStopRecording);
    ASSERT_TRUE(WaitFor([&] {
        Serve();
        return one.told_to_quit == 1;
    }));
    EXPECT_TRUE(m_rows.isEmpty());
}

TEST_F(Recording, OfSeveralThoseAreStoppedThatTheUserTicks) {
    FakeRecorder one;
    FakeRecorder two;
    m_recorders = {&one, &two};
    one.Show();
    two.notice.file = "/data/other.mcap";
    two.notice.seconds = 80.0;
    two.Show();
    m_control->Open();
    EXPECT_EQ(m_pane.text(), "00:01:23  181.2 MB (+1)");
    EXPECT_THAT(m_pane.toolTip().toStdString(), HasSubstr("/data/other.mcap"));
    m_chosen = {1};
    m_control->Execute(CommandId::kStopRecording);
    EXPECT_EQ(m_rows, QStringList({QStringLiteral("/data/night.mcap   00:01:23  181.2 MB"),
                                   QStringLiteral("/data/other.mcap   00:01:20  181.2 MB")}));
    ASSERT_TRUE(WaitFor([&] {
        Serve();
        return two.told_to_quit == 1;
    }));
    EXPECT_EQ(one.told_to_quit, 0);
}

TEST_F(Recording, MessagesOfOthersAreNone) {
    m_control->Open();
    std::string error;
    const auto other = platform::MessageWindow::Create(nullptr, &error);
    for (const std::uint32_t number : {0x530U, 0x531U, 0x532U, 0x533U, 0x534U, 0x52CU, 0x52EU}) {
        const auto own = static_cast<std::int64_t>(other->handle());
        for (const std::int64_t window : {own, std::int64_t{0}, std::int64_t{-1}}) {
            other->Post(m_control->Watch().Window(), {number, 7, window});
        }
    }
    QTest::qWait(50);
    EXPECT_THAT(m_control->Watch().Running(), IsEmpty());
    EXPECT_TRUE(m_pane.isHidden());
}

TEST_F(Recording, AnEmptyPathStaysWithoutRecorderAndIsTold) {
    const QByteArray path = qgetenv("PATH");
    qputenv("PATH", m_folder.path().toLocal8Bit());
    m_control->Execute(CommandId::kRecord);
    qputenv("PATH", path);
    EXPECT_THAT(
        m_errors,
        ElementsAre("ERROR: wavo_record, which records, is neither beside this program nor on the "
                    "path"));
    EXPECT_THAT(m_asked, IsEmpty());
}

}  // namespace
}  // namespace wavo
