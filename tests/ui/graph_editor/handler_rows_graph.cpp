#include "handler_rows.h"

namespace wavo::testing {

using enum EditorControl;

std::vector<Row> GraphRows() {
    return {
        {"GraphNumberThatIsThere", TimeGraph, nullptr, {{kGraphNumber, "1"}}, nullptr, {}, {}},
        {"GraphNumberZero", TimeGraph, nullptr, {{kGraphNumber, "0"}}, nullptr, {}, {}},
        {"GraphNumberEmpty", TimeGraph, nullptr, {{kGraphNumber, ""}}, nullptr, {}, {}},
        {"GraphNumberThatIsNew",
         TimeGraph,
         nullptr,
         {{kGraphNumber, "4"}},
         nullptr,
         {"591 4"},
         {},
         {},
         2},
        {"DeleteTheOnlyGraph",
         TimeGraph,
         nullptr,
         {{kDeleteGraph}},
         nullptr,
         {"591 4294967295"},
         {},
         {},
         0},
        {"SaveValues", TimeGraph, nullptr, {{kSaveValues}}, nullptr, {"592 1"}, {}},
        {"Close", TimeGraph, nullptr, {{kClose}}, nullptr, {"590"}, {}},

        {"YAxis", TimeGraph, nullptr, {{kYAxis, "Y"}}, nullptr, {}, {}},
        {"Derivation", TimeGraph, nullptr, {{kDerivation, "1"}}, nullptr, {}, {}},
        {"Add",
         TimeGraph,
         nullptr,
         {{kYAxis, "Z"}, {kDerivation, "2"}, {kColor}, {kAddYAxis}},
         [](WavoGraph& g) {
             g.YCoorAxName.emplace_back("Z");
             g.YCoorAxColor.push_back(0x030201);
             g.YCoorAxDerivation.push_back(2);
             g.Triggers.push_back({TriggerTypeCode::kNone, 0.0, {}});
             g.YScales.push_back(
                 {ScaleTypeCode::kAxis, 0.0, ScaleAxCode::kManual, -1000.0, 1000.0});
         },
         {"591 1"},
         {kHandler + "ButtonYcoorAdd(): graph data changed, new y-coor. axis [Z]"},
         {"CAxSelect::OnLButtonDown(): graph data not found [Z]"}},
        {"AddAnAxisThatTheMasterDoesNotHave",
         TimeGraph,
         nullptr,
         {{kYAxis, "Q"}, {kAddYAxis}},
         nullptr,
         {},
         {}},
        {"AddASecondYAxisOverAnAxis",
         AxisGraph,
         nullptr,
         {{kYAxis, "Z"}, {kAddYAxis}},
         nullptr,
         {},
         {}},
        {"Delete",
         TimeGraph,
         nullptr,
         {{kYAxis, "X"}, {kDerivation, "1"}, {kDeleteYAxis}},
         [](WavoGraph& g) {
             g.YCoorAxName = {"X", "Y"};
             g.YCoorAxColor = {0x0000FF, 0xFF0000};
             g.YCoorAxDerivation = {0, 0};
             g.Triggers.pop_back();
             g.YScales.erase(g.YScales.begin() + 1);
         },
         {"591 1"},
         {kHandler + "ButtonYcoorDel(): graph data erased, axis [X']"}},
        {"DeleteAnAxisThatTheGraphDoesNotShow",
         TimeGraph,
         nullptr,
         {{kYAxis, "Y"}, {kDerivation, "1"}, {kDeleteYAxis}},
         nullptr,
         {},
         {}},
        {"Color",
         TimeGraph,
         nullptr,
         {{kYAxis, "X"}, {kDerivation, "1"}, {kColor}},
         [](WavoGraph& g) { g.YCoorAxColor[1] = 0x030201; },
         {"591 1"},
         {kHandler + "ButtonYcoorDel(): graph data erased, axis [X']"}},
        {"Trigger",
         TimeGraph,
         nullptr,
         {{kYAxis, "X"}, {kDerivation, "1"}, {kTrigger}},
         [](WavoGraph& g) { g.Triggers[1] = kChosenTrigger; },
         {"591 1"},
         {}},
        {"TriggerThatDoesNotGoWithThatOfAnotherAxis",
         TimeGraph,
         [](WavoGraph& g) {
             g.Triggers[2] = {TriggerTypeCode::kStartAbove, 1.0, "Y"};
         },
         {{kTrigger}},
         nullptr,
         {},
         {}},

        {"ZeroLines",
         TimeGraph,
         nullptr,
         {{kZeroLines}},
         [](WavoGraph& g) { g.ZeroLines = false; },
         {"591 1"},
         {}},
        {"ZoomEnable", TimeGraph, nullptr, {{kZoomEnable}}, nullptr, {}, {}},
        {"ZoomOut", TimeGraph, nullptr, {{kZoomOut}}, nullptr, {"593 1"}, {}},
    };
}

}  // namespace wavo::testing
