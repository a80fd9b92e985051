#include "platform/append.h"

#include <windows.h>

#include <exception>

#include "platform/win32/handle.h"
#include "platform/win32/wide.h"

namespace wavo::platform {

bool AppendToFile(const std::string& path, std::string_view bytes) noexcept try {
    // Without the right to write elsewhere the system puts what is written behind the end of that
    // moment.
    const Handle file(::CreateFileW(WidePath(path).c_str(), FILE_APPEND_DATA | GENERIC_READ,
                                    FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE, nullptr,
                                    OPEN_ALWAYS, FILE_ATTRIBUTE_NORMAL, nullptr));
    if (!file) {
        return false;
    }
    // Not everything that runs Windows programs finds the end and writes in one step: writers wait
    // for each other at a place that no file reaches. The lock goes with the handle.
    OVERLAPPED place{};
    place.OffsetHigh = 0x7FFFFFFF;
    ::LockFileEx(file.get(), LOCKFILE_EXCLUSIVE_LOCK, 0, 1, 0, &place);
    DWORD written = 0;
    const bool is_written = ::WriteFile(file.get(), bytes.data(), static_cast<DWORD>(bytes.size()),
                                        &written, nullptr) != 0;
    const DWORD error = ::GetLastError();
    ::UnlockFileEx(file.get(), 0, 1, 0, &place);
    ::SetLastError(error);
    return is_written && written == bytes.size();
} catch (const std::exception&) {  // no memory for the path
    ::SetLastError(ERROR_NOT_ENOUGH_MEMORY);
    return false;
}

}  // namespace wavo::platform
