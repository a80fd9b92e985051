#include "master/demo_faults.h"

#include <cstring>
#include <functional>
#include <limits>
#include <string>

#include "link/wire_format.h"
#include "platform/shared_memory.h"

namespace wavo::master {

namespace {

/// Lets `change` write into a segment, from outside as any process could.
void Change(const std::string& name, const std::function<void(char*, std::uint64_t)>& change) {
    const platform::MappingHandle mapping = platform::OpenSharedMemory(name);
    if (mapping == 0) {
        return;
    }
    if (void* address = platform::MapSharedMemory(mapping); address != nullptr) {
        const std::uint64_t size = platform::SharedMemorySize(address, mapping);
        change(static_cast<char*>(address), size);
        platform::UnmapSharedMemory(address, size);
    }
    platform::CloseSharedMemory(mapping);
}

template <typename Value>
void Put(char* address, std::size_t offset, Value value) {
    std::memcpy(address + offset, &value, sizeof value);
}

}  // namespace

void WriteGarbageHeaders(const std::vector<ViewerState>& viewers) {
    constexpr std::uint64_t kHuge = std::numeric_limits<std::uint64_t>::max();
    Change(kInfoSegmentName, [](char* address, std::uint64_t size) {
        if (size < sizeof(MasterInfoBlock)) {
            return;
        }
        // The window stays, so that viewers go on believing the rest.
        Put(address, offsetof(MasterInfoBlock, cycle_time),
            std::numeric_limits<double>::quiet_NaN());
        Put(address, offsetof(MasterInfoBlock, axis_count), kHuge / 2);
        Put(address, offsetof(MasterInfoBlock, fifo_lines), kHuge);
        std::memset(address + offsetof(MasterInfoBlock, axis_names), 'X',
                    size - offsetof(MasterInfoBlock, axis_names));
    });
    for (const ViewerState& viewer : viewers) {
        const std::string number = std::to_string(viewer.window);
        Change(kValueSegmentPrefix + number, [](char* address, std::uint64_t size) {
            if (size < sizeof(LineFifoHeader)) {
                return;
            }
            Put(address, offsetof(LineFifoHeader, write_index), kHuge / 3);
            Put(address, offsetof(LineFifoHeader, line_size), kHuge - 7);
            Put(address, offsetof(LineFifoHeader, line_count), kHuge / 5);
        });
        Change(kCapabilitySegmentPrefix + number, [](char* address, std::uint64_t size) {
            Put(address, 0, std::numeric_limits<std::int32_t>::max());
            std::memset(address + sizeof(std::int32_t), 'X', size - sizeof(std::int32_t));
        });
    }
}

}  // namespace wavo::master
