#include "link/master_info.h"

#include <cmath>
#include <cstring>
#include <utility>

#include "link/shared_mem.h"
#include "support/diagnostics.h"

namespace wavo {

namespace {

Fault Refuse(Fault why) {
    MERRLOG("ReadMasterInfo(): %s refused: %s", kInfoSegmentName, why.text.c_str());
    return why;
}

}  // namespace

Expected<MasterInfo> DecodeMasterInfo(const MasterInfoBlock& block) {
    if (!std::isfinite(block.cycle_time) || block.cycle_time <= 0.0) {
        return Fault{"the cycle time is not a positive number"};
    }
    std::vector<std::string> names;
    const char* position = block.axis_names;
    const char* const end = block.axis_names + sizeof block.axis_names;
    if (block.axis_count > sizeof block.axis_names) {
        return Fault{"there are more axes than the block can name"};
    }
    names.reserve(block.axis_count);
    for (std::uint64_t i = 0; i < block.axis_count; ++i) {
        const auto left = static_cast<std::size_t>(end - position);
        const std::size_t length = strnlen(position, left);
        if (length == left) {
            return Fault{"there are more axes than the block can name"};
        }
        names.emplace_back(position, length);
        position += length + 1;
    }
    return MasterInfo{block.master_window, block.cycle_time, block.fifo_lines, std::move(names)};
}

Expected<std::optional<MasterInfo>> ReadMasterInfo(const MasterChannel& channel) {
    void* const segment = MSharedMem_Link(kInfoSegmentName);
    if (segment == nullptr) {
        return std::optional<MasterInfo>();
    }
    MasterInfoBlock block;
    const bool whole = MSharedMem_Size(segment) >= sizeof block;
    if (whole) {
        std::memcpy(&block, segment, sizeof block);
    }
    const bool kept = MSharedMem_State(segment) != platform::SegmentState::kResized;
    MSharedMem_Unlink(segment);
    if (!kept) {
        return Refuse({"the segment has changed its size"});
    }
    if (!whole) {
        return Refuse({"the segment is too small"});
    }
    // A master that died leaves its block behind.
    if (!channel.Exists(block.master_window)) {
        return std::optional<MasterInfo>();
    }
    if (block.master_window == channel.OwnWindow()) {
        return Refuse({"its window is the viewer's own"});
    }
    Expected<MasterInfo> info = DecodeMasterInfo(block);
    if (!info) {
        return Refuse(info.Why());
    }
    return std::optional(std::move(*info));
}

}  // namespace wavo
