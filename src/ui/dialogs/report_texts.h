// What the dialogs tell the user, where others rely on the words. They stay byte for byte.
#pragma once

#include <string>

#include "ui/prompts.h"

namespace wavo {

namespace dialog_texts {

inline std::string FileExistsBox(const std::string& path) {
    return "file " + path + " already exist, override ?";
}
inline constexpr char kFileExistsCaption[] = "file exist";

}  // namespace dialog_texts

/// Asks whether a file that is there may be replaced.
inline bool MayReplaceFile(const Prompts& prompts, QWidget* parent, const std::string& path) {
    return prompts.box(parent, {dialog_texts::FileExistsBox(path), dialog_texts::kFileExistsCaption,
                                BoxIcon::kExclamation, BoxButtons::kOkCancel}) == BoxAnswer::kOk;
}

}  // namespace wavo
