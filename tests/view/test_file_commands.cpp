#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <QDir>
#include <QFile>
#include <QTemporaryDir>
#include <cerrno>
#include <fstream>
#include <sstream>

#include "cycle_fixture.h"
#include "expect_errors.h"
#include "faulty_files.h"
#include "graph/model/graph_ini_data.h"
#include "ui/dialogs/choosers.h"
#include "ui/dialogs/message_boxes.h"
#include "view/file_commands.h"
#include "view/view_settings_file.h"

namespace wavo {
namespace {

using ::testing::ElementsAre;
using testing::ExpectAnyErrorLog;
using ::testing::IsEmpty;
using testing::kConnect;
using testing::kDisconnect;
using ::testing::SizeIs;

class FileCommandTest : public testing::CycleFixture,
                        public GraphFilesHost,
                        public FileCommandsHost {
 protected:
    FileCommandTest() {
        SetBoxHandler([this](const Box& box) {
            m_host.happened.push_back("box " + box.text);
            m_boxes.push_back(box);
            return m_answer;
        });
        const auto choose = [this](QWidget*, const SaveFileQuestion& question) {
            m_questions.push_back(question);
            return m_choice;
        };
        SetOpenFileChooser(choose);
        SetSaveFileChooser(choose);
    }
    ~FileCommandTest() override {
        SetBoxHandler(nullptr);
        SetOpenFileChooser(nullptr);
        SetSaveFileChooser(nullptr);
    }

    // GraphFilesHost, FileCommandsHost
    void ShowWriteFault(const std::string& path) override { m_unwritten.push_back(path); }
    void ShowError(const std::string& text) override { m_host.ShowError(text); }
    void AddToRecentFiles(const std::string& path) override {
        m_host.happened.push_back("recent " + FileNameOf(path));
    }
    void ShowRunTitle() override {
        m_host.happened.push_back("title " + m_files.DocumentName() +
                                  (m_cycle.IsRunning() ? " - running" : " - stopped"));
        m_background_at_title = m_settings.background;
    }
    ViewSettings& MutableSettings() override { return m_settings; }
    void ShowSettings() override { m_host.happened.emplace_back("show settings"); }
    void ShowNoGraphs() override { m_host.happened.emplace_back("show no graphs"); }
    void ShowTitle(const std::string& title) override {
        m_host.happened.push_back("title " + title);
    }
    void CurrentFileChanged() override {}
    QWidget* DialogParent() override { return nullptr; }

    std::vector<std::string> m_unwritten;

    std::string Path(const char* name) { return m_folder.filePath(name).toStdString(); }
    void Choose(const std::string& path) { m_choice = QString::fromStdString(path); }

    /// A file with a graph of an axis, and settings with a background.
    std::string MakeFile(const char* name, const char* axis, ColorRef background) {
        WavoGraph graph;
        graph.InitGraph(1, axis, 0, nullptr);
        MIniData store;
        EXPECT_TRUE(store.Open(Path(name)));
        EXPECT_TRUE(GetGraphAsIniData(store, {graph}, "text"));
        EXPECT_TRUE(store.Save());
        ViewSettings settings = DefaultViewSettings();
        settings.background = background;
        EXPECT_TRUE(WriteProperties(Path(name), settings));
        return Path(name);
    }
    std::vector<WavoGraph> GraphsIn(const std::string& path) {
        MIniData store;
        std::vector<WavoGraph> graphs;
        std::string error;
        EXPECT_TRUE(store.Open(path));
        EXPECT_TRUE(CreateGraphsFromIniData(store, graphs, error, m_text_read, 0.0)) << error;
        return graphs;
    }
    ColorRef BackgroundIn(const std::string& path) {
        ViewSettings settings;
        ReadProperties(path, settings);
        return settings.background;
    }

    QTemporaryDir m_folder;
    ViewSettings m_settings = DefaultViewSettings();
    GraphFiles m_files{m_cycle, m_board, *this};
    FileCommands m_commands{m_files, m_board, m_cycle, *this, m_lock};
    std::optional<QString> m_choice;
    BoxAnswer m_answer = BoxAnswer::kOk;
    std::vector<Box> m_boxes;
    std::vector<SaveFileQuestion> m_questions;
    ColorRef m_background_at_title = 0;
    std::string m_text_read;
};

TEST_F(FileCommandTest, OpenAndSaveAsNeedAMasterSaveACurrentFile) {
    EXPECT_FALSE(m_commands.CanOpen());
    EXPECT_FALSE(m_commands.CanSaveAs());
    EXPECT_FALSE(m_commands.CanSave());
    ConnectAndTakeFirstBatch();
    EXPECT_TRUE(m_commands.CanOpen());
    EXPECT_TRUE(m_commands.CanSaveAs());
    EXPECT_FALSE(m_commands.CanSave());
    m_files.SetCurrentPath(Path("a.ini"));
    EXPECT_TRUE(m_commands.CanSave());
}

TEST_F(FileCommandTest, OpenAsksForAnIniFileAndReadsTheSettingsBeforeTheGraphs) {
    ConnectAndTakeFirstBatch();
    m_files.SetCurrentPath(Path("old.ini"));
    Choose(MakeFile("new.ini", "Y1", 0x123456));
    m_commands.Open();
    EXPECT_THAT(m_questions,
                ElementsAre(OpenFileQuestion{"Open", QString::fromStdString(Path("old.ini")), "ini",
                                             "Ini Files (*.ini)|*.ini|All Files (*.*)|*.*||"}));
    EXPECT_THAT(m_host.Take(), ElementsAre("title new.ini - running", "recent new.ini"));
    EXPECT_EQ(m_background_at_title, 0x123456U);
    EXPECT_EQ(m_board.Graphs().front().YCoorAxName.front(), "Y1");
    EXPECT_EQ(m_files.CurrentPath(), Path("new.ini"));
    EXPECT_EQ(m_files.AdditionalText(), "text");
    EXPECT_THAT(m_channel.Take(), ElementsAre(kDisconnect, kConnect));
}

TEST_F(FileCommandTest, OpenThatIsCancelledChangesNothing) {
    ConnectAndTakeFirstBatch();
    m_commands.Open();
    EXPECT_THAT(m_host.Take(), IsEmpty());
    EXPECT_THAT(m_channel.Take(), IsEmpty());
    EXPECT_EQ(m_files.CurrentPath(), "");
}

TEST_F(FileCommandTest, OpenOfAMissingFileKeepsGraphsAndConnectionAndMakesNoFile) {
    ConnectAndTakeFirstBatch();
    m_settings.background = 0x00FF00;
    Choose(Path("none.ini"));
    m_commands.Open();
    EXPECT_THAT(m_host.Take(),
                ElementsAre("box file " + Path("none.ini") + " not exist !", "show settings"));
    EXPECT_EQ(m_settings, DefaultViewSettings());  // read even so
    EXPECT_THAT(m_board.Graphs(), SizeIs(1));
    EXPECT_THAT(m_channel.Take(), IsEmpty());
    EXPECT_FALSE(QFile::exists(m_folder.filePath("none.ini")));
}

TEST_F(FileCommandTest, ARecentFileIsReadBeforeItsSettingsAndNotAddedAgain) {
    const std::string path = MakeFile("recent.ini", "Y1", 0x0000FF);
    m_commands.OpenRecent(path);
    EXPECT_THAT(m_host.Take(), ElementsAre("title recent.ini - running", "show settings"));
    EXPECT_EQ(m_background_at_title, 0U);
    EXPECT_EQ(m_settings.background, 0x0000FFU);
    EXPECT_EQ(m_files.CurrentPath(), path);
}

TEST_F(FileCommandTest, AMissingRecentFileBecomesTheCurrentOne) {
    m_commands.OpenRecent(Path("gone.ini"));
    EXPECT_THAT(m_host.Take(), ElementsAre("box file " + Path("gone.ini") + " not exist !"));
    EXPECT_EQ(m_files.CurrentPath(), Path("gone.ini"));
    EXPECT_FALSE(QFile::exists(m_folder.filePath("gone.ini")));
}

TEST_F(FileCommandTest, NewEmptiesAllButKeepsPathAndDocumentName) {
    const std::string path = MakeFile("one.ini", "X1", 0);
    ASSERT_TRUE(m_files.Open(path, "one.ini", false));
    m_host.Take();
    m_editor.happened.clear();
    m_commands.New();
    EXPECT_THAT(m_host.Take(), ElementsAre("title new", "show no graphs"));
    EXPECT_THAT(m_editor.happened, ElementsAre("not initialised", "reset selection", "init 0 0"));
    EXPECT_THAT(m_board.Graphs(), IsEmpty());
    EXPECT_THAT(m_board.Drawers(), IsEmpty());
    EXPECT_EQ(m_files.AdditionalText(), "");
    EXPECT_EQ(m_files.CurrentPath(), path);
    EXPECT_EQ(m_files.DocumentName(), "one.ini");
}

TEST_F(FileCommandTest, SaveAfterNewWritesTheFileFromBefore) {
    const std::string path = MakeFile("one.ini", "X1", 0);
    ASSERT_TRUE(m_files.Open(path, "one.ini", false));
    m_commands.New();
    AddGraph("Y1");
    AddGraph("X1");
    m_files.SetAdditionalText("below");
    m_settings.background = 0xABCDEF;
    m_host.Take();
    m_commands.Save();
    EXPECT_THAT(m_host.Take(), ElementsAre("title one.ini - running"));
    const std::vector<WavoGraph> written = GraphsIn(path);
    ASSERT_THAT(written, SizeIs(2));
    EXPECT_THAT(written[0].YCoorAxName, ElementsAre("Y1"));
    EXPECT_THAT(written[1].YCoorAxName, ElementsAre("X1"));
    EXPECT_EQ(m_text_read, "below");
    EXPECT_EQ(BackgroundIn(path), 0xABCDEFU);
}

TEST_F(FileCommandTest, SaveThatFailsShowsItAndWritesNoSettings) {
    m_files.SetCurrentPath(Path("no folder/a.ini"));
    m_commands.Save();
    EXPECT_THAT(m_boxes, ElementsAre(Box{"Failed to create ini. data file", "ERROR",
                                         BoxIcon::kExclamation, BoxButtons::kOk}));
    EXPECT_THAT(m_host.Take(), ElementsAre("box Failed to create ini. data file"));
    EXPECT_THAT(m_unwritten, ElementsAre(Path("no folder/a.ini")));
}

TEST_F(FileCommandTest, WhateverStepOfSavingGraphsFailsTheFileIsOldOrNewOrABeginOfTheNew) {
    const auto text_of = [](const std::string& path) {
        std::ostringstream text;
        text << std::ifstream(path, std::ios::binary).rdbuf();
        return text.str();
    };
    const std::string path = MakeFile("a.ini", "X1", 0x111111);
    const std::string before = text_of(path);
    m_files.SetCurrentPath(path);
    AddGraph("Y1");
    AddGraph("X1");
    int steps = 0;
    {
        testing::FaultyFiles files;
        ASSERT_TRUE(m_files.Save());
        steps = files.count();
    }
    const std::string after = text_of(path);
    int failed = 0;
    for (int step = 0; step < steps; ++step) {
        SCOPED_TRACE(step);
        std::ofstream(path, std::ios::binary) << before;
        {
            const ExpectAnyErrorLog expected;
            testing::FaultyFiles files;
            files.FailCall(step, ENOSPC);
            failed += m_files.Save() ? 0 : 1;
        }
        const std::string text = text_of(path);
        EXPECT_TRUE(text == before || after.starts_with(text)) << text;
        EXPECT_EQ(QDir(m_folder.path()).entryList(QDir::Files), QStringList{"a.ini"});
        EXPECT_EQ(m_board.Graphs().size(), 2U);
        EXPECT_TRUE(m_files.Save());
        EXPECT_THAT(GraphsIn(path), SizeIs(2));
    }
    EXPECT_GT(steps, 6);
    EXPECT_GE(failed, steps - 1) << "only closing what was read may fail without harm";
}

TEST_F(FileCommandTest, SaveAsTakesThePathAndShowsTheNameAlone) {
    AddGraph("X1");
    m_cycle.SetRunning(false);
    Choose(Path("as.ini"));
    m_commands.SaveAs();
    EXPECT_THAT(m_questions,
                ElementsAre(SaveFileQuestion{"Save As", "", "ini",
                                             "Ini Files (*.ini)|*.ini|All Files (*.*)|*.*||"}));
    EXPECT_THAT(m_host.Take(), ElementsAre("title as.ini"));
    EXPECT_EQ(m_files.CurrentPath(), Path("as.ini"));
    EXPECT_EQ(m_files.DocumentName(), "wavo.ini");
    EXPECT_THAT(GraphsIn(Path("as.ini")), SizeIs(1));
    EXPECT_EQ(BackgroundIn(Path("as.ini")), 0U);
}

TEST_F(FileCommandTest, SaveAsAsksBeforeItOverwrites) {
    AddGraph("Y1");
    const std::string path = MakeFile("there.ini", "X1", 0x111111);
    Choose(path);
    m_answer = BoxAnswer::kCancel;
    m_commands.SaveAs();
    EXPECT_THAT(m_boxes,
                ElementsAre(Box{"file " + path + " already exist, override ?", "file exist",
                                BoxIcon::kExclamation, BoxButtons::kOkCancel}));
    EXPECT_EQ(m_files.CurrentPath(), "");
    EXPECT_EQ(GraphsIn(path).front().YCoorAxName.front(), "X1");
    m_answer = BoxAnswer::kOk;
    m_commands.SaveAs();
    EXPECT_EQ(m_files.CurrentPath(), path);
    EXPECT_EQ(GraphsIn(path).front().YCoorAxName.front(), "Y1");
}

TEST_F(FileCommandTest, SaveAsThatFailsHasTheTitleAllTheSame) {
    Choose(Path("no folder/a.ini"));
    const ExpectAnyErrorLog expected;
    m_commands.SaveAs();
    EXPECT_THAT(m_host.Take(), ElementsAre("box Failed to create ini. data file", "title a.ini"));
    EXPECT_TRUE(expected.Saw("CWavoView::WriteProperties: failed to svae '" +
                             Path("no folder/a.ini") + "'"));
    EXPECT_EQ(m_files.CurrentPath(), Path("no folder/a.ini"));
    EXPECT_THAT(m_unwritten, ElementsAre(Path("no folder/a.ini"), Path("no folder/a.ini")));
}

}  // namespace
}  // namespace wavo
