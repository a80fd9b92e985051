// A folder in which every user of the machine may change what any other has written.
#pragma once

#include <string>

namespace wavo::platform {

/// Makes the folder when it is missing, for all users; one that is there keeps its rights. In the
/// application data folder of all users a plain folder would let each user write over its own files
/// only. False on failure; LastError() tells why.
bool ProvideFolderForAllUsers(const std::wstring& path);

}  // namespace wavo::platform
