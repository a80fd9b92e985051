#include "link/capabilities.h"

#include <cstring>

#include "link/report_texts.h"
#include "link/shared_mem.h"
#include "link/wire_format.h"
#include "support/diagnostics.h"

namespace wavo {

namespace {

/// More than any machine has axes. A module without a bound would hold the window for minutes.
constexpr std::int32_t kMostRecords = 10'000;

}  // namespace

void SlaveGlobalCapabilities::OnCapabilitiesChanged(platform::WindowHandle master,
                                                    platform::WindowHandle module_number) {
    m_master = master;
    m_module_number = module_number;
    m_new_capabilities = true;
}

std::optional<AxisCapabilities> SlaveGlobalCapabilities::FindAxis(const std::string& name) {
    if (m_new_capabilities && !m_channel.IsSilent()) {
        GetNewCapabilitiesFromMaster();
    }
    const auto found = m_records.find(name);
    if (found == m_records.end()) {
        return std::nullopt;
    }
    return found->second;
}

void SlaveGlobalCapabilities::GetNewCapabilitiesFromMaster() {
    if (m_channel.Send(m_master, ToMaster::kCapabilityBegin, 0) ==
        platform::SendStatus::kNoAnswer) {
        // It may come to the message later, and then waits for the end of the reading.
        m_channel.Post(m_master, ToMaster::kCapabilityEnd, 0);
        return;
    }
    m_records.clear();
    LoadModule(kCapabilitySegmentPrefix +
               std::to_string(static_cast<std::int32_t>(m_module_number)));
    if (m_channel.Send(m_master, ToMaster::kCapabilityEnd, 0) == platform::SendStatus::kNoAnswer) {
        m_channel.Post(m_master, ToMaster::kCapabilityEnd, 0);  // a second one does no harm
    }
}

void SlaveGlobalCapabilities::LoadModule(const std::string& segment_name) {
    void* const segment = MSharedMem_Link(segment_name);
    if (segment == nullptr) {
        MERRLOG(link_texts::kNoCapabilityModule, segment_name.c_str());
        return;
    }
    LoadRecords(segment, segment_name);
    if (MSharedMem_State(segment) == platform::SegmentState::kResized) {
        MERRLOG(
            "SlaveGlobalCapabilities::GetNewCapabilitiesFromMaster(): data module [%s] has changed "
            "its size",
            segment_name.c_str());
        m_records.clear();
    }
    MSharedMem_Unlink(segment);
}

void SlaveGlobalCapabilities::LoadRecords(const void* segment, const std::string& segment_name) {
    const auto* const bytes = static_cast<const std::byte*>(segment);
    const std::uint64_t size = MSharedMem_Size(segment);
    std::int32_t count = -1;
    if (size >= sizeof count) {
        std::memcpy(&count, bytes, sizeof count);
    }
    if (count < 0 || CapabilityRecordOffset(static_cast<std::size_t>(count)) > size) {
        MERRLOG(
            "SlaveGlobalCapabilities::GetNewCapabilitiesFromMaster(): data module [%s] of %zu "
            "bytes cannot hold %d records",
            segment_name.c_str(), static_cast<std::size_t>(size), count);
        count = 0;
    }
    if (count > kMostRecords) {
        MERRLOG(
            "SlaveGlobalCapabilities::GetNewCapabilitiesFromMaster(): data module [%s] with %d "
            "records: only %d are read",
            segment_name.c_str(), count, kMostRecords);
        count = kMostRecords;
    }
    for (std::int32_t k = 0; k < count; ++k) {
        CapabilityRecord record;
        std::memcpy(&record, bytes + CapabilityRecordOffset(static_cast<std::size_t>(k)),
                    sizeof record);
        const std::size_t length = strnlen(record.axis_name, sizeof record.axis_name);
        if (length == sizeof record.axis_name) {
            MERRLOG(
                "SlaveGlobalCapabilities::GetNewCapabilitiesFromMaster(): record %d of data "
                "module [%s] has a name without end",
                k, segment_name.c_str());
            continue;
        }
        m_records[std::string(record.axis_name, length)] = {
            record.upper_limit, record.lower_limit, record.velocity_limit,
            record.acceleration_limit, record.resolution};
    }
}

}  // namespace wavo
