#include "ui/graph_editor/editor_controls.h"

#include <algorithm>
#include <iterator>

namespace wavo {

namespace {

using enum EditorControl;
using enum ControlKind;

constexpr EditorRow kRows[] = {
    {kGraphNumber, kCombo, "graph no.", "",
     "Number of the graph to edit. A new number, 1 or above, makes a new graph."},
    {kDeleteGraph, kButton, "Del. graph", "", "Removes the selected graph."},
    {kSaveValues, kButton, "Save Values", "",
     "Saves the values that the selected graph shows to a text file. Not while values flow."},
    {kClose, kButton, "close", "", "Hides the graph editor (Esc). The graphs stay as they are."},

    {kXIsTime, kRadio, "time", "", "The graph shows its axes over time."},
    {kXIsAxis, kRadio, "axis", "",
     "The graph shows one axis over another: the first y axis over the axis chosen below."},
    {kXAxis, kCombo, "x axis", "",
     "Axis on the x coordinate of a graph that shows axis over axis."},
    {kClassic, kRadio, "classic", "",
     "Over time: the curve sweeps from left to right and overwrites itself."},
    {kContinuity, kRadio, "continuity", "",
     "Over time: the curve scrolls, the newest value is at its right end."},
    {kLines, kRadio, "lines", "", "Axis over axis: the values are joined by lines."},
    {kPoints, kRadio, "points", "", "Axis over axis: each value is a point of its own."},

    {kYAxis, kCombo, "y axis", "", "Axis to add, to remove, or to look at."},
    {kColor, kColorField, "color", "",
     "Color of the y axis, or of the next one to add. Click, or press Space, to choose another."},
    {kDerivation, kEdit, "", ". derivation (d?/dT), s->v->a",
     "Derivation over time: 0 position s (units), 1 velocity v (units/s), 2 acceleration a "
     "(units/s\u00b2)."},
    {kAddYAxis, kButton, "ADD", "",
     "Adds the axis with this derivation to the graph. Axis over axis has one y axis only."},
    {kDeleteYAxis, kButton, "DEL", "", "Removes the axis with this derivation from the graph."},
    {kYAxes, kReadOnlyEdit, "axes", "",
     "The y axes of the graph: X position, X' velocity, X'' acceleration."},
    {kTrigger, kButton, "trigger condition", "",
     "Value of this y axis at which recording starts or stops."},
    {kTriggerState, kStatic, "", "", "Whether this y axis has a trigger condition."},

    {kXTime, kRadio, "time", "", "The x coordinate shows a span of time."},
    {kTimeRange, kEdit, "", "s", "Time that the graph shows, seconds; at least 0.0001."},
    {kXAutomatic, kRadio, "automatic", "", "The x range follows the values."},
    {kAllGraphs, kCheck, "all graphs", "", "The time, and every zoom, is applied to all graphs."},
    {kXManual, kRadio, "manual", "", "The x range is from min. to max."},
    {kXMinimum, kEdit, "min.", "", "Left end of a manual x range, units of the x axis."},
    {kXMaximum, kEdit, "max.", "", "Right end of a manual x range, units of the x axis."},

    {kYAutomatic, kRadio, "automatic", "", "The range of this y axis follows its values."},
    {kYManual, kRadio, "manual", "", "The range of this y axis is from min. to max."},
    {kYMinimum, kEdit, "min.", "", "Lower end of a manual y range, units of the y axis."},
    {kYMaximum, kEdit, "max.", "", "Upper end of a manual y range, units of the y axis."},

    {kAutoCircle, kCheck, "auto circle", "",
     "Axis over axis: keeps the scales such that circles are round on the screen."},
    {kInnerCircle, kEdit, "inner dx", "",
     "Radius of the inner guiding circle, units of the x axis; empty: none."},
    {kOuterCircle, kEdit, "outer dx", "",
     "Radius of the outer guiding circle, units of the x axis; empty: none."},
    {kFadeOutTime, kEdit, "fade out time", "s",
     "Axis over axis: time after which a value has faded, seconds; above 0."},

    {kZeroLines, kCheck, "zerolines", "", "Draws a line where a coordinate is 0."},
    {kZoomEnable, kCheck, "zoom enable", "",
     "Dragging with the right mouse button zooms into a graph over time."},
    {kZoomOut, kButton, "zoom out", "", "Steps back to the zoom before."},
};

}  // namespace

std::span<const EditorRow> EditorControls() {
    return kRows;
}

const EditorRow& FindEditorRow(EditorControl id) {
    return *std::find_if(std::begin(kRows), std::end(kRows),
                         [id](const EditorRow& row) { return row.id == id; });
}

}  // namespace wavo
