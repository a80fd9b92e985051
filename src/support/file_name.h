// Names that files cannot have, told behind messages that a file cannot be written.
#pragma once

#include <string>

namespace wavo {

/// Whether a file can be made under this path (UTF-8), as far as its name is concerned. Where it
/// cannot, on Windows, writing to it fails, or writes to something else.
bool IsFileName(const std::string& path);

/// ": " and why not, for the end of a message; empty where it can.
std::string FileNameFault(const std::string& path);

}  // namespace wavo
