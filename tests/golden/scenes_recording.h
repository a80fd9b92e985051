// The pictures of the manual that show recordings.
#pragma once

#include <string>
#include <vector>

#include "golden/scenes.h"

namespace wavo::testing {

/// Recordings, and the dialogs for tables and parts of recordings.
/// Writes a recording of axes X and Y with two circles, a gap and two events.
void WriteNight(const std::string& path);

std::vector<Scene> RecordingScenes();

}  // namespace wavo::testing
