// The zoom of one graph, and zooms that graphs share.
#include "graph/draw/graph_zoom.h"

#include <gtest/gtest.h>

#include "drawing_fixture.h"
#include "expect_errors.h"

namespace wavo {
namespace {

using testing::AddAxis;
using testing::AxisGraph;
using testing::ExpectErrorLog;
using testing::ManualScale;
using testing::Ramp;
using testing::Scope;
using testing::TimeGraph;

WavoGraph ZoomableGraph(std::uint32_t number) {
    WavoGraph graph = TimeGraph(10.0);
    graph.GraphNumber = number;
    AddAxis(graph, "X", ManualScale(0.0, 100.0));
    return graph;
}

TEST(GraphZoom, IsShownOverTimeAlone) {
    const WavoGraph over_time = ZoomableGraph(1);
    GraphZoom time_zoom(over_time, 0.25);
    EXPECT_FALSE(time_zoom.IsShown());
    time_zoom.Set(1.0, 2.0, false);
    EXPECT_TRUE(time_zoom.IsShown());
    EXPECT_EQ(time_zoom.State().Length(), 1.0);
    EXPECT_EQ(time_zoom.State().graph_number, 1U);

    const WavoGraph over_axis = AxisGraph(1.0, ManualScale(0, 1), ManualScale(0, 1));
    GraphZoom axis_zoom(over_axis, 0.25);
    axis_zoom.Set(1.0, 2.0, false);
    EXPECT_TRUE(axis_zoom.State().active);
    EXPECT_FALSE(axis_zoom.IsShown());
}

TEST(GraphZoom, WhatTheFirstZoomIsOfCountsUntilAllAreLeft) {
    const WavoGraph graph = ZoomableGraph(1);
    GraphZoom zoom(graph, 0.25);
    zoom.Set(1.0, 3.0, true);
    zoom.Set(0.5, 1.0, false);
    EXPECT_TRUE(zoom.IsOfRecording());
    zoom.Leave();
    EXPECT_FALSE(zoom.IsOfRecording());
    zoom.Set(1.0, 3.0, false);
    EXPECT_FALSE(zoom.IsOfRecording());
}

TEST(GraphZoom, WithoutBuffersThereIsNoWindow) {
    const WavoGraph graph = ZoomableGraph(1);
    const GraphRecorder recorder(graph, 0.25, {});
    GraphZoom zoom(graph, 0.25);
    zoom.Set(1.0, 3.0, false);
    EXPECT_FALSE(zoom.TakeWindow(recorder, recorder.Rows(), 0.0));
    EXPECT_FALSE(zoom.IsTaken());
    EXPECT_EQ(zoom.Window(), TimeWindow());
}

/// Two graphs over time, with 10 s of values.
struct TwoScopes {
    TwoScopes() {
        one.Feed({Ramp(0, 40)});
        two.Feed({Ramp(50, 40)});
    }
    [[nodiscard]] std::vector<GraphDraw*> Both() const { return {one.draw.get(), two.draw.get()}; }
    void Draw() {
        one.Draw();
        two.Draw();
    }

    Scope one{ZoomableGraph(1)};
    Scope two{ZoomableGraph(2)};
};

TEST(SharedZooms, AreMadeTogetherAndSteppedBackFromOneByOne) {
    TwoScopes scopes;
    GraphZooms zooms;
    EXPECT_TRUE(zooms.IsEmpty());
    zooms.Zoom(scopes.Both(), {2.0, 4.0});
    scopes.Draw();
    EXPECT_EQ(scopes.one.Shown(), Ramp(8, 8));
    EXPECT_EQ(scopes.two.Shown(), Ramp(58, 8));
    zooms.Zoom({scopes.one.draw.get()}, {0.5, 1.0});
    scopes.Draw();
    EXPECT_EQ(scopes.one.draw->Zoom().offset, 2.0);

    zooms.StepBack(scopes.Both());
    scopes.Draw();
    EXPECT_EQ(scopes.one.draw->Zoom().start, 2.0);
    EXPECT_EQ(scopes.one.draw->Zoom().offset, 0.0);
    EXPECT_FALSE(scopes.two.draw->Zoom().active);
    EXPECT_EQ(scopes.two.Shown().size(), 40U);
    zooms.StepBack(scopes.Both());
    EXPECT_FALSE(scopes.one.draw->Zoom().active);
    EXPECT_TRUE(zooms.IsEmpty());
    zooms.StepBack(scopes.Both());
    EXPECT_FALSE(scopes.one.draw->Zoom().active);
}

TEST(SharedZooms, OneThatIsRefusedIsNotRemembered) {
    TwoScopes scopes;
    GraphZooms zooms;
    const ExpectErrorLog expected({"GraphDraw::SetZoomRange(): zoom range to small",
                                   "GraphDraw::SetZoomRange(): zoom range to small"});
    zooms.Zoom(scopes.Both(), {2.0, 2.00005});
    EXPECT_TRUE(zooms.IsEmpty());
}

TEST(SharedZooms, AreLeftAllAtOnceWithTheScalesOfBefore) {
    TwoScopes scopes;
    GraphZooms zooms;
    zooms.Zoom(scopes.Both(), {2.0, 6.0});
    zooms.Zoom({scopes.two.draw.get()}, {1.0, 2.0});
    scopes.Draw();
    zooms.LeaveAll(scopes.Both());
    EXPECT_TRUE(zooms.IsEmpty());
    scopes.Draw();
    for (const GraphDraw* graph : scopes.Both()) {
        EXPECT_FALSE(graph->Zoom().active);
        EXPECT_EQ(graph->DisplayedWindow(), TimeWindow());
    }
    EXPECT_EQ(scopes.two.Shown().size(), 40U);
}

TEST(SharedZooms, ThoseOfOtherGraphsStay) {
    TwoScopes scopes;
    GraphZooms zooms;
    zooms.Zoom(scopes.Both(), {2.0, 6.0});
    zooms.LeaveAll({scopes.one.draw.get()});
    EXPECT_FALSE(zooms.IsEmpty());
    zooms.Forget();
    EXPECT_TRUE(zooms.IsEmpty());
    EXPECT_TRUE(scopes.two.draw->Zoom().active);
}

}  // namespace
}  // namespace wavo
