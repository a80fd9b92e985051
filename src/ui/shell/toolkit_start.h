// The start of the toolkit. Without a display it gives up by aborting; then the process rather says
// in one line what it lacks.
//
// Invariants:
// 1. What the toolkit says while it starts is held back, and said when it has started.
// 2. When the toolkit gives up, the process ends with 1 and one line on standard error, and no
//    crash is recorded.
// 3. Where the toolkit was asked to explain its start (QT_DEBUG_PLUGINS), nothing is held back.
#pragma once

#include <QString>
#include <string>
#include <vector>

namespace wavo {

/// Why the toolkit could not start, in one line without its end. `platform` is the window system
/// that was asked for, empty for none; `display` and `wayland_display` are the displays that the
/// environment names, empty for none.
QString StartFault(const QString& platform, const QString& display, const QString& wayland_display);

/// Lives while the application object is made. The process ends when the toolkit gives up
/// meanwhile.
class ToolkitStart {
 public:
    /// `arguments` are those of the program, UTF-8.
    explicit ToolkitStart(const std::vector<std::string>& arguments);
    ~ToolkitStart();
    ToolkitStart(const ToolkitStart&) = delete;
    ToolkitStart& operator=(const ToolkitStart&) = delete;
};

}  // namespace wavo
