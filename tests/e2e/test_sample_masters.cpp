// The viewer with the sample masters, in C and in Python.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <QImage>
#include <QProcess>
#include <algorithm>
#include <cmath>

#include "link/axis_capabilities.h"
#include "system/other_process.h"
#include "viewer_fixture.h"

namespace wavo::testing {
namespace {

using ::testing::IsEmpty;
using ::testing::SizeIs;

struct Language {
    const char* name;
    QString program;
    QStringList arguments;
};
void PrintTo(const Language& language, std::ostream* out) {
    *out << language.name;
}

class SampleMaster : public Viewer, public ::testing::WithParamInterface<Language> {
 protected:
    static std::unique_ptr<DemoMaster> Start() {
        return std::make_unique<DemoMaster>(QStringLiteral("sine_master"), GetParam().program,
                                            GetParam().arguments);
    }
    static bool WaitForOutput(const DemoMaster& master, const char* text) {
        return WaitFor([&] { return master.Output().contains(QLatin1String(text)); });
    }

    /// The curves that the graphs hold are a sine and a cosine without a step left out.
    void ExpectCircle() {
        const std::vector<double> x = Held("X");
        const std::vector<double> y = Held("Y");
        ASSERT_THAT(y, SizeIs(x.size()));
        for (std::size_t i = 0; i < x.size(); ++i) {
            ASSERT_NEAR(std::hypot(x[i], y[i]), 100.0, 1e-9) << i;
            if (i > 0) {
                ASSERT_NEAR(std::hypot(x[i] - x[i - 1], y[i] - y[i - 1]),
                            200.0 * std::sin(M_PI / 1000.0), 1e-9)
                    << i;
            }
        }
    }
};

TEST_P(SampleMaster, ShowsItsLinesFromConnectToTheEndOfTheLink) {
    auto master = Start();
    Open({"X", "Y"});
    ASSERT_TRUE(WaitForLines(1500));
    EXPECT_EQ(Message(), "Connected to the master process (Dorvane)");
    EXPECT_EQ(m_frame->PaneText(StatusPane::kCycleTime), QStringLiteral("cycl. time=0.00100s"));
    EXPECT_GE(Held("X").size(), 1500U);
    ExpectCircle();
    const auto limits = View().Work().Source().Limits().FindAxis("Y");
    ASSERT_TRUE(limits);
    EXPECT_EQ(*limits, (AxisCapabilities{120.0, -120.0, 1000.0, 10000.0, 0.001}));
    // Opening a graph file leaves the master and connects again.
    std::string file = View().Work().Files().CurrentPath();
    View().Commands().Execute(CommandId::kSave);  // with the settings
    View().Commands().SetRecentFiles([file](int) { return file; });
    View().Commands().Execute(CommandId::kRecentFile);
    ASSERT_TRUE(WaitForLines(Cycle().TotalLines() + 1000));
    ExpectCircle();
    const LinkCounters counters = Cycle().Counters();
    EXPECT_EQ(counters.overruns, 0U);
    EXPECT_EQ(counters.batches_failed, 0U);

    const auto totals = master->End();
    ASSERT_TRUE(WaitForMessage("The master process (Dorvane) has ended the link"));
    ASSERT_TRUE(totals);
    EXPECT_EQ(totals->overruns, 0U);
    EXPECT_GT(totals->batches_answered, 0U);
    EXPECT_THAT(TakeBoxes(), IsEmpty());
    Close();
    EXPECT_THAT(NamesInUse(), IsEmpty());
}

TEST_P(SampleMaster, ConnectsAgainAfterItWasKilledAndAfterAnOverrun) {
    auto master = Start();
    Open({"X", "Y"});
    ASSERT_TRUE(WaitForLines(300));
    master->Kill();
    ASSERT_TRUE(WaitForMessage(
        "The master process (Dorvane) has gone: Machine Data > Connect when it is back"));
    master = Start();
    m_frame->Action(CommandId::kConnect)->trigger();
    ASSERT_TRUE(WaitForLines(Cycle().TotalLines() + 300));
    EXPECT_THAT(TakeBoxes(), IsEmpty());
    // The viewer does not come to its queue until its FIFO is full.
    ASSERT_TRUE(master->WaitForOutputAlone(QStringLiteral("overrun")));
    ASSERT_TRUE(WaitForMessage("The value fifo ran over: Machine Data > Connect to go on"));
    EXPECT_THAT(TakeBoxes(), SizeIs(1));
    m_frame->Action(CommandId::kConnect)->trigger();
    ASSERT_TRUE(WaitForLines(Cycle().TotalLines() + 300));
    ExpectCircle();
    const auto totals = master->End();
    ASSERT_TRUE(totals);
    EXPECT_EQ(totals->overruns, 1U);
}

TEST_P(SampleMaster, ServesTheViewersProgram) {
    const auto master = Start();
    const QString shot = m_folder.filePath(QStringLiteral("shot.png"));
    WavoGraph graph;
    graph.InitGraph(1, "X", 0, nullptr);
    const std::string file = WriteGraphFile({graph});
    QProcess viewer;
    viewer.start(QStringLiteral(WAVO_VIEWER),
                 {"--screenshot", shot, "--after-lines", "1500", QString::fromStdString(file)});
    ASSERT_TRUE(WaitFor([&] { return viewer.state() == QProcess::NotRunning; }, 60000));
    EXPECT_EQ(viewer.exitCode(), 0) << viewer.readAllStandardError().toStdString();
    EXPECT_FALSE(QImage(shot).isNull());
    ASSERT_TRUE(WaitForOutput(*master, "disconnected"));
    const auto totals = master->End();
    ASSERT_TRUE(totals);
    EXPECT_GE(totals->lines_sent, 1500U);
    EXPECT_GT(totals->batches_answered, 0U);
    EXPECT_EQ(totals->overruns, 0U);
    EXPECT_THAT(NamesInUse(), IsEmpty());
}

INSTANTIATE_TEST_SUITE_P(Languages, SampleMaster,
                         ::testing::Values(Language{"C", QStringLiteral(WAVO_SINE_MASTER_C), {}},
                                           Language{
                                               "Python",
                                               QStringLiteral(WAVO_PYTHON),
                                               {"-B", QStringLiteral(WAVO_SINE_MASTER_PYTHON)}}),
                         [](const auto& language) { return std::string(language.param.name); });

}  // namespace
}  // namespace wavo::testing
