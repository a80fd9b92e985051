#include "platform/version_resource.h"

namespace wavo::platform {

std::optional<VersionResource> OwnVersionResource() {
    return std::nullopt;
}

}  // namespace wavo::platform
