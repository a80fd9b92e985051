// The viewer's program itself, as a user starts it.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <QDir>
#include <QFile>
#include <QImage>
#include <QProcess>
#include <QTemporaryDir>
#include <clocale>
#include <set>

#include "graph/model/graph_ini_data.h"
#include "platform/folders.h"
#include "support/mini_data.h"
#include "system/other_process.h"
#include "viewer_fixture.h"

namespace wavo::testing {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

struct Ended {
    int code = -1;
    QString output;
};

class Program : public ::testing::Test {
 protected:
    void Start(const QStringList& arguments) {
        m_process.setProcessChannelMode(QProcess::MergedChannels);
        m_process.start(QStringLiteral(WAVO_VIEWER), arguments);
        ASSERT_TRUE(m_process.waitForStarted());
    }
    Ended WaitForEnd() {
        EXPECT_TRUE(m_process.state() == QProcess::NotRunning || m_process.waitForFinished(60000));
        EXPECT_EQ(m_process.exitStatus(), QProcess::NormalExit);
        return {m_process.exitCode(), QString::fromUtf8(m_process.readAll())};
    }
    QProcess m_process;
};

TEST_F(Program, SavesAPictureWithAMovingCurve) {
    const QTemporaryDir folder;
    const QString file = folder.filePath(QStringLiteral("shot.png"));
    DemoMaster master({"--recording", RecordingPath("circle_xy_r50")});
    Start({"--screenshot", file, "--after-lines", "1500"});
    EXPECT_EQ(WaitForEnd().code, 0);
    const QImage picture(file);
    ASSERT_FALSE(picture.isNull());
    EXPECT_EQ(picture.width(), 1366);
    EXPECT_EQ(picture.height(), 768);
    int curve_pixels = 0;
    for (int y = 220; y < 720; ++y) {  // below the graph editor
        for (int x = 20; x < 250; ++x) {
            curve_pixels += picture.pixel(x, y) == qRgb(255, 255, 255) ? 1 : 0;
        }
    }
    EXPECT_GT(curve_pixels, 100);
    ASSERT_TRUE(master.End());
    EXPECT_THAT(NamesInUse(), IsEmpty());
}

TEST_F(Program, APictureThatCannotBeWrittenEndsWithAFailure) {
    DemoMaster master({"--motion", "circle"});
    Start({"--screenshot", "/nonexistent/shot.png", "--after-lines", "10"});
    EXPECT_EQ(WaitForEnd().code, 1);
}

TEST_F(Program, APictureOfAFileThatCannotBeOpenedEndsWithAMessage) {
    const QTemporaryDir folder;
    const QString shot = folder.filePath(QStringLiteral("shot.png"));
    const auto table = [&folder](const char* name, const char* text) {
        QFile file(folder.filePath(QString::fromLatin1(name)));
        EXPECT_TRUE(file.open(QIODevice::WriteOnly));
        file.write(text);
        return file.fileName();
    };
    const QString untold = table("untold.csv", "force,temp\n1,7\n2,3\n4,1\n");
    const QString broken = table("broken.mcap", "no recording");
    const QString no_graphs = table("none.ini", "no graphs");
    const struct {
        QStringList files;
        const char* said;
    } kCases[] = {
        {{folder.filePath(QStringLiteral("missing.mcap"))}, "missing.mcap"},
        {{broken}, "broken.mcap"},
        {{untold}, "untold.csv: it does not tell when its lines are"},
        {{folder.filePath(QStringLiteral("missing.csv"))}, "missing.csv"},
        {{QStringLiteral(WAVO_RECORDINGS "/helix_4axis.csv.gz"),
          folder.filePath(QStringLiteral("missing.ini"))},
         "missing.ini"},
    };
    for (const auto& each : kCases) {
        Start(QStringList{"--screenshot", shot} + each.files);
        const Ended ended = WaitForEnd();
        EXPECT_EQ(ended.code, 1) << each.said;
        EXPECT_TRUE(ended.output.contains(QLatin1String(each.said))) << qPrintable(ended.output);
        EXPECT_FALSE(QFile::exists(shot)) << each.said;
    }
}

TEST_F(Program, ATableThatLetsItsTimeExpectIsAskedForNothing) {
    const QTemporaryDir folder;
    const QString shot = folder.filePath(QStringLiteral("shot.png"));
    QFile table(folder.filePath(QStringLiteral("told.csv")));
    ASSERT_TRUE(table.open(QIODevice::WriteOnly));
    table.write("time,force\n0,1\n0.01,3\n0.02,2\n");
    table.close();
    Start({"--screenshot", shot, table.fileName()});
    const Ended ended = WaitForEnd();
    EXPECT_EQ(ended.code, 0) << qPrintable(ended.output);
    EXPECT_FALSE(QImage(shot).isNull());
    QFile::remove(shot);
    Start({"--screenshot", shot, "--cycle", "0.001",
           QStringLiteral(WAVO_RECORDINGS "/helix_4axis.csv.gz")});
    EXPECT_EQ(WaitForEnd().code, 0) << "as it was told";
    EXPECT_FALSE(QImage(shot).isNull());
}

TEST_F(Program, EndsInOrderWhenItIsTold) {
    DemoMaster master({"--motion", "circle"});
    Start({});
    ASSERT_TRUE(QTest::qWaitFor(
        [&] { return master.Output().contains(QStringLiteral("connected")); }, 20000));
    m_process.terminate();
    EXPECT_EQ(WaitForEnd().code, 0);
    ASSERT_TRUE(QTest::qWaitFor(
        [&] { return master.Output().contains(QStringLiteral("disconnected")); }, 20000));
    ASSERT_TRUE(master.End());
    EXPECT_THAT(NamesInUse(), IsEmpty());
}

TEST_F(Program, EndsInOrderWhileAMessageBoxWaits) {
    DemoMaster master({"--motion", "circle", "--fault", "overrun", "--fault-after", "200",
                       "--fifo-lines", "200"});
    Start({});
    // The viewer disconnects, then shows its box.
    ASSERT_TRUE(QTest::qWaitFor(
        [&] { return master.Output().contains(QStringLiteral("disconnected")); }, 20000));
    // On Windows a box that is not there yet cannot be closed, and the window below it waits for
    // it.
    for (int i = 0; i < 30 && m_process.state() != QProcess::NotRunning; ++i) {
        m_process.terminate();
        m_process.waitForFinished(2000);
    }
    EXPECT_EQ(WaitForEnd().code, 0);
    ASSERT_TRUE(master.End());
    EXPECT_THAT(NamesInUse(), IsEmpty());
}

TEST_F(Program, WritesNumbersWithAPointInEveryCountry) {
    EXPECT_STREQ(std::setlocale(LC_NUMERIC, nullptr), "C");
}

TEST_F(Program, EndsWithCodeZeroWhenTheMasterTellsItToQuit) {
    DemoMaster master({"--motion", "circle", "--fault", "quit", "--fault-after", "200"});
    Start({});
    EXPECT_EQ(WaitForEnd().code, 0);
}

TEST_F(Program, AFirstStartLeavesACompleteSettingsFileBehind) {
    const QString file = QString::fromStdString(platform::DataFolder()) + "/wavo.ini";
    QFile::remove(file);
    DemoMaster master({"--motion", "circle"});
    Start({});
    ASSERT_TRUE(QTest::qWaitFor(
        [&] { return master.Output().contains(QStringLiteral("connected")); }, 20000));
    m_process.terminate();
    EXPECT_EQ(WaitForEnd().code, 0);
    MIniData settings;
    ASSERT_TRUE(settings.Open(file.toStdString()));
    EXPECT_THAT(settings.SectionNames(),
                ElementsAre("BKCOLOR", "GRAPH_FONT", "SCALE_LINES", "AX_EDIT", "DATA_EXPORT"));
    std::string value;
    EXPECT_TRUE(settings.GetStringEntry("DATA_EXPORT", "EndOfLine", value));
    EXPECT_EQ(value, "0x0d,0x0a");
}

TEST_F(Program, OpensTheGraphFileOfTheCommandLine) {
    const QTemporaryDir folder;
    const QString shot = folder.filePath(QStringLiteral("shot.png"));
    DemoMaster master({"--recording", RecordingPath("circle_xy_r50")});
    Start({"--screenshot", shot, "--after-lines", "500",
           QStringLiteral(WAVO_RECORDINGS "/../graphs/circle.ini")});
    EXPECT_EQ(WaitForEnd().code, 0);
    const QImage picture(shot);
    ASSERT_FALSE(picture.isNull());
    std::set<QRgb> colours;
    for (int y = 0; y < picture.height(); ++y) {
        for (int x = 0; x < picture.width(); ++x) {
            colours.insert(picture.pixel(x, y));
        }
    }
    // One curve of each graph of the file.
    EXPECT_TRUE(colours.contains(qRgb(255, 96, 96)));
    EXPECT_TRUE(colours.contains(qRgb(95, 160, 208)) || colours.contains(qRgb(96, 230, 112)));
    EXPECT_TRUE(colours.contains(qRgb(255, 200, 64)));
}

TEST_F(Program, TwoViewersWithAShortTimeRangeDoNotFloodTheirLog) {
    const QTemporaryDir folder;
    const std::string log = platform::StateFolder() + platform::PathSeparator() + "wavo_error.log";
    QFile::remove(QString::fromStdString(log));
    WavoGraph graph;
    graph.InitGraph(1, "X", 0, nullptr);
    graph.XScale.TimeRange = 0.05;  // of half a second of values: each one beyond it is reported
    const QString graphs = folder.filePath(QStringLiteral("graphs.ini"));
    MIniData store;
    ASSERT_TRUE(store.Open(graphs.toStdString()));
    ASSERT_TRUE(GetGraphAsIniData(store, {graph}, ""));
    ASSERT_TRUE(store.Save());
    DemoMaster master({"--motion", "circle", "--announce", "0.5", "--fifo-lines", "100000"});
    QProcess second;
    second.start(QStringLiteral(WAVO_VIEWER),
                 {"--screenshot", folder.filePath(QStringLiteral("second.png")), "--after-lines",
                  "3000", graphs});
    Start({"--screenshot", folder.filePath(QStringLiteral("first.png")), "--after-lines", "3000",
           graphs});
    EXPECT_EQ(WaitForEnd().code, 0);
    EXPECT_TRUE(second.waitForFinished(30000));
    EXPECT_EQ(second.exitCode(), 0);
    QFile file(QString::fromStdString(log));
    ASSERT_TRUE(file.open(QIODevice::ReadOnly));
    int lines = 0;
    std::uint64_t told = 0;
    while (!file.atEnd()) {
        const QString line = QString::fromUtf8(file.readLine());
        if (line.contains(QStringLiteral("CWavoView::ReadProperties"))) {
            continue;  // the graph file holds no settings
        }
        ASSERT_TRUE(line.contains(QStringLiteral("GraphValue::SetValue(): overrun")))
            << qPrintable(line);
        const QString count = line.section(QStringLiteral(" ... "), 1).section(u' ', 0, 0);
        ++lines;
        told += count.isEmpty() ? 1 : QString(count).remove(u',').toULongLong();
    }
    EXPECT_LT(lines, 100);
    EXPECT_GT(told, 2000U);
    const auto totals = master.End();
    ASSERT_TRUE(totals);
    EXPECT_EQ(totals->overruns, 0U);
}

TEST_F(Program, FindsTheGraphFileInTheDataFolderBesideIt) {
    const QTemporaryDir folder;
    ASSERT_TRUE(QDir(folder.path()).mkdir(QStringLiteral("DATA")));
    ASSERT_TRUE(QFile::copy(QStringLiteral(WAVO_RECORDINGS "/../graphs/circle.ini"),
                            folder.filePath(QStringLiteral("DATA/mine.ini"))));
    DemoMaster master({"--motion", "circle"});
    m_process.setWorkingDirectory(folder.path());
    Start({"--screenshot", folder.filePath(QStringLiteral("shot.png")), "--after-lines", "10",
           "mine.ini"});
    EXPECT_EQ(WaitForEnd().code, 0);
}

TEST_F(Program, ShowsItsVersion) {
    Start({"--version"});
    const Ended ended = WaitForEnd();
    EXPECT_EQ(ended.code, 0);
    // The toolkit may have said something about the system before.
    EXPECT_EQ(ended.output.trimmed().section(u'\n', -1), QStringLiteral("Wavo " WAVO_VERSION));
}

TEST_F(Program, ShowsItsOptions) {
    Start({"--help"});
    const Ended ended = WaitForEnd();
    EXPECT_EQ(ended.code, 0);
    EXPECT_TRUE(ended.output.contains(QStringLiteral("--screenshot")))
        << ended.output.toStdString();
}

TEST_F(Program, RefusesWhatItDoesNotKnow) {
    Start({"--after-lines", "many"});
    const Ended ended = WaitForEnd();
    EXPECT_EQ(ended.code, 2);
    EXPECT_TRUE(ended.output.contains(QStringLiteral("wavo: --after-lines needs a number")));
}

}  // namespace
}  // namespace wavo::testing
