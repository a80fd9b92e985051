// The page in the place of the graphs while there is nothing to be seen, and the demo.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <QAction>
#include <QApplication>
#include <QDir>
#include <QFile>
#include <QLabel>
#include <QPushButton>
#include <QScrollBar>
#include <QStatusBar>
#include <QTemporaryDir>
#include <QTest>
#include <QToolButton>

#include "accessible_walk.h"
#include "fake_shared_memory.h"
#include "master_window.h"
#include "real_prompts.h"
#include "sample_recording.h"
#include "system_facts.h"
#include "ui/shell/first_page.h"
#include "ui/shell/first_start.h"
#include "ui/shell/help_topics.h"
#include "ui/shell/looks.h"
#include "ui/shell/main_frame.h"
#include "view/wavo_view.h"

namespace wavo {
namespace {

using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;

class FirstStartTest : public ::testing::Test {
 protected:
    FirstStartTest() {
        testing::ResetFakeSharedMemory();
        for (const char* const name : {"XDG_RUNTIME_DIR", testing::kDataHome, "XDG_STATE_HOME"}) {
            qputenv(name, m_folder.path().toUtf8());
        }
        m_prompts.box = [this](QWidget*, const Box& box) {
            m_boxes.push_back(box.text);
            return BoxAnswer::kOk;
        };
        m_prompts.open_file = [this](QWidget*, const FileQuestion&) {
            return std::optional<QString>(m_recording);
        };
        m_frame = std::make_unique<CMainFrame>(m_prompts);
        m_frame->resize(1000, 700);
        m_frame->show();
        View().OnInitialUpdate();
        QApplication::processEvents();
    }
    ~FirstStartTest() override {
        m_first.reset();
        m_frame.reset();
    }

    void Begin(const DemoFiles& demo = {}) {
        m_first = std::make_unique<FirstStart>(*m_frame, m_prompts, demo);
        QApplication::processEvents();
    }
    CWavoView& View() { return m_frame->View(); }
    FirstPage& Page() { return m_first->Page(); }
    QStringList Buttons() {
        QStringList texts;
        for (const QPushButton* const button : Page().findChildren<QPushButton*>()) {
            texts << button->text();
        }
        return texts;
    }
    QPushButton& Button(const char* text) {
        for (QPushButton* const button : Page().findChildren<QPushButton*>()) {
            if (button->text() == QLatin1String(text)) {
                return *button;
            }
        }
        ADD_FAILURE() << text;
        std::abort();
    }
    std::string Text() {
        std::string text;
        for (const QLabel* const label : Page().findChildren<QLabel*>()) {
            text += label->text().toStdString() + "\n";
        }
        return text;
    }
    void AddGraph() {
        WavoGraph graph;
        graph.InitGraph(1, "X", 0, nullptr);
        View().Work().Graphs().Replace({graph});
        View().Work().RebuildGraphs();
        QApplication::processEvents();
    }
    QString MakeRecording() {
        m_recording = m_folder.filePath(QStringLiteral("night.mcap"));
        auto writer = recording::RecordingWriter::Create(m_recording.toStdString(),
                                                         testing::MakeHead(2), std::nullopt);
        EXPECT_TRUE(writer.HasValue());
        testing::Append(**writer, 0, testing::MakeLines(2, 100, 1));
        testing::RequireNoFault((*writer)->Finish());
        return m_recording;
    }
    void Trigger(CommandId id) {
        m_frame->Action(id)->trigger();
        QApplication::processEvents();
    }

