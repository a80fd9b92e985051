// The controls of the properties dialog.
#pragma once

#include <span>

#include "ui/controls/control_table.h"

namespace wavo::wavo_properties {

enum Control : int {
    kOk = 1,
    kCancel = 2,
    kSelectFont = 1026,
    kScaleLinesX = 1034,
    kScaleLinesY = 1039,
    kBackground = 1055,
    kDefaultValues = 1056,
    kShowGraphEditor = 1063,
    kSeparator = 1066,
    kDecimalPoint = 1067,
    kEndOfLine = 1068,
    kDataFile = 1070,
    kSelectDataFile = 1071,
};

/// All controls, each once, in reading order.
std::span<const ControlRow> Controls();

}  // namespace wavo::wavo_properties
