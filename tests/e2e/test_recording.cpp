// Recording from the viewer: wavo_record beside a viewer and a master.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <QDir>
#include <QFile>
#include <QLabel>
#include <memory>
#include <optional>
#include <string>

#include "recording/recording_reader.h"
#include "viewer_fixture.h"

namespace wavo::testing {
namespace {

using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using ::testing::SizeIs;

class RecordingFromTheViewer : public Viewer {
 protected:
    RecordingFromTheViewer() {
        qputenv("PATH", QByteArray(WAVO_RECORD_FOLDER));
        m_prompts.save_file = [this](QWidget*, const FileQuestion& question) {
            m_questions.push_back(question);
            return m_answer;
        };
    }
    ~RecordingFromTheViewer() override {
        qputenv("PATH", m_path);
        if (m_frame != nullptr) {  // none is left behind, whatever failed
            EndAll();
        }
    }
    QLabel& Pane() { return *m_frame->findChild<QLabel*>(QStringLiteral("recording_pane")); }
    bool IsRunning() { return !m_frame->Recording().Watch().Running().empty(); }
    std::uint64_t LinesRecorded() {
        const auto running = m_frame->Recording().Watch().Running();
        return running.empty() ? 0 : running.front().notice.lines;
    }
    /// A name with all that file systems of both worlds allow.
    std::string Path() {
        return (m_folder.path() + QStringLiteral("/night shift \u00e4.mcap")).toStdString();
    }
    void Record(const std::string& path) {
        m_answer = QString::fromStdString(path);
        m_frame->Action(CommandId::kRecord)->trigger();
    }
    void EndAll() {
        for (const SeenRecorder& one : m_frame->Recording().Watch().Running()) {
            Watched().Finish(one.window);
        }
        EXPECT_TRUE(WaitFor([this] { return !IsRunning(); }));
    }
    RecorderWatch& Watched() { return const_cast<RecorderWatch&>(m_frame->Recording().Watch()); }

