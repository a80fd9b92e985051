#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <QFile>
#include <QTemporaryDir>

#include "cycle_fixture.h"
#include "expect_errors.h"
#include "graph/model/graph_ini_data.h"
#include "platform/folders.h"
#include "session/graph_files.h"

namespace wavo {
namespace {

using ::testing::ElementsAre;
using testing::ExpectErrorLog;
using ::testing::IsEmpty;
using testing::kConnect;
using testing::kDisconnect;
using testing::kNewValues;
using testing::kReady;
using ::testing::SizeIs;

class GraphFileTest : public testing::CycleFixture {
 protected:
    GraphFileTest() { m_host.full_titles = true; }

    std::string Path(const char* name) { return m_folder.filePath(name).toStdString(); }

    std::string WriteFile(const char* name, const QByteArray& content) {
        QFile file(m_folder.filePath(name));
        EXPECT_TRUE(file.open(QIODevice::WriteOnly));
        file.write(content);
        return Path(name);
    }

    std::string WriteGraphs(const char* name, const std::vector<std::string>& axes,
                            const std::string& text) {
        std::vector<WavoGraph> graphs;
        for (const std::string& axis : axes) {
            WavoGraph graph;
            graph.InitGraph(static_cast<std::uint32_t>(graphs.size() + 1), axis.c_str(), 0,
                            nullptr);
            graphs.push_back(graph);
        }
        MIniData store;
        EXPECT_TRUE(store.Open(Path(name)));
        EXPECT_TRUE(GetGraphAsIniData(store, graphs, text));
        EXPECT_TRUE(store.Save());
        return Path(name);
    }

    QTemporaryDir m_folder;
    GraphFiles& m_files = m_session.Files();
};

TEST_F(GraphFileTest, OpeningTakesGraphsTextTitleAndPath) {
    const std::string path = WriteGraphs("two.ini", {"X1", "Y1"}, "hello");
    EXPECT_TRUE(m_files.Open(path, "two.ini", true));
    EXPECT_THAT(m_graphs.Graphs(), SizeIs(2));
    EXPECT_EQ(m_files.AdditionalText(), "hello");
    EXPECT_EQ(m_files.CurrentPath(), path);
    EXPECT_EQ(m_files.DocumentName(), "two.ini");
    EXPECT_THAT(m_host.Take(), ElementsAre("title two.ini - running", "recent two.ini"));
    EXPECT_THAT(m_editor.happened, ElementsAre("not initialised", "reset selection", "init 2 0"));
    EXPECT_THAT(m_channel.Take(), IsEmpty());
}

TEST_F(GraphFileTest, AFileNeedNotGoIntoTheRecentOnes) {
    EXPECT_TRUE(m_files.Open(WriteGraphs("one.ini", {"X1"}, ""), "one.ini", false));
    EXPECT_THAT(m_host.Take(), ElementsAre("title one.ini - running"));
}

TEST_F(GraphFileTest, AStoppedViewShowsSoInTheTitle) {
    m_cycle.SetRunning(false);
    EXPECT_TRUE(m_files.Open(WriteGraphs("one.ini", {"X1"}, ""), "one.ini", false));
    EXPECT_THAT(m_host.Take(), ElementsAre("title one.ini - stopped"));
}

TEST_F(GraphFileTest, AMissingFileChangesNothingNotEvenTheConnection) {
    ConnectAndTakeFirstBatch();
    EXPECT_FALSE(m_files.Open(Path("none.ini"), "none.ini", true));
    EXPECT_THAT(m_host.Take(), ElementsAre("box file " + Path("none.ini") + " not exist !"));
    EXPECT_THAT(m_channel.Take(), IsEmpty());
    EXPECT_TRUE(m_cycle.IsReaderOpen());
    EXPECT_EQ(m_files.CurrentPath(), "");
    EXPECT_EQ(m_files.DocumentName(), "wavo.ini");
    EXPECT_FALSE(QFile::exists(m_folder.filePath("none.ini")));
}

TEST_F(GraphFileTest, WithAMasterTheViewerLeavesAndJoinsAgain) {
    ConnectAndTakeFirstBatch();
    EXPECT_TRUE(m_files.Open(WriteGraphs("one.ini", {"Y1"}, ""), "one.ini", false));
    EXPECT_THAT(m_channel.Take(), ElementsAre(kDisconnect, kConnect));
    EXPECT_FALSE(m_cycle.IsReaderOpen());
    EXPECT_TRUE(m_cycle.IsMasterKnown());
    m_fifo->Write(5.0);
    EXPECT_EQ(m_cycle.OnMessage(kNewValues), 1);
    EXPECT_THAT(Held("Y1"), ElementsAre(6.0));
    EXPECT_THAT(m_channel.Take(), ElementsAre(kReady));
}

TEST_F(GraphFileTest, ABadGraphKeepsTheOldOnesAndStillJoinsAgain) {
    ConnectAndTakeFirstBatch();
    EXPECT_TRUE(m_files.Open(WriteGraphs("one.ini", {"X1"}, "old"), "one.ini", false));
    m_host.Take();
    m_channel.Take();
    const std::string path =
        WriteFile("bad.ini", "[GENERAL]\r\nGraphs=1\r\nAddText=new\r\n[1]\r\nYCoorAxName=X1\r\n");
    const ExpectErrorLog expected(
        {"CAxSelect::CreateGraphsFromIniData(): invalid number of colors"});
    EXPECT_FALSE(m_files.Open(path, "bad.ini", true));
    EXPECT_THAT(m_host.Take(), ElementsAre("box failed to read " + path +
                                           ".\ninvalid number of colors, graph [1]"));
    EXPECT_THAT(m_channel.Take(), ElementsAre(kDisconnect, kConnect));
    EXPECT_THAT(m_graphs.Graphs(), SizeIs(1));
    EXPECT_EQ(m_files.AdditionalText(), "old");
    EXPECT_EQ(m_files.DocumentName(), "one.ini");
    EXPECT_EQ(m_files.CurrentPath(), path);
}

TEST_F(GraphFileTest, AFileThatIsNoIniFileIsRefusedInWords) {
    const std::string path = WriteFile("utf16.ini", QByteArray("\xFF\xFE[\0", 4));
    EXPECT_FALSE(m_files.Open(path, "utf16.ini", true));
    EXPECT_THAT(m_host.Take(), ElementsAre("box failed to read " + path +
                                           ".\nUTF16/32 Unicode format not supported."));
    EXPECT_EQ(m_files.CurrentPath(), path);
}

TEST(FileNameOf, IsWhatStandsBehindTheLastSeparator) {
    EXPECT_EQ(FileNameOf("/a/b/c.ini"), "c.ini");
    EXPECT_EQ(FileNameOf("c.ini"), "c.ini");
    EXPECT_EQ(FileNameOf("/a/b\\c.ini"), platform::PathSeparator() == "/" ? "b\\c.ini" : "c.ini");
}

}  // namespace
}  // namespace wavo
