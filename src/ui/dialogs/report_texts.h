// What the dialogs tell the user, where others rely on the words. They stay byte for byte.
#pragma once

#include <string>

namespace wavo::dialog_texts {

inline std::string FileExistsBox(const std::string& path) {
    return "file " + path + " already exist, override ?";
}
inline constexpr char kFileExistsCaption[] = "file exist";

}  // namespace wavo::dialog_texts