    QTemporaryDir m_folder;
    Prompts m_prompts = testing::RealPrompts();
    std::vector<std::string> m_boxes;
    QString m_recording;
    std::unique_ptr<CMainFrame> m_frame;
    std::unique_ptr<FirstStart> m_first;
};

TEST_F(FirstStartTest, WithoutAnythingToShowItSaysWhatIsWaitedFor) {
    Begin();
    EXPECT_TRUE(Page().isVisible());
    EXPECT_EQ(Page().geometry(), View().Screen().GraphArea());
    EXPECT_THAT(Text(), HasSubstr("the master process (Dorvane)."));
    EXPECT_THAT(Text(), HasSubstr("The viewer connects by itself as soon as there is one."));
    EXPECT_THAT(Text(), HasSubstr("The link now: Master process (Dorvane) not present."));
    EXPECT_THAT(Buttons(), ElementsAre("Open Recording...")) << "no demo, no manual";
    EXPECT_THAT(testing::WithoutAccessibleTexts(*m_frame), IsEmpty());
    EXPECT_TRUE(m_first->EndButton().isHidden());
}

TEST_F(FirstStartTest, GoesWithGraphsAndComesBackWithNew) {
    Begin();
    AddGraph();
    EXPECT_TRUE(Page().isHidden());
    Trigger(CommandId::kNew);
    EXPECT_TRUE(Page().isVisible());
}

TEST_F(FirstStartTest, GoesWhileARecordingIsOpen) {
    MakeRecording();
    Begin();
    QTest::mouseClick(&Button("Open Recording..."), Qt::LeftButton);
    QApplication::processEvents();
    ASSERT_NE(View().Work().Recording(), nullptr);
    EXPECT_TRUE(Page().isHidden());
    Trigger(CommandId::kCloseRecording);
    EXPECT_TRUE(Page().isVisible());
}

TEST_F(FirstStartTest, GoesWithAMasterAndComesBackWhenThatHasGone) {
    Begin();
    testing::MasterWindow master;
    master.Publish();
    Trigger(CommandId::kConnect);
    EXPECT_TRUE(Page().isHidden());
    testing::RemoveFakeSegment("MachineTools_InfoData");
    Trigger(CommandId::kStop);
    View().Work().LiveSource().Hold();
    EXPECT_TRUE(View().Work().LiveSource().Start());
    QApplication::processEvents();
    EXPECT_TRUE(Page().isVisible());
}

TEST_F(FirstStartTest, AMasterThatIsThereWinsOverTheDemo) {
    const QString program = m_folder.filePath(QStringLiteral("demo_master"));
    Begin({program, program, program});
    EXPECT_THAT(Buttons(), ElementsAre("Open Recording...", "Play the Demo"));
    testing::MasterWindow master;
    master.Publish();
    QTest::mouseClick(&Button("Play the Demo"), Qt::LeftButton);
    QApplication::processEvents();
    EXPECT_THAT(m_boxes,
                ElementsAre("A master is running already, perhaps the demo of another viewer. "
                            "This viewer is connected to it and shows what it sends."));
    EXPECT_TRUE(View().Work().LiveSource().IsPresent());
    EXPECT_TRUE(Page().isHidden());
    EXPECT_TRUE(m_first->EndButton().isHidden());
}

TEST_F(FirstStartTest, ADemoThatCannotBePlayedIsTold) {
    const QString program = m_folder.filePath(QStringLiteral("demo_master"));
    Begin({program, program, program});
    QTest::mouseClick(&Button("Play the Demo"), Qt::LeftButton);
    QApplication::processEvents();
    ASSERT_EQ(m_boxes.size(), 1U);
    EXPECT_THAT(m_boxes[0], HasSubstr("The demo cannot be played: "));
    EXPECT_TRUE(Page().isVisible());
    EXPECT_TRUE(m_first->EndButton().isHidden());
}

TEST_F(FirstStartTest, TheDemoIsFoundBesideTheProgramWithItsData) {
    EXPECT_FALSE(FindDemoIn({m_folder.path()}).AreThere());
    const QDir root(m_folder.path());
    for (const char* const name :
         {"bin/demo_master", "bin/demo_master.exe", "share/wavo/graphs/circle.ini",
          "share/wavo/recordings/circle_xy_r50.csv.gz"}) {
        EXPECT_FALSE(FindDemoIn({root.filePath(QStringLiteral("bin"))}).AreThere()) << name;
        const QString path = root.filePath(QLatin1String(name));
        root.mkpath(QFileInfo(path).path());
        QFile file(path);
        ASSERT_TRUE(file.open(QIODevice::WriteOnly));
        file.setPermissions(QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner);
    }
    const DemoFiles found = FindDemoIn({root.filePath(QStringLiteral("bin"))});
    EXPECT_TRUE(found.AreThere());
    EXPECT_EQ(found.graphs, QDir::toNativeSeparators(
                                root.filePath(QStringLiteral("share/wavo/graphs/circle.ini"))));
}

TEST_F(FirstStartTest, ThePictureOfTheViewIsWithoutIt) {
    const QImage before = View().Screen().Picture().copy();
    Begin();
    EXPECT_EQ(View().Screen().Picture().size(), before.size());
    EXPECT_EQ(View().Screen().Picture(), before);
}

TEST_F(FirstStartTest, StandsBelowTheEditorInAnySizeAndCutsNothingOff) {
    Begin();
    for (const CommandId look : {CommandId::kLookStudio, CommandId::kLookBlack}) {
        ApplyLook(FindLook(static_cast<int>(look)));
        for (const QSize size : {QSize(1366, 768), QSize(640, 400), QSize(1000, 700)}) {
            m_frame->resize(size);
            QApplication::processEvents();
            QApplication::processEvents();
            const bool is_small = size.height() == 400;
            EXPECT_EQ(Page().geometry() == View().Screen().GraphArea(), !is_small);
            EXPECT_GE(Page().height(), Page().NeededHeight(Page().width()));
            EXPECT_EQ(Page().geometry().bottom(), View().height() - 1);
            EXPECT_FALSE(Page().horizontalScrollBar()->isVisible()) << size.width();
            for (const QLabel* const label : Page().findChildren<QLabel*>()) {
                EXPECT_GE(label->height(), label->heightForWidth(label->width()));
            }
        }
    }
    ApplyLook(FindLook(static_cast<int>(kDefaultLook)));
}

TEST_F(FirstStartTest, IsUsedByKeys) {
    MakeRecording();
    View().setFocus();
    Begin();
    EXPECT_EQ(m_frame->focusWidget(), &Button("Open Recording..."));
    QTest::keyClick(m_frame->focusWidget(), Qt::Key_Return);
    QApplication::processEvents();
    EXPECT_NE(View().Work().Recording(), nullptr);
    EXPECT_EQ(m_frame->focusWidget(), &View());
}

TEST_F(FirstStartTest, WhatIsPressedOnItIsNotPressedOnTheGraphs) {
    Begin();
    class Presses : public QObject {
     public:
        bool eventFilter(QObject*, QEvent* event) override {
            count += event->type() == QEvent::MouseButtonPress || event->type() == QEvent::Wheel;
            return false;
        }
        int count = 0;
    } presses;
    View().installEventFilter(&presses);
    QTest::mousePress(Page().viewport(), Qt::RightButton, {}, {5, 5});
    EXPECT_EQ(presses.count, 0);
}

TEST_F(FirstStartTest, TheManualIsOfferedWhereThereIsOne) {
    m_first = std::make_unique<FirstStart>(*m_frame, m_prompts, DemoFiles(), true);
    QApplication::processEvents();
    EXPECT_EQ(HelpTopic(Button("Manual")), "first-minutes");
    int opened = 0;
    QObject::connect(m_frame->Action(CommandId::kManual), &QAction::triggered,
                     [&opened] { ++opened; });
    QTest::mouseClick(&Button("Manual"), Qt::LeftButton);
    EXPECT_EQ(opened, 1);
}

}  // namespace
}  // namespace wavo
