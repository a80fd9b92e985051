#include "platform/version_resource.h"

#include <windows.h>

#include <array>
#include <cstdint>
#include <cstdio>
#include <vector>

#include "platform/win32/wide.h"

namespace wavo::platform {

namespace {

struct Translation {
    std::uint16_t language;
    std::uint16_t code_page;
};

std::wstring OwnPath() {
    std::wstring path(MAX_PATH, L'\0');
    for (;;) {
        const DWORD length =
            ::GetModuleFileNameW(nullptr, path.data(), static_cast<DWORD>(path.size()));
        if (length < path.size()) {
            path.resize(length);
            return path;
        }
        path.resize(2 * path.size());
    }
}

/// The text `entry` of the resource; empty when there is none.
std::string Entry(const std::vector<std::byte>& resource, const Translation& translation,
                  const char* entry) {
    std::array<char, 64> name{};
    std::snprintf(name.data(), name.size(), "\\StringFileInfo\\%04x%04x\\%s", translation.language,
                  translation.code_page, entry);
    void* text = nullptr;
    UINT length = 0;
    if (::VerQueryValueW(resource.data(), Wide(name.data()).c_str(), &text, &length) == 0 ||
        length == 0) {
        return {};
    }
    // The length counts the NUL, and whatever a resource compiler filled up with.
    const std::wstring_view whole(static_cast<const wchar_t*>(text), length);
    return Utf8(whole.substr(0, whole.find(L'\0')));
}

}  // namespace

std::optional<VersionResource> OwnVersionResource() {
    const std::wstring path = OwnPath();
    DWORD unused = 0;
    const DWORD size = ::GetFileVersionInfoSizeW(path.c_str(), &unused);
    std::vector<std::byte> resource(size);
    if (size == 0 || ::GetFileVersionInfoW(path.c_str(), 0, size, resource.data()) == 0) {
        return std::nullopt;
    }
    void* translations = nullptr;
    UINT length = 0;
    if (::VerQueryValueW(resource.data(), L"\\VarFileInfo\\Translation", &translations, &length) ==
            0 ||
        length < sizeof(Translation)) {
        return std::nullopt;
    }
    const Translation first = *static_cast<const Translation*>(translations);
    return VersionResource{
        Entry(resource, first, "ProductName"), Entry(resource, first, "ProductVersion"),
        Entry(resource, first, "FileVersion"), Entry(resource, first, "FileDescription"),
        Entry(resource, first, "LegalCopyright")};
}

}  // namespace wavo::platform
