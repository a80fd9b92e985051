// Names of files, as far as systems differ in them. Paths are UTF-8.
#pragma once

#include <filesystem>
#include <string>

namespace wavo::platform {

/// Why no file can be made under this path, in words: "Windows keeps this name for a device". Empty
/// where one can, as far as the name is concerned. Windows: what its calls would take for a device,
/// whatever the extension, or write to under another name. POSIX systems take every name as it is.
std::string UnfitNameText(const std::string& path);

/// The path for a file stream. Windows: a long one in the form that has no limit of 260 characters.
std::filesystem::path StreamPath(const std::string& path);

}  // namespace wavo::platform
