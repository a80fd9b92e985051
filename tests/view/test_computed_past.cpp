// Computed axes over a recording: the same curves as of an axis that was recorded with these
// values.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cmath>
#include <random>

#include "past_fixture.h"
#include "special_values.h"

namespace wavo {
namespace {

using computed::ComputedAxis;
using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;

class ComputedPast : public testing::PastFixture {
 protected:
    /// A recording of X, Y and E, which is X - Y, opened; with a gap.
    void OpenRecording(int lines, const std::optional<recording::GraphFile>& graphs = {}) {
        std::mt19937_64 random(5);
        m_lines.clear();
        double x = 0.0;
        for (int i = 0; i < lines; ++i) {
            x += static_cast<double>(random() % 200) / 100.0 - 1.0;
            const double y = 3.0 * std::sin(i / 500.0) + static_cast<double>(random() % 100) / 99.0;
            const double e = x - y;
            m_lines.push_back({x, y, i % 4321 == 0 ? kNaN : e});
            m_lines.back()[1] = i % 4321 == 0 ? kNaN : y;
        }
        recording::RecordingHead head = testing::MakeHead(3);
        head.axis_names = {"X", "Y", "E"};
        testing::WriteRecording(PathOf("run.mcap"), head, m_lines, 100, 50, graphs);
        ASSERT_TRUE(m_view->Past().Files().Open(PathOf("run.mcap")));
    }
    void Define(std::vector<ComputedAxis> axes) {
        m_view->Work().Computed().Define(std::move(axes));
        QCoreApplication::processEvents();
    }
    /// Shows one curve and gives its picture, but for the name beside it.
    QImage PictureOf(const std::string& axis, std::int32_t derivation = 0) {
        WavoGraph graph;
        graph.InitGraph(1, axis.c_str(), {}, nullptr);
        graph.YCoorAxDerivation = {derivation};
        graph.YScales[0].ScaleAx = ScaleAxCode::kAutomatic;
        m_view->Work().Graphs().Replace({graph});
        QCoreApplication::processEvents();
        if (m_shown.Count() > 0) {
            m_view->Past().Window().Show(m_shown);
        }
        const QImage picture = m_view->Screen().Picture();
        return picture.copy(Graph().PlotArea());
    }

