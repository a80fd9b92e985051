#include "link/master_info.h"

#include <cmath>
#include <cstring>
#include <utility>

#include "link/shared_mem.h"
#include "support/diagnostics.h"

namespace wavo {

const char* DecodeMasterInfo(const MasterInfoBlock& block, MasterInfo& info) {
    if (!std::isfinite(block.cycle_time) || block.cycle_time <= 0.0) {
        return "the cycle time is not a positive number";
    }
    std::vector<std::string> names;
    const char* position = block.axis_names;
    const char* const end = block.axis_names + sizeof block.axis_names;
    if (block.axis_count > sizeof block.axis_names) {
        return "there are more axes than the block can name";
    }
    names.reserve(block.axis_count);
    for (std::uint64_t i = 0; i < block.axis_count; ++i) {
        const auto left = static_cast<std::size_t>(end - position);
        const std::size_t length = strnlen(position, left);
        if (length == left) {
            return "there are more axes than the block can name";
        }
        names.emplace_back(position, length);
        position += length + 1;
    }
    info.master_window = block.master_window;
    info.cycle_time = block.cycle_time;
    info.fifo_lines = block.fifo_lines;
    info.axis_names = std::move(names);
    return nullptr;
}

MasterInfoStatus ReadMasterInfo(const MasterChannel& channel, MasterInfo& info) {
    void* const segment = MSharedMem_Link(kInfoSegmentName);
    if (segment == nullptr) {
        return MasterInfoStatus::kAbsent;
    }
    MasterInfoBlock block;
    const bool whole = MSharedMem_Size(segment) >= sizeof block;
    if (whole) {
        std::memcpy(&block, segment, sizeof block);
    }
    const bool kept = MSharedMem_State(segment) != platform::SegmentState::kResized;
    MSharedMem_Unlink(segment);
    if (!kept) {
        MERRLOG("ReadMasterInfo(): %s refused: the segment has changed its size", kInfoSegmentName);
        return MasterInfoStatus::kRefused;
    }
    if (!whole) {
        MERRLOG("ReadMasterInfo(): %s refused: the segment is too small", kInfoSegmentName);
        return MasterInfoStatus::kRefused;
    }
    // A master that died leaves its block behind.
    if (!channel.Exists(block.master_window)) {
        return MasterInfoStatus::kAbsent;
    }
    if (block.master_window == channel.OwnWindow()) {
        MERRLOG("ReadMasterInfo(): %s refused: its window is the viewer's own", kInfoSegmentName);
        return MasterInfoStatus::kRefused;
    }
    if (const char* const fault = DecodeMasterInfo(block, info); fault != nullptr) {
        MERRLOG("ReadMasterInfo(): %s refused: %s", kInfoSegmentName, fault);
        return MasterInfoStatus::kRefused;
    }
    return MasterInfoStatus::kPresent;
}

}  // namespace wavo
