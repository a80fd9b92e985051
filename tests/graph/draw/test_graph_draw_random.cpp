// Whatever happened to a graph before, a step leaves the picture that it would have painted anew.
#include <gtest/gtest.h>

#include <QImage>
#include <algorithm>
#include <cmath>
#include <deque>
#include <functional>
#include <memory>
#include <random>
#include <string>
#include <vector>

#include "drawing_fixture.h"
#include "expect_errors.h"
#include "graph/draw/graph_draw.h"
#include "special_values.h"

namespace wavo {
namespace {

using testing::AddAxis;
using testing::AutomaticScale;
using testing::AxisGraph;
using testing::CountingHost;
using testing::ExpectAnyErrorLog;
using testing::ManualScale;
using testing::TimeGraph;

constexpr double kCycle = 0.01;

/// Three graphs that live through the same: one is painted anew in each step, one now and then.
class Triplets {
 public:
    Triplets(const WavoGraph& graph, unsigned seed) : m_random(seed), m_graph(graph) {
        for (const std::string& name : graph.YCoorAxName) {
            m_values.emplace_back(name, kCycle, 4.0 * GraphTimeRange(graph), 0);
        }
        if (graph.XCoorType == CoorType::kAxis) {
            m_values.emplace_back("X", kCycle, 4.0 * GraphTimeRange(graph), 0);
        }
        MakePictures();
        Build();
    }

    void Step() {
        Happen();
        m_fresh->Invalidate();
        const bool restart = Below(40) == 0;
        if (restart) {
            for (GraphValue& value : m_values) {
                value.Reset();
            }
        }
        m_kept->DrawGraph(m_picture, restart);
        m_fresh->DrawGraph(m_fresh_picture, restart);
        const bool is_seen = Below(3) == 0;
        m_late->DrawGraph(m_late_picture, restart,
                          is_seen ? PixelWriting::kNow : PixelWriting::kLater);
        for (GraphValue& value : m_values) {
            value.EmptyNewValues();
        }
        m_late_is_painted = is_seen || Below(3) == 0;
        if (m_late_is_painted && !is_seen) {
            m_late->Paint(m_late_picture);
        }
    }

    /// Of the graph that is painted now and then; that of the others while it is not.
    [[nodiscard]] const QImage& LatePicture() const {
        return m_late_is_painted ? m_late_picture : m_fresh_picture;
    }
    /// Painted or not, it has taken the same.
    void ExpectLateIsInTheSameState() const {
        ASSERT_EQ(m_late->State(), m_kept->State()) << m_story;
        ASSERT_EQ(m_late->Graph(), m_kept->Graph()) << m_story;
        ASSERT_EQ(m_late->DisplayedWindow(), m_kept->DisplayedWindow()) << m_story;
        for (std::size_t i = 0; i < m_kept->Lines().size(); ++i) {
            std::vector<double> late;
            std::vector<double> kept;
            m_late->Lines()[i]->GetYValues(late);
            m_kept->Lines()[i]->GetYValues(kept);
            ASSERT_TRUE(std::equal(
                late.begin(), late.end(), kept.begin(), kept.end(),
                [](double a, double b) { return a == b || (std::isnan(a) && std::isnan(b)); }))
                << m_story;
        }
    }
    [[nodiscard]] const QImage& Picture() const { return m_picture; }
    [[nodiscard]] const QImage& FreshPicture() const { return m_fresh_picture; }
    [[nodiscard]] const std::string& Story() const { return m_story; }

 private:
    std::size_t Below(std::size_t end) { return m_random() % end; }

    void Both(const std::string& what, const std::function<void(GraphDraw&)>& change) {
        m_story += what + "; ";
        change(*m_kept);
        change(*m_fresh);
        change(*m_late);
    }

