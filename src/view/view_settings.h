// The display settings of the view, with their defaults.
#pragma once

#include <cstdint>

#include "graph/draw/display_settings.h"
#include "graph/model/wavo_graph.h"

namespace wavo {

struct ViewSettings {
    ColorRef background = 0;  ///< of the graphs
    FontDescription font;     ///< of all graph texts
    std::int32_t scale_lines_x = 5;
    std::int32_t scale_lines_y = 3;
    std::int32_t trace_level = 1;  ///< of the trace channel "default"
    bool show_graph_editor = true;
};

}  // namespace wavo
