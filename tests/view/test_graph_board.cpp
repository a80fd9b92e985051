#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <QImage>
#include <vector>

#include "edit_graph.h"
#include "expect_errors.h"
#include "failing_memory.h"
#include "settings/view_settings.h"
#include "view/graph_board.h"

namespace wavo {
namespace {

using testing::EditGraph;
using ::testing::ElementsAre;
using testing::ExpectErrorLog;
using ::testing::IsEmpty;

class Board : public ::testing::Test {
 protected:
    void AddGraph(const std::string& axis, double time_range = 10.0) {
        WavoGraph graph;
        graph.InitGraph(static_cast<std::uint32_t>(m_graphs.Graphs().size() + 1), axis.c_str(), 0,
                        nullptr);
        graph.XScale.TimeRange = time_range;
        m_graphs.Add(graph);
    }
    void Create(double cycle_time) {
        m_faults =
            m_board.CreateAllGraphRects({0, 0, 300, 201}, cycle_time, {"X", "Y"}, m_settings);
    }

    std::vector<std::string> m_faults;
    GraphList m_graphs;
    ValueStreams m_streams;
    GraphBoard m_board{m_graphs, m_streams, [] {}};
    ViewSettings m_settings;
};

TEST(SplitGraphArea, GivesEqualHeightsBelowEachOther) {
    EXPECT_THAT(SplitGraphArea(QRect(0, 10, 300, 201), 2),
                ElementsAre(QRect(0, 10, 300, 100), QRect(0, 110, 300, 100)));
    EXPECT_THAT(SplitGraphArea(QRect(0, 0, 300, 2), 3),
                ElementsAre(QRect(0, 0, 300, 1), QRect(0, 1, 300, 1), QRect(0, 2, 300, 1)));
    EXPECT_THAT(SplitGraphArea(QRect(0, 0, 300, 200), 0), IsEmpty());
}

TEST_F(Board, GraphsOfOneStreamShareABufferThatCoversTheLongestRange) {
    AddGraph("X", 2.0);
    AddGraph("X", 5.0);
    AddGraph("Y", 1.0);
    Create(0.004);
    ASSERT_EQ(m_streams.Registry().Values().size(), 2U);
    EXPECT_EQ(m_streams.Registry().Values()[0].TimeRange(), 5.0);
    EXPECT_EQ(m_board.Drawers().size(), 3U);
    EXPECT_EQ(m_board.Drawers()[2]->Rectangle(), QRect(0, 134, 300, 67));
    EXPECT_THAT(m_streams.DistributionLists()[0], ElementsAre(&m_streams.Registry().Values()[0]));
    EXPECT_THAT(m_streams.DistributionLists()[1], ElementsAre(&m_streams.Registry().Values()[1]));
}

TEST_F(Board, BeginningAnewCopiesNothingOfWhatTheCurvesShow) {
    AddGraph("X");
    Create(0.004);
    QImage picture(300, 201, QImage::Format_RGB32);
    const std::vector<double> samples(2000, 1.0);
    m_streams.Registry().Values()[0].SetValues(samples.data(), samples.size(), 1);
    m_board.DrawAll(picture, false, PixelWriting::kNow);
    ASSERT_EQ(m_board.Drawers()[0]->Lines()[0]->Size(), samples.size());
    // Who copied would tell that there is no memory for that.
    const testing::FailingMemory failing;
    m_board.DrawAll(picture, true, PixelWriting::kNow);
    EXPECT_EQ(m_board.Drawers()[0]->Lines()[0]->Size(), 0U);
}

TEST_F(Board, WithoutACycleTimeThereAreDrawersButNoBuffers) {
    AddGraph("X");
    Create(0.0);
    EXPECT_EQ(m_board.Drawers().size(), 1U);
    EXPECT_THAT(m_streams.Registry().Values(), IsEmpty());
}

TEST_F(Board, AnAxisOverAnAxisAsksForBothWithTheFadeOutTime) {
    WavoGraph graph;
    graph.InitGraph(1, "Y", 0, nullptr);
    graph.XCoorType = CoorType::kAxis;
    graph.XCoorAxName = "X";
    graph.XScale.ScaleType = ScaleTypeCode::kAxis;
    graph.XScale.ScaleAx = ScaleAxCode::kAutomatic;
    graph.FadeOutTime = 3.0;
    m_graphs.Add(graph);
    Create(0.004);
    ASSERT_EQ(m_streams.Registry().Values().size(), 2U);
    for (const GraphValue& value : m_streams.Registry().Values()) {
        EXPECT_EQ(value.TimeRange(), 3.0);
    }
}

TEST_F(Board, AGraphWithoutATimeRangeGetsABufferThatIsBounded) {
    AddGraph("X", 0.0);
    Create(0.004);
    EXPECT_EQ(m_streams.Registry().Values()[0].Capacity(), 250U);
}

TEST_F(Board, AnotherCycleTimeIsAFaultThatTheUserSees) {
    AddGraph("X");
    Create(0.004);
    const ExpectErrorLog expected(
        {"CWavoView::GetGraphValueFifo(): prg. eror can not work with different cycl. times",
         "CWavoView::CreateAllGraphRects(): GetGraphValueFifo() failed"});
    Create(0.008);
    EXPECT_THAT(m_faults, ElementsAre("prg. eror can not work with different cycl. times"));
}

TEST_F(Board, AxesThatNoGraphShowsHaveEmptyLists) {
    AddGraph("Q");
    Create(0.004);
    EXPECT_EQ(m_streams.DistributionLists().size(), 2U);
    const double lines[] = {1.0, 2.0, 3.0, 4.0};
    m_streams.Distribute({lines, 2, 2});
    EXPECT_EQ(m_streams.Registry().Values()[0].StoredCount(), 0U);
}

TEST_F(Board, AxesOfOneNameFeedTheirBufferLineByLine) {
    AddGraph("X");
    m_board.CreateAllGraphRects({0, 0, 300, 201}, 0.004, {"X", "Y", "X"}, m_settings);
    const double lines[] = {1.0, 2.0, 3.0, 4.0, 5.0, 6.0};
    m_streams.Distribute({lines, 2, 3});
    std::vector<double> held;
    double start = 0.0;
    m_streams.Registry().Values()[0].GetTimeRangeValues(held, 10.0, start);
    EXPECT_THAT(held, ElementsAre(1.0, 3.0, 4.0, 6.0));
}

TEST_F(Board, DroppingTheBuffersLeavesTheDrawersDrawable) {
    AddGraph("X");
    Create(0.004);
    const double lines[] = {1.0, 2.0, 3.0, 4.0};
    m_streams.Distribute({lines, 2, 2});
    QImage image(300, 201, QImage::Format_RGB32);
    m_board.DrawAll(image, false);
    m_streams.Drop();
    EXPECT_THAT(m_streams.Registry().Values(), IsEmpty());
    m_board.DrawAll(image, false);
    bool something = false;
    for (int y = 0; y < image.height(); ++y) {
        for (int x = 0; x < image.width(); ++x) {
            something = something || image.pixelColor(x, y) != Qt::black;
        }
    }
    EXPECT_TRUE(something);
}

TEST_F(Board, EnablingABufferThatMissedSamplesBeginsItsDerivativeAnew) {
    AddGraph("X");
    AddGraph("Y");
    for (const std::size_t index : {0, 1}) {
        EditGraph(m_graphs, index, [](WavoGraph& graph) { graph.YCoorAxDerivation = {1}; });
    }
    Create(1.0);
    const double before[] = {1.0, 1.0, 2.0, 2.0};
    m_streams.Distribute({before, 2, 2});
    m_streams.Registry().Values()[0].SetEnabled(false);
    m_streams.Enable();
    const double after[] = {900.0, 900.0, 901.0, 901.0};
    m_streams.Distribute({after, 2, 2});
    std::vector<double> held;
    double start = 0.0;
    m_streams.Registry().Values()[0].GetTimeRangeValues(held, 10.0, start);
    EXPECT_THAT(held, ElementsAre(0.0, 1.0, 0.0, 1.0));
    m_streams.Registry().Values()[1].GetTimeRangeValues(held, 10.0, start);
    EXPECT_THAT(held, ElementsAre(0.0, 1.0, 898.0, 1.0));  // it missed nothing
}

TEST_F(Board, ClearingLeavesTheBuffers) {
    AddGraph("X");
    Create(0.004);
    m_graphs.Replace({});
    Create(0.004);
    EXPECT_THAT(m_board.Drawers(), IsEmpty());
    EXPECT_EQ(m_streams.Registry().Values().size(), 1U);
}

}  // namespace
}  // namespace wavo
