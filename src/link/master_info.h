// The master's info block: its window, its cycle, its axes.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "link/master_channel.h"
#include "link/wire_format.h"

namespace wavo {

/// A copy of the info block whose fields have been checked.
struct MasterInfo {
    platform::WindowHandle master_window = 0;  ///< 0 = no master
    double cycle_time = 0.0;                   ///< seconds per line, finite and above 0
    std::uint64_t fifo_lines = 0;              ///< slots of each value FIFO; 0 is legal
    std::vector<std::string> axis_names;       ///< column order of a value line; empty is legal
};

enum class MasterInfoStatus {
    kPresent,
    kAbsent,   ///< no info block, or one that a dead master left behind
    kRefused,  ///< the block cannot be right; the reason is in the error log
};

/// Reads the info block. `info` is set only with kPresent.
MasterInfoStatus ReadMasterInfo(const MasterChannel& channel, MasterInfo& info);

/// Checks a copy of the block and takes it over. Returns null, or what is wrong with it in words
/// (static storage).
const char* DecodeMasterInfo(const MasterInfoBlock& block, MasterInfo& info);

}  // namespace wavo