    void Build() {
        GraphStreams streams;
        for (std::size_t i = 0; i < m_graph.YCoorAxName.size(); ++i) {
            streams.y.push_back(&m_values[i]);
        }
        if (m_graph.XCoorType == CoorType::kAxis) {
            streams.x = &m_values.back();
        }
        for (std::unique_ptr<GraphDraw>* draw : {&m_kept, &m_fresh, &m_late}) {
            *draw = std::make_unique<GraphDraw>(m_rectangle, m_graph, m_host, m_settings, kCycle, 4,
                                                3, streams);
        }
        for (GraphValue& value : m_values) {
            value.SetEnabled(true);
        }
        m_detached = false;
    }

    void MakePictures() {
        static constexpr double kRatios[] = {1.0, 1.25, 1.5, 1.9, 2.0};
        const double ratio = kRatios[Below(5)];
        const QSize size(100 + static_cast<int>(Below(300)), 60 + static_cast<int>(Below(200)));
        m_picture = QImage((QSizeF(size) * ratio).toSize(), QImage::Format_RGB32);
        m_picture.fill(Qt::darkGray);
        m_picture.setDevicePixelRatio(ratio);
        m_fresh_picture = m_picture.copy();
        m_late_picture = m_picture.copy();
    }

    double Sample() {
        switch (Below(120)) {
            case 0:
                return kNaN;
            case 1:
                return kInf;
            case 2:
                return -kInf;
            default:
                m_level += (static_cast<double>(Below(2001)) - 1000.0) / 4000.0;
                m_level = Below(200) == 0 ? 0.0 : m_level;
                return m_noisy ? m_level + static_cast<double>(Below(9)) : m_level;
        }
    }

    void Feed(std::size_t count) {
        m_story += "feed " + std::to_string(count) + "; ";
        for (GraphValue& value : m_values) {
            for (std::size_t i = 0; i < count; ++i) {
                value.SetValue(Sample());
            }
        }
    }

    void Happen() {
        m_story.clear();
        if (m_detached && Below(4) == 0) {
            Build();
            Both("build", [](GraphDraw& draw) { draw.Invalidate(); });
        }
        switch (Below(30)) {
            case 0:
                m_rectangle =
                    QRect(static_cast<int>(Below(120)) - 20, static_cast<int>(Below(80)) - 20,
                          static_cast<int>(Below(400)), static_cast<int>(Below(250)));
                m_picture.fill(Qt::darkGray);
                m_fresh_picture.fill(Qt::darkGray);
                m_late_picture.fill(Qt::darkGray);
                Both("move", [this](GraphDraw& draw) { draw.SetRectangle(m_rectangle); });
                break;
            case 1:
                MakePictures();
                Both("picture", [](GraphDraw& draw) { draw.Invalidate(); });
                break;
            case 2: {
                const double start = static_cast<double>(Below(100)) / 100.0;
                const double end = start + 0.01 + static_cast<double>(Below(100)) / 50.0;
                Both("zoom", [&](GraphDraw& draw) { draw.SetZoomRange(start, end); });
                break;
            }
            case 3:
                Both("unzoom", [](GraphDraw& draw) {
                    ZoomState none;
                    none.definition = draw.Graph();
                    draw.RestoreZoom(none);
                });
                break;
            case 4:
                for (GraphValue& value : m_values) {
                    value.SetEnabled(true);
                }
                Both("restart", [](GraphDraw& draw) { draw.SetRestartFlag(); });
                break;
            case 5:
                m_noisy = !m_noisy;
                break;
            case 6:
                m_detached = Below(3) == 0;
                if (m_detached) {
                    Both("detach", [](GraphDraw& draw) { draw.DetachValues(); });
                }
                break;
            case 7:
                Both("restart after trigger", [](GraphDraw& draw) { draw.RestartAfterTrigger(); });
                for (GraphValue& value : m_values) {
                    value.SetEnabled(true);
                }
                break;
            case 8:
                Feed(Below(1000));
                break;
            case 9:
                for (GraphValue& value : m_values) {
                    value.GrowTimeRange(value.TimeRange() + 1.0);
                }
                break;
            default:
                break;
        }
        Feed(Below(3) == 0 ? 0 : Below(60));
    }

