// What a user should know about the data of a circle test, in words.
#pragma once

#include <string>
#include <vector>

#include "measure/circle_test.h"

namespace wavo::measure {

std::vector<std::string> CircleNotes(const PlanePath& path, const CircleSetup& setup,
                                     const CircleResult& result);

}  // namespace wavo::measure
