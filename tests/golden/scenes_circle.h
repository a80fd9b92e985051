#pragma once

#include <vector>

#include "golden/scenes.h"

namespace wavo::testing {

std::vector<Scene> CircleScenes();

}  // namespace wavo::testing
