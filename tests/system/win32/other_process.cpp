#include "system/other_process.h"

#include <windows.h>

// Behind windows.h:
#include <tlhelp32.h>

#include "link/wire_format.h"
#include "platform/shared_memory.h"

namespace wavo::testing {

namespace {

/// Does `act` with every thread of the process.
void WithThreads(std::int64_t id, DWORD(WINAPI* act)(HANDLE)) {
    const HANDLE snapshot = ::CreateToolhelp32Snapshot(TH32CS_SNAPTHREAD, 0);
    THREADENTRY32 entry{};
    entry.dwSize = sizeof entry;
    for (BOOL more = ::Thread32First(snapshot, &entry); more != 0;
         more = ::Thread32Next(snapshot, &entry)) {
        if (entry.th32OwnerProcessID != static_cast<DWORD>(id)) {
            continue;
        }
        const HANDLE thread = ::OpenThread(THREAD_SUSPEND_RESUME, FALSE, entry.th32ThreadID);
        act(thread);
        ::CloseHandle(thread);
    }
    ::CloseHandle(snapshot);
}

}  // namespace

void FreezeProcess(std::int64_t id) {
    WithThreads(id, &::SuspendThread);
}

void ThawProcess(std::int64_t id) {
    WithThreads(id, &::ResumeThread);
}

std::vector<std::string> NamesInUse() {
    const platform::MappingHandle handle = platform::OpenSharedMemory(kInfoSegmentName);
    if (handle == 0) {
        return {};
    }
    platform::CloseSharedMemory(handle);
    return {kInfoSegmentName};
}

}  // namespace wavo::testing
