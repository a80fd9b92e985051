#include "platform/shared_memory.h"

#include <windows.h>

#include <cstring>
#include <utility>

#include "platform/last_error.h"
#include "platform/win32/handle.h"
#include "platform/win32/wide.h"

namespace wavo::platform {

namespace {

MappingHandle NumberOf(HANDLE handle) noexcept {
    return static_cast<MappingHandle>(reinterpret_cast<std::uintptr_t>(handle));
}

HANDLE HandleOf(MappingHandle number) noexcept {
    return reinterpret_cast<HANDLE>(static_cast<std::uintptr_t>(number));
}

/// Bytes from `address` to the end of its region: whole pages.
std::uint64_t RegionSize(const void* address) noexcept {
    MEMORY_BASIC_INFORMATION region{};
    return address != nullptr && ::VirtualQuery(address, &region, sizeof region) != 0
               ? region.RegionSize
               : 0;
}

bool IsPossibleName(const std::string& name) noexcept {
    if (name.empty()) {
        ::SetLastError(ERROR_INVALID_NAME);
        return false;
    }
    return !HasNul(name);
}

}  // namespace

MappingHandle OpenSharedMemory(const std::string& name) noexcept {
    if (!IsPossibleName(name)) {
        return 0;
    }
    return NumberOf(::OpenFileMappingW(FILE_MAP_ALL_ACCESS, FALSE, Wide(name).c_str()));
}

void* MapSharedMemory(MappingHandle handle) noexcept {
    return ::MapViewOfFile(HandleOf(handle), FILE_MAP_ALL_ACCESS, 0, 0, 0);
}

std::uint64_t SharedMemorySize(const void* address, MappingHandle /*handle*/) noexcept {
    return RegionSize(address);
}

SegmentState SharedMemoryState(const void* /*address*/, MappingHandle /*handle*/) noexcept {
    return SegmentState::kWhole;
}

bool UnmapSharedMemory(void* address, std::uint64_t /*size*/) noexcept {
    return ::UnmapViewOfFile(address) != 0;
}

bool CloseSharedMemory(MappingHandle handle) noexcept {
    return ::CloseHandle(HandleOf(handle)) != 0;
}

SharedSegment SharedSegment::Create(const std::string& name, std::size_t size) noexcept {
    SharedSegment made;
    if (!IsPossibleName(name)) {
        return made;
    }
    if (size == 0) {
        ::SetLastError(ERROR_INVALID_PARAMETER);
        return made;
    }
    const std::wstring wide_name = Wide(name);
    const auto high = static_cast<DWORD>(static_cast<std::uint64_t>(size) >> 32U);
    Handle mapping(::CreateFileMappingW(INVALID_HANDLE_VALUE, nullptr, PAGE_READWRITE, high,
                                        static_cast<DWORD>(size), wide_name.c_str()));
    const bool is_old = ::GetLastError() == ERROR_ALREADY_EXISTS;
    if (!mapping) {
        return made;
    }
    void* const data = MapSharedMemory(NumberOf(mapping.get()));
    if (data == nullptr) {
        return made;
    }
    if (is_old) {
        // Somebody still holds the one before. It cannot be removed, but serves when it is large
        // enough.
        if (RegionSize(data) < size) {
            ::UnmapViewOfFile(data);
            ::SetLastError(ERROR_ALREADY_EXISTS);
            return made;
        }
        std::memset(data, 0, size);
    }
    made.m_name = name;
    made.m_data = data;
    made.m_size = size;
    made.m_handle = NumberOf(mapping.Release());
    return made;
}

void SharedSegment::Release() noexcept {
    if (m_data == nullptr) {
        return;
    }
    const LastErrorKeeper keep;
    UnmapSharedMemory(std::exchange(m_data, nullptr), std::exchange(m_size, 0));
    CloseSharedMemory(std::exchange(m_handle, 0));
    m_name.clear();
}

std::size_t RemoveLeftoverSegments(const std::string& /*prefix*/) {
    return 0;  // names die with their last holder
}

}  // namespace wavo::platform
