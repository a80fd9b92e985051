// Another process, handled from outside as a user or the system would.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace wavo::testing {

/// Stops a process until ThawProcess lets it go on.
void FreezeProcess(std::int64_t id);
void ThawProcess(std::int64_t id);

/// Names that masters and viewers of this user hold at present: of segments, and of the sockets of
/// message windows where there are such. Where segments cannot be listed: the info block alone.
std::vector<std::string> NamesInUse();

}  // namespace wavo::testing