    std::mt19937 m_random;
    WavoGraph m_graph;
    CountingHost m_host;
    GraphDisplaySettings m_settings;
    QRect m_rectangle{0, 0, 300, 150};
    std::deque<GraphValue> m_values;
    std::unique_ptr<GraphDraw> m_kept;
    std::unique_ptr<GraphDraw> m_fresh;
    std::unique_ptr<GraphDraw> m_late;
    QImage m_picture;
    QImage m_fresh_picture;
    QImage m_late_picture;
    bool m_late_is_painted = false;
    double m_level = 0.0;
    bool m_noisy = false;
    bool m_detached = false;
    std::string m_story;
};

/// The pixels that differ, empty when none does.
QRect Difference(const QImage& a, const QImage& b) {
    QRect different;
    if (a == b) {
        return different;
    }
    for (int y = 0; y < a.height(); ++y) {
        for (int x = 0; x < a.width(); ++x) {
            if (a.pixel(x, y) != b.pixel(x, y)) {
                different |= QRect(x, y, 1, 1);
            }
        }
    }
    return different;
}

void Live(const WavoGraph& graph, unsigned seed, int steps) {
    // Batches may be longer than a curve, and disabled buffers get no values.
    const ExpectAnyErrorLog any;
    Triplets triplets(graph, seed);
    for (int step = 0; step < steps; ++step) {
        triplets.Step();
        const QRect different = Difference(triplets.Picture(), triplets.FreshPicture());
        ASSERT_TRUE(different.isEmpty())
            << "seed " << seed << ", step " << step << ": " << triplets.Story() << "at "
            << different.left() << ", " << different.top() << ", size " << different.width()
            << " x " << different.height();
        ASSERT_EQ(triplets.LatePicture(), triplets.FreshPicture())
            << "painted later, seed " << seed << ", step " << step << ": " << triplets.Story();
        ASSERT_NO_FATAL_FAILURE(triplets.ExpectLateIsInTheSameState());
    }
}

WavoGraph ManyAxes(GraphMode mode, TriggerTypeCode trigger) {
    WavoGraph graph = TimeGraph(2.0, mode);
    graph.ZeroLines = true;
    AddAxis(graph, "Y", AutomaticScale(), trigger, 3.0);
    AddAxis(graph, "Z", ManualScale(-5.0, 5.0));
    AddAxis(graph, "W", AutomaticScale());
    graph.YCoorAxColor = {0x0000FF, 0x00FF00, 0xFFFF00};
    return graph;
}

TEST(GraphDrawRandom, OneCurveIsPaintedAsAnew) {
    for (const GraphMode mode : {GraphMode::kClassic, GraphMode::kContinuity}) {
        WavoGraph graph = TimeGraph(2.0, mode);
        AddAxis(graph, "Y", AutomaticScale());
        WavoGraph manual = TimeGraph(6.0, mode);
        AddAxis(manual, "Y", ManualScale(-4.0, 4.0));
        for (unsigned seed = 0; seed < 2; ++seed) {
            Live(graph, seed, 150);
            Live(manual, seed, 150);
        }
    }
}

TEST(GraphDrawRandom, SeveralCurvesWithTriggersArePaintedAsAnew) {
    for (const GraphMode mode : {GraphMode::kClassic, GraphMode::kContinuity}) {
        for (const TriggerTypeCode trigger :
             {TriggerTypeCode::kNone, TriggerTypeCode::kStartAbove, TriggerTypeCode::kStopAbove}) {
            for (unsigned seed = 0; seed < 2; ++seed) {
                Live(ManyAxes(mode, trigger), seed, 120);
            }
        }
    }
}

TEST(GraphDrawRandom, ACurveOverAnAxisIsPaintedAsAnew) {
    for (const AxisDrawMode mode : {AxisDrawMode::kLines, AxisDrawMode::kPoints}) {
        WavoGraph graph = AxisGraph(2.0, AutomaticScale(), AutomaticScale());
        graph.ModeAx = mode;
        graph.ZeroLines = true;
        for (unsigned seed = 0; seed < 2; ++seed) {
            Live(graph, seed, 120);
        }
    }
}

}  // namespace
}  // namespace wavo
