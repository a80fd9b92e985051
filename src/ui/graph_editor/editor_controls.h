// The controls of the graph editor: their numbers, and the table that the strip is built from.
//
// Invariants:
// 1. A number is never used again for another control.
// 2. The table has every control once, in reading order: that is the tab order too.
#pragma once

#include <span>

#include "ui/controls/control_table.h"

namespace wavo {

enum class EditorControl : int {
    kClose = 2,
    kGraphNumber = 1003,
    kXIsTime = 1005,
    kXIsAxis = 1006,
    kXAxis = 1007,
    kYAxis = 1009,
    kAddYAxis = 1010,
    kDeleteYAxis = 1011,
    kYAxes = 1012,
    kColor = 1013,
    kXAutomatic = 1015,
    kXTime = 1016,
    kTimeRange = 1018,
    kXManual = 1019,
    kXMinimum = 1021,
    kXMaximum = 1022,
    kDerivation = 1023,
    kDeleteGraph = 1025,
    kInnerCircle = 1028,
    kAllGraphs = 1030,
    kOuterCircle = 1036,
    kClassic = 1037,
    kYAutomatic = 1041,
    kContinuity = 1043,
    kTrigger = 1044,
    kYManual = 1045,
    kYMinimum = 1046,
    kYMaximum = 1047,
    kTriggerState = 1048,
    kLines = 1050,
    kPoints = 1053,
    kAutoCircle = 1059,
    kZeroLines = 1062,
    kSaveValues = 1064,
    kZoomEnable = 1072,
    kZoomOut = 1074,
    kFadeOutTime = 1077,
};

struct EditorRow {
    EditorControl id;
    ControlKind kind;
    const char* text;  ///< of the control itself, or of the label before it; "&" marks the mnemonic
    const char* unit;  ///< label behind the control; empty for none
    const char* tip;   ///< what it does, with units
};

/// All controls in reading order.
std::span<const EditorRow> EditorControls();

/// The row of a control.
const EditorRow& FindEditorRow(EditorControl id);

}  // namespace wavo
