// The curves of one graph stand over one time axis, however far their streams reach back and
// whatever lines they have missed.
#include <gtest/gtest.h>

#include <QImage>
#include <cmath>
#include <deque>
#include <map>
#include <memory>
#include <random>
#include <string>
#include <vector>

#include "drawing_fixture.h"
#include "expect_errors.h"
#include "graph/draw/graph_draw.h"
#include "graph/values/missing_value.h"

namespace wavo {
namespace {

using testing::AddAxis;
using testing::AutomaticScale;
using testing::AxisGraph;
using testing::CountingHost;
using testing::ExpectAnyErrorLog;
using testing::ManualScale;
using testing::TimeGraph;

constexpr double kSharedCycle = 0.25;

/// Streams that get lines of the master as the view hands them out, and a graph of some of them.
/// The sample of stream s of line n is 1000 s + n.
class Master {
 public:
    GraphValue& Add(double range, std::int32_t derivation = 0) {
        return streams.emplace_back("S" + std::to_string(streams.size()), kSharedCycle, range,
                                    derivation);
    }

    /// Makes the graph anew, as after every edit. Stream x of an axis-over-axis graph is the last.
    void Show(const WavoGraph& graph) {
        GraphStreams shown;
        for (GraphValue& value : streams) {
            shown.y.push_back(&value);
        }
        if (graph.XCoorType == CoorType::kAxis) {
            shown.x = shown.y.back();
            shown.y.pop_back();
        }
        draw = std::make_unique<GraphDraw>(QRect(0, 0, 400, 200), graph, host,
                                           GraphDisplaySettings{}, kSharedCycle, 5, 3, shown);
        Step();
    }

    void Give(std::int64_t count) {
        for (GraphValue& value : streams) {
            value.ExpectLine(line);
        }
        for (std::int64_t i = 0; i < count; ++i, ++line) {
            for (std::size_t s = 0; s < streams.size(); ++s) {
                streams[s].SetValue(1000.0 * static_cast<double>(s) + static_cast<double>(line));
            }
        }
        Step();
    }

    void Step() {
        draw->DrawGraph(image, false);
        for (GraphValue& value : streams) {
            value.EmptyNewValues();
        }
    }

    /// The samples of a curve in the order of time.
    [[nodiscard]] std::vector<double> Curve(std::size_t axis) const {
        std::vector<double> values;
        draw->Lines()[axis]->GetYValues(values);
        return values;
    }

