#include "support/mini_data_text.h"

#include <array>
#include <charconv>

#include "platform/last_error.h"

namespace wavo::ini {

std::string_view Trim(std::string_view text) noexcept {
    text.remove_prefix(FirstNonBlank(text));
    while (!text.empty() && IsBlank(text.back())) {
        text.remove_suffix(1);
    }
    return text;
}

bool IsSectionName(std::string_view name) noexcept {
    return name.find_first_of("]\r\n") == std::string_view::npos && Trim(name) == name;
}

bool IsEntryName(std::string_view name) noexcept {
    return !name.empty() && name.front() != '[' && Trim(name) == name &&
           name.find_first_of("=\r\n") == std::string_view::npos;
}

bool IsValue(std::string_view value) noexcept {
    return value.find_first_of("\r\n") == std::string_view::npos;
}

std::string Echo(std::string_view text, std::size_t longest) {
    text = text.substr(0, longest);
    return std::string(text.substr(0, text.find('\0')));
}

std::string SystemText() {
    return platform::ErrorText(platform::LastError());
}

std::string NumberText(long value) {
    std::array<char, 32> text{};
    const auto result = std::to_chars(text.data(), text.data() + text.size(), value);
    return {text.data(), result.ptr};
}

std::string NumberText(double value, int precision) {
    std::array<char, 64> text{};
    const auto result = std::to_chars(text.data(), text.data() + text.size(), value,
                                      std::chars_format::general, precision);
    return {text.data(), result.ptr};
}

}  // namespace wavo::ini