    LineRange m_shown;
};

TEST_F(ComputedPast, AreCurvesLikeThoseOfRecordedAxes) {
    OpenRecording(60000);
    Define({{"e", "X - Y", "mm"}});
    EXPECT_THAT(m_view->Work().Values().AxisNames(), ElementsAre("X", "Y", "E", "e"));
    for (const std::int32_t order : {0, 1, 2}) {
        EXPECT_EQ(PictureOf("e", order), PictureOf("E", order)) << order;
    }
    EXPECT_NE(PictureOf("e"), PictureOf("X"));
}

TEST_F(ComputedPast, AreCurvesLikeThoseOfRecordedAxesWhereverOneLooks) {
    OpenRecording(60000);
    Define({{"e", "X - Y", ""}});
    for (const LineRange& lines :
         {LineRange{29000, 32000}, LineRange{4000, 4400}, LineRange{8500, 9500},
          LineRange{100, 20000}, LineRange{50000, 60150}}) {
        m_shown = lines;
        EXPECT_EQ(PictureOf("e"), PictureOf("E")) << lines.begin;
        EXPECT_EQ(PictureOf("e", 1), PictureOf("E", 1)) << lines.begin;
    }
}

TEST_F(ComputedPast, AreXAxes) {
    OpenRecording(3000);
    Define({{"e", "X - Y", ""}});
    const auto picture = [this](const std::string& x_axis) {
        WavoGraph graph;
        graph.InitGraph(1, "Y", {}, nullptr);
        graph.XCoorType = CoorType::kAxis;
        graph.XCoorAxName = x_axis;
        graph.XScale.ScaleType = ScaleTypeCode::kAxis;
        graph.XScale.ScaleAx = ScaleAxCode::kAutomatic;
        m_view->Work().Graphs().Replace({graph});
        QCoreApplication::processEvents();
        return m_view->Screen().Picture().copy(Graph().PlotArea());
    };
    EXPECT_EQ(picture("e"), picture("E"));
}

TEST_F(ComputedPast, AreLookedForByTriggers) {
    OpenRecording(20000);
    Define({{"e", "X - Y", ""}});
    const auto found = [this](const std::string& axis) {
        WavoGraph graph;
        graph.InitGraph(1, axis.c_str(), {}, nullptr);
        const auto value = [](const std::vector<double>& line) {
            return std::isnan(line[2]) ? -1e9 : line[2];
        };
        const double most = value(*std::ranges::max_element(m_lines, {}, value));
        graph.Triggers[0] = {TriggerTypeCode::kStartAbove, most - 0.5, axis};
        m_view->Work().Graphs().Replace({graph});
        QCoreApplication::processEvents();
        EXPECT_TRUE(m_view->Past().Search().IsEnabled(CommandId::kNextTrigger));
        EXPECT_TRUE(m_view->Past().Files().Open(PathOf("run.mcap"))) << "forgets the mark";
        m_view->Past().Search().Execute(CommandId::kNextTrigger);
        return m_view->Past().Window().Mark();
    };
    const std::optional<std::int64_t> of_recorded = found("E");
    ASSERT_TRUE(of_recorded.has_value());
    EXPECT_EQ(found("e"), of_recorded);
}

TEST_F(ComputedPast, ChangeWhileTheyAreShown) {
    OpenRecording(20000);
    Define({{"e", "X - Y", ""}});
    const QImage before = PictureOf("e");
    Define({{"e", "(X - Y) * 2 + 1", ""}});
    const QImage changed = m_view->Screen().Picture().copy(Graph().PlotArea());
    EXPECT_NE(changed, before);
    Define({{"e", "X - Y", ""}});
    EXPECT_EQ(m_view->Screen().Picture().copy(Graph().PlotArea()), before);
    Define({});
    EXPECT_THAT(m_panes[0], HasSubstr("Not in the recording: e"));
}

TEST_F(ComputedPast, ComeWithTheGraphsOfTheRecording) {
    const std::string text =
        "[GENERAL]\r\nGraphs=1\r\nAddText=\r\n[1]\r\nYCoorAxName=e\r\nYCoorAxColor=255\r\n"
        "YCoorAxDerivation=0\r\nMode=1\r\nModeAx=1\r\nXCoorType=1\r\nXScaleType=1\r\nXScaleTime="
        "2\r\n"
        "YScaleType=2\r\nYScaleAxType=1\r\nYScaleAxMax=0.0\r\nYScaleAxMin=0.0\r\n"
        "[COMPUTED]\r\nAxes=e\r\nExpression1=X - Y\r\nUnit1=mm\r\n";
    Define({{"mine", "X", ""}});
    OpenRecording(5000, recording::GraphFile{"run.ini", text});
    EXPECT_THAT(m_view->Work().Computed().Definitions(),
                ElementsAre(ComputedAxis{"mine", "X", ""}));
    m_view->Past().Files().Execute(CommandId::kRecordingGraphs);
    QCoreApplication::processEvents();
    EXPECT_THAT(m_view->Work().Computed().Definitions(),
                ElementsAre(ComputedAxis{"e", "X - Y", "mm"}));
    const QImage shown = m_view->Screen().Picture().copy(Graph().PlotArea());
    WavoGraph graph = m_view->Work().Graphs().Graphs()[0];
    graph.YCoorAxName = {"E"};
    m_view->Work().Graphs().Put(graph);
    QCoreApplication::processEvents();
    EXPECT_EQ(shown, m_view->Screen().Picture().copy(Graph().PlotArea()));
    m_view->Past().Files().Execute(CommandId::kCloseRecording);
    QCoreApplication::processEvents();
    EXPECT_THAT(m_view->Work().Computed().Definitions(), ElementsAre(ComputedAxis{"mine", "X", ""}))
        << "closing brings back what was before";
}

}  // namespace
}  // namespace wavo
