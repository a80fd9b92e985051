#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <QFile>
#include <string>
#include <vector>

#include "expect_errors.h"
#include "file_command_fixture.h"

namespace wavo {
namespace {

using ::testing::ElementsAre;
using testing::ExpectAnyErrorLog;
using testing::ExpectErrorLog;
using testing::FailedToSaveGraphs;
using testing::FailedToSaveSettings;
using testing::FileCommandTest;
using ::testing::IsEmpty;
using testing::kConnect;
using testing::kDisconnect;
using ::testing::SizeIs;

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
    const ExpectErrorLog expected({FailedToSaveGraphs(Path("no folder/a.ini"))});
    m_commands.Save();
    EXPECT_THAT(m_boxes, ElementsAre(Box{"Failed to create ini. data file", "ERROR",
                                         BoxIcon::kExclamation, BoxButtons::kOk}));
    EXPECT_THAT(m_host.Take(), ElementsAre("box Failed to create ini. data file"));
    EXPECT_THAT(m_unwritten, ElementsAre(Path("no folder/a.ini")));
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
    EXPECT_TRUE(expected.Saw(FailedToSaveGraphs(Path("no folder/a.ini"))));
    EXPECT_TRUE(expected.Saw(FailedToSaveSettings(Path("no folder/a.ini"))));
    EXPECT_EQ(m_files.CurrentPath(), Path("no folder/a.ini"));
    EXPECT_THAT(m_unwritten, ElementsAre(Path("no folder/a.ini"), Path("no folder/a.ini")));
}

}  // namespace
}  // namespace wavo
