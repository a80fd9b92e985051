// What every control of the graph editor does, as tables.
#pragma once

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
};

inline void PrintTo(const Row& row, std::ostream* out) {
    *out << row.name;
}

/// The controls of the coordinates and of the modes.
std::vector<Row> CoordinateRows();
/// The controls of scales, circles and display.
std::vector<Row> ScaleRows();

}  // namespace wavo::testing
