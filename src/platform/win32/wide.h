// Texts between this program (UTF-8) and the wide calls of Windows (UTF-16).
//
// Bytes that are no UTF-8 and halves of surrogate pairs become U+FFFD, so that no conversion fails.
#pragma once

#include <string>
#include <string_view>

namespace wavo::platform {

std::wstring Wide(std::string_view text);
/// A path for a call that takes a file or a folder: a long one as a full path in the form that the
/// limit of 260 characters does not hold for, whatever the registry says.
std::wstring WidePath(std::string_view path);
std::wstring WidePath(std::wstring path);

std::string Utf8(std::wstring_view text);

/// Whether a text of ours cannot be handed to Windows whole, because a NUL inside would end it
/// early. Then the last error is set.
bool HasNul(std::string_view text) noexcept;

}  // namespace wavo::platform
