// The controls of the trigger condition dialog.
#pragma once

#include <span>

#include "ui/controls/control_table.h"

namespace wavo::trigger_condition {

enum Control : int {
    kOk = 1,
    kCancel = 2,
    kValue = 1032,
    kStartAbove = 1049,
    kStopAbove = 1050,
    kStartBelow = 1051,
    kStopBelow = 1052,
    kNone = 1054,
    kAxisName = 1078,
};

/// All controls, each once, in reading order.
std::span<const ControlRow> Controls();

}  // namespace wavo::trigger_condition
