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
                ElementsAre(FileQuestion{"Open", QString::fromStdString(Path("old.ini")), "ini",
                                         "Ini Files (*.ini)|*.ini|All Files (*.*)|*.*||"}));
    EXPECT_THAT(m_host.Take(), ElementsAre("title new.ini - running", "recent new.ini"));
    EXPECT_EQ(m_background_at_title, 0x123456U);
    EXPECT_EQ(m_graphs.Graphs().front().YCoorAxName.front(), "Y1");
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
    EXPECT_THAT(m_graphs.Graphs(), SizeIs(1));
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
    EXPECT_THAT(m_graphs.Graphs(), IsEmpty());
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
                ElementsAre(FileQuestion{"Save As", "", "ini",
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

TEST_F(FileCommandTest, BoundsThatTheViewWasNotToldOfAreSavedAsTheViewShowsThem) {
    ConnectAndTakeFirstBatch();
    WavoGraph graph = m_graphs.Graphs().front();
    graph.YScales = {{ScaleTypeCode::kAxis, 0.0, ScaleAxCode::kManual, -5.0, 10.0}};
    m_graphs.Put(graph, GraphList::Telling::kSilent);
    m_session.RebuildGraphs();
    m_files.SetCurrentPath(Path("a.ini"));
    for (const double minimum : {20.0, 10.0}) {
        graph.YScales[0].Minimum = minimum;
        m_graphs.Put(graph, GraphList::Telling::kSilent);
        m_commands.Save();
        const std::vector<WavoGraph> saved = GraphsIn(Path("a.ini"));
        ASSERT_THAT(saved, SizeIs(1));
        EXPECT_EQ(saved[0].YScales[0].Minimum, -5.0);
        EXPECT_EQ(saved[0].YScales[0].Maximum, 10.0);
        // What was typed stays.
        EXPECT_EQ(m_graphs.Graphs().front().YScales[0].Minimum, minimum);
    }
}

TEST_F(FileCommandTest, TheSameGoesForTheXScaleOverAnAxis) {
    ConnectAndTakeFirstBatch();
    WavoGraph graph = m_graphs.Graphs().front();
    graph.XCoorType = CoorType::kAxis;
    graph.XCoorAxName = "Y1";
    graph.XScale = {ScaleTypeCode::kAxis, 10.0, ScaleAxCode::kManual, -30.0, 40.0};
    m_graphs.Put(graph, GraphList::Telling::kSilent);
    m_session.RebuildGraphs();
    graph.XScale.Maximum = -31.0;
    m_graphs.Put(graph, GraphList::Telling::kSilent);
    m_files.SetCurrentPath(Path("a.ini"));
    m_commands.Save();
    const std::vector<WavoGraph> saved = GraphsIn(Path("a.ini"));
    ASSERT_THAT(saved, SizeIs(1));
    EXPECT_EQ(saved[0].XScale.Minimum, -30.0);
    EXPECT_EQ(saved[0].XScale.Maximum, 40.0);
}

TEST_F(FileCommandTest, AnAxisThatMovedSinceTheViewWasToldIsFoundByItsName) {
    ConnectAndTakeFirstBatch();
    WavoGraph graph = m_graphs.Graphs().front();
    graph.YCoorAxName = {"Y1", "X1", "X1"};
    graph.YCoorAxColor = {1, 2, 3};
    graph.YCoorAxDerivation = {0, 0, 1};
    graph.Triggers.resize(3, graph.Triggers[0]);
    graph.YScales = {{ScaleTypeCode::kAxis, 0.0, ScaleAxCode::kManual, 1.0, 2.0},
                     {ScaleTypeCode::kAxis, 0.0, ScaleAxCode::kManual, 3.0, 4.0},
                     {ScaleTypeCode::kAxis, 0.0, ScaleAxCode::kManual, 5.0, 6.0}};
    m_graphs.Put(graph, GraphList::Telling::kSilent);
    m_session.RebuildGraphs();
    graph.YCoorAxName.erase(graph.YCoorAxName.begin());
    graph.YCoorAxColor.pop_back();
    graph.YCoorAxDerivation = {0, 1};
    graph.Triggers.pop_back();
    graph.YScales.erase(graph.YScales.begin());
    graph.YScales[0].Minimum = 9.0;
    graph.YScales[1].Minimum = 9.0;
    m_graphs.Put(graph, GraphList::Telling::kSilent);
    m_files.SetCurrentPath(Path("a.ini"));
    m_commands.Save();
    const std::vector<WavoGraph> saved = GraphsIn(Path("a.ini"));
    ASSERT_THAT(saved, SizeIs(1));
    EXPECT_EQ(saved[0].YScales[0].Minimum, 3.0);
    EXPECT_EQ(saved[0].YScales[1].Minimum, 5.0);
}

TEST_F(FileCommandTest, AxesThatCannotBeSavedAreToldAndStayInTheGraph) {
    AddGraph("X1");
    AddGraph("X,Y");
    AddGraph("");
    const std::vector<std::string> entries = {
        "CAxSelect::GetGraphAsIniData(): axis [X,Y] of graph 2 left out, its name cannot stand in "
        "a file",
        "CAxSelect::GetGraphAsIniData(): axis [] of graph 3 left out, its name cannot stand in a "
        "file"};
    m_files.SetCurrentPath(Path("a.ini"));
    {
        const ExpectErrorLog expected(entries);
        m_commands.Save();
    }
    EXPECT_THAT(m_boxes, IsEmpty());
    EXPECT_THAT(m_left_out, ElementsAre(Path("a.ini")));
    ASSERT_THAT(GraphsIn(Path("a.ini")), SizeIs(3));
    EXPECT_THAT(m_graphs.Graphs()[1].YCoorAxName, ElementsAre("X,Y"));
    Choose(Path("b.ini"));
    {
        const ExpectErrorLog expected(entries);
        m_commands.SaveAs();
    }
    EXPECT_THAT(m_left_out, ElementsAre(Path("a.ini"), Path("b.ini")));
    m_graphs.Remove(2, GraphList::Telling::kSilent);
    m_graphs.Remove(3, GraphList::Telling::kSilent);
    m_commands.Save();
    EXPECT_THAT(m_left_out, SizeIs(2));
}

TEST_F(FileCommandTest, AFileThatCouldNotBeReadIsKeptOnceBeforeASaveReplacesIt) {
    const std::string path = MakeUnreadableFile("a.ini");
    const std::string text = FileText(path);
    {
        const ExpectAnyErrorLog expected;
        EXPECT_FALSE(m_files.Open(path, "a.ini", true));
    }
    AddGraph("Y1");
    m_commands.Save();
    EXPECT_EQ(FileText(path + ".bak"), text);
    EXPECT_THAT(GraphsIn(path), SizeIs(1));
    AddGraph("X1");
    m_commands.Save();
    EXPECT_THAT(GraphsIn(path), SizeIs(2));
    EXPECT_FALSE(QFile::exists(QString::fromStdString(path + ".bak2")));
    // Another failed reading, and what was kept stays.
    MakeUnreadableFile("a.ini");
    const std::string second = FileText(path);
    {
        const ExpectAnyErrorLog expected;
        EXPECT_FALSE(m_files.Open(path, "a.ini", true));
    }
    m_commands.Save();
    EXPECT_EQ(FileText(path + ".bak"), text);
    EXPECT_EQ(FileText(path + ".bak2"), second);
    EXPECT_FALSE(QFile::exists(QString::fromStdString(path + ".bak3")));
}

TEST_F(FileCommandTest, SaveAsOverAFileThatCouldNotBeReadKeepsItToo) {
    const std::string path = MakeUnreadableFile("a.ini");
    const std::string text = FileText(path);
    {
        const ExpectAnyErrorLog expected;
        EXPECT_FALSE(m_files.Open(path, "a.ini", true));
    }
    AddGraph("Y1");
    Choose(Path("b.ini"));
    m_commands.SaveAs();
    EXPECT_FALSE(QFile::exists(QString::fromStdString(path + ".bak")));
    Choose(path);
    m_commands.SaveAs();
    EXPECT_EQ(FileText(path + ".bak"), text);
    EXPECT_FALSE(QFile::exists(m_folder.filePath("b.ini.bak")));
}

TEST_F(FileCommandTest, AFileThatWasReadSinceIsNotKept) {
    const std::string path = MakeUnreadableFile("a.ini");
    {
        const ExpectAnyErrorLog expected;
        EXPECT_FALSE(m_files.Open(path, "a.ini", true));
    }
    MIniData store;
    ASSERT_TRUE(store.Open(path));
    ASSERT_TRUE(store.SetStringEntry("1", "YScaleAxMin", "-20"));
    ASSERT_TRUE(store.Save());
    EXPECT_TRUE(m_files.Open(path, "a.ini", true));
    m_commands.Save();
    EXPECT_FALSE(QFile::exists(QString::fromStdString(path + ".bak")));
}

TEST_F(FileCommandTest, AFileThatCannotBeKeptIsNotReplaced) {
    const std::string path = MakeUnreadableFile("a.ini");
    const std::string text = FileText(path);
    {
        const ExpectAnyErrorLog expected;
        EXPECT_FALSE(m_files.Open(path, "a.ini", true));
    }
    for (int i = 1; i <= 99; ++i) {
        QFile kept(QString::fromStdString(path + ".bak" + (i == 1 ? "" : std::to_string(i))));
        ASSERT_TRUE(kept.open(QIODevice::WriteOnly));
    }
    AddGraph("Y1");
    m_host.Take();
    {
        const ExpectErrorLog expected({FailedToSaveGraphs(path)});
        m_commands.Save();
    }
    EXPECT_THAT(m_host.Take(), ElementsAre("box Failed to create ini. data file"));
    EXPECT_EQ(FileText(path), text);
    ASSERT_TRUE(QFile::remove(QString::fromStdString(path + ".bak7")));
    m_commands.Save();
    EXPECT_EQ(FileText(path + ".bak7"), text);
    EXPECT_THAT(GraphsIn(path), SizeIs(1));
}

TEST_F(FileCommandTest, AFileWhoseSettingsWereWrittenAnewIsKeptOnce) {
    const std::string path = Path("a.ini");
    {
        QFile file(QString::fromStdString(path));
        ASSERT_TRUE(file.open(QIODevice::WriteOnly));
        file.write("no INI file\n");
    }
    EXPECT_FALSE(m_files.Open(path, "a.ini", true));
    AddGraph("Y1");
    Choose(path);
    {
        const ExpectAnyErrorLog expected;
        m_commands.SaveAs();  // the settings alone: the graphs cannot be put into such a file
    }
    EXPECT_EQ(FileText(path + ".bak"), "no INI file\n");
    m_commands.Save();
    EXPECT_THAT(GraphsIn(path), SizeIs(1));
    EXPECT_FALSE(QFile::exists(QString::fromStdString(path + ".bak2")));
}

}  // namespace
}  // namespace wavo
