// The text form of characters that cannot be shown or stored as they are: the separator and the
// end of line of exported data, in the settings file and in the properties dialog.
//
// A character above the blank stands for itself; any other is "0x" and two hexadecimal digits
// (0x09, 0x20). Several characters are joined by ",".
//
// Reading is not quite the reverse: a printable character is taken alone, but not in a list. So
// ";" is a semicolon and "0x3b,0x0a" a semicolon and a line feed, but ";,0x0a" is nothing.
#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace wavo {

/// Text form of one character.
std::string FormatCharacter(char character);

/// Text forms of all characters, joined by ",".
std::string FormatCharacters(std::string_view characters);

/// The characters of a text form, at least one: a single character as itself, or a list of "0x"
/// items, each cut to 8 bits. Nothing for any other text.
std::optional<std::string> ParseCharacters(std::string_view text);

}  // namespace wavo
