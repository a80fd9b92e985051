// What every control of the graph editor does, as tables.
#pragma once

#include <QColor>
#include <cstddef>
#include <ostream>
#include <string>
#include <vector>

#include "editor_fixture.h"

namespace wavo::testing {

struct Input {
    EditorControl control;
    const char* text = nullptr;  ///< typed; null for a click
};

using Edit = void (*)(WavoGraph&);

struct Row {
    const char* name;
    WavoGraph (*graph)(std::uint32_t);
    Edit before;  ///< changes the graph to begin with; null for nothing
    std::vector<Input> inputs;
    Edit after;  ///< what the inputs make of that; null for nothing
    std::vector<std::string> messages;
    std::vector<std::string> traces;
    /// Entries of the error log.
    std::vector<std::string> errors = {};
    std::size_t graphs = 1;  ///< how many there are then; the first of them is `after`
    bool laid_out = true;    ///< the curves of the graph have been drawn
};

inline void PrintTo(const Row& row, std::ostream* out) {
    *out << row.name;
}

/// What the traces of clicks begin with.
inline const std::string kHandler = "CAxSelect::OnBnClicked";

/// What the dialogs answer that the inputs open.
inline const QColor kChosenColor(1, 2, 3);
inline const TriggerEntry kChosenTrigger{TriggerTypeCode::kStopBelow, -2.5, "X"};

/// The controls of the graph, of its y axes and of the display.
std::vector<Row> GraphRows();
/// The controls of the coordinates and of the modes.
std::vector<Row> CoordinateRows();
/// The controls of scales and circles.
std::vector<Row> ScaleRows();

}  // namespace wavo::testing
