// The controls of the dialog for the additional text.
#pragma once

#include <span>

#include "ui/controls/control_table.h"

namespace wavo::add_text {

enum Control : int {
    kOk = 1,
    kCancel = 2,
    kText = 1033,
};

/// All controls, each once, in reading order.
std::span<const ControlRow> Controls();

}  // namespace wavo::add_text
