#include "support/file_name.h"

#include "platform/file_name.h"

namespace wavo {

bool IsFileName(const std::string& path) {
    return platform::UnfitNameText(path).empty();
}

std::string FileNameFault(const std::string& path) {
    const std::string words = platform::UnfitNameText(path);
    return words.empty() ? words : ": " + words;
}

}  // namespace wavo
