#include "master/capability_module.h"

#include <algorithm>
#include <atomic>
#include <cstring>

#include "link/wire_format.h"

namespace wavo::master {

std::string CapabilityModuleName(platform::WindowHandle viewer) {
    return kCapabilitySegmentPrefix + std::to_string(static_cast<std::int32_t>(viewer));
}

platform::SharedSegment CreateCapabilityModule(platform::WindowHandle viewer,
                                               const std::vector<AxisLimits>& limits) {
    platform::SharedSegment module = platform::SharedSegment::Create(
        CapabilityModuleName(viewer), CapabilityRecordOffset(limits.size()));
    if (!module) {
        return module;
    }
    auto* bytes = static_cast<std::byte*>(module.data());
    for (std::size_t k = 0; k < limits.size(); ++k) {
        const AxisLimits& axis = limits[k];
        CapabilityRecord record{};
        std::memcpy(record.axis_name, axis.axis.data(),
                    std::min(axis.axis.size(), kLongestLimitedAxisName));
        record.upper_limit = axis.values.upper_limit;
        record.lower_limit = axis.values.lower_limit;
        record.velocity_limit = axis.values.velocity_limit;
        record.acceleration_limit = axis.values.acceleration_limit;
        record.resolution = axis.values.resolution;
        std::memcpy(bytes + CapabilityRecordOffset(k), &record, sizeof record);
    }
    // Release: who sees the count sees the records.
    std::atomic_ref<std::int32_t>(*reinterpret_cast<std::int32_t*>(bytes))
        .store(static_cast<std::int32_t>(limits.size()), std::memory_order_release);
    return module;
}

}  // namespace wavo::master
