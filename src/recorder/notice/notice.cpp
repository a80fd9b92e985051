#include "recorder/notice/notice.h"

#include <cstdio>

namespace wavo::recorder {

std::string NoticeSegmentName(platform::WindowHandle window) {
    return "WavoRecorder_" + std::to_string(window);
}

std::string TimeText(double seconds) {
    const auto whole = static_cast<std::uint64_t>(seconds);
    char text[48];
    std::snprintf(text, sizeof text, "%02llu:%02u:%02u",
                  static_cast<unsigned long long>(whole / 3600),
                  static_cast<unsigned>(whole / 60 % 60), static_cast<unsigned>(whole % 60));
    return text;
}

std::string SizeText(std::uint64_t bytes) {
    const auto size = static_cast<double>(bytes);
    char text[48];
    std::snprintf(text, sizeof text, size < 1e9 ? "%.1f MB" : "%.1f GB",
                  size < 1e9 ? size / 1e6 : size / 1e9);
    return text;
}

}  // namespace wavo::recorder
