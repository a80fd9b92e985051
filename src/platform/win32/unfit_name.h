// Names that no file gets, though the calls of Windows take them: CON.ini is a device there, and
// behind "a." and "a:b" stand files of other names.
#pragma once

#include <windows.h>

#include <string_view>

namespace wavo::platform {

/// What is wrong with a name, as a last error. The system itself has none with this bit.
enum class UnfitName : DWORD {
    kNone = 0,
    kDevice = 0x20000001,
    kEnd = 0x20000002,        ///< a dot or a blank at the end
    kCharacter = 0x20000003,  ///< one that separates, selects or controls
};

/// What is wrong with the last name of a path (UTF-8).
UnfitName UnfitNameOf(std::string_view path);

/// Whether no file may be made under this path; the last error is then what is wrong.
bool IsUnfit(std::string_view path);

/// The words for such an error; null for every other one.
const char* UnfitNameWords(DWORD error) noexcept;

}  // namespace wavo::platform
