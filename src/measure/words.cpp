#include "measure/words.h"

#include <array>
#include <charconv>
#include <cstdarg>
#include <cstdio>

namespace wavo::measure {

std::string Words(const char* format, ...) {
    std::array<char, 400> text{};
    std::va_list arguments;
    va_start(arguments, format);
    std::vsnprintf(text.data(), text.size(), format, arguments);
    va_end(arguments);
    return text.data();
}

std::string Decimals(double value, int decimals) {
    std::array<char, 400> text{};
    const auto end = std::to_chars(text.data(), text.data() + text.size(), value,
                                   std::chars_format::fixed, decimals)
                         .ptr;
    std::string number(text.data(), end);
    if (number.starts_with('-') && number.find_first_of("123456789") == std::string::npos) {
        number.erase(0, 1);
    }
    return number;
}

}  // namespace wavo::measure
