#include "handler_rows.h"

namespace wavo::testing {

using enum EditorControl;

std::vector<Row> CoordinateRows() {
    return {
        {"TimeOfATimeGraph", TimeGraph, nullptr, {{kXIsTime}}, nullptr, {}, {}},
        {"TimeOfAnAxisGraph",
         AxisGraph,
         nullptr,
         {{kXIsTime}},
         [](WavoGraph& g) {
             g.XCoorType = CoorType::kTime;
             g.XScale.ScaleType = ScaleTypeCode::kTime;
             g.XCoorAxName.clear();
         },
         {"591 1"},
         {kHandler + "RadioXcoorTime(): graph data changed, x-coor.is time"}},
        {"TimeWithATimeRangeTooShort",
         AxisGraph,
         [](WavoGraph& g) { g.XScale.TimeRange = 0.00009; },
         {{kXIsTime}},
         [](WavoGraph& g) {
             g.XCoorType = CoorType::kTime;
             g.XScale.ScaleType = ScaleTypeCode::kTime;
             g.XScale.TimeRange = 10.0;
             g.XCoorAxName.clear();
         },
         {"591 1"},
         {kHandler + "RadioXcoorTime(): graph data changed, x-coor.is time"}},
        {"TimeWithTheShortestTimeRange",
         AxisGraph,
         [](WavoGraph& g) { g.XScale.TimeRange = 0.0001; },
         {{kXIsTime}},
         [](WavoGraph& g) {
             g.XCoorType = CoorType::kTime;
             g.XScale.ScaleType = ScaleTypeCode::kTime;
             g.XCoorAxName.clear();
         },
         {"591 1"},
         {kHandler + "RadioXcoorTime(): graph data changed, x-coor.is time"}},
        {"AxisOfAnAxisGraph", AxisGraph, nullptr, {{kXIsAxis}}, nullptr, {}, {}},
        {"AxisWithOneAxisOfHigherDerivation",
         AxisGraph,
         [](WavoGraph& g) {
             g.XCoorType = CoorType::kTime;
             g.XScale.ScaleType = ScaleTypeCode::kTime;
             g.YCoorAxDerivation = {2};
             g.FadeOutTime = 7.0;
         },
         {{kXAxis, "Z"}, {kXIsAxis}},
         [](WavoGraph& g) {
             g.XCoorType = CoorType::kAxis;
             g.XCoorAxName = "Z";
             g.XScale.ScaleType = ScaleTypeCode::kAxis;
             g.YCoorAxDerivation = {0};
             g.FadeOutTime = 1.0;
         },
         {"591 1"},
         {kHandler + "RadioXcoorTime(): graph data changed, x-coor.is axis [Z]"}},
        {"AxisWithoutAName",
         AxisGraph,
         [](WavoGraph& g) {
             g.XCoorType = CoorType::kTime;
             g.XScale.ScaleType = ScaleTypeCode::kTime;
         },
         {{kXAxis, ""}, {kXIsAxis}},
         [](WavoGraph& g) {
             g.XCoorType = CoorType::kAxis;
             g.XCoorAxName = "";
             g.XScale.ScaleType = ScaleTypeCode::kAxis;
         },
         {"591 1"},
         {kHandler + "RadioXcoorTime(): graph data changed, x-coor.is axis, no axis defined"}},
        {"AxisOfAScaleThatNeverHadAKindIsManualWithRoundCircles",
         AxisGraph,
         [](WavoGraph& g) {
             g.XCoorType = CoorType::kTime;
             g.XScale = {ScaleTypeCode::kTime, 10.0, ScaleAxCode{}, 0.0, 0.0};
         },
         {{kXAxis, "Y"}, {kXIsAxis}},
         [](WavoGraph& g) {
             g.XCoorType = CoorType::kAxis;
             g.XScale = {ScaleTypeCode::kAxis, 10.0, ScaleAxCode::kManual, -5.0, 35.0};
         },
         {"591 1"},
         {kHandler + "RadioXcoorTime(): graph data changed, x-coor.is axis [Y]"}},
        {"AxisOfAScaleThatNeverHadAKindIsAutomaticElse",
         AxisGraph,
         [](WavoGraph& g) {
             g.XCoorType = CoorType::kTime;
             g.AutoCircle = false;
             g.XScale = {ScaleTypeCode::kTime, 10.0, ScaleAxCode{}, 1.0, 2.0};
         },
         {{kXAxis, "Y"}, {kXIsAxis}},
         [](WavoGraph& g) {
             g.XCoorType = CoorType::kAxis;
             g.XScale = {ScaleTypeCode::kAxis, 10.0, ScaleAxCode::kAutomatic, 1.0, 2.0};
         },
         {"591 1"},
         {kHandler + "RadioXcoorTime(): graph data changed, x-coor.is axis [Y]"}},
        {"Classic",
         TimeGraph,
         nullptr,
         {{kClassic}},
         [](WavoGraph& g) { g.Mode = GraphMode::kClassic; },
         {"591 1"},
         {kHandler + "RadioModeClassic(): graph data changed, mode is classic"}},
        {"Continuity",
         TimeGraph,
         [](WavoGraph& g) { g.Mode = GraphMode::kClassic; },
         {{kContinuity}},
         [](WavoGraph& g) { g.Mode = GraphMode::kContinuity; },
         {"591 1"},
         {kHandler + "RadioModeClassic(): graph data changed, mode is continuity"}},
        {"ContinuityAsItIs", TimeGraph, nullptr, {{kContinuity}}, nullptr, {}, {}},
        {"Lines",
         AxisGraph,
         nullptr,
         {{kLines}},
         [](WavoGraph& g) { g.ModeAx = AxisDrawMode::kLines; },
         {"591 1"},
         {kHandler + "RadioModeLines(): graph data changed, mode is lines"}},
        {"Points",
         AxisGraph,
         [](WavoGraph& g) { g.ModeAx = AxisDrawMode::kLines; },
         {{kPoints}},
         [](WavoGraph& g) { g.ModeAx = AxisDrawMode::kPoints; },
         {"591 1"},
         {kHandler + "RadioModePoints(): graph data changed, mode is points"}},
        {"PointsAsItIs", AxisGraph, nullptr, {{kPoints}}, nullptr, {}, {}},
        {"ClassicAsItIs",
         TimeGraph,
         [](WavoGraph& g) { g.Mode = GraphMode::kClassic; },
         {{kClassic}},
         nullptr,
         {},
         {}},
        {"LinesAsTheyAre",
         AxisGraph,
         [](WavoGraph& g) { g.ModeAx = AxisDrawMode::kLines; },
         {{kLines}},
         nullptr,
         {},
         {}},

        {"XAxis",
         AxisGraph,
         nullptr,
         {{kXAxis, "Z"}},
         [](WavoGraph& g) { g.XCoorAxName = "Z"; },
         {"591 1"},
         {"CAxSelect::SetNewAxXCoor(): graph data changed, x-coor.is axis [Z]"}},
        {"XAxisThatTheMasterDoesNotHave", AxisGraph, nullptr, {{kXAxis, "Q"}}, nullptr, {}, {}},
        {"XAxisOfATimeGraph", TimeGraph, nullptr, {{kXAxis, "Z"}}, nullptr, {}, {}},
    };
}

}  // namespace wavo::testing
