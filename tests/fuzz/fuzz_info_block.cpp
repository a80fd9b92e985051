// Any bytes as the master's info block: refused in words, or within its bounds; the same when they
// stand in a segment of just that size.

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <optional>
#include <string>

#include "fake_master_channel.h"
#include "fake_shared_memory.h"
#include "link/master_info.h"

namespace wavo {
namespace {

void Require(bool condition) {
    if (!condition) {
        std::abort();
    }
}

void TestOne(const std::uint8_t* data, std::size_t size) {
    MasterInfoBlock block{};
    std::memcpy(&block, data, std::min(size, sizeof block));
    const Expected<MasterInfo> decoded = DecodeMasterInfo(block);
    if (!decoded) {
        Require(!decoded.Why().text.empty());
        return;
    }
    const MasterInfo& info = *decoded;
    Require(std::isfinite(info.cycle_time) && info.cycle_time > 0.0);
    Require(info.axis_names.size() == block.axis_count);
    std::size_t names = 0;
    for (const std::string& name : info.axis_names) {
        Require(name.find('\0') == std::string::npos);
        names += name.size() + 1;
    }
    Require(names <= sizeof block.axis_names);
}

void TestSegment(const std::uint8_t* data, std::size_t size) {
    testing::ResetFakeSharedMemory();
    std::copy_n(data, size,
                reinterpret_cast<std::uint8_t*>(testing::AddFakeSegment(kInfoSegmentName, size)));
    MasterInfoBlock block{};
    std::memcpy(&block, data, std::min(size, sizeof block));
    testing::FakeMasterChannel channel;
    if (block.master_window != 0) {
        channel.alive.insert(block.master_window);
    }
    const Expected<std::optional<MasterInfo>> found = ReadMasterInfo(channel);
    const bool is_absent = found && !*found;
    if (size < sizeof block) {
        Require(!found);
        return;
    }
    if (block.master_window == 0) {
        Require(is_absent);
        return;
    }
    Require(!is_absent);
    const Expected<MasterInfo> decoded = DecodeMasterInfo(block);
    Require(found.HasValue() == (block.master_window != channel.OwnWindow() && decoded));
    if (found) {
        const MasterInfo& info = **found;
        Require(info.master_window == block.master_window && info.fifo_lines == block.fifo_lines);
        Require(info.cycle_time == block.cycle_time && info.axis_names == decoded->axis_names);
    }
}

}  // namespace
}  // namespace wavo

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    wavo::TestOne(data, size);
    wavo::TestSegment(data, size);
    return 0;
}
