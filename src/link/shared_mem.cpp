#include "link/shared_mem.h"

#include <algorithm>
#include <mutex>

#include "link/report_texts.h"
#include "platform/last_error.h"
#include "support/diagnostics.h"

namespace wavo {

namespace {

LinkRegistry& Registry() {
    static LinkRegistry registry;
    return registry;
}

std::recursive_mutex& RegistryLock() {
    static std::recursive_mutex lock;
    return lock;
}

/// Opens and maps a segment that is not linked yet.
void* MapNewSegment(const std::string& name) {
    const platform::MappingHandle handle = platform::OpenSharedMemory(name);
    if (handle == 0) {
        MERRTRACE(link_texts::kLinkFailed, name.c_str(), platform::LastError());
        return nullptr;
    }
    void* const address = platform::MapSharedMemory(handle);
    if (address == nullptr) {
        const int error = platform::LastError();
        platform::CloseSharedMemory(handle);
        MERRTRACE(link_texts::kMapFailed, error);
        return nullptr;
    }
    const auto position = Registry().SetNewLinkInfo(name, address, handle,
                                                    platform::SharedMemorySize(address, handle));
    if (position != Registry().End()) {
        position->second.link_count = 1;
    }
    return address;
}

/// Unmaps and closes what the last link held. Failures are reported and change nothing.
void DropMapping(void* address, const LinkRegistry::LinkInfo& info) {
    if (!Registry().DeleteLinkInfo(address)) {
        MERRTRACE(link_texts::kLinkNotForgotten);
    }
    if (!platform::UnmapSharedMemory(address, info.size)) {
        MERRTRACE(link_texts::kUnmapFailed, platform::LastError());
    }
    if (!platform::CloseSharedMemory(info.handle)) {
        MERRTRACE(link_texts::kCloseFailed, platform::LastError());
    }
}

}  // namespace

void* MSharedMem_Link(const std::string& name) {
    if (name.empty()) {
        MERRTRACE(link_texts::kLinkWithoutName);
        return nullptr;
    }
    const std::lock_guard guard(RegistryLock());
    const auto known = Registry().FindByName(name);
    if (known != Registry().End()) {
        ++known->second.link_count;
        return const_cast<void*>(known->first);
    }
    return MapNewSegment(name);
}

bool MSharedMem_Unlink(void* address) {
    if (address == nullptr) {
        MERRTRACE(link_texts::kUnlinkNull);
        return false;
    }
    const std::lock_guard guard(RegistryLock());
    const auto known = Registry().FindByAddress(address);
    if (known == Registry().End()) {
        MERRTRACE(link_texts::kUnlinkUnknown, address);
        return false;
    }
    const std::int32_t left = --known->second.link_count;
    if (left < 0) {
        MERRTRACE(link_texts::kLinkCountBelowZero);
        return false;
    }
    if (left == 0) {
        DropMapping(address, LinkRegistry::LinkInfo(known->second));
    }
    return true;
}

std::uint64_t MSharedMem_Size(const void* address) {
    const std::lock_guard guard(RegistryLock());
    const auto known = Registry().FindByAddress(address);
    return known == Registry().End() ? 0 : known->second.size;
}

platform::SegmentState MSharedMem_State(const void* address) {
    const std::lock_guard guard(RegistryLock());
    const auto known = Registry().FindByAddress(address);
    return known == Registry().End() ? platform::SegmentState::kRemoved
                                     : platform::SharedMemoryState(address, known->second.handle);
}

LinkRegistry::Map::iterator LinkRegistry::FindByName(const std::string& name) {
    return std::find_if(m_links.begin(), m_links.end(),
                        [&name](const auto& link) { return link.second.name == name; });
}

LinkRegistry::Map::iterator LinkRegistry::SetNewLinkInfo(const std::string& name,
                                                         const void* address,
                                                         platform::MappingHandle handle,
                                                         std::uint64_t size) {
    if (address == nullptr || name.empty()) {
        return End();
    }
    const auto at_address = FindByAddress(address);
    if (at_address != End() && at_address == FindByName(name)) {
        const LinkInfo& old = at_address->second;
        if (old.name != name || old.size != size || old.handle != handle) {
            MERRTRACE(link_texts::kLinkConflict, name.c_str(), static_cast<std::int64_t>(size),
                      handle, old.name.c_str(), static_cast<std::int64_t>(old.size), old.handle);
        }
        return at_address;
    }
    const auto position = m_links.insert_or_assign(address, LinkInfo{name, handle, size, 0}).first;
    return position;
}

bool LinkRegistry::DeleteLinkInfo(const void* address) {
    return m_links.erase(address) != 0;
}

}  // namespace wavo
