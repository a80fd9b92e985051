// Any bytes as a capability module: lookups find what the records say, or nothing.

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <string>

#include "fake_master_channel.h"
#include "fake_shared_memory.h"
#include "link/capabilities.h"
#include "link/wire_format.h"

namespace wavo {
namespace {

using testing::FakeMasterChannel;

void Require(bool condition) {
    if (!condition) {
        std::abort();
    }
}

void TestOne(const std::uint8_t* data, std::size_t size) {
    testing::ResetFakeSharedMemory();
    std::memcpy(testing::AddFakeSegment("DataModCap4711", size), data, size);
    FakeMasterChannel channel;
    SlaveGlobalCapabilities capabilities(channel);
    capabilities.OnCapabilitiesChanged(FakeMasterChannel::kMaster, FakeMasterChannel::kViewer);
    capabilities.FindAxis("X");
    std::int32_t count = 0;
    std::memcpy(&count, data, std::min(size, sizeof count));
    const bool fits =
        size >= sizeof count && count >= 0 &&
        static_cast<std::size_t>(count) <= (size - sizeof count) / sizeof(CapabilityRecord);
    if (!fits || count == 0) {
        Require(!capabilities.FindAxis("X"));
        return;
    }
    CapabilityRecord last;
    std::memcpy(&last, data + CapabilityRecordOffset(static_cast<std::size_t>(count) - 1),
                sizeof last);
    const std::size_t length = strnlen(last.axis_name, sizeof last.axis_name);
    if (length < sizeof last.axis_name) {
        const auto found = capabilities.FindAxis(std::string(last.axis_name, length));
        // Bit by bit: it may be no number.
        Require(found &&
                std::memcmp(&found->upper_limit, &last.upper_limit, sizeof last.upper_limit) == 0);
    }
}

}  // namespace
}  // namespace wavo

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    if (size != 0) {
        wavo::TestOne(data, size);
    }
    return 0;
}
