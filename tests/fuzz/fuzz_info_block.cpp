// Any bytes as the master's info block: refused in words, or within its bounds.

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <string>

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
    MasterInfo info;
    info.master_window = 4711;
    if (const char* const fault = DecodeMasterInfo(block, info); fault != nullptr) {
        Require(*fault != '\0');
        Require(info.master_window == 4711 && info.axis_names.empty());
        return;
    }
    Require(std::isfinite(info.cycle_time) && info.cycle_time > 0.0);
    Require(info.axis_names.size() == block.axis_count);
    std::size_t names = 0;
    for (const std::string& name : info.axis_names) {
        Require(name.find('\0') == std::string::npos);
        names += name.size() + 1;
    }
    Require(names <= sizeof block.axis_names);
}

}  // namespace
}  // namespace wavo

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    wavo::TestOne(data, size);
    return 0;
}
