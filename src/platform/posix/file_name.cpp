#include "platform/file_name.h"

namespace wavo::platform {

std::string UnfitNameText(const std::string& /*path*/) {
    return {};
}

std::filesystem::path StreamPath(const std::string& path) {
    return path;
}

}  // namespace wavo::platform
