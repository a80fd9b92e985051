// The command line of a program that is started.
#pragma once

#include <string>
#include <vector>

namespace wavo::platform {

/// Program and arguments (UTF-8), such that CommandLineToArgvW and the C library take each for one.
std::wstring ProgramLine(const std::string& program, const std::vector<std::string>& arguments);

}  // namespace wavo::platform
