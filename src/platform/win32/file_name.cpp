#include "platform/file_name.h"

#include <algorithm>
#include <array>

#include "platform/win32/unfit_name.h"
#include "platform/win32/wide.h"

namespace wavo::platform {

namespace {

constexpr std::array<std::string_view, 6> kDevices{"CON", "PRN", "AUX", "NUL", "CONIN$", "CONOUT$"};
constexpr std::array<std::string_view, 2> kNumberedDevices{"COM", "LPT"};
constexpr std::array<std::string_view, 13> kDeviceNumbers{
    "0", "1", "2", "3", "4", "5", "6", "7", "8", "9", "\xC2\xB9", "\xC2\xB2", "\xC2\xB3"};

bool IsLetter(char c) {
    return (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z');
}

/// The path behind its last separator, and behind a drive.
std::string_view LastName(std::string_view path) {
    const auto separator = path.find_last_of("/\\");
    if (separator != std::string_view::npos) {
        return path.substr(separator + 1);
    }
    const bool has_drive = path.size() >= 2 && path[1] == ':' && IsLetter(path[0]);
    return path.substr(has_drive ? 2 : 0);
}

/// Extensions do not count, nor blanks before them.
bool IsDevice(std::string_view name) {
    std::string base(name.substr(0, name.find_first_of(".:")));
    base.erase(base.find_last_not_of(' ') + 1);
    std::ranges::transform(base, base.begin(), [](char c) {
        return static_cast<char>(c >= 'a' && c <= 'z' ? c - 'a' + 'A' : c);
    });
    const std::string_view begin = std::string_view(base).substr(0, 3);
    return std::ranges::count(kDevices, base) > 0 ||
           (std::ranges::count(kNumberedDevices, begin) > 0 &&
            std::ranges::count(kDeviceNumbers, std::string_view(base).substr(begin.size())) > 0);
}

}  // namespace

UnfitName UnfitNameOf(std::string_view path) {
    const std::string_view name = LastName(path);
    if (name.empty() || name == "." || name == "..") {
        return UnfitName::kNone;  // no name of a file at all
    }
    if (IsDevice(name)) {
        return UnfitName::kDevice;
    }
    const bool has_character = std::ranges::any_of(name, [](char c) {
        return (c >= '\0' && c < ' ') ||
               std::string_view("<>:\"|?*").find(c) != std::string_view::npos;
    });
    if (has_character) {
        return UnfitName::kCharacter;
    }
    return name.back() == '.' || name.back() == ' ' ? UnfitName::kEnd : UnfitName::kNone;
}

bool IsUnfit(std::string_view path) {
    const UnfitName fault = UnfitNameOf(path);
    if (fault == UnfitName::kNone) {
        return false;
    }
    ::SetLastError(static_cast<DWORD>(fault));
    return true;
}

const char* UnfitNameWords(DWORD error) noexcept {
    switch (static_cast<UnfitName>(error)) {
        case UnfitName::kNone:
            break;
        case UnfitName::kDevice:
            return "Windows keeps this name for a device";
        case UnfitName::kEnd:
            return "on Windows the name of a file cannot end with a dot or a blank";
        case UnfitName::kCharacter:
            return "on Windows the name of a file cannot have < > : \" | ? * or control "
                   "characters in it";
    }
    return nullptr;
}

std::string UnfitNameText(const std::string& path) {
    const char* const words = UnfitNameWords(static_cast<DWORD>(UnfitNameOf(path)));
    return words == nullptr ? std::string() : words;
}

std::filesystem::path StreamPath(const std::string& path) {
    return WidePath(path);
}

}  // namespace wavo::platform
