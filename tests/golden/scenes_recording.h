// The pictures of the manual that show recordings.
#pragma once

#include <vector>

#include "golden/scenes.h"

namespace wavo::testing {

/// Recordings, and the dialogs for tables and parts of recordings.
std::vector<Scene> RecordingScenes();

}  // namespace wavo::testing
