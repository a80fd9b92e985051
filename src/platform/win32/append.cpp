#include "platform/append.h"

#include <windows.h>

#include <exception>

#include "platform/win32/handle.h"
#include "platform/win32/wide.h"

namespace wavo::platform {

bool AppendToFile(const std::string& path, std::string_view bytes) noexcept try {
    // With this access alone the system puts what is written behind the end of that moment.
    const Handle file(::CreateFileW(Wide(path).c_str(), FILE_APPEND_DATA,
                                    FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE, nullptr,
                                    OPEN_ALWAYS, FILE_ATTRIBUTE_NORMAL, nullptr));
    DWORD written = 0;
    return file &&
           ::WriteFile(file.get(), bytes.data(), static_cast<DWORD>(bytes.size()), &written,
                       nullptr) != 0 &&
           written == bytes.size();
} catch (const std::exception&) {  // no memory for the path
    ::SetLastError(ERROR_NOT_ENOUGH_MEMORY);
    return false;
}

}  // namespace wavo::platform
