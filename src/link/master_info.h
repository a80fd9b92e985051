// The master's info block: its window, its cycle, its axes.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "link/master_channel.h"
#include "link/wire_format.h"
#include "support/fault.h"

namespace wavo {

/// A copy of the info block whose fields have been checked.
struct MasterInfo {
    platform::WindowHandle master_window = 0;  ///< 0 = no master
    double cycle_time = 0.0;                   ///< seconds per line, finite and above 0
    std::uint64_t fifo_lines = 0;              ///< slots of each value FIFO; 0 is legal
    std::vector<std::string> axis_names;       ///< column order of a value line; empty is legal
};

/// Reads the info block. Nothing when there is none, or one that a dead master left behind; a
/// fault, which is an error-log entry, too, when the block cannot be right.
Expected<std::optional<MasterInfo>> ReadMasterInfo(const MasterChannel& channel);

/// Checks a copy of the block and takes it over.
Expected<MasterInfo> DecodeMasterInfo(const MasterInfoBlock& block);

}  // namespace wavo
