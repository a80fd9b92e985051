// Files that could not be read are kept before others take their places.
#pragma once

#include <string>

namespace wavo {

/// Keeps a copy of a file beside it, whole or not at all, with its permissions: under its name with
/// ".bak" added, and a number behind that where the name is taken. No other file is ever
/// overwritten. False when that failed, or 99 names are taken.
bool KeepFile(const std::string& path);

}  // namespace wavo