    CountingHost host;
    std::deque<GraphValue> streams;
    std::unique_ptr<GraphDraw> draw;
    QImage image{400, 200, QImage::Format_RGB32};
    std::int64_t line = 0;
};

WavoGraph Graph(double range, std::size_t axes, GraphMode mode = GraphMode::kContinuity) {
    WavoGraph graph = TimeGraph(range, mode);
    for (std::size_t i = 0; i < axes; ++i) {
        AddAxis(graph, "S" + std::to_string(i), AutomaticScale());
    }
    return graph;
}

/// Values as a test writes them: "-" where a stream has no sample, "?" where it has no value.
std::string Text(const std::vector<double>& values) {
    std::string text;
    for (const double value : values) {
        text += IsNoSample(value)   ? "- "
                : std::isnan(value) ? "? "
                                    : std::to_string(std::lround(value)) + " ";
    }
    return text;
}

std::string Times(const LinesDrawAxis& line) {
    std::string text;
    for (std::size_t place = 0; place < line.Size(); ++place) {
        text += std::to_string(std::lround(line.Point(place).x_value / kSharedCycle)) + " ";
    }
    return text;
}

TEST(SharedTime, AYoungerCurveBeginsWhereItsValuesDo) {
    for (const GraphMode mode : {GraphMode::kContinuity, GraphMode::kClassic}) {
        Master master;
        master.Add(2.0);
        master.Show(Graph(2.0, 1, mode));
        master.Give(5);
        master.Add(2.0);
        master.Show(Graph(2.0, 2, mode));
        master.Give(2);
        EXPECT_EQ(Text(master.Curve(0)), "0 1 2 3 4 5 6 ");
        EXPECT_EQ(Text(master.Curve(1)), "- - - - - 1005 1006 ");
        EXPECT_EQ(Times(*master.draw->Lines()[0]), "0 1 2 3 4 5 6 ");
        EXPECT_EQ(Times(*master.draw->Lines()[1]), "0 1 2 3 4 5 6 ");
        master.Give(4);
        EXPECT_EQ(Text(master.Curve(1)), "- - - 1005 1006 1007 1008 1009 1010 ");
    }
}

TEST(SharedTime, AStreamThatWasGrownStandsBesideOneThatReachesFurtherBack) {
    Master master;
    master.Add(10.0);
    master.Add(1.0);
    master.Show(Graph(1.0, 2));
    master.Give(4);
    master.Give(4);
    master.streams[1].GrowTimeRange(10.0);
    master.Show(Graph(10.0, 2));
    EXPECT_EQ(Text(master.Curve(0)), "0 1 2 3 4 5 6 7 ");
    EXPECT_EQ(Text(master.Curve(1)), "- - - - 1004 1005 1006 1007 ");
    master.Give(2);
    EXPECT_EQ(Text(master.Curve(1)), "- - - - 1004 1005 1006 1007 1008 1009 ");
}

TEST(SharedTime, ADisabledStreamStandsStillInTimeNotOnTheScreen) {
    Master master;
    master.Add(3.0);
    master.Add(3.0);
    master.Show(Graph(3.0, 2));
    master.Give(2);
    master.streams[1].SetEnabled(false);  // the trigger of another graph
    master.Give(3);
    EXPECT_EQ(Text(master.Curve(0)), "0 1 2 3 4 ");
    EXPECT_EQ(Text(master.Curve(1)), "1000 1001 - - - ");
    master.streams[1].SetEnabled(true);
    master.Give(2);
    EXPECT_EQ(Text(master.Curve(1)), "1000 1001 - - - 1005 1006 ");
    master.Show(Graph(3.0, 2));
    EXPECT_EQ(Text(master.Curve(1)), "1000 1001 - - - 1005 1006 ") << "and when filled anew";
    EXPECT_EQ(Times(*master.draw->Lines()[1]), "0 1 2 3 4 5 6 ");
}

TEST(SharedTime, AStreamThatIsResetDoesNotBeginTheSweepOfTheOthers) {
    Master master;
    master.Add(2.0);
    master.Add(2.0);
    master.Show(Graph(2.0, 2, GraphMode::kClassic));
    master.Give(3);
    master.streams[1].Reset();  // with another graph
    master.Give(2);
    EXPECT_EQ(Times(*master.draw->Lines()[0]), "0 1 2 3 4 ");
    EXPECT_EQ(Times(*master.draw->Lines()[1]), "0 1 2 3 4 ");
    EXPECT_EQ(Text(master.Curve(1)), "1000 1001 1002 1003 1004 ");
}

TEST(SharedTime, ADerivativeThatBeginsInTheMiddleOfACurveBeginsWithItsFirstValue) {
    Master master;
    master.Add(5.0);
    master.Add(5.0, 1);
    master.Show(Graph(5.0, 2));
    master.Give(3);
    EXPECT_EQ(Text(master.Curve(1)), "0 4 4 ") << "the zero at the very begin is what it is";
    master.Add(5.0, 2);
    master.Show(Graph(5.0, 3));
    master.Give(4);
    EXPECT_EQ(Text(master.Curve(1)), "0 4 4 4 4 4 4 ");
    EXPECT_EQ(Text(master.Curve(2)), "- - - ? ? 0 0 ");
    EXPECT_EQ(master.streams[2].Values()[0], 0.0) << "the buffer keeps its zeros";
    master.streams[1].GrowTimeRange(6.0);
    master.Show(Graph(6.0, 3));
    master.Give(2);
    EXPECT_EQ(Text(master.Curve(1)), "0 4 4 4 4 4 4 ? 4 ");
    master.Show(Graph(6.0, 3));
    EXPECT_EQ(Text(master.Curve(1)), "0 4 4 4 4 4 4 ? 4 ") << "and when filled anew";
    master.draw->SetZoomRange(1.0, 2.25);
    master.Step();
    EXPECT_EQ(Text(master.Curve(1)), "4 4 4 - 4 ");
    EXPECT_EQ(Text(master.Curve(2)), "- 0 0 0 0 ");
    EXPECT_EQ(master.draw->Graph().YScales[2].Minimum, -master.draw->Graph().YScales[2].Maximum);
}

TEST(SharedTime, ATriggerTestsTheValuesAsTheBufferHasThem) {
    WavoGraph graph = Graph(5.0, 2);
    graph.Triggers[1] = {TriggerTypeCode::kStopBelow, 0.5, "S1"};
    Master master;
    master.Add(5.0);
    master.Show(Graph(5.0, 1));
    master.Give(3);
    master.Add(5.0, 1);
    master.Show(graph);
    ASSERT_EQ(master.draw->State(), RunState::kWaitingForStop);
    master.Give(3);
    EXPECT_EQ(master.draw->State(), RunState::kStoppedAfterStop);
    EXPECT_EQ(Text(master.Curve(0)), "0 1 2 3 ");
    EXPECT_EQ(Text(master.Curve(1)), "- - - ? ");
}

TEST(SharedTime, AZoomShowsTheSameLinesOfAllStreams) {
    Master master;
    master.Add(10.0);
    master.Show(Graph(2.0, 1));
    for (int i = 0; i < 4; ++i) {
        master.Give(4);
    }
    master.Add(2.0);
    master.Show(Graph(2.0, 2));
    master.Give(3);
    master.draw->SetZoomRange(1.0, 2.0);  // of lines 11 to 18
    master.Step();
    EXPECT_EQ(Text(master.Curve(0)), "15 16 17 18 ");
    EXPECT_EQ(Text(master.Curve(1)), "- 1016 1017 1018 ");
    EXPECT_EQ(Times(*master.draw->Lines()[1]), "1 2 3 ");
    EXPECT_EQ(master.draw->DisplayedWindow(), (TimeWindow{1.0, 2.0}));
    master.draw->SetZoomRange(0.5, 1.0);
    master.Step();
    EXPECT_EQ(Text(master.Curve(0)), "17 18 ");
    EXPECT_EQ(Text(master.Curve(1)), "1017 1018 ");
    master.draw->RestoreZoom(ZoomState{});
    master.draw->DetachValues();
    EXPECT_EQ(Text(master.Curve(1)), "1017 1018 ");
}

TEST(SharedTime, AKeptWindowKeepsItsGaps) {
    Master master;
    master.Add(5.0);
    master.Add(5.0);
    master.Show(Graph(5.0, 2));
    master.Give(2);
    master.streams[1].SetEnabled(false);
    master.Give(2);
    master.streams[1].SetEnabled(true);
    master.Give(2);
    master.draw->SetZoomRange(0.25, 1.5);
    master.Step();
    const QImage before = master.image.copy();
    EXPECT_EQ(Text(master.Curve(1)), "1001 - - 1004 1005 ");
    master.draw->DetachValues();
    master.Step();
    EXPECT_EQ(Text(master.Curve(1)), "1001 - - 1004 1005 ");
    EXPECT_EQ(master.image, before);
}

TEST(SharedTime, OverAnAxisAPointHasTheValuesOfOneLine) {
    WavoGraph graph = AxisGraph(5.0, ManualScale(0.0, 5000.0), ManualScale(0.0, 5000.0));
    Master master;
    master.Add(5.0);
    master.Add(2.0);  // x
    master.Show(graph);
    master.Give(6);
    master.Give(6);
    master.Show(graph);
    ASSERT_EQ(master.draw->Lines()[0]->Size(), 8U);
    EXPECT_EQ(master.draw->Lines()[0]->Point(0).y_value, 4.0);
    EXPECT_EQ(master.draw->Lines()[0]->Point(0).x_value, 1004.0);
    master.streams[1].SetEnabled(false);
    master.Give(2);
    master.streams[1].SetEnabled(true);
    master.Give(1);
    const LinesDrawAxis& line = *master.draw->Lines()[0];
    ASSERT_EQ(line.Size(), 11U);
    EXPECT_TRUE(std::isnan(line.Point(8).x_value)) << "a gap";
    EXPECT_EQ(line.Point(10).y_value, 14.0);
    EXPECT_EQ(line.Point(10).x_value, 1014.0);
}

TEST(SharedTime, RowsAreLinesThatAllColumnsHold) {
    Master master;
    master.Add(10.0);
    master.Add(10.0);
    master.Show(Graph(10.0, 2));
    master.Give(3);
    master.Add(10.0, 1);
    master.Show(Graph(10.0, 3));
    master.Give(4);
    master.streams[1].SetEnabled(false);
    master.Give(2);
    std::vector<std::vector<double>> columns;
    master.draw->GetAxRows({"S0", "S1", "S2"}, columns);
    EXPECT_EQ(Text(columns[0]), "3 4 5 6 ");
    EXPECT_EQ(Text(columns[1]), "1003 1004 1005 1006 ");
    EXPECT_EQ(Text(columns[2]), "? 4 4 4 ");
    master.draw->GetAxRows({"S0", "S2"}, columns);
    EXPECT_EQ(Text(columns[0]), "3 4 5 6 7 8 ");
    master.streams[1].SetEnabled(true);
    master.Give(2);
    master.draw->GetAxRows({"S1", "S0"}, columns);
    EXPECT_EQ(Text(columns[1]), "0 1 2 3 4 5 6 9 10 ");
    EXPECT_EQ(Text(columns[0]), "1000 1001 1002 1003 1004 1005 1006 1009 1010 ");
    master.draw->SetZoomRange(0.25, 1.25);
    master.Step();
    master.draw->GetAxRows({"S0", "S1", "S2"}, columns);
    EXPECT_EQ(Text(columns[1]), "1003 1004 ");
    EXPECT_EQ(Text(columns[2]), "? 4 ");
}

TEST(SharedTime, RowsOfARecordingAreThoseOfItsCurves) {
    WavoGraph graph = Graph(5.0, 2);
    graph.Triggers[0] = {TriggerTypeCode::kStopAbove, 7.5, "S0"};
    Master master;
    master.Add(5.0);
    master.Show(Graph(5.0, 1));
    master.Give(4);
    master.Add(5.0);
    master.Show(graph);
    master.Give(6);
    ASSERT_EQ(master.draw->State(), RunState::kStoppedAfterStop);
    std::vector<std::vector<double>> columns;
    master.draw->GetAxRows({"S0", "S1"}, columns);
    EXPECT_EQ(Text(columns[0]), "4 5 6 7 8 ");
    EXPECT_EQ(Text(columns[1]), "1004 1005 1006 1007 1008 ");
}

/// Whatever happens to the streams: at each place of each curve stands the sample of that line.
class Life {
 public:
    Life(GraphMode mode, unsigned seed) : m_random(seed), m_mode(mode) {
        m_master.Add(Range());
        m_master.Add(Range());
        Rebuild();
    }

