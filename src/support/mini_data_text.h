// The lines of an INI file as text: where name and value stand in an entry, which names read back
// as they were written, and how numbers are written.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

#include "support/byte_scan.h"

namespace wavo::ini {

/// What ends each line of the content.
inline constexpr std::string_view kLineEnd = "\r\n";

inline bool IsBlank(char character) noexcept {
    return character == ' ' || character == '\t';
}

/// Offset of the first character that is neither a blank nor a tab; the length when there is none.
inline std::size_t FirstNonBlank(std::string_view line) noexcept {
    std::size_t first = 0;
    while (first < line.size() && IsBlank(line[first])) {
        ++first;
    }
    return first;
}

/// The text without blanks and tabs around it.
std::string_view Trim(std::string_view text) noexcept;

/// Whether a line with this first non-blank character is a comment.
inline bool BeginsComment(char character) noexcept {
    return character == '#' || character == '*' || character == '/' || character == ';';
}

/// Places of name and value in the line of an entry.
struct EntryParts {
    bool has_equals = false;
    std::size_t name_length = 0;  ///< the name begins at the first non-blank
    std::size_t value_begin = 0;  ///< behind the "="; the length of the line when it has none
};

/// REQUIRES: `first` is FirstNonBlank(line), and not its length.
inline EntryParts SplitEntry(std::string_view line, std::size_t first) noexcept {
    const char* const begin = line.data() + first;
    const char* const end = line.data() + line.size();
    const char* const equals = bytes::FindEither(begin, end, '=', '=');
    const char* name_end = equals;
    while (name_end != begin && IsBlank(name_end[-1])) {
        --name_end;
    }
    EntryParts parts;
    parts.has_equals = equals != end;
    parts.name_length = static_cast<std::size_t>(name_end - begin);
    parts.value_begin = static_cast<std::size_t>(equals - line.data()) + (parts.has_equals ? 1 : 0);
    return parts;
}

/// Whether a blank stands before the "=": blanks around the value do not count then.
inline bool IsSpaced(std::string_view line, std::size_t value_begin) noexcept {
    return value_begin >= 2 && value_begin <= line.size() && line[value_begin - 1] == '=' &&
           IsBlank(line[value_begin - 2]);
}

/// The value in a line that SplitEntry has split.
inline std::string_view ValueOf(std::string_view line, std::size_t value_begin) noexcept {
    const std::string_view value = line.substr(value_begin);
    return IsSpaced(line, value_begin) ? Trim(value) : value;
}

/// Whether a section of this name reads back under it.
bool IsSectionName(std::string_view name) noexcept;
/// Whether an entry of this name reads back under it, unless it begins a comment.
bool IsEntryName(std::string_view name) noexcept;
/// Whether a value reads back.
bool IsValue(std::string_view value) noexcept;

/// What a report echoes of a text: at most `longest` characters, and none behind a NUL.
std::string Echo(std::string_view text, std::size_t longest = std::string_view::npos);

/// The system's words for its last error.
std::string SystemText();

/// The number in decimal.
std::string NumberText(long value);
/// The number as "%.*g" with `precision` writes it in the C locale.
std::string NumberText(double value, int precision);

}  // namespace wavo::ini
