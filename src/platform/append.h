// Files that several processes append to.
#pragma once

#include <string>
#include <string_view>

namespace wavo::platform {

/// Appends `bytes` to a file (UTF-8 path), which is made when there is none. They stand in one
/// piece, whoever else appends at the same time; others may read, rename or remove the file
/// meanwhile. False when not all of them were written; LastError() tells why.
bool AppendToFile(const std::string& path, std::string_view bytes) noexcept;

}  // namespace wavo::platform
