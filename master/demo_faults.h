// Nonsense in the segments of a master, to see what viewers make of it.
#pragma once

#include <vector>

#include "master/publisher.h"

namespace wavo::master {

/// Overwrites the sizes and indices in the info block, in the value FIFOs and in the capability
/// modules of these viewers with values that no mapping can satisfy, and takes the ends off the
/// axis names. Segments that do not exist are skipped.
void WriteGarbageHeaders(const std::vector<ViewerState>& viewers);

}  // namespace wavo::master