    const QByteArray m_path = qgetenv("PATH");
    std::vector<FileQuestion> m_questions;
    std::optional<QString> m_answer;
};

TEST_F(RecordingFromTheViewer, SurvivesTheViewerAndIsEndedByTheNext) {
    DemoMaster master({QStringLiteral("--recording"), RecordingPath("circle_xy_r50")});
    Open({"X"});
    m_frame->ShowRecorders();
    ASSERT_TRUE(WaitForLines(50));
    Record(Path());
    ASSERT_THAT(m_questions, SizeIs(1));
    EXPECT_EQ(m_questions[0].default_suffix, "mcap");
    ASSERT_TRUE(WaitFor([this] { return LinesRecorded() > 500; }))
        << ::testing::PrintToString(m_boxes);
    EXPECT_TRUE(m_frame->Action(CommandId::kStopRecording)->isEnabled());
    EXPECT_FALSE(Pane().isHidden());
    EXPECT_THAT(Pane().text().toStdString(), HasSubstr(" MB"));
    m_frame->Action(CommandId::kStop)->trigger();  // of the viewer, not of the recorder
    const std::uint64_t before = LinesRecorded();
    ASSERT_TRUE(WaitFor([&] { return LinesRecorded() > before; }));
    Close();

    Open({"X"});
    m_frame->ShowRecorders();
    ASSERT_TRUE(IsRunning());
    m_frame->Action(CommandId::kStopRecording)->trigger();
    ASSERT_TRUE(WaitFor([this] { return !IsRunning(); }));
    EXPECT_TRUE(Pane().isHidden());
    EXPECT_FALSE(m_frame->Action(CommandId::kStopRecording)->isEnabled());
    EXPECT_THAT(TakeBoxes(), IsEmpty());
    auto reader = recording::RecordingReader::Open(Path());
    ASSERT_TRUE(reader) << reader.Why().text;
    EXPECT_THAT((*reader)->Notices(), IsEmpty()) << "it is whole";
    EXPECT_GT((*reader)->EndLine(), before);
    const auto graphs = (*reader)->ReadGraphFile();
    ASSERT_TRUE(graphs) << "what was looked at goes with it";
    EXPECT_THAT(graphs->text, HasSubstr("X"));
    master.End();
}

TEST_F(RecordingFromTheViewer, IsLookedAtWhileItGrowsAndTheLinkIsTakenUpAgain) {
    DemoMaster master({QStringLiteral("--recording"), RecordingPath("circle_xy_r50")});
    Open({"X"});
    m_frame->ShowRecorders();
    ASSERT_TRUE(WaitForLines(50));
    Record(Path());
    ASSERT_TRUE(WaitFor([this] { return LinesRecorded() > 100; }));
    ASSERT_TRUE(View().Past().Files().Open(Path())) << ::testing::PrintToString(m_boxes);
    EXPECT_FALSE(m_frame->Action(CommandId::kStop)->isEnabled());
    EXPECT_TRUE(m_frame->Action(CommandId::kOpen)->isEnabled());
    EXPECT_THAT(m_frame->windowTitle().toStdString(), ::testing::StartsWith("night shift"));
    const std::uint64_t received = Cycle().TotalLines();
    m_frame->Action(CommandId::kFollow)->trigger();
    EXPECT_TRUE(m_frame->Action(CommandId::kFollow)->isChecked());
    const SeenLines& window = View().Past().Window().Window();
    const std::int64_t before = window.Seen().end;
    ASSERT_TRUE(WaitFor([&] { return window.Seen().end > before + 500; })) << "it grows by itself";
    EXPECT_EQ(Cycle().TotalLines(), received) << "the link was left";
    m_frame->Action(CommandId::kCloseRecording)->trigger();
    EXPECT_TRUE(m_frame->Action(CommandId::kStop)->isEnabled());
    ASSERT_TRUE(WaitForLines(received + 200)) << "and is taken up again";
    EndAll();
    EXPECT_THAT(TakeBoxes(), IsEmpty());
    master.End();
}

TEST_F(RecordingFromTheViewer, AMasterThatQuitsAndComesBackMeanwhileIsJoinedAtTheEnd) {
    std::optional<DemoMaster> master;
    master.emplace(QStringList{QStringLiteral("--recording"), RecordingPath("circle_xy_r50")});
    Open({"X"});
    m_frame->ShowRecorders();
    ASSERT_TRUE(WaitForLines(50));
    Record(Path());
    ASSERT_TRUE(WaitFor([this] { return LinesRecorded() > 100; }));
    EndAll();
    ASSERT_TRUE(View().Past().Files().Open(Path()));
    const std::string said = Message();
    master->End();
    master.emplace(QStringList{QStringLiteral("--recording"), RecordingPath("circle_xy_r50")});
    EXPECT_FALSE(WaitFor([&] { return Message() != said; }, 300)) << Message();
    m_frame->Action(CommandId::kCloseRecording)->trigger();
    ASSERT_TRUE(WaitForLines(50));
    EXPECT_THAT(TakeBoxes(), IsEmpty());
    master->End();
}

TEST_F(RecordingFromTheViewer, AFileThatIsThereIsKept) {
    QFile there(QString::fromStdString(Path()));
    ASSERT_TRUE(there.open(QIODevice::WriteOnly));
    there.write("mine");
    there.close();
    DemoMaster master({QStringLiteral("--recording"), RecordingPath("circle_xy_r50")});
    Open({"X"});
    m_frame->ShowRecorders();
    Record(Path());
    ASSERT_TRUE(WaitFor([this] { return LinesRecorded() > 0; }));
    const std::string tip = Pane().toolTip().toStdString();
    EXPECT_THAT(tip, HasSubstr("-2.mcap: "));
    EndAll();
    ASSERT_TRUE(there.open(QIODevice::ReadOnly));
    EXPECT_EQ(there.readAll(), "mine");
    master.End();
}

TEST_F(RecordingFromTheViewer, AFolderThatCannotBeWrittenToIsToldInABox) {
    DemoMaster master({QStringLiteral("--recording"), RecordingPath("circle_xy_r50")});
    Open({"X"});
    m_frame->ShowRecorders();
    const std::string path =
        QDir::toNativeSeparators(m_folder.path() + QStringLiteral("/missing/a.mcap")).toStdString();
    Record(path);
    ASSERT_TRUE(WaitFor([this] { return !m_boxes.empty(); }));
    const auto boxes = TakeBoxes();
    ASSERT_THAT(boxes, SizeIs(1));
    EXPECT_THAT(boxes[0], ::testing::StartsWith("ERROR: Recording to " + path + " has failed: "));
    EXPECT_EQ(Pane().text(), "recording failed");
    master.End();
}

TEST_F(RecordingFromTheViewer, CancellingTheQuestionStartsNothing) {
    Open({"X"});
    m_frame->ShowRecorders();
    m_frame->Action(CommandId::kRecord)->trigger();
    EXPECT_THAT(m_questions, SizeIs(1));
    EXPECT_FALSE(WaitFor([this] { return IsRunning(); }, 300));
}

TEST_F(RecordingFromTheViewer, WaitsForAMasterThatComesLater) {
    Open({"X"});
    m_frame->ShowRecorders();
    Record(Path());
    ASSERT_TRUE(WaitFor([this] { return Pane().text() == "waiting for the master"; }));
    DemoMaster master({QStringLiteral("--recording"), RecordingPath("circle_xy_r50")});
    ASSERT_TRUE(WaitFor([this] { return LinesRecorded() > 0; }));
    EndAll();
    master.End();
}

}  // namespace
}  // namespace wavo::testing
