// The settings of the view: how graphs look, what is traced and shown, and how values are
// exported. The view owns the one record; dialogs work on copies.
#pragma once

#include <cstddef>
#include <cstdint>

#include "settings/export_settings.h"
#include "settings/font_description.h"
#include "support/color_ref.h"

namespace wavo {

inline constexpr std::int32_t kDefaultScaleLinesX = 5;
inline constexpr std::int32_t kDefaultScaleLinesY = 3;
inline constexpr std::int32_t kDefaultTraceLevel = 1;
inline constexpr std::int32_t kHighestTraceLevel = 5;

/// Bytes of a face name that a font record holds, without the terminator.
inline constexpr std::size_t kLongestFaceName = 31;

struct ViewSettings {
    ColorRef background = 0;  ///< of the graphs
    FontDescription font;     ///< of all graph texts
    std::int32_t scale_lines_x = kDefaultScaleLinesX;
    std::int32_t scale_lines_y = kDefaultScaleLinesY;
    std::int32_t trace_level = kDefaultTraceLevel;  ///< of the trace channel "default"
    bool show_graph_editor = true;
    ExportSettings export_settings;
    bool line_styles = false;  ///< curves are told apart by their dashes, too

    friend bool operator==(const ViewSettings&, const ViewSettings&) = default;
};

/// The settings of a first start.
inline ViewSettings DefaultViewSettings() {
    ViewSettings settings;
    settings.export_settings = DefaultExportSettings();
    return settings;
}

}  // namespace wavo
