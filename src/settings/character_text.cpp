#include "settings/character_text.h"

#include <algorithm>

namespace wavo {

namespace {

constexpr std::string_view kHexDigits = "0123456789abcdef";

/// The value of a hexadecimal digit, -1 for any other character.
int HexValue(char digit) {
    if (digit >= '0' && digit <= '9') {
        return digit - '0';
    }
    if (digit >= 'a' && digit <= 'f') {
        return digit - 'a' + 10;
    }
    if (digit >= 'A' && digit <= 'F') {
        return digit - 'A' + 10;
    }
    return -1;
}

/// The character of one item of a list.
std::optional<char> ParseItem(std::string_view item) {
    if (!item.starts_with("0x") || item.size() < 3) {
        return std::nullopt;
    }
    unsigned value = 0;
    for (const char digit : item.substr(2)) {
        const int digit_value = HexValue(digit);
        if (digit_value < 0) {
            return std::nullopt;
        }
        value = (value << 4U | static_cast<unsigned>(digit_value)) & 0xFFU;
    }
    return static_cast<char>(value);
}

}  // namespace

std::string FormatCharacter(char character) {
    const auto code = static_cast<unsigned char>(character);
    if (code > ' ') {
        return {character};
    }
    return {'0', 'x', kHexDigits[code >> 4U], kHexDigits[code & 0xFU]};
}

std::string FormatCharacters(std::string_view characters) {
    std::string text;
    for (const char character : characters) {
        if (!text.empty()) {
            text += ',';
        }
        text += FormatCharacter(character);
    }
    return text;
}

std::optional<std::string> ParseCharacters(std::string_view text) {
    if (text.size() == 1) {
        return std::string(text);
    }
    std::string characters;
    for (std::size_t begin = 0; begin <= text.size();) {
        const std::size_t end = std::min(text.find(',', begin), text.size());
        const std::optional<char> character = ParseItem(text.substr(begin, end - begin));
        if (!character.has_value()) {
            return std::nullopt;
        }
        characters += *character;
        begin = end + 1;
    }
    return characters;
}

}  // namespace wavo