    void Live() {
        GraphValue& value = m_master.streams[Below(m_master.streams.size())];
        switch (Below(12)) {
            case 0:
                if (m_master.streams.size() < 4) {
                    m_master.Add(Range());
                    Rebuild();
                }
                break;
            case 1:
                value.GrowTimeRange(value.TimeRange() + kSharedCycle);
                Rebuild();
                break;
            case 2:
                value.SetEnabled(!value.Enabled());
                break;
            case 3:
                m_master.draw->RestoreZoom(ZoomState{});
                break;
            case 4:
                m_master.draw->SetZoomRange(
                    0.5, 0.5 + kSharedCycle * static_cast<double>(Below(9)) + 0.1);
                break;
            default:
                m_master.Give(static_cast<std::int64_t>(Below(7)));
        }
        m_master.Step();
    }

    void Compare() {
        std::vector<std::vector<double>> columns;
        std::vector<std::string> names;
        for (std::size_t s = 0; s < m_master.streams.size(); ++s) {
            names.push_back("S" + std::to_string(s));
        }
        m_master.draw->GetAxRows(names, columns);
        for (std::size_t s = 0; s < columns.size(); ++s) {
            ASSERT_EQ(columns[s].size(), columns[0].size());
            for (std::size_t row = 0; row < columns[s].size(); ++row) {
                ASSERT_EQ(columns[s][row], columns[0][row] + 1000.0 * static_cast<double>(s));
            }
        }
        std::map<long, double> time_of;
        for (std::size_t s = 0; s < m_master.streams.size(); ++s) {
            const LinesDrawAxis& line = *m_master.draw->Lines()[s];
            for (std::size_t place = 0; place < line.Size(); ++place) {
                const LinePoint point = line.Point(place);
                if (std::isnan(point.y_value)) {
                    continue;
                }
                const long of = std::lround(point.y_value - 1000.0 * static_cast<double>(s));
                const auto [known, is_new] = time_of.emplace(of, point.x_value);
                ASSERT_NEAR(known->second, point.x_value, 1e-9) << "stream " << s << " line " << of;
            }
        }
    }

 private:
    std::size_t Below(std::size_t end) { return m_random() % end; }
    double Range() { return 2.0 + kSharedCycle * static_cast<double>(Below(30)); }
    void Rebuild() {
        for (GraphValue& value : m_master.streams) {
            value.SetEnabled(true);
        }
        m_master.Show(Graph(2.0, m_master.streams.size(), m_mode));
    }

    std::mt19937 m_random;
    GraphMode m_mode;
    Master m_master;
};

TEST(SharedTime, EveryLineHasOnePlaceForAllCurves) {
    const ExpectAnyErrorLog any;  // batches may be longer than a buffer
    for (const GraphMode mode : {GraphMode::kContinuity, GraphMode::kClassic}) {
        for (unsigned seed = 0; seed < 30; ++seed) {
            Life life(mode, seed);
            for (int step = 0; step < 100; ++step) {
                life.Live();
                life.Compare();
                ASSERT_FALSE(::testing::Test::HasFailure()) << "seed " << seed << ", step " << step;
            }
        }
    }
}

}  // namespace
}  // namespace wavo
