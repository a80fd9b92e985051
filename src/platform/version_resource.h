// The version data that a program carries in its own file, where the system knows such a thing.
#pragma once

#include <optional>
#include <string>

namespace wavo::platform {

/// Texts of a version resource, UTF-8; those that are missing are empty.
struct VersionResource {
    std::string product_name;
    std::string product_version;
    std::string file_version;
    std::string file_description;
    std::string legal_copyright;
};

/// The version resource of this program's file, in the language of its first translation entry.
/// Nothing where programs have none: on POSIX systems, and in a file that was built without.
std::optional<VersionResource> OwnVersionResource();

}  // namespace wavo::platform
